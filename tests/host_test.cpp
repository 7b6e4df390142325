// SPDX-License-Identifier: MIT
//
// The host kit through its interface. Streams are made of boxes that the tracker follows without doubt, so that what is
// tested is the kit's part: what goes in, what comes back, and what the automatic choices come to.
#include "host/host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "allocations.h"
#include "host/_host.h"
#include "host/neighbours.h"

namespace {

constexpr float inf = std::numeric_limits<float>::infinity();
constexpr float nan_f = std::numeric_limits<float>::quiet_NaN();

using frame = std::vector<zel_host_detection_t>;

zel_host_detection_t box(float x, float y, float size = 40, float confidence = 0.9F, int c = 0)
{
    return {x, y, x + size, y + size, confidence, c};
}

zel_host_params_t params()
{
    zel_host_params_t it;
    zel_host_params_init(&it, sizeof(it));
    return it;
}

struct stream {
    explicit stream(const zel_host_params_t& with = params()) : host(zel_host_create(&with), zel_host_release) {}

    std::vector<zel_host_track_t> process(const frame& detections)
    {
        std::vector<zel_host_track_t> tracks(1000);
        const int count = zel_host_process(host.get(), detections.data(), static_cast<int>(detections.size()),
                                           tracks.data(), static_cast<int>(tracks.size()));
        tracks.resize(static_cast<size_t>(count));
        return tracks;
    }

    zel_host_status_t status() const
    {
        zel_host_status_t it;
        zel_host_get_status(host.get(), &it, sizeof(it));
        return it;
    }

    std::unique_ptr<zel_host_t, decltype(&zel_host_release)> host;
};

// --- parameters ------------------------------------------------------------------------------------------------------

struct refused_case {
    const char* name;
    void (*change)(zel_host_params_t& it);
};

const refused_case refused[] = {
    {"size", [](zel_host_params_t& it) { it.size = sizeof(it) + 1; }},
    {"size", [](zel_host_params_t& it) { it.size = 0; }},
    {"scale", [](zel_host_params_t& it) { it.scale = 0; }},
    {"scale", [](zel_host_params_t& it) { it.scale = std::nan(""); }},
    {"frame_rate", [](zel_host_params_t& it) { it.frame_rate = -1; }},
    {"min_confidence", [](zel_host_params_t& it) { it.min_confidence = nan_f; }},
    {"min_confidence", [](zel_host_params_t& it) { it.min_confidence = -inf; }},
    {"iou", [](zel_host_params_t& it) { it.iou = 1.5F; }},
    {"euc", [](zel_host_params_t& it) { it.euc = -0.5F; }},
    {"stable", [](zel_host_params_t& it) { it.stable = 0; }},
    {"removal", [](zel_host_params_t& it) { it.removal = 0; }},
    {"steady", [](zel_host_params_t& it) { it.steady = 2; }},
    {"ignore_class", [](zel_host_params_t& it) { it.ignore_class = -1; }},
    {"coasted", [](zel_host_params_t& it) { it.coasted = 7; }},
    {"max_objects", [](zel_host_params_t& it) { it.max_objects = 0; }},
};

TEST(HostParams, AreRefusedByName)
{
    EXPECT_EQ(zel_host_params_check(nullptr), nullptr);
    stream live;
    for (const refused_case& it : refused) {
        zel_host_params_t wrong = params();
        EXPECT_EQ(zel_host_params_check(&wrong), nullptr);
        it.change(wrong);
        EXPECT_STREQ(zel_host_params_check(&wrong), it.name);
        EXPECT_EQ(zel_host_create(&wrong), nullptr) << it.name;
        EXPECT_STREQ(zel_host_set_params(live.host.get(), &wrong), it.name);
    }
}

TEST(HostParams, ChangeBetweenFramesWhereTheTracksAllowIt)
{
    zel_host_params_t changed = params();
    stream it(changed);
    changed.scale = 0.5;
    EXPECT_EQ(zel_host_set_params(it.host.get(), &changed), nullptr);
    it.process({box(0, 0)});
    EXPECT_EQ(it.status().scale, 0.5);
    changed.scale = ZEL_HOST_AUTO;
    EXPECT_STREQ(zel_host_set_params(it.host.get(), &changed), "scale");
    changed.scale = 0.5;
    changed.max_objects = 7;
    EXPECT_STREQ(zel_host_set_params(it.host.get(), &changed), "max_objects");
    changed.max_objects = params().max_objects;
    changed.coasted = 1;
    EXPECT_EQ(zel_host_set_params(it.host.get(), &changed), nullptr);
    it.process({box(0, 0)});
    EXPECT_EQ(it.process({}).size(), 1U);
}

// --- what goes in and comes out --------------------------------------------------------------------------------------

TEST(Host, GivesBackPixelsClassesAndIndices)
{
    stream it;
    const frame found = {box(100, 50, 40, 0.8F, 16777215), box(300, 50, 60, 0.7F, 0), box(500, 50, 50, 0.9F, -1)};
    EXPECT_TRUE(it.process(found).empty());
    const std::vector<zel_host_track_t> tracks = it.process(found);
    ASSERT_EQ(tracks.size(), 3U);
    for (size_t n = 0; n < tracks.size(); ++n) {
        EXPECT_EQ(tracks[n].id, static_cast<int>(n) + 1);
        EXPECT_EQ(tracks[n].class_id, found[n].class_id);
        EXPECT_EQ(tracks[n].detection, static_cast<int>(n));
        EXPECT_EQ(tracks[n].confidence, found[n].confidence);
        EXPECT_NEAR(tracks[n].x1, found[n].x1, 1e-3);
        EXPECT_NEAR(tracks[n].y2, found[n].y2, 1e-3);
    }
    EXPECT_EQ(it.status().scale, 10 / 50.0);
}

TEST(Host, TracksTheRestOfAFrameWithInvalidDetections)
{
    const zel_host_detection_t invalid[] = {
        {nan_f, 0, 40, 40, 0.9F, 0}, {0, 0, inf, 40, 0.9F, 0},        {0, 0, 40, 40, nan_f, 0},
        {40, 0, 0, 40, 0.9F, 0},     {0, 40, 40, 0, 0.9F, 0},         {0, 0, 40, 40, 0.9F, 16777216},
        {0, 0, 40, 40, inf, 0},      {0, 0, 40, 40, 0.9F, -16777216},
    };
    for (const zel_host_detection_t& wrong : invalid) {
        stream it;
        it.process({wrong, box(200, 200)});
        const std::vector<zel_host_track_t> tracks = it.process({wrong, box(200, 200)});
        ASSERT_EQ(tracks.size(), 1U);
        EXPECT_EQ(tracks[0].detection, 1);
        EXPECT_EQ(it.status().invalid, 2U);
    }
    stream extreme;
    for (int n = 0; n < 3; ++n)
        extreme.process({box(200, 200), {-FLT_MAX, -FLT_MAX, FLT_MAX, FLT_MAX, FLT_MAX, 0}});
    EXPECT_EQ(extreme.status().invalid, 0U);
}

TEST(Host, TracksTheStrongestWhereThereAreTooMany)
{
    zel_host_params_t few = params();
    few.max_objects = 3;
    few.min_confidence = 0.2F;
    stream it(few);
    const frame found = {box(0, 0, 40, 0.3F),   box(100, 0, 40, 0.5F), box(200, 0, 40, 0.9F), box(300, 0, 40, 0.5F),
                         box(400, 0, 40, 0.1F), box(500, 0, 40, 0.5F), box(600, 0, 40, 0.6F)};
    it.process(found);
    std::vector<int> indices;
    for (const zel_host_track_t& track : it.process(found))
        indices.push_back(track.detection);
    EXPECT_EQ(indices, (std::vector<int>{1, 2, 6}));
    EXPECT_EQ(it.status().cut, 6U);
    EXPECT_EQ(it.status().weak, 2U);
    EXPECT_EQ(it.status().detections, 14U);
}

TEST(Host, CountsHitsAndMisses)
{
    zel_host_params_t with = params();
    with.coasted = 1;
    stream it(with);
    std::string seen;
    for (const char c : std::string("ddd.dd...d")) {
        const auto tracks = it.process(c == 'd' ? frame{box(50, 50)} : frame{});
        seen += tracks.empty() ? "-- " : std::to_string(tracks[0].hits) + std::to_string(tracks[0].misses) + ' ';
    }
    EXPECT_EQ(seen, "-- 20 30 31 40 50 51 52 -- 60 ");
}

TEST(Host, CountsHitsOfManyShortLives)
{
    zel_host_params_t with = params();
    with.max_objects = 4;
    with.removal = 1;
    stream it(with);
    for (int n = 0; n < 400; ++n) {
        // one object stays, the other jumps every four frames
        const auto tracks = it.process({box(0, 0), box(static_cast<float>(100 + n / 4 * 200), 0)});
        ASSERT_EQ(tracks.size(), n == 0 || n % 4 == 0 ? static_cast<size_t>(n > 0) : 2U) << n;
        if (n > 0) {
            EXPECT_EQ(tracks[0].hits, n + 1);
        }
        if (tracks.size() > 1) {
            EXPECT_EQ(tracks[1].hits, n % 4 + 1);
        }
    }
}

// --- the automatic choices -------------------------------------------------------------------------------------------

struct confidence_case {
    const char* name;
    float (*of_object)(unsigned random);
    float (*of_false)(unsigned random);  // of boxes that are elsewhere in every frame
    int reason;
    double least, most;  // share of the detections that is dropped
};

float between(float low, float high, unsigned random)
{
    return low + (high - low) * static_cast<float>(random % 1000) / 1000;
}

const confidence_case confidence_cases[] = {
    {"two humps", [](unsigned r) { return between(0.7F, 1, r); }, [](unsigned r) { return between(0, 0.3F, r); },
     ZEL_HOST_CHOSEN, 0.25, 0.35},
    {"objects of all confidences", [](unsigned r) { return between(0, 1, r); }, nullptr, ZEL_HOST_PERSISTENT, 0, 0.01},
    {"all the same", [](unsigned) { return 0.8F; }, [](unsigned) { return 0.8F; }, ZEL_HOST_ALIKE, 0, 0},
    {"as far apart as floats are", [](unsigned) { return FLT_MAX; }, [](unsigned) { return -FLT_MAX; }, ZEL_HOST_CHOSEN,
     0.25, 0.35},
};

TEST(HostConfidence, DropsWhatIsWeakAndDoesNotPersist)
{
    for (const confidence_case& it : confidence_cases) {
        std::minstd_rand random(7);
        stream host;
        for (int n = 0; n < 300; ++n) {
            frame found;
            for (int k = 0; k < 10; ++k)
                found.push_back(box(static_cast<float>(100 * k), 0, 40, it.of_object(static_cast<unsigned>(random()))));
            for (int k = 0; it.of_false && k < 5; ++k)
                found.push_back(box(static_cast<float>(random() % 1000), static_cast<float>(100 + random() % 800), 40,
                                    it.of_false(static_cast<unsigned>(random()))));
            host.process(found);
        }
        const zel_host_status_t status = host.status();
        EXPECT_EQ(status.min_confidence_reason, it.reason) << it.name;
        const double dropped = static_cast<double>(status.weak) / static_cast<double>(status.detections);
        EXPECT_GE(dropped, it.least) << it.name;
        EXPECT_LE(dropped, it.most) << it.name;
    }
}

// Objects that stand in the world, with some jitter, before a camera that moves so many pixels per frame.
class pan {
public:
    explicit pan(const zel_host_params_t& with = params()) : host(with) {}

    void run(int frames, float speed)
    {
        for (int n = 0; n < frames; ++n) {
            camera_ += speed;
            frame found;
            for (int k = 0; k < 8; ++k)
                found.push_back(box(static_cast<float>(100 * k) + jitter() + camera_, jitter()));
            const std::vector<zel_host_track_t> tracks = host.process(found);
            for (const zel_host_track_t& track : tracks) {
                EXPECT_NEAR(track.x1, found[static_cast<size_t>(track.detection)].x1, 8);
                last_id = std::max(last_id, track.id);
            }
        }
    }

    stream host;
    int last_id = 0;

private:
    float jitter() { return static_cast<float>(random_() % 200) / 100 - 1; }

    std::minstd_rand random_{3};
    float camera_ = 0;
};

TEST(HostSteady, FollowsACameraThatStartsAndStops)
{
    pan scene;
    scene.run(200, 0);
    EXPECT_EQ(scene.host.status().steady_reason, ZEL_HOST_STILL);
    EXPECT_EQ(scene.host.status().offset_x, 0);
    scene.run(100, 15);
    EXPECT_EQ(scene.host.status().steady_reason, ZEL_HOST_MOVING);
    EXPECT_NEAR(scene.host.status().offset_x, 1500, 150);
    EXPECT_GT(scene.host.status().explained, 0.5);
    const int identifiers = scene.last_id;
    scene.run(100, 15);
    EXPECT_EQ(scene.last_id, identifiers);
    scene.run(3000, 0);
    EXPECT_EQ(scene.host.status().steady_reason, ZEL_HOST_STILL);
    EXPECT_EQ(scene.last_id, identifiers);
}

TEST(HostSteady, IsFixedByHand)
{
    zel_host_params_t with = params();
    for (const int wanted : {0, 1}) {
        with.steady = wanted;
        pan scene(with);
        scene.run(100, 15);
        EXPECT_EQ(scene.host.status().steady, wanted);
        EXPECT_EQ(scene.host.status().steady_reason, ZEL_HOST_FIXED);
        EXPECT_NEAR(scene.host.status().offset_x, 1500 * wanted, 50);
    }
}

TEST(HostSteady, KeepsToNumbersThatFloatsTellApart)
{
    zel_host_params_t with = params();
    with.scale = 2.5;
    pan scene(with);
    scene.run(9000, 15);
    const zel_host_status_t status = scene.host.status();
    EXPECT_EQ(status.steady, 1);
    EXPECT_LT(std::fabs(status.offset_x * status.scale), 262144);
}

TEST(HostScale, TellsWhenTheFirstFrameMisled)
{
    stream it;
    it.process({box(0, 0, 200)});
    for (int n = 0; n < 3; ++n)
        it.process({box(0, 0, 40), box(200, 0, 50), box(400, 0, 60)});
    EXPECT_EQ(it.status().scale, 10 / 200.0);
    EXPECT_EQ(it.status().first_size, 200);
    EXPECT_EQ(it.status().typical_size, 50);
    EXPECT_EQ(it.status().scale_misled, 1);

    stream flat;  // no size can be told of a line, and none is chosen
    flat.process({{0, 0, 40, 0, 0.9F, 0}});
    EXPECT_EQ(flat.status().scale_reason, ZEL_HOST_WAITING);
    EXPECT_EQ(flat.status().invalid, 1U);
    flat.process({{0, 0, 40, 0, 0.9F, 0}, box(100, 0, 20)});
    EXPECT_EQ(flat.status().scale, 0.5);
    EXPECT_EQ(flat.status().scale_misled, 0);
}

TEST(HostRemoval, IsHalfASecond)
{
    const struct {
        double rate;
        int removal, reason;
    } cases[] = {{0, 10, ZEL_HOST_NO_RATE},
                 {1, 1, ZEL_HOST_RATE},
                 {7, 4, ZEL_HOST_RATE},
                 {29.97, 15, ZEL_HOST_RATE},
                 {1e6, 500000, ZEL_HOST_RATE}};
    for (const auto& it : cases) {
        zel_host_params_t with = params();
        with.frame_rate = it.rate;
        EXPECT_EQ(stream(with).status().removal, it.removal) << it.rate;
        EXPECT_EQ(stream(with).status().removal_reason, it.reason) << it.rate;
    }
}

// --- neighbouring frames ---------------------------------------------------------------------------------------------

float overlap(const zelhost::seen_box& a, const zelhost::seen_box& b)
{
    const float w = std::min(a.x2, b.x2) - std::max(a.x1, b.x1);
    const float h = std::min(a.y2, b.y2) - std::max(a.y1, b.y1);
    const float shared = w > 0 && h > 0 ? w * h : 0;
    return shared == 0 ? 0 : shared / ((a.x2 - a.x1) * (a.y2 - a.y1) + (b.x2 - b.x1) * (b.y2 - b.y1) - shared);
}

// Against every pair of boxes, some of them as wide as the image, some without an area.
TEST(HostNeighbours, AreTheOnesOfTheLargestOverlap)
{
    std::minstd_rand random(5);
    zelhost::neighbours it = {};
    ASSERT_TRUE(zelhost::make_neighbour_room(&it, 60));
    for (int n = 0; n < 50; ++n) {
        zelhost::next_frame(&it);
        for (it.now.count = 0; it.now.count < static_cast<int>(random() % 60); ++it.now.count) {
            const auto x = static_cast<float>(random() % 200), y = static_cast<float>(random() % 200);
            const auto w = static_cast<float>(random() % 10 == 0 ? 400 : random() % 40);
            it.now.boxes[it.now.count] = {x, y, x + w, y + static_cast<float>(random() % 40), 0.5F, -1, 0};
        }
        zelhost::find_neighbours(&it);
        for (const auto& [own, others] : {std::pair(it.now, it.before), std::pair(it.before, it.now)})
            for (int a = 0; a < own.count; ++a) {
                float best = 0;
                for (int b = 0; b < others.count; ++b)
                    best = std::max(best, overlap(own.boxes[a], others.boxes[b]));
                ASSERT_EQ(own.boxes[a].overlap, best);
                ASSERT_EQ(own.boxes[a].best >= 0, best > 0);
            }
    }
    zelhost::free_neighbours(&it);
}

// --- streams ---------------------------------------------------------------------------------------------------------

TEST(Host, BeginsANewStream)
{
    stream it;
    const frame found = {box(0, 0), box(100, 0)};
    it.process(found);
    EXPECT_EQ(it.process(found).back().id, 2);
    EXPECT_EQ(zel_host_reset(it.host.get(), 1), 0);
    EXPECT_EQ(it.status().frames, 0U);
    EXPECT_EQ(it.status().scale, 0);
    EXPECT_TRUE(it.process(found).empty());
    EXPECT_EQ(it.process(found).front().id, 3);
    EXPECT_EQ(zel_host_reset(it.host.get(), 0), 0);
    it.process(found);
    EXPECT_EQ(it.process(found).front().id, 1);
}

TEST(Host, ReleasesEverythingWhenAnyAllocationFails)
{
    const int before = allocations::live;
    for (int n = 0;; ++n) {
        allocations::granted = n;
        zel_host_t* host = zel_host_create(nullptr);
        allocations::granted = allocations::unlimited;
        zel_host_release(host);
        EXPECT_EQ(allocations::live, before);
        if (host)
            break;
    }
    stream it;
    const frame found = {box(0, 0), box(100, 0)};
    it.process(found);
    allocations::granted = 0;
    EXPECT_EQ(zel_host_reset(it.host.get(), 0), -1);
    allocations::granted = allocations::unlimited;
    EXPECT_EQ(it.process(found).size(), 2U);
}

TEST(Host, CountsWhatMemoryWasMissingFor)
{
    stream it;
    const frame found = {box(0, 0), box(100, 0)};
    allocations::granted = 0;
    it.process(found);  // the first of the two finds no memory
    EXPECT_EQ(it.status().unstarted, 1U);
    it.process(found);
    EXPECT_EQ(it.status().unstarted, 1U);
    allocations::granted = 0;
    it.process(found);  // the filter of the second one, which finds none
    EXPECT_EQ(it.status().unstarted, 2U);
    allocations::granted = allocations::unlimited;
    EXPECT_EQ(it.process(found).size(), 2U);

    // a frame larger than any before it, of which only what fits is tracked
    frame crowd;
    for (int n = 0; n < 300; ++n)
        crowd.push_back(box(static_cast<float>(100 * n), 0));
    allocations::granted = 0;
    it.process(crowd);
    allocations::granted = allocations::unlimited;
    EXPECT_EQ(it.status().cut, 300U - 256U);
}

// --- the seam for the rest of the project ----------------------------------------------------------------------------

TEST(Host, LetsItsFrameBeReplaced)
{
    stream it;
    int calls = 0;
    const auto process = [](void* context, void* tracker, float(*input)[6], float(*output)[8]) {
        ++*static_cast<int*>(context);
        zel_tracker_process(tracker, input, output);
    };
    zel_host_replace_process(it.host.get(), process, &calls);
    it.process({box(0, 0, 40, nan_f), box(20, 0)});
    EXPECT_EQ(it.process({box(20, 0)}).size(), 1U);
    EXPECT_EQ(calls, 2);
    zel_host_frame_t rows;
    zel_host_get_frame(it.host.get(), &rows);
    EXPECT_EQ(rows.count, 1);
    EXPECT_EQ(rows.detections[0], 0);
    EXPECT_EQ(rows.scale, 0.25);
    zel_host_replace_process(it.host.get(), nullptr, nullptr);
    EXPECT_EQ(it.process({box(20, 0)}).size(), 1U);
    EXPECT_EQ(calls, 2);
}

}  // namespace
