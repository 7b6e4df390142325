// SPDX-License-Identifier: MIT
#include "stream.h"

namespace zelgst {

using lock = std::lock_guard<std::mutex>;

stream::stream()
{
    zel_host_params_init(&wanted_, sizeof(wanted_));
    status_.min_confidence_reason = ZEL_HOST_WAITING;
    status_.scale_reason = ZEL_HOST_WAITING;
    status_.steady_reason = ZEL_HOST_WAITING;
    status_.removal_reason = ZEL_HOST_WAITING;
}

stream::~stream()
{
    release();
}

zel_host_params_t stream::wanted() const
{
    const lock held(mutex_);
    return wanted_;
}

bool stream::change(const std::function<void(zel_host_params_t& params)>& make)
{
    const lock held(mutex_);
    zel_host_params_t changed = wanted_;
    make(changed);
    if (zel_host_params_check(&changed))
        return false;
    wanted_ = changed;
    changed_ = true;
    return true;
}

zel_host_status_t stream::status() const
{
    const lock held(mutex_);
    zel_host_status_t status = status_;
    if (host_)
        zel_host_get_status(host_, &status, sizeof(status));
    return status;
}

void stream::release()
{
    if (host_)
        zel_host_get_status(host_, &status_, sizeof(status_));
    zel_host_release(host_);
    host_ = nullptr;
}

void stream::break_off(bool keep_identifiers)
{
    const lock held(mutex_);
    if (!host_)
        return;
    changed_ = true;  // what was refused in the old stream may be right in the new one
    if (zel_host_reset(host_, keep_identifiers ? 1 : 0) != 0)
        release();
}

void stream::end()
{
    const lock held(mutex_);
    release();
}

bool stream::create()
{
    host_ = zel_host_create(&wanted_);
    used_ = wanted_;
    changed_ = false;
    tracks_.resize(static_cast<std::size_t>(used_.max_objects));
    return host_ != nullptr;
}

// All that can be changed now is; what cannot stays for later.
const char* stream::pass_on_changes()
{
    changed_ = false;
    zel_host_params_t possible = wanted_;
    possible.max_objects = used_.max_objects;
    const char* refused = wanted_.max_objects != used_.max_objects ? "max-objects" : nullptr;
    if (zel_host_set_params(host_, &possible)) {
        refused = "scale";
        possible.scale = used_.scale;
        zel_host_set_params(host_, &possible);
    }
    used_ = possible;
    return refused;
}

tracked_frame stream::track(const std::vector<zel_host_detection_t>& detections)
{
    const lock held(mutex_);
    tracked_frame frame = {nullptr, 0, false, nullptr};
    if (!host_ && !create())
        return frame;
    frame.tracked = true;
    if (changed_)
        frame.refused = pass_on_changes();
    frame.tracks = tracks_.data();
    frame.count = zel_host_process(host_, detections.data(), static_cast<int>(detections.size()), tracks_.data(),
                                   static_cast<int>(tracks_.size()));
    return frame;
}

}  // namespace zelgst
