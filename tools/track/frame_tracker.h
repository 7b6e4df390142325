// SPDX-License-Identifier: MIT
//
// The host kit with the rows of files for its input and output, one frame at a time.
#pragma once

#include <zel/host.h>

#include <memory>
#include <vector>

#include "host/_host.h"
#include "track/options.h"
#include "track/track_row.h"

namespace zeltrack {

// What processes a frame: zel_tracker_process(), or what takes its place to watch it. It must leave the same output.
struct frame_process {
    zel_host_process_t run;
    void* context;
};

extern const frame_process plain_process;

class frame_tracker {
public:
    frame_tracker(const track_options& options, double fps, int capacity, const frame_process& process);

    // The rows of one frame, valid until the next call.
    const std::vector<track_row>& process(int frame, const mot_row* first, const mot_row* last);

    // How the tracker's rows of the latest frame came about; valid until the next one.
    zel_host_frame_t latest() const;

    zel_host_status_t status() const;
    double seconds() const { return seconds_; }  // within the tracker

private:
    static void run_timed(void* context, void* tracker, float (*input)[6], float (*output)[8]);
    void put(const mot_row* first, const mot_row* last);
    void take(int frame, int count);

    std::unique_ptr<zel_host_t, void (*)(zel_host_t*)> host_;
    frame_process process_;
    std::vector<zel_host_detection_t> detections_;
    std::vector<zel_host_track_t> tracks_;
    std::vector<track_row> rows_;
    double seconds_ = 0;
};

}  // namespace zeltrack
