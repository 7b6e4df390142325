// SPDX-License-Identifier: MIT
//
// This room says how good tracks are. Here stands its core, arrays in and structs out: HOTA (Luiten et al. 2021), CLEAR
// (Bernardin and Stiefelhagen 2008) and Identity (Ristani et al. 2016). It reads no file, prints nothing, has no state
// but a scorer's own, and fails by std::bad_alloc alone. The order of rows never matters, and the same rows give the
// same figures.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace zeltrack {

// A box of the truth or of a track, in pixels, which must be finite. A box without area overlaps nothing.
struct score_row {
    int frame = 0;  // from 1
    int id = 0;     // of the object or the track; once in a frame
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    int cls = 1;         // of the truth only
    bool counts = true;  // of the truth only
};

// Which rows count. mot15: all tracks, and the truth that is marked so. mot17 and mot20: of that only class 1; and
// first, tracks that lie on a distractor rather than elsewhere are taken away. Distractors are the classes 2, 7, 8 and
// 12, in mot20 6 as well.
enum class score_rules { mot15, mot17, mot20 };

// What a true box does: count, take away a track that is its own, or neither, and yet claim a track with classes.
enum class score_role : std::uint8_t { counted, distractor, ignored };
score_role role_of(const score_row& row, score_rules rules);

constexpr int score_classes = 13;  // the classes of mot17 and mot20 are 1 to 13

// HOTA's overlap thresholds: 0.05, 0.10 ... 0.95. The figure quoted is the mean over all.
constexpr std::size_t threshold_count = 19;
using threshold_curve = std::array<double, threshold_count>;
extern const threshold_curve score_thresholds;
double mean(const threshold_curve& curve);

// Counts are doubles as well, which hold them exactly. Every figure is finite; what has nothing below it is 0, except
// that loc_a without matches is 1, as is mlr where there are no tracks or no truth.
struct hota_score {
    threshold_curve hota{}, det_a{}, ass_a{}, det_re{}, det_pr{}, ass_re{}, ass_pr{}, loc_a{}, owta{};
    threshold_curve tp{}, fn{}, fp{};
    double hota_0 = 0, loc_a_0 = 0, hota_loc_a_0 = 0;  // at the lowest threshold
};

struct clear_score {
    double mota = 0, motp = 0, moda = 0, motal = 0, smota = 0;
    double re = 0, pr = 0, f1 = 0;
    double tp = 0, fn = 0, fp = 0, idsw = 0, frag = 0;
    double mt = 0, pt = 0, ml = 0, mtr = 0, ptr = 0, mlr = 0;
    double motp_sum = 0, frames = 0, fp_per_frame = 0;  // frames: 0 where there are no tracks or no truth
};

struct identity_score {
    double idf1 = 0, idr = 0, idp = 0;
    double idtp = 0, idfn = 0, idfp = 0;
};

struct count_score {
    double dets = 0, gt_dets = 0, ids = 0, gt_ids = 0, frames = 0;  // what is left of both when the rules were applied
};

struct sequence_score {
    hota_score hota;
    clear_score clear;
    identity_score identity;
    count_score count;
};

// Counts add up, and what is a ratio is formed anew. So a single sequence remains what it is, unless it has no tracks
// or no truth.
sequence_score combined(const sequence_score* scores, std::size_t count);

// One of CLEAR's IDSW: an object gets another track than the latest that it had.
struct identity_switch {
    int frame;
    int object;
    int from;  // identifiers of tracks
    int to;
    int since;  // frames since the object last had a track; 1 if that was in the frame before
};

// A track that CLEAR assigns to an object in a frame.
struct object_match {
    int frame;
    int object;
    int track;
};

// Why rows are refused.
struct row_fault {
    enum class reason {
        frame_outside,
        class_unknown,
        identifier_twice,
        too_crowded,  // a track of the frame in which the overlaps of true boxes and tracks became too many
    };
    reason why;
    std::size_t row;      // the index of the row
    std::size_t earlier;  // identifier_twice: of the one that it repeats; else the row itself
};

// Scores any number of track sets against one truth, which is prepared only once. Calls of one scorer must not overlap;
// copies are independent of each other.
class scorer {
public:
    scorer();
    ~scorer();
    scorer(const scorer& other);
    scorer& operator=(const scorer& other);
    scorer(scorer&&) noexcept;
    scorer& operator=(scorer&&) noexcept;

    // The rows need not outlive the call. `frames` is the length of the sequence. Faults are looked for in all rows,
    // also in those that do not count, but classes only in mot17 and mot20. After a fault there is no truth.
    [[nodiscard]] std::optional<row_fault> set_truth(const score_row* rows, std::size_t count, score_rules rules,
                                                     int frames);

    // After a fault the result is left unchanged.
    [[nodiscard]] std::optional<row_fault> score(const score_row* tracks, std::size_t count, sequence_score& result);

    // Of the latest score(), by frame and object.
    const std::vector<identity_switch>& switches() const;

    // Of the latest score(), by frame.
    const std::vector<object_match>& matches() const;

private:
    struct parts;
    std::unique_ptr<parts> parts_;
};

}  // namespace zeltrack
