// SPDX-License-Identifier: MIT
//
// The unit of the tracker, chosen by the size of the boxes.
#pragma once

#include "host.h"

namespace zelhost {

constexpr int size_memory = 500;

struct scale_choice {
    double scale;              // 0: not yet known
    double first_size;         // that it was chosen for; 0: it was not chosen
    bool frozen;               // detections went in with it
    int count;                 // of sizes ever added
    float sizes[size_memory];  // the latest ones, without those of 0
};

void add_size(scale_choice* choice, double size);

// Fixes the scale as soon as sizes are known. To be called when those of a frame were added.
void choose_scale(scale_choice* choice, double wanted);

void describe_scale(const scale_choice* choice, zel_host_status_t* status);

}  // namespace zelhost
