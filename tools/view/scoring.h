// SPDX-License-Identifier: MIT
//
// The tracks of a run beside ground truth: the figures and identity switches that the command eval gives for them.
#pragma once

#include <vector>

#include "eval/score.h"
#include "track/track_row.h"
#include "view/column.h"

namespace zeltrack {

// Both by frame.
struct true_boxes {
    std::vector<mot_row> counted;  // with identifiers
    // Where the ground truth has classes: boxes that do not count, but may claim a track. Class 8 is a distractor, whose
    // track does not count either.
    std::vector<mot_row> others;
};

constexpr float distractor_class = 8;

class run_scorer {
public:
    explicit run_scorer(const true_boxes* truth) : truth_(truth) {}  // null: there is none

    // The rows that are reported in a frame; frames must ascend.
    void observe(const std::vector<track_row>& rows);

    // Adds the column "changes", a frame, an object and the tracks before and after for each identity switch, and, if
    // there is ground truth, the most important figures as numbers "figure.HOTA" and so on. `frames` are those tracked.
    void pack(package& out, int frames) const;

private:
    const true_boxes* truth_;
    std::vector<score_row> tracks_;
};

}  // namespace zeltrack
