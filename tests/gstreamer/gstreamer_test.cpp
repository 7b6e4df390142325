// SPDX-License-Identifier: MIT
//
// The element zeltracker in a harness: what it reads from buffers, what it attaches, and where a stream breaks off. The
// numbers themselves are compared with the command's by pipelines.sh.
#include <gst/check/gstharness.h>
#include <gst/video/gstvideometa.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <memory>
#include <string>
#include <vector>
#ifdef ZEL_GST_ANALYTICS
#include <gst/analytics/analytics.h>
#endif

namespace {

class gstreamer : public testing::Environment {
    void SetUp() override { gst_init(nullptr, nullptr); }
};
const testing::Environment* const environment = testing::AddGlobalTestEnvironment(new gstreamer);

struct buffer_unref {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
};
using buffer_ptr = std::unique_ptr<GstBuffer, buffer_unref>;

struct box {
    unsigned x, y, w, h;
    const char* label = "person";
    double confidence = 0.9;
};

// What the element says about a region.
struct outcome {
    int id;  // 0: nothing
    std::string state;
    int hits;
    int misses;
};

constexpr char usual_caps[] = "video/x-raw,format=GRAY8,width=640,height=480,framerate=30/1";

}  // namespace

static GstVideoRegionOfInterestMeta* attach(GstBuffer* buffer, const box& it)
{
    GstVideoRegionOfInterestMeta* region =
        gst_buffer_add_video_region_of_interest_meta(buffer, it.label, it.x, it.y, it.w, it.h);
    gst_video_region_of_interest_meta_add_param(
        region, gst_structure_new("detection", "confidence", G_TYPE_DOUBLE, it.confidence, nullptr));
    return region;
}

static buffer_ptr make_buffer(const std::vector<box>& boxes)
{
    buffer_ptr buffer(gst_buffer_new_allocate(nullptr, 16, nullptr));
    for (const box& it : boxes)
        attach(buffer.get(), it);
    return buffer;
}

static std::vector<GstVideoRegionOfInterestMeta*> regions_of(const buffer_ptr& buffer)
{
    std::vector<GstVideoRegionOfInterestMeta*> regions;
    gpointer state = nullptr;
    while (GstMeta* meta =
               gst_buffer_iterate_meta_filtered(buffer.get(), &state, GST_VIDEO_REGION_OF_INTEREST_META_API_TYPE))
        regions.push_back(reinterpret_cast<GstVideoRegionOfInterestMeta*>(meta));
    return regions;
}

static outcome outcome_of(GstVideoRegionOfInterestMeta* region)
{
    outcome found = {0, "", 0, 0};
    if (const GstStructure* identity = gst_video_region_of_interest_meta_get_param(region, "object_id"))
        gst_structure_get_int(identity, "id", &found.id);
    if (const GstStructure* track = gst_video_region_of_interest_meta_get_param(region, "zel-track")) {
        found.state = gst_structure_get_string(track, "state");
        gst_structure_get_int(track, "hits", &found.hits);
        gst_structure_get_int(track, "misses", &found.misses);
    }
    return found;
}

static std::vector<int> ids_of(const buffer_ptr& buffer)
{
    std::vector<int> ids;
    for (GstVideoRegionOfInterestMeta* region : regions_of(buffer))
        ids.push_back(outcome_of(region).id);
    return ids;
}

using ids = std::vector<int>;

class Zeltracker : public testing::Test {
protected:
    void SetUp() override { open("zeltracker stable=1"); }
    void TearDown() override { gst_harness_teardown(harness_); }

    void open(const char* element)
    {
        if (harness_)
            gst_harness_teardown(harness_);
        harness_ = gst_harness_new_parse(element);
        gst_harness_set_src_caps_str(harness_, usual_caps);
        tracker_ = gst_harness_find_element(harness_, "zeltracker");
        gst_object_unref(tracker_);  // the harness holds it
    }

    buffer_ptr pass(buffer_ptr buffer) { return buffer_ptr(gst_harness_push_and_pull(harness_, buffer.release())); }
    buffer_ptr pass(const std::vector<box>& boxes) { return pass(make_buffer(boxes)); }

    template <typename... Values>
    void set(const char* name, Values... values)
    {
        g_object_set(tracker_, name, values..., nullptr);
    }

    double stat(const char* name)
    {
        GstStructure* stats = nullptr;
        g_object_get(tracker_, "stats", &stats, nullptr);
        GValue number = G_VALUE_INIT;
        g_value_init(&number, G_TYPE_DOUBLE);
        g_value_transform(gst_structure_get_value(stats, name), &number);
        gst_structure_free(stats);
        return g_value_get_double(&number);
    }

    void use_caps(const char* caps) { gst_harness_set_src_caps_str(harness_, caps); }

    GstHarness* harness_ = nullptr;
    GstElement* tracker_ = nullptr;
};

// --- what is read and what is attached -------------------------------------------------------------------------------

static const box left = {10, 20, 40, 80};
static const box right = {400, 20, 40, 80};

// Also where another tracker was before: of each structure there is one.
TEST_F(Zeltracker, NumbersRegionsAndLeavesTheRestOfThem)
{
    set("stable", 2);
    EXPECT_EQ(ids_of(pass({left})), ids{0});
    buffer_ptr next = make_buffer({right, left});
    gst_video_region_of_interest_meta_add_param(regions_of(next)[1],
                                                gst_structure_new("object_id", "id", G_TYPE_INT, 77, nullptr));
    const buffer_ptr second = pass(std::move(next));
    EXPECT_EQ(ids_of(second), (ids{0, 1}));

    GstVideoRegionOfInterestMeta* region = regions_of(second)[1];
    const outcome found = outcome_of(region);
    EXPECT_EQ(found.state, "tracked");
    EXPECT_EQ(found.hits, 2);
    EXPECT_EQ(found.misses, 0);
    EXPECT_EQ(region->x, left.x);
    EXPECT_EQ(region->w, left.w);
    EXPECT_STREQ(g_quark_to_string(region->roi_type), "person");
    EXPECT_EQ(g_list_length(region->params), 3U);
}

// Two boxes at the same place, one a frame, are one object if they are of one class.
TEST_F(Zeltracker, ClassesAreLabelsOrNumbers)
{
    struct {
        const char* name;
        const char* labels[2];
        int numbers[2];  // -1: none
        int second;
    } const cases[] = {
        {"one label", {"car", "car"}, {-1, -1}, 1},
        {"two labels", {"car", "bus"}, {-1, -1}, 2},
        {"one number", {"car", "bus"}, {5, 5}, 1},
        {"two numbers, from 0", {"car", "car"}, {0, 1}, 2},
    };
    for (const auto& it : cases) {
        SCOPED_TRACE(it.name);
        open("zeltracker stable=1");
        int found = 0;
        for (int n = 0; n < 2; ++n) {
            box where = left;
            where.label = it.labels[n];
            buffer_ptr buffer = make_buffer({where});
            if (it.numbers[n] >= 0)
                gst_structure_set(gst_video_region_of_interest_meta_get_param(regions_of(buffer)[0], "detection"),
                                  "label_id", G_TYPE_INT, it.numbers[n], nullptr);
            found = ids_of(pass(std::move(buffer)))[0];
        }
        EXPECT_EQ(found, it.second);
    }
}

// The exact box, in parts of the image, counts more than the region's whole pixels; of one that is no number or beyond
// float, the detection is dropped.
TEST_F(Zeltracker, ExactBoxesAndConfidences)
{
    set("min-confidence", 0.5, "boxes", TRUE);
    buffer_ptr buffer = make_buffer({left, right, {200, 200, 50, 50, "person", 0.4}});
    const double huge[] = {0.1, 1e300};
    for (int n = 0; n < 2; ++n)
        gst_structure_set(
            gst_video_region_of_interest_meta_get_param(regions_of(buffer)[static_cast<std::size_t>(n)], "detection"),
            "x_min", G_TYPE_DOUBLE, -0.0125, "x_max", G_TYPE_DOUBLE, huge[n], "y_min", G_TYPE_DOUBLE, 0.1, "y_max",
            G_TYPE_DOUBLE, 0.2, nullptr);
    const buffer_ptr passed = pass(std::move(buffer));
    EXPECT_EQ(ids_of(passed), (ids{1, 0, 0}));
    const GstStructure* track = gst_video_region_of_interest_meta_get_param(regions_of(passed)[0], "zel-track");
    float x1 = 0;
    float y2 = 0;
    gst_structure_get(track, "x1", G_TYPE_FLOAT, &x1, "y2", G_TYPE_FLOAT, &y2, nullptr);
    EXPECT_FLOAT_EQ(x1, -8);
    EXPECT_FLOAT_EQ(y2, 96);
    EXPECT_EQ(stat("invalid"), 1);
    EXPECT_EQ(stat("weak"), 1);
}

TEST_F(Zeltracker, DropsRegionsWithoutATrackAndAttachesTracksWithoutOne)
{
    set("stable", 2, "drop-unmatched", TRUE, "coasted", TRUE);
    EXPECT_EQ(ids_of(pass({left})), ids{});
    EXPECT_EQ(ids_of(pass({right, left})), ids{1});
    for (int missed = 1; missed <= 2; ++missed) {
        const buffer_ptr passed = pass(std::vector<box>());
        ASSERT_EQ(ids_of(passed), ids{1});
        GstVideoRegionOfInterestMeta* region = regions_of(passed)[0];
        EXPECT_EQ(outcome_of(region).state, "coasted");
        EXPECT_EQ(outcome_of(region).misses, missed);
        EXPECT_EQ(region->x, left.x);
        EXPECT_STREQ(g_quark_to_string(region->roi_type), "person");
    }
    EXPECT_EQ(ids_of(pass(std::vector<box>())), ids{});
}

TEST_F(Zeltracker, ABufferThatOthersHoldIsCopiedWithoutItsMemory)
{
    const buffer_ptr original = make_buffer({left});
    const buffer_ptr passed = pass(buffer_ptr(gst_buffer_ref(original.get())));
    EXPECT_EQ(ids_of(passed), ids{1});
    EXPECT_EQ(ids_of(original), ids{0});
    EXPECT_EQ(gst_buffer_peek_memory(passed.get(), 0), gst_buffer_peek_memory(original.get(), 0));
}

TEST_F(Zeltracker, TakesAnyKindOfMemory)
{
    use_caps("video/x-raw(memory:DMABuf),format=NV12,width=640,height=480");
    EXPECT_EQ(ids_of(pass({left})), ids{1});
}

#ifdef ZEL_GST_ANALYTICS

struct tracking {
    guint64 id;
    GstClockTime first;
    GstClockTime last;
};

// The trackings that relate to each object detection of a buffer, in the order of the detections.
static std::vector<tracking> trackings_of(const buffer_ptr& buffer)
{
    std::vector<tracking> found;
    GstAnalyticsRelationMeta* meta = gst_buffer_get_analytics_relation_meta(buffer.get());
    gpointer state = nullptr;
    GstAnalyticsODMtd detection;
    while (meta && gst_analytics_relation_meta_iterate(meta, &state, gst_analytics_od_mtd_get_mtd_type(), &detection)) {
        tracking it = {0, 0, 0};
        gpointer none = nullptr;
        gboolean lost = FALSE;
        GstAnalyticsTrackingMtd related;
        if (gst_analytics_relation_meta_get_direct_related(meta, detection.id, GST_ANALYTICS_REL_TYPE_RELATE_TO,
                                                           gst_analytics_tracking_mtd_get_mtd_type(), &none, &related))
            gst_analytics_tracking_mtd_get_info(&related, &it.id, &it.first, &it.last, &lost);
        found.push_back(it);
    }
    return found;
}

TEST_F(Zeltracker, RelatesTrackingsToAnalytics)
{
    set("coasted", TRUE);
    const struct {
        int boxes;
        std::vector<tracking> expected;
    } frames[] = {
        {1, {{1, 1, 1}}},
        {2, {{1, 1, 2}, {2, 2, 2}}},
        {0, {{1, 1, 2}, {2, 2, 2}}},  // both coast
        {1, {{1, 1, 4}, {2, 2, 2}}},
    };
    GstClockTime now = 0;
    for (const auto& it : frames) {
        buffer_ptr buffer = make_buffer({});
        GST_BUFFER_PTS(buffer.get()) = ++now;
        for (int n = 0; n < it.boxes; ++n) {
            GstAnalyticsODMtd made;
            GstAnalyticsRelationMeta* meta = gst_buffer_get_analytics_relation_meta(buffer.get());
            gst_analytics_relation_meta_add_od_mtd(meta ? meta : gst_buffer_add_analytics_relation_meta(buffer.get()),
                                                   g_quark_from_static_string("person"), 100 * n - 5, 20, 40, 80, 0.9F,
                                                   &made);
        }
        const std::vector<tracking> found = trackings_of(pass(std::move(buffer)));
        ASSERT_EQ(found.size(), it.expected.size()) << now;
        for (std::size_t n = 0; n < found.size(); ++n) {
            EXPECT_EQ(found[n].id, it.expected[n].id) << now;
            EXPECT_EQ(found[n].first, it.expected[n].first) << now;
            EXPECT_EQ(found[n].last, it.expected[n].last) << now;
        }
    }
}

#endif

// --- where a stream breaks off ---------------------------------------------------------------------------------------

TEST_F(Zeltracker, BeginsAnewWhereTheStreamBreaksOff)
{
    enum class event { none, ignored, discontinuity, flush, stream, size, format, end };
    struct {
        const char* name;
        event between;
        bool keep;
        int second;     // identifier after it
        double frames;  // in the statistics then
    } const cases[] = {
        {"goes on", event::none, true, 1, 2},
        {"another format of the same size", event::format, true, 1, 2},
        {"a discontinuity that does not count", event::ignored, true, 1, 2},
        {"discontinuity", event::discontinuity, true, 2, 1},
        {"discontinuity, from 1", event::discontinuity, false, 1, 1},
        {"flush", event::flush, true, 2, 1},
        {"new stream", event::stream, true, 2, 1},
        {"new stream, from 1", event::stream, false, 1, 1},
        {"another size", event::size, true, 2, 1},
        {"end of stream: all is released", event::end, true, 1, 1},
    };
    for (const auto& it : cases) {
        SCOPED_TRACE(it.name);
        open("zeltracker stable=1");
        set("keep-identifiers", it.keep ? TRUE : FALSE);
        EXPECT_EQ(ids_of(pass({left})), ids{1});
        buffer_ptr next = make_buffer({left});
        switch (it.between) {
        case event::none:
            break;
        case event::ignored:
            set("ignore-discont", TRUE);
            [[fallthrough]];
        case event::discontinuity:
            GST_BUFFER_FLAG_SET(next.get(), GST_BUFFER_FLAG_DISCONT);
            break;
        case event::flush:
            gst_harness_push_event(harness_, gst_event_new_flush_start());
            gst_harness_push_event(harness_, gst_event_new_flush_stop(FALSE));
            break;
        case event::end:
            gst_harness_push_event(harness_, gst_event_new_eos());
            EXPECT_EQ(stat("frames"), 1) << "statistics stay after the end";
            [[fallthrough]];
        case event::stream:
            gst_harness_push_event(harness_, gst_event_new_stream_start("another"));
            break;
        case event::size:
            use_caps("video/x-raw,format=GRAY8,width=320,height=240,framerate=30/1");
            break;
        case event::format:
            use_caps("video/x-raw,format=RGB,width=640,height=480,framerate=30/1");
            break;
        }
        if (it.between == event::flush || it.between == event::stream || it.between == event::end) {
            GstSegment segment;
            gst_segment_init(&segment, GST_FORMAT_TIME);
            gst_harness_push_event(harness_, gst_event_new_segment(&segment));
        }
        EXPECT_EQ(ids_of(pass(std::move(next))), ids{it.second});
        EXPECT_EQ(stat("frames"), it.frames);
    }
}

// --- properties ------------------------------------------------------------------------------------------------------

TEST_F(Zeltracker, ChangesWhilePlayingButForTheScale)
{
    GstBus* bus = gst_bus_new();
    gst_element_set_bus(tracker_, bus);
    EXPECT_EQ(ids_of(pass({left})), ids{1});
    EXPECT_EQ(stat("removal"), 15) << "half a second of the caps' frame rate";
    const double chosen = stat("scale");
    set("scale", 0.25, "stable", 2, "removal", 4);
    EXPECT_EQ(ids_of(pass({left, right})), (ids{1, 0})) << "what can be changed is";
    EXPECT_EQ(stat("removal"), 4);
    EXPECT_EQ(stat("scale"), chosen);
    GstMessage* warning = gst_bus_pop_filtered(bus, GST_MESSAGE_WARNING);
    ASSERT_NE(warning, nullptr);
    gst_message_unref(warning);

    buffer_ptr next = make_buffer({left});
    GST_BUFFER_FLAG_SET(next.get(), GST_BUFFER_FLAG_DISCONT);
    pass(std::move(next));
    EXPECT_EQ(stat("scale"), 0.25);
    EXPECT_EQ(gst_bus_pop_filtered(bus, GST_MESSAGE_WARNING), nullptr);
    gst_element_set_bus(tracker_, nullptr);
    gst_object_unref(bus);
}

// --- long runs -------------------------------------------------------------------------------------------------------

// Buffers without boxes, ten thousand with, and no more memory at the end than after the first thousand.
TEST_F(Zeltracker, DoesNotGrow)
{
    open("zeltracker coasted=true");
    std::size_t settled = 0;
    for (unsigned frame = 0; frame < 10000; ++frame) {
        if (frame == 1000)
            settled = mallinfo2().uordblks;
        if (frame % 50 > 45) {
            pass(std::vector<box>());
            continue;
        }
        std::vector<box> boxes;
        for (unsigned n = 0; n < 10; ++n)
            boxes.push_back({frame % 300 + 3 * n, 45 * n, 30, 40});
        pass(boxes);
    }
    EXPECT_EQ(stat("frames"), 10000);
    EXPECT_LT(mallinfo2().uordblks, settled + 4096);
}
