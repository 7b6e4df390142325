// SPDX-License-Identifier: MIT
//
// How far objects step from one frame to the next, which shows whether the gate is too small.
#pragma once

#include <vector>

#include "track/track_row.h"

namespace zeltrack {

// Watches how far each detection lies from what the tracker can know of it: the nearest detection or reported track of
// the frame before. The start of a track counts as well, so a few distant ones are in the nature of things.
class step_watch {
public:
    // The rows that went into the tracker, and the tracks that came out. Steps are those in the tracker's view: the
    // offset of a steadied camera is taken out.
    void observe(const std::vector<const mot_row*>& given, const std::vector<track_row>& rows, double offset_x,
                 double offset_y);

    double share_beyond(double gate) const;

    // The distance that the given share of the detections does not exceed.
    double reach(double share);

private:
    struct point {
        float along;  // the axis in whose order the points stand
        float across;
    };
    static bool earlier(const point& a, const point& b) { return a.along < b.along; }
    double nearest(const point& at) const;
    void sort_before();

    bool turned_ = false;  // that axis is y
    std::vector<point> before_;
    std::vector<double> distances_;
};

}  // namespace zeltrack
