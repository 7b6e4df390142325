// SPDX-License-Identifier: MIT
//
// The tracker sees corners in its own unit; files hold left, top, width and height in pixels. The conversions are made
// in double, so that they add as little as possible to what the tracker rounds.
#include "track/frame_tracker.h"

#include <zel/libzel.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <new>

namespace zeltrack {

static void process_plainly(void*, void* tracker, float (*input)[6], float (*output)[8])
{
    zel_tracker_process(tracker, input, output);
}

const frame_process plain_process = {process_plainly, nullptr};

frame_tracker::frame_tracker(const track_options& options, double scale, int capacity, const frame_process& process)
    : handle_(zel_tracker_create(0, 0, capacity, options.euc, options.iou, options.stable, options.removal,
                                 options.ignore_class ? 1 : 0)),
      process_(process),
      scale_(scale),
      capacity_(static_cast<std::size_t>(capacity)),
      input_(std::make_unique<float[][6]>(capacity_)),
      output_(std::make_unique<float[][8]>(capacity_))
{
    if (handle_)
        return;
#ifdef __cpp_exceptions
    throw std::bad_alloc();
#else
    std::abort();
#endif
}

void frame_tracker::put(const mot_row* first, const mot_row* last)
{
    const std::size_t count = std::min(static_cast<std::size_t>(last - first), capacity_);
    for (std::size_t n = 0; n < count; ++n) {
        const mot_row& row = first[n];
        const double right = static_cast<double>(row.left) + row.width;
        const double bottom = static_cast<double>(row.top) + row.height;
        float* in = input_[n];
        in[0] = row.cls;
        in[1] = static_cast<float>(row.left * scale_);
        in[2] = static_cast<float>(row.top * scale_);
        in[3] = static_cast<float>(right * scale_);
        in[4] = static_cast<float>(bottom * scale_);
        in[5] = row.conf;
    }
    if (count < capacity_)
        input_[count][0] = 0;
}

void frame_tracker::take(int frame)
{
    rows_.clear();
    for (std::size_t n = 0; n < capacity_ && output_[n][0] >= 0; ++n) {
        const float* out = output_[n];
        mot_row row;
        row.frame = frame;
        row.id = static_cast<int>(out[0]);
        row.left = static_cast<float>(out[2] / scale_);
        row.top = static_cast<float>(out[3] / scale_);
        row.width = static_cast<float>((static_cast<double>(out[4]) - out[2]) / scale_);
        row.height = static_cast<float>((static_cast<double>(out[5]) - out[3]) / scale_);
        row.conf = out[6];
        row.cls = out[1];
        rows_.push_back({row, static_cast<int>(out[7])});
    }
}

const std::vector<track_row>& frame_tracker::process(int frame, const mot_row* first, const mot_row* last)
{
    using clock = std::chrono::steady_clock;
    put(first, last);
    const clock::time_point start = clock::now();
    process_.run(process_.context, handle_.get(), input_.get(), output_.get());
    seconds_ += std::chrono::duration<double>(clock::now() - start).count();
    take(frame);
    return rows_;
}

}  // namespace zeltrack
