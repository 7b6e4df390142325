// SPDX-License-Identifier: MIT
//
// The plugin "zel".
#include "plugin.h"

#include "motdetections.h"
#include "motwrite.h"
#include "tracker.h"

#include <zel/libzel.h>

namespace zelgst {

void add_video_pads(GstElementClass* element_class)
{
    GstCaps* caps = gst_caps_from_string("video/x-raw(ANY)");
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
}

// Both properties are kept as GLib keeps what is attached to an object, which also frees it.
static void set_property(GObject* object, guint, const GValue* value, GParamSpec* spec)
{
    if (G_VALUE_HOLDS_INT(value))
        g_object_set_data(object, spec->name, GINT_TO_POINTER(g_value_get_int(value)));
    else
        g_object_set_data_full(object, spec->name, g_value_dup_string(value), g_free);
}

static void get_property(GObject* object, guint, GValue* value, GParamSpec* spec)
{
    gpointer data = g_object_get_data(object, spec->name);
    if (G_VALUE_HOLDS_INT(value))
        g_value_set_int(value, GPOINTER_TO_INT(data));
    else
        g_value_set_string(value, static_cast<const char*>(data));
}

void install_file_properties(GObjectClass* object_class, const char* blurb)
{
    object_class->set_property = set_property;
    object_class->get_property = get_property;
    const auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_READY);
    g_object_class_install_property(object_class, 1, g_param_spec_string("location", "File", blurb, nullptr, flags));
    const auto from_birth = static_cast<GParamFlags>(flags | G_PARAM_CONSTRUCT);
    g_object_class_install_property(
        object_class, 2,
        g_param_spec_int("frame-base", "Frame base", "Number of the first frame in the file", 0, 1, 1, from_birth));
}

int frame_base_of(GstBaseTransform* element)
{
    return GPOINTER_TO_INT(g_object_get_data(G_OBJECT(element), "frame-base"));
}

const char* location_of(GstBaseTransform* element)
{
    const auto* location = static_cast<const char*>(g_object_get_data(G_OBJECT(element), "location"));
    if (location && *location)
        return location;
    GST_ELEMENT_ERROR(element, RESOURCE, NOT_FOUND, ("The property \"location\" is not set."), (nullptr));
    return nullptr;
}

GstFlowReturn make_metas_writable(GstBaseTransform*, GstBuffer* input, GstBuffer** output)
{
    *output = gst_buffer_is_writable(input) ? input : gst_buffer_copy(input);
    return GST_FLOW_OK;
}

void pass_through(GstBaseTransform* element)
{
    gst_base_transform_set_in_place(element, TRUE);
    gst_base_transform_set_passthrough(element, TRUE);
}

}  // namespace zelgst

static gboolean register_elements(GstPlugin* plugin)
{
    return gst_element_register(plugin, "zeltracker", GST_RANK_NONE, ZEL_TYPE_TRACKER) &&
           gst_element_register(plugin, "motdetections", GST_RANK_NONE, ZEL_TYPE_MOT_DETECTIONS) &&
           gst_element_register(plugin, "motwrite", GST_RANK_NONE, ZEL_TYPE_MOT_WRITE);
}

#define PACKAGE "libzel"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, zel, "Multi-object tracking", register_elements,
                  ZEL_VERSION_STRING, "MIT/X11", "libzel", "libzel")
