// SPDX-License-Identifier: MIT
#include "relations.h"

#include <algorithm>
#include <cmath>

namespace zelgst {

static zel_host_detection_t detection_of(const GstAnalyticsODMtd* found)
{
    gint x = 0;
    gint y = 0;
    gint width = 0;
    gint height = 0;
    zel_host_detection_t detection = {};
    gst_analytics_od_mtd_get_location(found, &x, &y, &width, &height, &detection.confidence);
    detection.x1 = static_cast<float>(x);
    detection.y1 = static_cast<float>(y);
    detection.x2 = static_cast<float>(static_cast<double>(x) + width);
    detection.y2 = static_cast<float>(static_cast<double>(y) + height);
    detection.class_id = static_cast<int>(gst_analytics_od_mtd_get_obj_type(found));
    return detection;
}

void relation_list::read(GstBuffer* buffer)
{
    ++frame_;
    buffer_ = buffer;
    ids_.clear();
    detections_.clear();
    meta_ = gst_buffer_get_analytics_relation_meta(buffer);
    gpointer state = nullptr;
    GstAnalyticsODMtd found;
    while (meta_ && gst_analytics_relation_meta_iterate(meta_, &state, gst_analytics_od_mtd_get_mtd_type(), &found)) {
        ids_.push_back(found.id);
        detections_.push_back(detection_of(&found));
    }
}

void relation_list::add_tracking(guint detection, const zel_host_track_t& track)
{
    const GstClockTime now = GST_BUFFER_PTS(buffer_);
    life& it = lives_.insert({track.id, {now, now, frame_}}).first->second;
    if (track.detection >= 0)
        it.last = now;
    it.frame = frame_;
    GstAnalyticsTrackingMtd tracking;
    if (!gst_analytics_relation_meta_add_tracking_mtd(meta_, static_cast<guint64>(track.id), it.first, &tracking))
        return;
    gst_analytics_tracking_mtd_update_last_seen(&tracking, it.last);
    gst_analytics_relation_meta_set_relation(meta_, GST_ANALYTICS_REL_TYPE_RELATE_TO, detection, tracking.id);
}

static int to_pixel(float value)
{
    return static_cast<int>(std::lround(std::clamp(static_cast<double>(value), -1e9, 1e9)));
}

void relation_list::add_coasted(const zel_host_track_t& track)
{
    if (!meta_)
        meta_ = gst_buffer_add_analytics_relation_meta(buffer_);
    const int left = to_pixel(track.x1);
    const int top = to_pixel(track.y1);
    GstAnalyticsODMtd made;
    if (gst_analytics_relation_meta_add_od_mtd(meta_, static_cast<GQuark>(track.class_id), left, top,
                                               to_pixel(track.x2) - left, to_pixel(track.y2) - top, track.confidence,
                                               &made))
        add_tracking(made.id, track);
}

void relation_list::write(const zel_host_track_t* tracks, int count, bool)
{
    for (int n = 0; n < count; ++n) {
        if (tracks[n].detection < 0)
            add_coasted(tracks[n]);
        else
            add_tracking(ids_[static_cast<std::size_t>(tracks[n].detection)], tracks[n]);
    }
}

void relation_list::forget_lost(int removal)
{
    for (auto at = lives_.begin(); at != lives_.end();)
        at = frame_ - at->second.frame > static_cast<guint64>(removal) ? lives_.erase(at) : std::next(at);
}

}  // namespace zelgst
