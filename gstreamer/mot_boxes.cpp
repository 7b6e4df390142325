// SPDX-License-Identifier: MIT
#include "mot_boxes.h"

namespace zelgst {

zel_host_detection_t detection_of(const zeltrack::mot_row& row)
{
    zel_host_detection_t detection = {};
    detection.x1 = row.left;
    detection.y1 = row.top;
    detection.x2 = row.left + row.width;
    detection.y2 = row.top + row.height;
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
    row.width = track.x2 - track.x1;
    row.height = track.y2 - track.y1;
    row.conf = track.confidence;
    return row;
}

}  // namespace zelgst
