// SPDX-License-Identifier: MIT
//
// Detections and tracks as analytics, which GStreamer has since 1.24: for each object detection that was matched a
// tracking, related to it.
#pragma once

#include <gst/analytics/analytics.h>
#include <zel/host.h>

#include <unordered_map>
#include <vector>

namespace zelgst {

class relation_list {
public:
    // Takes over the buffer's object detections; detections() are theirs, in the same order.
    void read(GstBuffer* buffer);
    const std::vector<zel_host_detection_t>& detections() const { return detections_; }

    // The boxes of analytics are whole pixels: for the tracks' own there is no place.
    void write(const zel_host_track_t* tracks, int count, bool boxes);

    // What is once attached as analytics cannot be taken off again.
    void drop_unmatched() {}

    // Tracks are told with the time when they were first seen: for these, that is not needed any more.
    void forget_lost(int removal);
    void forget_all() { lives_.clear(); }

private:
    struct life {
        GstClockTime first;
        GstClockTime last;
        guint64 frame;
    };

    void add_tracking(guint detection, const zel_host_track_t& track);
    void add_coasted(const zel_host_track_t& track);

    GstBuffer* buffer_ = nullptr;
    GstAnalyticsRelationMeta* meta_ = nullptr;
    std::vector<guint> ids_;
    std::vector<zel_host_detection_t> detections_;
    std::unordered_map<int, life> lives_;  // by identifier
    guint64 frame_ = 0;
};

}  // namespace zelgst
