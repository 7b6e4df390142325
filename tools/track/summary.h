// SPDX-License-Identifier: MIT
//
// The summary of a run: counts, speed, what the automatic choices came to and why, and warnings.
#pragma once

#include <zel/host.h>

#include <cstddef>
#include <iosfwd>

#include "track/options.h"
#include "track/sequence.h"

namespace zeltrack {

struct track_summary {
    sequence const* input = nullptr;
    zel_host_status_t host = {};  // at the end
    double scale = 0;             // 0: no box ever told one
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

// Memory that ran out inside the tracker lost tracks: a failure.
void refuse_missing_memory(const track_summary& summary);

void print_summary(std::ostream& out, const track_summary& summary, const track_options& options);

}  // namespace zeltrack
