// SPDX-License-Identifier: MIT
//
// In double, so that the conversions add as little as possible to what floats round.
#include "mot_boxes.h"

namespace zelgst {

static double wide(float value)
{
    return static_cast<double>(value);
}

zel_host_detection_t detection_of(const zeltrack::mot_row& row)
{
    zel_host_detection_t detection = {};
    detection.x1 = row.left;
    detection.y1 = row.top;
    detection.x2 = static_cast<float>(wide(row.left) + wide(row.width));
    detection.y2 = static_cast<float>(wide(row.top) + wide(row.height));
    detection.confidence = row.conf;
    return detection;
}

zeltrack::mot_row row_of(int frame, const zel_host_track_t& track)
{
    zeltrack::mot_row row;
    row.frame = frame;
    row.id = track.id;
    row.left = track.x1;
    row.top = track.y1;
    row.width = static_cast<float>(wide(track.x2) - wide(track.x1));
    row.height = static_cast<float>(wide(track.y2) - wide(track.y1));
    row.conf = track.confidence;
    return row;
}

}  // namespace zelgst
