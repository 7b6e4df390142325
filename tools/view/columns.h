// SPDX-License-Identifier: MIT
//
// A recording as columns of whole numbers, which the page unpacks. Boxes go as steps far below what the eye or the tracker
// can tell apart; what a track adds to a detection goes as the difference to it, which is small. Nothing here throws,
// prints or opens a file, nor does anything in recorder.h.
#pragma once

#include <cstdint>
#include <vector>

#include "mot/mot.h"
#include "view/column.h"
#include "view/identity.h"
#include "view/recording.h"

namespace zeltrack {

struct grid_box {
    std::int32_t x, y, w, h;
};

// Whole steps from an origin, both in the tracker's units.
class grid {
public:
    // A step is a small part of `detail`, the least length that matters.
    grid(const recording& recorded, double detail);

    double x() const { return x_; }
    double y() const { return y_; }
    double step() const { return step_; }

    grid_box of(double x, double y, double w, double h) const;
    grid_box of(const centre_box& b) const { return of(b.x, b.y, b.w, b.h); }

private:
    std::int32_t whole(double value) const;

    float x_ = 0;
    float y_ = 0;
    double step_;
};

// Scores as thousandths of their range, classes as their place among all.
class labels {
public:
    explicit labels(const recording& recorded);

    void put(column& out, const recorded_detection& detection) const;

    float low = 0;
    float high = 0;
    std::vector<int> classes;
};

// By life: birth, number of rows, ending, row of its confirmation, identifier, rows in which it forgot its matches.
column pack_lives(const recording& recorded);

// By frame: the number of detections, and for each its box, score, class and association.
column pack_detections(const recording& recorded, const grid& steps, const labels& named);

// By life, then by row: 0: missed, and all as before; 1: missed, predicted anew; 2 and more: took detection 0 and so on.
// Then the boxes that are new.
column pack_rows(const recording& recorded, const grid& steps);

// By object, in the order of their identifiers: each box as the difference to the one before.
column pack_truth(std::vector<mot_row> rows, const grid& steps, double scale);

column pack_changes(const std::vector<identity_change>& changes);

}  // namespace zeltrack
