// SPDX-License-Identifier: MIT
//
// The least confidence worth tracking. It is Otsu's threshold among the latest confidences, as long as what lies below
// it comes and goes: weak detections that are real persist like strong ones, and then nothing may be dropped.
#pragma once

#include <stdint.h>

#include "host.h"
#include "neighbours.h"

namespace zelhost {

constexpr int confidence_memory = 500;

// Detections of one side of the threshold.
struct persistence {
    int met;
    int again;  // of them, seen again in the next frame
};

struct confidence_choice {
    float latest[confidence_memory];
    uint64_t count;     // of confidences ever added
    uint64_t split_at;  // what it was when the threshold was found
    float threshold;    // the least of the strong ones
    bool alike;         // there is no threshold
    persistence weak;
    persistence strong;
};

void add_confidence(confidence_choice* choice, float confidence);

// To be called once per frame, when its confidences were added and its neighbours found.
void split_confidences(confidence_choice* choice, const frame_boxes* before);

// At present; -FLT_MAX: nothing is to be dropped.
float least_confidence(const confidence_choice* choice, int* reason);

// Share of one side that was seen again; -1: too few were met to tell.
double seen_again(const persistence* side);

}  // namespace zelhost
