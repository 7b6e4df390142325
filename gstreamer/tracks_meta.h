// SPDX-License-Identifier: MIT
//
// The tracks of a frame as the kit gave them, in one block on the buffer: what motwrite writes. The structures of the
// regions, which others read, would cost far more if they held all of it.
#pragma once

#include <gst/gst.h>
#include <zel/host.h>

namespace zelgst {

struct tracks_meta {
    GstMeta meta;
    zel_host_track_t* tracks;
    int count;
};

// In place of those that the buffer has.
void attach_tracks(GstBuffer* buffer, const zel_host_track_t* tracks, int count);

// Null if there are none.
const tracks_meta* find_tracks(GstBuffer* buffer);

}  // namespace zelgst
