// SPDX-License-Identifier: MIT
//
// What a user can choose about tracking.
#pragma once

#include <limits>
#include <string>

#include "mot/mot.h"

namespace zeltrack {

class command_line;

struct track_options {
    std::string detections;  // "-": standard input
    double scale = 0;        // 0: automatic_scale()
    int max_objects = 0;     // 0: ample_capacity()
    float euc = 1.0F;
    float iou = 0.3F;
    int stable = 3;
    int removal = 10;
    bool ignore_class = false;
    float min_conf = std::numeric_limits<float>::lowest();
    mot_layout layout;
    bool coasted = false;
    bool quiet = false;
};

// The positional DETECTIONS, all options of tracking and --config.
void declare_options(command_line& line, track_options& options);

}  // namespace zeltrack
