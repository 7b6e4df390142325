// SPDX-License-Identifier: MIT
#include "tracks_meta.h"

namespace zelgst {

static GType api_type()
{
    static const char* tags[] = {nullptr};
    static const GType type = gst_meta_api_type_register("ZelTracksMetaAPI", tags);
    return type;
}

static tracks_meta* own(GstMeta* meta)
{
    return reinterpret_cast<tracks_meta*>(meta);
}

static gboolean make_empty(GstMeta* meta, gpointer, GstBuffer*)
{
    own(meta)->tracks = nullptr;
    own(meta)->count = 0;
    return TRUE;
}

static void release(GstMeta* meta, GstBuffer*)
{
    g_free(own(meta)->tracks);
}

static gboolean copy(GstBuffer* into, GstMeta* meta, GstBuffer*, GQuark, gpointer)
{
    attach_tracks(into, own(meta)->tracks, own(meta)->count);
    return TRUE;
}

static const GstMetaInfo* meta_info()
{
    static const GstMetaInfo* info =
        gst_meta_register(api_type(), "ZelTracksMeta", sizeof(tracks_meta), make_empty, release, copy);
    return info;
}

void attach_tracks(GstBuffer* buffer, const zel_host_track_t* tracks, int count)
{
    GstMeta* meta = gst_buffer_get_meta(buffer, api_type());
    if (meta)
        g_free(own(meta)->tracks);
    else
        meta = gst_buffer_add_meta(buffer, meta_info(), nullptr);
    own(meta)->tracks =
        static_cast<zel_host_track_t*>(g_memdup2(tracks, static_cast<gsize>(count) * sizeof(zel_host_track_t)));
    own(meta)->count = count;
}

const tracks_meta* find_tracks(GstBuffer* buffer)
{
    return own(gst_buffer_get_meta(buffer, api_type()));
}

}  // namespace zelgst
