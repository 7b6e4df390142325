// SPDX-License-Identifier: MIT
//
// The host kit with any parameters and any boxes, changed and set back in between. Whatever goes in, what comes out
// must keep to the header.
#include <fuzzer/FuzzedDataProvider.h>
#include <zel/host.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "require.h"

namespace {

// Mostly small whole numbers, which overlap and tie.
float any_float(FuzzedDataProvider& in)
{
    const auto kind = in.ConsumeIntegral<std::uint8_t>();
    if (kind < 0xe0)
        return static_cast<float>(kind % 64);
    const auto bits = in.ConsumeIntegral<std::uint32_t>();
    float value;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

zel_host_params_t any_params(FuzzedDataProvider& in)
{
    zel_host_params_t params;
    zel_host_params_init(&params, sizeof(params));
    if (in.ConsumeBool())
        params.scale = static_cast<double>(any_float(in));
    if (in.ConsumeBool())
        params.min_confidence = any_float(in);
    params.frame_rate = static_cast<double>(any_float(in));
    params.iou = static_cast<float>(in.ConsumeIntegralInRange(-1, 11)) / 10;
    params.euc = static_cast<float>(in.ConsumeIntegralInRange(0, 2)) / 2;
    params.stable = in.ConsumeIntegralInRange(0, 4);
    params.removal = in.ConsumeIntegralInRange(-1, 8);
    params.steady = in.ConsumeIntegralInRange(-1, 1);
    params.ignore_class = in.ConsumeBool();
    params.coasted = in.ConsumeBool();
    params.max_objects = in.ConsumeIntegralInRange(0, 12);
    return params;
}

std::vector<zel_host_detection_t> any_frame(FuzzedDataProvider& in)
{
    std::vector<zel_host_detection_t> found(in.ConsumeIntegralInRange<std::size_t>(0, 20));
    for (zel_host_detection_t& it : found) {
        it.x1 = any_float(in);
        it.y1 = any_float(in);
        const bool plain = in.ConsumeBool();
        it.x2 = plain ? it.x1 + 8 : any_float(in);
        it.y2 = plain ? it.y1 + 16 : any_float(in);
        it.confidence = any_float(in);
        it.class_id = plain ? 0 : in.ConsumeIntegral<int>();
    }
    return found;
}

void require_tracks(const zel_host_track_t* tracks, int count, int detections, bool coasted)
{
    for (int n = 0; n < count; ++n) {
        const zel_host_track_t& it = tracks[n];
        require(it.id >= 1 && it.id <= 1048574, "an identifier within its range");
        require(it.detection < detections && (it.detection >= 0 || coasted), "a detection of the frame, or coasting");
        require((it.misses == 0) == (it.detection >= 0) && it.hits >= 1, "hits and misses go with the detection");
        for (int before = 0; before < n; ++before) {
            require(tracks[before].id != it.id, "an identifier once");
            require(it.detection < 0 || tracks[before].detection != it.detection, "a detection once");
        }
    }
}

void require_status(const zel_host_t* host, std::uint64_t frames, std::uint64_t detections)
{
    zel_host_status_t status;
    zel_host_get_status(host, &status, sizeof(status));
    require(status.frames == frames && status.detections == detections, "all that came in is counted");
    require(status.invalid + status.weak + status.cut <= detections, "nothing is dropped twice");
    require(status.scale >= 0 && std::isfinite(status.offset_x) && std::isfinite(status.offset_y),
            "choices are finite");
    require(status.unstarted == 0, "memory was there");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider in(data, size);
    zel_host_params_t params = any_params(in);
    const bool refused = zel_host_params_check(&params) != nullptr;
    zel_host_t* host = zel_host_create(&params);
    require((host == nullptr) == refused, "refused exactly when a field is named");
    std::uint64_t frames = 0;
    std::uint64_t detections = 0;
    while (host && in.remaining_bytes() > 0) {
        const auto step = in.ConsumeIntegralInRange(0, 15);
        if (step == 0) {
            const zel_host_params_t other = any_params(in);
            if (!zel_host_set_params(host, &other))
                params = other;
        } else if (step == 1) {
            require(zel_host_reset(host, in.ConsumeBool()) == 0, "memory was there");
            frames = detections = 0;
        }
        const auto found = any_frame(in);
        zel_host_track_t tracks[16];
        const int count = zel_host_process(host, found.data(), static_cast<int>(found.size()), tracks, 16);
        require(count >= 0 && count <= params.max_objects, "no more tracks than the capacity");
        require_tracks(tracks, count, static_cast<int>(found.size()), params.coasted != 0);
        require_status(host, ++frames, detections += found.size());
    }
    zel_host_release(host);
    return 0;
}
