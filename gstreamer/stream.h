// SPDX-License-Identifier: MIT
//
// One stream of frames: the kit's handle as an element needs it. The handle is made with the first frame, begins anew
// where the stream breaks off, and is freed at its end. Parameters and status may be asked for by any thread.
#pragma once

#include <zel/host.h>

#include <functional>
#include <mutex>
#include <vector>

namespace zelgst {

struct tracked_frame {
    const zel_host_track_t* tracks;
    int count;
    bool tracked;         // false: there is no memory for a handle
    const char* refused;  // a parameter that has to wait for the next stream; null: none
};

class stream {
public:
    stream();
    ~stream();
    stream(const stream&) = delete;
    stream& operator=(const stream&) = delete;

    zel_host_params_t wanted() const;
    // False, and nothing is changed: a value would be out of its range.
    bool change(const std::function<void(zel_host_params_t& params)>& make);
    zel_host_status_t status() const;  // after the end of a stream, what it was

    // What follows comes from the streaming thread.
    void break_off(bool keep_identifiers);
    void end();
    tracked_frame track(const std::vector<zel_host_detection_t>& detections);

private:
    bool create();
    const char* pass_on_changes();
    void release();

    mutable std::mutex mutex_;
    zel_host_params_t wanted_;
    zel_host_params_t used_ = {};
    bool changed_ = false;
    zel_host_t* host_ = nullptr;
    zel_host_status_t status_ = {};  // while there is no handle
    std::vector<zel_host_track_t> tracks_;
};

}  // namespace zelgst
