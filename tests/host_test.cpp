// SPDX-License-Identifier: MIT
//
// The host kit through its interface. Streams are made of boxes that the tracker follows without doubt, so that what is
// tested is the kit's part: what goes in, what comes back, and what the automatic choices come to.
#include "host/host.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "allocations.h"
#include "host/_host.h"

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
