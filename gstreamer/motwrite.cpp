// SPDX-License-Identifier: MIT
#include "motwrite.h"

#include <errno.h>
#include <stdio.h>

#include <string>

#include "mot_boxes.h"
#include "plugin.h"
#include "tracks_meta.h"

GST_DEBUG_CATEGORY_STATIC(mot_write_debug);
#define GST_CAT_DEFAULT mot_write_debug

namespace {

struct mot_state {
    FILE* file = nullptr;
    int frame = 0;
    int frame_base = 1;
    std::string text;
};

}  // namespace

struct _ZelMotWrite {
    GstBaseTransform parent;
    mot_state* state;
};

G_DEFINE_TYPE(ZelMotWrite, zel_mot_write, GST_TYPE_BASE_TRANSFORM)

static mot_state& state_of(gpointer object)
{
    return *ZEL_MOT_WRITE(object)->state;
}

static gboolean start(GstBaseTransform* element)
{
    mot_state& it = state_of(element);
    const char* location = zelgst::location_of(element);
    if (!location)
        return FALSE;
    it.frame = 0;
    it.frame_base = zelgst::frame_base_of(element);
    it.file = fopen(location, "w");
    if (!it.file)
        GST_ELEMENT_ERROR(element, RESOURCE, OPEN_WRITE, ("%s: %s", location, g_strerror(errno)), (nullptr));
    return it.file != nullptr;
}

static void report_failure(GstBaseTransform* element)
{
    const char* wrong = g_strerror(errno);
    GST_ELEMENT_ERROR(element, RESOURCE, WRITE, ("%s: %s", zelgst::location_of(element), wrong), (nullptr));
}

static gboolean stop(GstBaseTransform* element)
{
    mot_state& it = state_of(element);
    if (it.file && fclose(it.file) != 0)
        report_failure(element);
    it.file = nullptr;
    return TRUE;
}

// At the end of a stream the file is complete, though the element may live on.
static gboolean sink_event(GstBaseTransform* element, GstEvent* event)
{
    mot_state& it = state_of(element);
    if (GST_EVENT_TYPE(event) == GST_EVENT_STREAM_START)
        it.frame = 0;
    else if (GST_EVENT_TYPE(event) == GST_EVENT_EOS && fflush(it.file) != 0)
        report_failure(element);
    return GST_BASE_TRANSFORM_CLASS(zel_mot_write_parent_class)->sink_event(element, event);
}

static GstFlowReturn write_frame(GstBaseTransform* element, GstBuffer* buffer)
{
    mot_state& it = state_of(element);
    ++it.frame;
    it.text.clear();
    const zelgst::tracks_meta* found = zelgst::find_tracks(buffer);
    for (int n = 0; found && n < found->count; ++n)
        zeltrack::append_row(it.text, zelgst::row_of(it.frame, found->tracks[n]), it.frame_base);
    if (fwrite(it.text.data(), 1, it.text.size(), it.file) == it.text.size())
        return GST_FLOW_OK;
    report_failure(element);
    return GST_FLOW_ERROR;
}

static void finalize(GObject* object)
{
    delete ZEL_MOT_WRITE(object)->state;
    G_OBJECT_CLASS(zel_mot_write_parent_class)->finalize(object);
}

static void zel_mot_write_init(ZelMotWrite* self)
{
    self->state = new mot_state;
    zelgst::pass_through(GST_BASE_TRANSFORM(self));
}

static void zel_mot_write_class_init(ZelMotWriteClass* self)
{
    GST_DEBUG_CATEGORY_INIT(mot_write_debug, "motwrite", 0, "tracks to a MOTChallenge file");
    auto* object_class = G_OBJECT_CLASS(self);
    object_class->finalize = finalize;
    zelgst::install_file_properties(object_class,
                                    "File to write: lines of frame,id,left,top,width,height,conf,-1,-1,-1");

    auto* element_class = GST_ELEMENT_CLASS(self);
    gst_element_class_set_static_metadata(element_class, "MOTChallenge writer", "Filter/Analyzer/Video",
                                          "Writes the tracks attached to the frames to a file", "The libzel authors");
    zelgst::add_video_pads(element_class);

    auto* transform_class = GST_BASE_TRANSFORM_CLASS(self);
    transform_class->start = start;
    transform_class->stop = stop;
    transform_class->sink_event = sink_event;
    transform_class->transform_ip = write_frame;
    transform_class->transform_ip_on_passthrough = TRUE;
}
