// SPDX-License-Identifier: MIT
//
// The camera's own motion, told from the detections alone: where most of them step the same way, it is the camera that
// moved.
#pragma once

#include "neighbours.h"

namespace zelhost {

struct camera {
    double offset_x;  // how far it has carried the image while steadying was on
    double offset_y;
    double steps;  // sum of the lengths of the pairs' steps; older frames count less
    double left;   // of that, what the median step of the other pairs does not explain
    int frames;    // with enough pairs
    bool on;
};

// Follows the motion from the frame before to this one. Only detections of the least confidence take part. wanted is as
// in zel_host_params_t.steady. The work area of the neighbours is overwritten.
void follow_camera(camera* it, const neighbours* frames, float least, int wanted);

// Share of the steps that the motion of the camera explains.
double explained(const camera* it);

// Enough was seen to tell.
bool motion_known(const camera* it);

}  // namespace zelhost
