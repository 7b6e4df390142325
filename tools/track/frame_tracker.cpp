// SPDX-License-Identifier: MIT
//
// The kit sees corners and classes from 0; files hold left, top, width and height, and classes that are not 0.
#include "track/frame_tracker.h"

#include <chrono>
#include <cstdlib>
#include <new>

namespace zeltrack {

static void process_plainly(void*, void* tracker, float (*input)[6], float (*output)[8])
{
    zel_tracker_process(tracker, input, output);
}

const frame_process plain_process = {process_plainly, nullptr};

static zel_host_t* create_host(const track_options& options, double fps, int capacity)
{
    zel_host_params_t params;
    zel_host_params_init(&params, sizeof(params));
    params.scale = options.scale;
    params.frame_rate = fps;
    params.min_confidence = options.min_conf;
    params.iou = options.iou;
    params.euc = options.euc;
    params.stable = options.stable;
    params.removal = options.removal;
    params.steady = options.steady;
    params.ignore_class = options.ignore_class ? 1 : 0;
    params.coasted = 1;
    params.max_objects = capacity;
    return zel_host_create(&params);
}

frame_tracker::frame_tracker(const track_options& options, double fps, int capacity, const frame_process& process)
    : host_(create_host(options, fps, capacity), zel_host_release),
      process_(process),
      tracks_(static_cast<std::size_t>(capacity))
{
    if (!host_) {
#ifdef __cpp_exceptions
        throw std::bad_alloc();
#else
        std::abort();
#endif
    }
    zel_host_replace_process(host_.get(), run_timed, this);
}

void frame_tracker::run_timed(void* context, void* tracker, float (*input)[6], float (*output)[8])
{
    using clock = std::chrono::steady_clock;
    auto& self = *static_cast<frame_tracker*>(context);
    const clock::time_point start = clock::now();
    self.process_.run(self.process_.context, tracker, input, output);
    self.seconds_ += std::chrono::duration<double>(clock::now() - start).count();
}

void frame_tracker::put(const mot_row* first, const mot_row* last)
{
    detections_.clear();
    for (const mot_row* row = first; row != last; ++row) {
        const int c = static_cast<int>(row->cls);
        detections_.push_back(
            {row->left, row->top, row->left + row->width, row->top + row->height, row->conf, c > 0 ? c - 1 : c});
    }
}

void frame_tracker::take(int frame, int count)
{
    rows_.clear();
    for (int n = 0; n < count; ++n) {
        const zel_host_track_t& track = tracks_[static_cast<std::size_t>(n)];
        mot_row row;
        row.frame = frame;
        row.id = track.id;
        row.left = track.x1;
        row.top = track.y1;
        row.width = track.x2 - track.x1;
        row.height = track.y2 - track.y1;
        row.conf = track.confidence;
        row.cls = static_cast<float>(track.class_id >= 0 ? track.class_id + 1 : track.class_id);
        rows_.push_back({row, track.detection});
    }
}

const std::vector<track_row>& frame_tracker::process(int frame, const mot_row* first, const mot_row* last)
{
    put(first, last);
    const int count = zel_host_process(host_.get(), detections_.data(), static_cast<int>(detections_.size()),
                                       tracks_.data(), static_cast<int>(tracks_.size()));
    take(frame, count);
    return rows_;
}

zel_host_frame_t frame_tracker::latest() const
{
    zel_host_frame_t frame;
    zel_host_get_frame(host_.get(), &frame);
    return frame;
}

zel_host_status_t frame_tracker::status() const
{
    zel_host_status_t status;
    zel_host_get_status(host_.get(), &status, sizeof(status));
    return status;
}

}  // namespace zeltrack
