// SPDX-License-Identifier: MIT
//
// Structures are searched and filled by quarks: by names, it would take longer than the tracking.
#include "regions.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zelgst {

namespace {

struct names {
    GQuark detection = g_quark_from_static_string("detection");
    GQuark confidence = g_quark_from_static_string("confidence");
    GQuark label_id = g_quark_from_static_string("label_id");
    GQuark x_min = g_quark_from_static_string("x_min");
    GQuark y_min = g_quark_from_static_string("y_min");
    GQuark x_max = g_quark_from_static_string("x_max");
    GQuark y_max = g_quark_from_static_string("y_max");
    GQuark object_id = g_quark_from_static_string("object_id");
    GQuark id = g_quark_from_static_string("id");
    GQuark zel_track = g_quark_from_static_string("zel-track");
    GQuark state = g_quark_from_static_string("state");
    GQuark hits = g_quark_from_static_string("hits");
    GQuark misses = g_quark_from_static_string("misses");
    GQuark x1 = g_quark_from_static_string("x1");
    GQuark y1 = g_quark_from_static_string("y1");
    GQuark x2 = g_quark_from_static_string("x2");
    GQuark y2 = g_quark_from_static_string("y2");
};

}  // namespace

static const names& name()
{
    static const names all;
    return all;
}

// --- structures ------------------------------------------------------------------------------------------------------

static GstStructure* find_structure(const GstVideoRegionOfInterestMeta* region, GQuark wanted)
{
    for (const GList* at = region->params; at; at = at->next)
        if (gst_structure_get_name_id(static_cast<GstStructure*>(at->data)) == wanted)
            return static_cast<GstStructure*>(at->data);
    return nullptr;
}

static bool get_number(const GstStructure* structure, GQuark field, double& number)
{
    const GValue* value = gst_structure_id_get_value(structure, field);
    if (value && G_VALUE_HOLDS_DOUBLE(value))
        number = g_value_get_double(value);
    else if (value && G_VALUE_HOLDS_FLOAT(value))
        number = static_cast<double>(g_value_get_float(value));
    else
        return false;
    return true;
}

static int get_int(const GstStructure* structure, GQuark field, int otherwise)
{
    const GValue* value = gst_structure_id_get_value(structure, field);
    return value && G_VALUE_HOLDS_INT(value) ? g_value_get_int(value) : otherwise;
}

// --- what a detector attached ----------------------------------------------------------------------------------------

// A plain cast of what no float holds is undefined. The kit drops what is infinite or no number.
static float to_float(double value)
{
    constexpr auto limit = static_cast<double>(std::numeric_limits<float>::max());
    return std::fabs(value) <= limit ? static_cast<float>(value) : std::numeric_limits<float>::quiet_NaN();
}

static zel_host_detection_t box_of(const GstVideoRegionOfInterestMeta* region)
{
    const auto x = static_cast<double>(region->x);
    const auto y = static_cast<double>(region->y);
    return {static_cast<float>(x),
            static_cast<float>(y),
            static_cast<float>(x + region->w),
            static_cast<float>(y + region->h),
            1,
            static_cast<int>(region->roi_type)};
}

static zel_host_detection_t detection_of(const GstVideoRegionOfInterestMeta* region, const image_size& size)
{
    zel_host_detection_t found = box_of(region);
    const GstStructure* structure = find_structure(region, name().detection);
    if (!structure)
        return found;
    double number;
    if (get_number(structure, name().confidence, number))
        found.confidence = to_float(number);
    found.class_id = get_int(structure, name().label_id, found.class_id);
    double x1, y1, x2, y2;
    if (size.width > 0 && size.height > 0 && get_number(structure, name().x_min, x1) &&
        get_number(structure, name().y_min, y1) && get_number(structure, name().x_max, x2) &&
        get_number(structure, name().y_max, y2)) {
        found.x1 = to_float(x1 * size.width);
        found.y1 = to_float(y1 * size.height);
        found.x2 = to_float(x2 * size.width);
        found.y2 = to_float(y2 * size.height);
    }
    return found;
}

// Most detections are of the class of the one before.
void region_list::note_label(int class_id, GQuark label)
{
    if (class_id == latest_class_ && label == latest_label_)
        return;
    labels_[class_id] = label;
    latest_class_ = class_id;
    latest_label_ = label;
}

void region_list::read(GstBuffer* buffer, const image_size& size)
{
    buffer_ = buffer;
    regions_.clear();
    detections_.clear();
    gpointer state = nullptr;
    while (GstMeta* meta =
               gst_buffer_iterate_meta_filtered(buffer, &state, GST_VIDEO_REGION_OF_INTEREST_META_API_TYPE)) {
        auto* region = reinterpret_cast<GstVideoRegionOfInterestMeta*>(meta);
        const zel_host_detection_t found = detection_of(region, size);
        note_label(found.class_id, region->roi_type);
        regions_.push_back(region);
        detections_.push_back(found);
    }
    matched_.assign(regions_.size(), false);
}

// --- what the tracker adds -------------------------------------------------------------------------------------------

static void set_int(GstStructure* structure, GQuark field, int number)
{
    GValue value = G_VALUE_INIT;
    g_value_init(&value, G_TYPE_INT);
    g_value_set_int(&value, number);
    gst_structure_id_take_value(structure, field, &value);
}

static void set_float(GstStructure* structure, GQuark field, float number)
{
    GValue value = G_VALUE_INIT;
    g_value_init(&value, G_TYPE_FLOAT);
    g_value_set_float(&value, number);
    gst_structure_id_take_value(structure, field, &value);
}

// Of one name there is only one, whoever attached it.
static GstStructure* own_structure(GstVideoRegionOfInterestMeta* region, GQuark wanted)
{
    GstStructure* structure = find_structure(region, wanted);
    if (!structure) {
        structure = gst_structure_new_id_empty(wanted);
        gst_video_region_of_interest_meta_add_param(region, structure);
    }
    return structure;
}

static void describe(GstVideoRegionOfInterestMeta* region, const zel_host_track_t& track, bool boxes)
{
    set_int(own_structure(region, name().object_id), name().id, track.id);

    GstStructure* structure = own_structure(region, name().zel_track);
    GValue state = G_VALUE_INIT;
    g_value_init(&state, G_TYPE_STRING);
    g_value_set_static_string(&state, track.detection >= 0 ? "tracked" : "coasted");
    gst_structure_id_take_value(structure, name().state, &state);
    set_int(structure, name().hits, track.hits);
    set_int(structure, name().misses, track.misses);
    if (!boxes)
        return;
    set_float(structure, name().x1, track.x1);
    set_float(structure, name().y1, track.y1);
    set_float(structure, name().x2, track.x2);
    set_float(structure, name().y2, track.y2);
}

static unsigned to_pixel(double value)
{
    return static_cast<unsigned>(std::lround(std::clamp(value, 0.0, 1e9)));
}

// Regions have no place beyond the left and the upper edge of the image: there they are cut.
static GstVideoRegionOfInterestMeta* add_region(GstBuffer* buffer, GQuark label, const zel_host_detection_t& box)
{
    const unsigned left = to_pixel(static_cast<double>(box.x1));
    const unsigned top = to_pixel(static_cast<double>(box.y1));
    return gst_buffer_add_video_region_of_interest_meta_id(buffer, label, left, top,
                                                           to_pixel(static_cast<double>(box.x2)) - left,
                                                           to_pixel(static_cast<double>(box.y2)) - top);
}

GstVideoRegionOfInterestMeta* region_list::add_coasted(const zel_host_track_t& track)
{
    const auto label = labels_.find(track.class_id);
    const zel_host_detection_t box = {track.x1, track.y1, track.x2, track.y2, track.confidence, track.class_id};
    return add_region(buffer_, label == labels_.end() ? 0 : label->second, box);
}

void region_list::write(const zel_host_track_t* tracks, int count, bool boxes)
{
    for (int n = 0; n < count; ++n) {
        const zel_host_track_t& track = tracks[n];
        const auto index = static_cast<std::size_t>(track.detection);
        if (track.detection >= 0)
            matched_[index] = true;
        describe(track.detection >= 0 ? regions_[index] : add_coasted(track), track, boxes);
    }
}

void region_list::drop_unmatched()
{
    for (std::size_t n = 0; n < regions_.size(); ++n)
        if (!matched_[n])
            gst_buffer_remove_meta(buffer_, &regions_[n]->meta);
}

// --- in place of a detector ------------------------------------------------------------------------------------------

void attach_detection(GstBuffer* buffer, const image_size& size, const zel_host_detection_t& detection,
                      const char* label)
{
    GstVideoRegionOfInterestMeta* region = add_region(buffer, g_quark_from_string(label), detection);
    GstStructure* structure =
        gst_structure_new_id(name().detection, name().label_id, G_TYPE_INT, detection.class_id, name().confidence,
                             G_TYPE_DOUBLE, static_cast<double>(detection.confidence), name().x_min, G_TYPE_DOUBLE,
                             static_cast<double>(detection.x1) / size.width, name().x_max, G_TYPE_DOUBLE,
                             static_cast<double>(detection.x2) / size.width, name().y_min, G_TYPE_DOUBLE,
                             static_cast<double>(detection.y1) / size.height, name().y_max, G_TYPE_DOUBLE,
                             static_cast<double>(detection.y2) / size.height, nullptr);
    gst_video_region_of_interest_meta_add_param(region, structure);
}

}  // namespace zelgst
