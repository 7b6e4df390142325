// SPDX-License-Identifier: MIT
//
// What a user can choose about tracking. The automatic choices are the host kit's.
#pragma once

#include <zel/host.h>

#include <string>

#include "mot/mot.h"

namespace zeltrack {

class command_line;

struct track_options {
    std::string detections;  // "-": standard input
    double scale = ZEL_HOST_AUTO;
    double scale_factor = 1;  // of the automatic scale; see settle()
    int max_objects = 0;      // 0: ample_capacity()
    float euc = 1.0F;
    float iou = 0.3F;
    int stable = 2;
    int removal = ZEL_HOST_AUTO;
    double removal_seconds = 0;  // 0: not in seconds; see settle()
    bool ignore_class = false;
    float min_conf = ZEL_HOST_AUTO_CONFIDENCE;
    int steady = ZEL_HOST_AUTO;
    double fps = 0;  // 0: that of the seqinfo.ini beside the file; without one it is not known
    mot_layout layout;
    bool coasted = false;
    bool quiet = false;
};

// The positional DETECTIONS, all options of tracking and --config.
void declare_options(command_line& line, track_options& options);

}  // namespace zeltrack
