// SPDX-License-Identifier: MIT
//
// The automatic scale is asked of the host kit itself, by a look at the first frames.
#include "track/settle.h"

#include <algorithm>
#include <cmath>

#include "cli/failure.h"
#include "track/frame_tracker.h"
#include "track/scale.h"

namespace zeltrack {

// 0 if no box ever tells one.
static double automatic_scale(const track_options& options, const sequence& input)
{
    const mot_row* first = input.rows.data();
    const mot_row* const end = first + input.rows.size();
    frame_tracker tracker(options, input.fps, std::min(ample_capacity(input.rows, 1), max_chosen_capacity),
                          plain_process);
    while (first != end && !(tracker.status().scale > 0)) {
        const mot_row* const last =
            std::find_if(first, end, [first](const mot_row& row) { return row.frame != first->frame; });
        tracker.process(first->frame, first, last);
        first = last;
    }
    return tracker.status().scale;
}

void settle(track_options& options, const sequence& input)
{
    if (options.removal_seconds > 0) {
        if (!(input.fps > 0))
            throw failure("--removal: seconds need the frame rate, by --fps or from a seqinfo.ini", exit_usage);
        const double frames = std::round(options.removal_seconds * input.fps);
        options.removal = static_cast<int>(std::clamp<double>(frames, 1, max_frame));
    }
    if (options.scale_factor == 1 || options.scale > 0)
        return;
    const double automatic = automatic_scale(options, input);
    if (automatic > 0)
        options.scale = std::clamp(options.scale_factor * automatic, min_scale, max_scale);
}

}  // namespace zeltrack
