// SPDX-License-Identifier: MIT
#include "motdetections.h"

#include <exception>
#include <vector>

#include "mot/load.h"
#include "mot_boxes.h"
#include "plugin.h"
#include "regions.h"

GST_DEBUG_CATEGORY_STATIC(mot_detections_debug);
#define GST_CAT_DEFAULT mot_detections_debug

namespace {

struct mot_state {
    std::vector<zeltrack::mot_row> rows;  // by frame
    std::size_t next = 0;
    int frame = 0;
    zelgst::image_size size = {0, 0};
};

}  // namespace

struct _ZelMotDetections {
    GstBaseTransform parent;
    mot_state* state;
};

G_DEFINE_TYPE(ZelMotDetections, zel_mot_detections, GST_TYPE_BASE_TRANSFORM)

static mot_state& state_of(gpointer object)
{
    return *ZEL_MOT_DETECTIONS(object)->state;
}

static void rewind_rows(mot_state& it)
{
    it.next = 0;
    it.frame = 0;
}

static gboolean start(GstBaseTransform* element)
{
    mot_state& it = state_of(element);
    const char* location = zelgst::location_of(element);
    if (!location)
        return FALSE;
    try {
        zeltrack::mot_layout layout;
        layout.frame_base = zelgst::frame_base_of(element);
        it.rows = zeltrack::load_detections(location, layout);
    } catch (const std::exception& wrong) {
        GST_ELEMENT_ERROR(element, RESOURCE, READ, ("%s", wrong.what()), (nullptr));
        return FALSE;
    }
    rewind_rows(it);
    return TRUE;
}

static gboolean stop(GstBaseTransform* element)
{
    state_of(element).rows = {};
    return TRUE;
}

static gboolean sink_event(GstBaseTransform* element, GstEvent* event)
{
    if (GST_EVENT_TYPE(event) == GST_EVENT_STREAM_START)
        rewind_rows(state_of(element));
    return GST_BASE_TRANSFORM_CLASS(zel_mot_detections_parent_class)->sink_event(element, event);
}

static gboolean set_caps(GstBaseTransform* element, GstCaps* caps, GstCaps*)
{
    zelgst::image_size& size = state_of(element).size;
    const GstStructure* structure = gst_caps_get_structure(caps, 0);
    return gst_structure_get_int(structure, "width", &size.width) &&
           gst_structure_get_int(structure, "height", &size.height);
}

static GstFlowReturn attach(GstBaseTransform* element, GstBuffer* buffer)
{
    mot_state& it = state_of(element);
    ++it.frame;
    for (; it.next < it.rows.size() && it.rows[it.next].frame <= it.frame; ++it.next)
        zelgst::attach_detection(buffer, it.size, zelgst::detection_of(it.rows[it.next]), "object");
    return GST_FLOW_OK;
}

static void finalize(GObject* object)
{
    delete ZEL_MOT_DETECTIONS(object)->state;
    G_OBJECT_CLASS(zel_mot_detections_parent_class)->finalize(object);
}

static void zel_mot_detections_init(ZelMotDetections* self)
{
    self->state = new mot_state;
    zelgst::pass_through(GST_BASE_TRANSFORM(self));
}

static void zel_mot_detections_class_init(ZelMotDetectionsClass* self)
{
    GST_DEBUG_CATEGORY_INIT(mot_detections_debug, "motdetections", 0, "detections of a MOTChallenge file");
    auto* object_class = G_OBJECT_CLASS(self);
    object_class->finalize = finalize;
    zelgst::install_file_properties(object_class, "MOTChallenge file: lines of frame,id,left,top,width,height,conf");

    auto* element_class = GST_ELEMENT_CLASS(self);
    gst_element_class_set_static_metadata(element_class, "MOTChallenge detections", "Filter/Analyzer/Video",
                                          "Attaches the boxes of a file to the frames, in place of a detector",
                                          "The libzel authors");
    zelgst::add_video_pads(element_class);

    auto* transform_class = GST_BASE_TRANSFORM_CLASS(self);
    transform_class->start = start;
    transform_class->stop = stop;
    transform_class->sink_event = sink_event;
    transform_class->set_caps = set_caps;
    transform_class->prepare_output_buffer = zelgst::make_metas_writable;
    transform_class->transform_ip = attach;
    transform_class->transform_ip_on_passthrough = TRUE;
}
