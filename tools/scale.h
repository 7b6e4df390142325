// SPDX-License-Identifier: MIT
//
// The unit in which the tracker sees the boxes. Its gate is an absolute 10 units, so the scale decides how far an object
// may step from one frame to the next, and matters more than every other parameter.
#pragma once

#include <vector>

#include "mot.h"
#include "track.h"

namespace zeltrack {

constexpr double gate_units = 10;
constexpr double min_scale = 1e-6;
constexpr double max_scale = 1e6;

// The scale that makes the gate half the size of the median box, its size being sqrt(width * height); 1 if no box has
// an area.
double automatic_scale(const std::vector<mot_row>& rows);

// Watches how far each detection lies from what the tracker can know of it: the nearest detection or reported track of
// the frame before. The start of a track counts as well, so a few distant ones are in the nature of things.
class step_watch {
public:
    void observe(const mot_row* first, const mot_row* last, const std::vector<track_row>& rows);

    double share_beyond(double gate) const;

    // The distance that the given share of the detections does not exceed.
    double reach(double share);

private:
    struct point {
        float x;
        float y;
    };
    static bool by_x(const point& a, const point& b) { return a.x < b.x; }
    double nearest(const point& at) const;

    std::vector<point> before_;  // by x
    std::vector<double> distances_;
};

}  // namespace zeltrack
