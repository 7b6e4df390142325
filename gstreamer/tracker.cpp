// SPDX-License-Identifier: MIT
//
// The element's two jobs: to know where one stream ends and the next begins, and to pass each frame's detections to the
// kit and its tracks back. transform_frame() is the summary of the second.
#include "tracker.h"

#include "plugin.h"
#include "regions.h"
#include "stream.h"
#include "tracker_properties.h"
#include "tracks_meta.h"
#ifdef ZEL_GST_ANALYTICS
#include "relations.h"
#endif

GST_DEBUG_CATEGORY_STATIC(zel_tracker_debug);
#define GST_CAT_DEFAULT zel_tracker_debug

namespace {

struct tracker_state {
    zelgst::stream kit;
    zelgst::tracker_settings settings;
    zelgst::region_list regions;
#ifdef ZEL_GST_ANALYTICS
    zelgst::relation_list relations;
    guint64 frames = 0;
    bool analytics = false;  // so came the latest detections, and so go tracks without one
#endif
    zelgst::image_size size = {0, 0};
    bool fresh = true;  // no frame since the stream began
};

}  // namespace

struct _ZelTracker {
    GstBaseTransform parent;
    tracker_state* state;
};

G_DEFINE_TYPE(ZelTracker, zel_tracker, GST_TYPE_BASE_TRANSFORM)

static tracker_state& state_of(gpointer object)
{
    return *ZEL_TRACKER(object)->state;
}

// --- where a stream breaks off ---------------------------------------------------------------------------------------

static void begin_anew(tracker_state& it)
{
    it.fresh = true;
#ifdef ZEL_GST_ANALYTICS
    it.relations.forget_all();
#endif
}

static void break_off(gpointer element, const char* reason)
{
    tracker_state& it = state_of(element);
    if (it.fresh)
        return;
    GST_INFO_OBJECT(element, "a new stream: %s", reason);
    it.kit.break_off(it.settings.keep_identifiers);
    begin_anew(it);
}

static void end(gpointer element)
{
    tracker_state& it = state_of(element);
    it.kit.end();
    begin_anew(it);
}

static gboolean sink_event(GstBaseTransform* element, GstEvent* event)
{
    if (GST_EVENT_TYPE(event) == GST_EVENT_STREAM_START)
        break_off(element, "its start");
    else if (GST_EVENT_TYPE(event) == GST_EVENT_FLUSH_STOP)
        break_off(element, "a flush");
    else if (GST_EVENT_TYPE(event) == GST_EVENT_EOS)
        end(element);
    return GST_BASE_TRANSFORM_CLASS(zel_tracker_parent_class)->sink_event(element, event);
}

static double frame_rate_of(const GstStructure* caps)
{
    int frames = 0;
    int seconds = 1;
    gst_structure_get_fraction(caps, "framerate", &frames, &seconds);
    return frames > 0 && seconds > 0 ? static_cast<double>(frames) / seconds : 0;
}

// Read from the structure, since GstVideoInfo does not know all formats of all kinds of memory.
static gboolean set_caps(GstBaseTransform* element, GstCaps* caps, GstCaps*)
{
    tracker_state& it = state_of(element);
    const GstStructure* structure = gst_caps_get_structure(caps, 0);
    zelgst::image_size size = {0, 0};
    gst_structure_get_int(structure, "width", &size.width);
    gst_structure_get_int(structure, "height", &size.height);
    if (size.width != it.size.width || size.height != it.size.height)
        break_off(element, "another size");
    it.size = size;
    const double frame_rate = frame_rate_of(structure);
    if (!it.kit.change([frame_rate](zel_host_params_t& params) { params.frame_rate = frame_rate; }))
        GST_WARNING_OBJECT(element, "frame rate %g is not used", frame_rate);
    return TRUE;
}

static gboolean stop(GstBaseTransform* element)
{
    end(element);
    state_of(element).size = {0, 0};
    return TRUE;
}

// --- a frame ---------------------------------------------------------------------------------------------------------

template <typename List>
static GstFlowReturn track(GstBaseTransform* element, GstBuffer* buffer, List& list)
{
    tracker_state& it = state_of(element);
    const zelgst::tracked_frame frame = it.kit.track(list.detections());
    if (!frame.tracked) {
        GST_ELEMENT_ERROR(element, RESOURCE, NO_SPACE_LEFT, ("No memory for a tracker."), (nullptr));
        return GST_FLOW_ERROR;
    }
    if (frame.refused)
        GST_ELEMENT_WARNING(element, RESOURCE, SETTINGS, ("%s cannot be changed now.", frame.refused), (nullptr));
    zelgst::attach_tracks(buffer, frame.tracks, frame.count);
    list.write(frame.tracks, frame.count, it.settings.boxes);
    if (it.settings.drop_unmatched)
        list.drop_unmatched();
    GST_LOG_OBJECT(element, "%u detections, %d tracks", static_cast<unsigned>(list.detections().size()), frame.count);
    return GST_FLOW_OK;
}

static GstFlowReturn transform_frame(GstBaseTransform* element, GstBuffer* buffer)
{
    tracker_state& it = state_of(element);
    if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DISCONT) && !it.settings.ignore_discont)
        break_off(element, "a discontinuity");
    it.fresh = false;
    it.regions.read(buffer, it.size);
#ifdef ZEL_GST_ANALYTICS
    if (++it.frames % 1024 == 0)
        it.relations.forget_lost(it.kit.status().removal);
    it.relations.read(buffer);
    if (!it.regions.detections().empty())
        it.analytics = false;
    else if (!it.relations.detections().empty())
        it.analytics = true;
    if (it.analytics)
        return track(element, buffer, it.relations);
#endif
    return track(element, buffer, it.regions);
}

// --- the object ------------------------------------------------------------------------------------------------------

static void set_property(GObject* object, guint id, const GValue* value, GParamSpec* spec)
{
    tracker_state& it = state_of(object);
    if (!zelgst::set_property(it.kit, it.settings, id, value))
        g_warning("%s: the value of \"%s\" is out of its range", GST_OBJECT_NAME(object), spec->name);
}

static void get_property(GObject* object, guint id, GValue* value, GParamSpec*)
{
    const tracker_state& it = state_of(object);
    zelgst::get_property(it.kit, it.settings, id, value);
}

static void finalize(GObject* object)
{
    delete ZEL_TRACKER(object)->state;
    G_OBJECT_CLASS(zel_tracker_parent_class)->finalize(object);
}

static void zel_tracker_init(ZelTracker* self)
{
    self->state = new tracker_state;
    zelgst::pass_through(GST_BASE_TRANSFORM(self));
}

static void zel_tracker_class_init(ZelTrackerClass* self)
{
    GST_DEBUG_CATEGORY_INIT(zel_tracker_debug, "zeltracker", 0, "multi-object tracker");
    auto* object_class = G_OBJECT_CLASS(self);
    object_class->set_property = set_property;
    object_class->get_property = get_property;
    object_class->finalize = finalize;
    zelgst::install_properties(object_class);

    auto* element_class = GST_ELEMENT_CLASS(self);
    gst_element_class_set_static_metadata(element_class, "Multi-object tracker", "Filter/Analyzer/Video",
                                          "Numbers the detections attached to each frame: the same object, the same "
                                          "identifier",
                                          "The libzel authors");
    zelgst::add_video_pads(element_class);

    auto* transform_class = GST_BASE_TRANSFORM_CLASS(self);
    transform_class->sink_event = sink_event;
    transform_class->set_caps = set_caps;
    transform_class->stop = stop;
    transform_class->prepare_output_buffer = zelgst::make_metas_writable;
    transform_class->transform_ip = transform_frame;
    transform_class->transform_ip_on_passthrough = TRUE;
}
