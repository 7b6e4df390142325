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
    const std::vector<track_row>& count(const std::vector<track_row>& rows, int detections)
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
        const bool full = detections >= summary_.capacity || static_cast<int>(rows.size()) == summary_.capacity;
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

// A gate of twice the distance that nine in ten detections keep, up to five boxes.
static double wider_scale(step_watch& steps, double size)
{
    return std::max(gate_units / (2 * steps.reach(0.9)), gate_units / (5 * size));
}

static int removal_of(const sequence& input, const track_options& options)
{
    zel_host_params_t params;
    zel_host_params_init(&params, sizeof(params));
    params.removal = options.removal;
    params.frame_rate = input.fps;
    return zel_host_removal(&params);
}

track_summary track_sequence(const sequence& input, const track_options& options, const frame_callback& each,
                             const frame_process& process)
{
    track_summary summary;
    summary.input = &input;
    summary.ample = ample_capacity(input.rows, removal_of(input, options));
    summary.capacity = options.max_objects > 0 ? options.max_objects : std::min(summary.ample, max_chosen_capacity);
    frame_tracker tracker(options, input.fps, summary.capacity, process);
    tally counts(summary, options.coasted);
    step_watch steps;
    std::vector<const mot_row*> given;

    const mot_row* first = input.rows.data();
    const mot_row* const end = first + input.rows.size();
    for (int frame = 1; frame <= input.frames; ++frame) {
        const mot_row* last = first;
        while (last != end && last->frame == frame)
            ++last;
        const std::vector<track_row>& rows = tracker.process(frame, first, last);
        const zel_host_frame_t latest = tracker.latest();
        given.clear();
        for (int n = 0; n < latest.count; ++n)
            given.push_back(first + latest.detections[n]);
        each(frame, counts.count(rows, latest.count), latest);
        if (!options.quiet)
            steps.observe(given, rows, latest.offset_x, latest.offset_y);
        first = last;
    }
    summary.host = tracker.status();
    summary.scale = summary.host.scale;
    summary.seconds = tracker.seconds();
    summary.far_share = steps.share_beyond(gate_units / summary.scale);
    if (summary.far_share > 0.1)
        summary.better_scale = wider_scale(steps, summary.host.typical_size);
    return summary;
}

}  // namespace zeltrack
