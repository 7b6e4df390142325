// SPDX-License-Identifier: MIT
//
// What the figures are made from: the boxes of truth and tracks that count, and which of them overlap.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "eval/assignment.h"
#include "eval/boxes.h"
#include "eval/score.h"

namespace zeltrack {

// Overlaps that fall short of a threshold by a rounding still reach it.
constexpr double overlap_rounding = std::numeric_limits<double>::epsilon();
constexpr double match_overlap = 0.5;  // of CLEAR, Identity and the distractors

class prepared_truth {
public:
    [[nodiscard]] std::optional<row_fault> assign(const score_row* rows, std::size_t count, score_rules rules,
                                                  int frames);

    box_set set;
    std::vector<score_role> roles;  // by box
    std::vector<double> frames_of;  // by identifier: boxes that count
    double boxes = 0;               // that count
    double objects = 0;             // with a box that counts
    bool distractors = false;
    int length = 0;
};

// A frame with true boxes and tracks.
struct shared_frame {
    int frame;
    frame_span objects;
    frame_span tracks;
    std::size_t first_pair;
    std::uint32_t pairs;
    bool counted;  // a box of either kind is left after the rules were applied
};

// An object and a track that overlap in some frame.
struct link {
    std::uint32_t object;
    std::uint32_t track;
};

class scene {
public:
    [[nodiscard]] std::optional<row_fault> assign(const prepared_truth& objects, const score_row* rows,
                                                  std::size_t count);

    std::uint32_t object_of(const shared_frame& in, const overlap_pair& it) const
    {
        return truth->set.who[in.objects.first + it.truth];
    }
    std::uint32_t track_of(const shared_frame& in, const overlap_pair& it) const
    {
        return tracks.who[in.tracks.first + it.track];
    }

    const prepared_truth* truth = nullptr;
    box_set tracks;
    std::vector<shared_frame> frames;    // ascending
    std::vector<overlap_pair> pairs;     // of boxes that count, by frame
    std::vector<std::uint32_t> link_of;  // by pair
    std::vector<link> links;             // by object; within it in the order in which they first overlap
    std::vector<double> frames_of_track;
    double boxes = 0;  // of tracks, that are left
    double tracks_left = 0;

private:
    [[nodiscard]] std::optional<row_fault> find_pairs();
    void drop_distracted(const shared_frame& in);
    void apply_rules();
    void keep_counted();
    void count_tracks();
    void join_links();

    overlap_finder finder_;
    assignment assignment_;
    std::vector<edge> edges_;
    std::vector<bool> dropped_;  // by box of a track
    std::vector<std::size_t> first_of_object_;
    std::vector<std::size_t> by_object_;  // pairs
    std::vector<std::uint32_t> pair_object_;
    std::vector<std::uint32_t> pair_track_;
    std::vector<std::uint32_t> latest_link_;  // by track, 1 + its latest link
};

}  // namespace zeltrack
