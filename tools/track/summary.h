// SPDX-License-Identifier: MIT
//
// The summary of a run: counts, speed, the gate, and a warning when objects step beyond it.
#pragma once

#include <cstddef>
#include <iosfwd>

#include "track/options.h"
#include "track/sequence.h"

namespace zeltrack {

struct track_summary {
    sequence const* input = nullptr;
    double scale = 1;
    int capacity = 0;
    int ample = 0;
    int full_frames = 0;  // in which the detections or the reported tracks filled the capacity
    std::size_t rows = 0;
    std::size_t identified = 0;  // detections reported under an identifier
    std::size_t identifiers = 0;
    double seconds = 0;       // within the tracker
    double far_share = 0;     // of the detections, had nothing of the frame before within the gate
    double better_scale = 0;  // to try if that is more than a tenth
};

void print_summary(std::ostream& out, const track_summary& summary, const track_options& options);

}  // namespace zeltrack
