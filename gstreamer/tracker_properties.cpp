// SPDX-License-Identifier: MIT
#include "tracker_properties.h"

#include <float.h>

namespace zelgst {

namespace {

enum class kind { number, boolean, steady };

// One row for each parameter of the kit; of the three members the one of its type is not null.
struct parameter {
    const char* name;
    const char* nick;
    const char* blurb;
    float zel_host_params_t::*as_float;
    double zel_host_params_t::*as_double;
    int zel_host_params_t::*as_int;
    kind type;
    double low;
    double high;
    bool while_playing;
};

using params = zel_host_params_t;

constexpr parameter parameters[] = {
    {"iou", "Overlap", "Intersection over union that a match must exceed", &params::iou, nullptr, nullptr, kind::number,
     0, 1, true},
    {"euc", "Distance", "Squared distance in the tracker's units up to which boxes match without overlap", &params::euc,
     nullptr, nullptr, kind::number, 0, 1, true},
    {"stable", "Matches until reported", "Matched frames at which a track is reported", nullptr, nullptr,
     &params::stable, kind::number, 1, G_MAXINT, true},
    {"removal", "Frames missed",
     "Frames in a row that a track may be missed. -1: half a second at the frame rate of the caps, 10 frames where "
     "they "
     "have none",
     nullptr, nullptr, &params::removal, kind::number, -1, G_MAXINT, true},
    {"scale", "Scale",
     "Units of the tracker per pixel, from 1e-06; a match is less than 10 units away. -1: from the boxes of the first "
     "frame. A change waits for the next stream",
     nullptr, &params::scale, nullptr, kind::number, -1, 1e6, false},
    {"min-confidence", "Least confidence",
     "Detections of a lower confidence are not tracked. The default, the largest float: found automatically",
     &params::min_confidence, nullptr, nullptr, kind::number, -FLT_MAX, FLT_MAX, true},
    {"steady", "Steady the camera", "Take the camera's own motion out before tracking and put it back afterwards",
     nullptr, nullptr, &params::steady, kind::steady, -1, 1, true},
    {"max-objects", "Capacity",
     "Detections tracked per frame, and tracks alive. A change waits until the element is started anew", nullptr,
     nullptr, &params::max_objects, kind::number, 1, 1000000, false},
    {"ignore-class", "Ignore classes", "Detections match tracks of all classes", nullptr, nullptr,
     &params::ignore_class, kind::boolean, 0, 1, true},
    {"coasted", "Coasted tracks", "Attach tracks without a detection, too, at their last place, for up to two frames",
     nullptr, nullptr, &params::coasted, kind::boolean, 0, 1, true},
};

// Identifiers of properties count from 1.
constexpr guint parameter_count = sizeof(parameters) / sizeof(parameters[0]);
constexpr guint prop_stats = parameter_count + 1;
constexpr guint prop_setting = parameter_count + 2;  // the first of the settings

struct setting {
    const char* name;
    const char* nick;
    const char* blurb;
    std::atomic<bool> tracker_settings::*value;
};

constexpr setting settings_of_element[] = {
    {"boxes", "Tracks' boxes", "Add the track's own box, which is smoothed, to \"zel-track\"",
     &tracker_settings::boxes},
    {"drop-unmatched", "Drop unmatched", "Remove the regions of interest that have no track",
     &tracker_settings::drop_unmatched},
    {"ignore-discont", "Ignore discontinuities",
     "Go on tracking where a buffer is marked as a discontinuity, as it is after frames that a leaky queue dropped",
     &tracker_settings::ignore_discont},
    {"keep-identifiers", "Keep identifiers",
     "Go on after the last identifier where a stream breaks off: at a flush, a discontinuity, a new size, a new "
     "stream. "
     "Otherwise begin at 1 again",
     &tracker_settings::keep_identifiers},
};

}  // namespace

static GType steady_type()
{
    static const GEnumValue values[] = {{ZEL_HOST_AUTO, "While the camera moves", "auto"},
                                        {0, "Never", "off"},
                                        {1, "Always", "on"},
                                        {0, nullptr, nullptr}};
    static const GType type = g_enum_register_static("ZelTrackerSteady", values);
    return type;
}

static GParamFlags flags_of(int more)
{
    return static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | more);
}

static GParamSpec* spec_of(const parameter& p, const params& usual)
{
    const GParamFlags flags = flags_of(p.while_playing ? GST_PARAM_MUTABLE_PLAYING : GST_PARAM_MUTABLE_READY);
    if (p.as_float)
        return g_param_spec_float(p.name, p.nick, p.blurb, static_cast<float>(p.low), static_cast<float>(p.high),
                                  usual.*p.as_float, flags);
    if (p.as_double)
        return g_param_spec_double(p.name, p.nick, p.blurb, p.low, p.high, usual.*p.as_double, flags);
    if (p.type == kind::boolean)
        return g_param_spec_boolean(p.name, p.nick, p.blurb, usual.*p.as_int, flags);
    if (p.type == kind::steady)
        return g_param_spec_enum(p.name, p.nick, p.blurb, steady_type(), usual.*p.as_int, flags);
    return g_param_spec_int(p.name, p.nick, p.blurb, static_cast<int>(p.low), static_cast<int>(p.high), usual.*p.as_int,
                            flags);
}

void install_properties(GObjectClass* object_class)
{
    params usual;
    zel_host_params_init(&usual, sizeof(usual));
    for (guint n = 0; n < parameter_count; ++n)
        g_object_class_install_property(object_class, n + 1, spec_of(parameters[n], usual));
    const tracker_settings defaults;
    guint id = prop_setting;
    for (const setting& it : settings_of_element)
        g_object_class_install_property(
            object_class, id++,
            g_param_spec_boolean(it.name, it.nick, it.blurb, defaults.*it.value, flags_of(GST_PARAM_MUTABLE_PLAYING)));
    g_object_class_install_property(
        object_class, prop_stats,
        g_param_spec_boxed("stats", "Statistics",
                           "What was done since the stream began, and what the automatic choices are at present",
                           GST_TYPE_STRUCTURE, static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS)));
    gst_type_mark_as_plugin_api(steady_type(), static_cast<GstPluginAPIFlags>(0));
}

static void read_value(const GValue* value, const parameter& p, params& into)
{
    if (p.as_float)
        into.*p.as_float = g_value_get_float(value);
    else if (p.as_double)
        into.*p.as_double = g_value_get_double(value);
    else if (p.type == kind::boolean)
        into.*p.as_int = g_value_get_boolean(value);
    else if (p.type == kind::steady)
        into.*p.as_int = g_value_get_enum(value);
    else
        into.*p.as_int = g_value_get_int(value);
}

static void write_value(GValue* value, const parameter& p, const params& from)
{
    if (p.as_float)
        g_value_set_float(value, from.*p.as_float);
    else if (p.as_double)
        g_value_set_double(value, from.*p.as_double);
    else if (p.type == kind::boolean)
        g_value_set_boolean(value, from.*p.as_int);
    else if (p.type == kind::steady)
        g_value_set_enum(value, from.*p.as_int);
    else
        g_value_set_int(value, from.*p.as_int);
}

bool set_property(stream& kit, tracker_settings& settings, guint id, const GValue* value)
{
    if (id < prop_setting)
        return kit.change([id, value](params& wanted) { read_value(value, parameters[id - 1], wanted); });
    settings.*settings_of_element[id - prop_setting].value = g_value_get_boolean(value) != FALSE;
    return true;
}

static void add_count(GstStructure* stats, const char* name, uint64_t count)
{
    gst_structure_set(stats, name, G_TYPE_UINT64, count, nullptr);
}

static void add_number(GstStructure* stats, const char* name, double number)
{
    gst_structure_set(stats, name, G_TYPE_DOUBLE, number, nullptr);
}

static void add_reason(GstStructure* stats, const char* name, int reason)
{
    gst_structure_set(stats, name, G_TYPE_STRING, zel_host_reason_text(reason), nullptr);
}

static GstStructure* stats_of(const zel_host_status_t& status)
{
    GstStructure* stats = gst_structure_new_empty("zeltracker-stats");
    add_count(stats, "frames", status.frames);
    add_count(stats, "detections", status.detections);
    add_count(stats, "invalid", status.invalid);
    add_count(stats, "weak", status.weak);
    add_count(stats, "cut", status.cut);
    add_count(stats, "unstarted", status.unstarted);
    add_count(stats, "lock-waits", status.lock_waits);
    add_number(stats, "lock-seconds", status.lock_seconds);
    add_number(stats, "min-confidence", static_cast<double>(status.min_confidence));
    add_reason(stats, "min-confidence-reason", status.min_confidence_reason);
    add_number(stats, "scale", status.scale);
    add_reason(stats, "scale-reason", status.scale_reason);
    gst_structure_set(stats, "scale-misled", G_TYPE_BOOLEAN, status.scale_misled, nullptr);
    add_number(stats, "typical-size", status.typical_size);
    gst_structure_set(stats, "steady", G_TYPE_BOOLEAN, status.steady, nullptr);
    add_reason(stats, "steady-reason", status.steady_reason);
    add_number(stats, "offset-x", status.offset_x);
    add_number(stats, "offset-y", status.offset_y);
    gst_structure_set(stats, "removal", G_TYPE_INT, status.removal, nullptr);
    add_reason(stats, "removal-reason", status.removal_reason);
    return stats;
}

void get_property(const stream& kit, const tracker_settings& settings, guint id, GValue* value)
{
    if (id == prop_stats)
        g_value_take_boxed(value, stats_of(kit.status()));
    else if (id >= prop_setting)
        g_value_set_boolean(value, settings.*settings_of_element[id - prop_setting].value);
    else
        write_value(value, parameters[id - 1], kit.wanted());
}

}  // namespace zelgst
