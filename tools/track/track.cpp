// SPDX-License-Identifier: MIT
//
// The loop over the frames, and what is counted on the way.
#include "track/track.h"

#include <algorithm>

#include "track/scale.h"
#include "track/steps.h"

namespace zeltrack {

namespace {

// What is counted while the frames go by.
class tally {
public:
    tally(track_summary& summary, bool coasted) : summary_(summary), coasted_(coasted), seen_(1 << 20) {}

    // Keeps the rows that are wanted.
    const std::vector<track_row>& count(const std::vector<track_row>& rows, std::ptrdiff_t detections)
    {
        wanted_.clear();
        for (const track_row& row : rows) {
            summary_.identified += row.detection >= 0;
            if (row.detection < 0 && !coasted_)
                continue;
            wanted_.push_back(row);
            summary_.identifiers += !seen_[static_cast<std::size_t>(row.box.id)];
            seen_[static_cast<std::size_t>(row.box.id)] = true;
        }
        summary_.rows += wanted_.size();
        const bool full = detections > summary_.capacity || static_cast<int>(rows.size()) == summary_.capacity;
        summary_.full_frames += full && summary_.capacity < summary_.ample;
        return wanted_;
    }

private:
    track_summary& summary_;
    bool coasted_;
    std::vector<bool> seen_;  // by identifier, which stays below 2^20
    std::vector<track_row> wanted_;
};

}  // namespace

// A gate of twice the distance that nine in ten detections keep; but wider than two boxes, it would join strangers.
static double wider_scale(step_watch& steps, double automatic)
{
    return std::max(gate_units / (2 * steps.reach(0.9)), automatic / 4);
}

track_summary track_sequence(const sequence& input, const track_options& options, const frame_callback& each,
                             const frame_process& process)
{
    track_summary summary;
    summary.input = &input;
    summary.scale = options.scale > 0 ? options.scale : automatic_scale(input.rows);
    summary.ample = ample_capacity(input.rows, options.removal);
    summary.capacity = options.max_objects > 0 ? options.max_objects : std::min(summary.ample, max_chosen_capacity);
    frame_tracker tracker(options, summary.scale, summary.capacity, process);
    tally counts(summary, options.coasted);
    step_watch steps;

    const mot_row* first = input.rows.data();
    const mot_row* const end = first + input.rows.size();
    for (int frame = 1; frame <= input.frames; ++frame) {
        const mot_row* last = first;
        while (last != end && last->frame == frame)
            ++last;
        const std::vector<track_row>& rows = tracker.process(frame, first, last);
        each(frame, counts.count(rows, last - first));
        steps.observe(first, first + std::min<std::ptrdiff_t>(last - first, summary.capacity), rows);
        first = last;
    }
    summary.seconds = tracker.seconds();
    summary.far_share = steps.share_beyond(gate_units / summary.scale);
    if (summary.far_share > 0.1)
        summary.better_scale = wider_scale(steps, automatic_scale(input.rows));
    return summary;
}

}  // namespace zeltrack
