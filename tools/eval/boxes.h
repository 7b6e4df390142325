// SPDX-License-Identifier: MIT
//
// Boxes arranged for scoring: by frame, within a frame from left to right; and the pairs of boxes of two such sets that
// overlap.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "eval/score.h"

namespace zeltrack {

struct edges {
    double left, top, right, bottom;
};

struct frame_span {
    int frame;
    std::uint32_t first;  // index of a box
    std::uint32_t count;
};

class box_set {
public:
    // Takes fewer than 2^32 rows; after a fault the set is not to be used.
    [[nodiscard]] std::optional<row_fault> assign(const score_row* rows, std::size_t count, int last_frame);

    std::vector<edges> boxes;
    std::vector<std::uint32_t> who;     // place of the box's identifier among ids
    std::vector<std::uint32_t> source;  // index of the box's row
    std::vector<int> ids;               // ascending
    std::vector<frame_span> frames;     // that have boxes, ascending

private:
    void arrange(const score_row* rows, std::size_t count);
    bool number_by_table(const score_row* rows, std::size_t count);
    void number_identifiers(const score_row* rows, std::size_t count);
    std::optional<row_fault> find_twice();

    std::vector<std::uint32_t> table_;  // by identifier, less the lowest: its place among ids
    std::vector<std::uint32_t> seen_;   // by place among ids: 1 + its latest box
};

struct overlap_pair {
    std::uint32_t truth;  // place of the boxes within their frame
    std::uint32_t track;
    double overlap;  // intersection over union, above 0
};

class overlap_finder {
public:
    // Appends the frame's pairs, by true box and then by track, both from left to right. False if that makes more than
    // `most` of them, which are then not all there.
    [[nodiscard]] bool find(const box_set& truth, const frame_span& objects, const box_set& tracks,
                            const frame_span& found, std::size_t most, std::vector<overlap_pair>& pairs);

private:
    std::vector<double> reach_;  // the rightmost edge of a track and all before it
};

}  // namespace zeltrack
