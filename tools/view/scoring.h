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
    // Where the ground truth has classes: boxes that do not count, but may claim a track. Class 8 is a distractor,
    // whose track does not count either.
    std::vector<mot_row> others;
};

constexpr float distractor_class = 8;

class run_scorer {
public:
    explicit run_scorer(const true_boxes* truth) : truth_(truth) {}  // null: there is none

    // The rows that are reported in a frame; frames must ascend.
    void observe(const std::vector<track_row>& rows);

    // After the last frame; `frames` are those tracked.
    void score(int frames);

    // The most important figures as numbers "figure.HOTA" and so on; nothing without ground truth.
    void pack_figures(package& out, const std::string& prefix = "figure.") const;

    // By box of the ground truth, the track that follows it; 0: none.
    void pack_followers(package& out, const std::string& name) const;

    // The column "changes", a frame, an object, the tracks before and after and the frames since for each identity
    // switch; and by box of the ground truth "truthTrack", the track that follows it, and "truthDetection", the place
    // in its frame of the detection that overlaps it most, by half or more. From 1; 0 is none.
    void pack_objects(package& out, const std::vector<mot_row>& detections) const;

private:
    const true_boxes* truth_;
    std::vector<score_row> tracks_;
    scorer scorer_;
    sequence_score result_;
    bool scored_ = false;
};

}  // namespace zeltrack
