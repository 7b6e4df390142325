// SPDX-License-Identifier: MIT
//
// The library's tracker with the rows of files for its input and output, one frame at a time.
#pragma once

#include <zel/libzel.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "track/options.h"
#include "track/track_row.h"

namespace zeltrack {

// What processes a frame: zel_tracker_process(), or what takes its place to watch it. It must leave the same output.
struct frame_process {
    void (*run)(void* context, void* tracker, float (*input)[6], float (*output)[8]);
    void* context;
};

extern const frame_process plain_process;

class frame_tracker {
public:
    frame_tracker(const track_options& options, double scale, int capacity, const frame_process& process);

    // The rows of one frame, valid until the next call.
    const std::vector<track_row>& process(int frame, const mot_row* first, const mot_row* last);

    double seconds() const { return seconds_; }

private:
    void put(const mot_row* first, const mot_row* last);
    void take(int frame);

    struct releaser {
        void operator()(void* handle) const { zel_tracker_release(handle); }
    };
    std::unique_ptr<void, releaser> handle_;
    frame_process process_;
    double scale_;
    std::size_t capacity_;
    std::unique_ptr<float[][6]> input_;
    std::unique_ptr<float[][8]> output_;
    std::vector<track_row> rows_;
    double seconds_ = 0;
};

}  // namespace zeltrack
