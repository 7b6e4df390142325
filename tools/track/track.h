// SPDX-License-Identifier: MIT
//
// This room tracks a detection file: one run of the tracker over all frames of a sequence, for every command that
// tracks. The options are in options.h, loading in sequence.h, a single frame in frame_tracker.h, the choice of the
// scale in scale.h, the statistics of a run in summary.h and steps.h.
#pragma once

#include <functional>
#include <vector>

#include "cli/command_line.h"
#include "track/frame_tracker.h"
#include "track/options.h"
#include "track/sequence.h"
#include "track/summary.h"
#include "track/track_row.h"

namespace zeltrack {

extern const subcommand track_command;

// `given` says which of the frame's detections went into the tracker, in which unit and how far steadied.
using frame_callback =
    std::function<void(int frame, const std::vector<track_row>& rows, const zel_host_frame_t& given)>;

// Runs the tracker over all frames, empty ones too, and hands on each frame's rows.
track_summary track_sequence(const sequence& input, const track_options& options, const frame_callback& each,
                             const frame_process& process = plain_process);

}  // namespace zeltrack
