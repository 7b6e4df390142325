// SPDX-License-Identifier: MIT
//
// What a device in the field relies on: any input and any failed allocation is survived, memory is taken only where it
// is said to be, and the same input gives the same result. Arrays are exactly as long as they must be, so that a
// sanitizer sees a row too many.
#include "zel_tracker.cpp"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cfloat>
#include <cmath>
#include <memory>
#include <string>

#include "allocations.h"
#include "traffic.h"

namespace {

constexpr int plenty = 1000000;  // requests that a test grants in order to count them

struct tracked {
    explicit tracked(int capacity, int stable = 2, int removal = 6)
        : handle(static_cast<tracker_t*>(zel_tracker_create(1, 1, capacity, 0.5F, 0.2F, stable, removal, 0)))
    {
    }
    ~tracked() { zel_tracker_release(handle); }
    tracked(const tracked&) = delete;
    tracked& operator=(const tracked&) = delete;

    // Returns all rows, those left unwritten as zeros.
    std::vector<std::array<float, 8>> frame(const std::vector<traffic::row>& input)
    {
        const size_t capacity = static_cast<size_t>(handle->nmaxobjs);
        std::vector<traffic::row> exact(input.begin(), input.begin() + std::min<long>(handle->nmaxobjs, ssize(input)));
        std::vector<std::array<float, 8>> output(capacity);
        zel_tracker_process(handle, reinterpret_cast<float(*)[6]>(exact.data()),
                            reinterpret_cast<float(*)[8]>(output.data()));
        int tracks = 0;
        for (list_head* node = handle->track_list.next; node != &handle->track_list; node = node->next, ++tracks) {
            const trk_obj_t* obj = track_of(node);
            EXPECT_TRUE((obj->id >= 0) == (obj->kalman != nullptr) && (obj->id >= 0) == (obj->obv != nullptr));
        }
        EXPECT_EQ(handle->track_count, tracks);
        return output;
    }
    static long ssize(const std::vector<traffic::row>& rows) { return static_cast<long>(rows.size()); }

    tracker_t* handle;
};

// --- any input -------------------------------------------------------------------------------------------------------

TEST(AnyInput, IsSurvivedInEveryColumnByTentativeAndConfirmedTracks)
{
    const float wild[] = {NAN,     -NAN,    INFINITY, -INFINITY, FLT_MAX, -FLT_MAX, FLT_MIN, 1e-45F,
                          -1e-45F, 1.8e19F, -1e38F,   -0.0F,     3e9F,    -3e9F,    1e-30F,  65536};
    const int live = allocations::live;
    for (const float value : wild)
        for (size_t column = 0; column < 6; ++column)
            for (const int stable : {1, 2, 4}) {
                tracked t(3, stable, 2);
                const traffic::row calm = {1, 10, 10, 20, 20, 1};
                traffic::row row = calm;
                row[column] = value;
                for (const traffic::row& second : {calm, row, row, calm, row})
                    t.frame({calm, second, second, calm});
                t.frame({row, row, row});
                for (int n = 0; n < 3; ++n)
                    t.frame(std::vector<traffic::row>(1));
                EXPECT_EQ(t.handle->track_count, 0) << value << " in column " << column;
            }
    EXPECT_EQ(allocations::live, live);
}

// --- memory ----------------------------------------------------------------------------------------------------------

struct demand_case {
    const char* name;
    std::vector<float> objects;  // where they are seen
    int requests;
};

// With two matches to be confirmed and one miss survived.
const demand_case demands[] = {
    {"two tracks are born", {0, 100}, 2},
    {"they are confirmed", {0, 100}, 4},
    {"they go on", {0, 100}, 0},
    {"one is not seen", {0}, 0},
    {"it is removed", {0}, 0},
    {"another is born", {0, 200}, 1},
    {"it is not seen", {0}, 0},
    {"it is removed", {0}, 0},
    {"no room for more", {0, 100, 200, 300, 400}, 2},
    {"still none", {0, 100, 200, 300, 400}, 4},
    {"nobody is seen", {}, 0},
    {"nobody is left", {}, 0},
};

TEST(Memory, IsRequestedOnlyForAHandleATrackAndAConfirmation)
{
    allocations::granted = plenty;
    {
        tracked t(3, 2, 1);
        EXPECT_EQ(plenty - allocations::granted, 8);
        for (const demand_case& c : demands) {
            std::vector<traffic::row> rows;
            for (const float x : c.objects)
                rows.push_back({1, x, 0, x + 8, 8, 1});
            rows.push_back({});
            allocations::granted = plenty;
            t.frame(rows);
            EXPECT_EQ(plenty - allocations::granted, c.requests) << c.name;
        }
    }
    allocations::granted = allocations::unlimited;
}

// Creation and sixteen frames with the k-th request refused, until k is beyond the last one.
TEST(Memory, MayRunOutAtAnyRequest)
{
    const int live = allocations::live;
    bool refused = true;
    for (int k = 0; refused; ++k) {
        SCOPED_TRACE(k);
        allocations::granted = k;
        tracked t(8);
        ASSERT_EQ(t.handle == nullptr, k < 8);
        for (int n = 0; t.handle && n < 16; ++n) {
            const float x = static_cast<float>(2 * n);
            t.frame({{1, x, 0, x + 9, 9, 1},
                     {1, 100 - x, 80, 109 - x, 89, 1},
                     {n < 8 ? 2.0F : 0.0F, 50, 50, 59, 59, 1},
                     {}});
        }
        refused = allocations::granted == allocations::unlimited;
        allocations::granted = allocations::unlimited;
        // all is made up for: two are confirmed, the third was and is gone
        EXPECT_TRUE(!t.handle || (t.handle->track_count == 2 && t.handle->tid == 4));
        EXPECT_EQ(allocations::live - live, t.handle ? 8 + 2 * 3 : 0);
    }
    EXPECT_EQ(allocations::live, live);
}

// --- the caller's duties ---------------------------------------------------------------------------------------------

#ifndef NDEBUG
struct duty_case {
    const char* name;
    void (*neglect)(zel_mat_t* a, zel_mat_t* b, float* data);  // 2 x 2 over data and over data + 4, of 8 floats
};

const duty_case duties[] = {
    {"an operand is there", [](zel_mat_t* a, zel_mat_t*, float*) { zel_mat_add(a, nullptr, a); }},
    {"so are its data", [](zel_mat_t* a, zel_mat_t*, float*) { a->data.f = nullptr, zel_mat_setone(a); }},
    {"data are aligned", [](zel_mat_t* a, zel_mat_t*, float*) { ++a->data.p, zel_mat_setzero(a); }},
    {"rows have no gap", [](zel_mat_t* a, zel_mat_t*, float*) { a->step = 12, zel_mat_setidentity(a); }},
    {"terms do not overlap at a shift",
     [](zel_mat_t* a, zel_mat_t* b, float* data) { b->data.f = data + 1, zel_mat_neg(a, b); }},
    {"nor does what a product is added to",
     [](zel_mat_t* a, zel_mat_t* b, float* data) {
         float factor[4];
         zel_mat_t f;
         zel_mat_initheader(&f, 2, 2, ZEL_F32, factor);
         b->data.f = data + 3;
         zel_mat_muladd(&f, &f, a, b, 0);
     }},
    {"a factor is not written", [](zel_mat_t* a, zel_mat_t* b, float*) { zel_mat_mul(a, b, b, 0); }},
    {"nothing is transposed in place", [](zel_mat_t* a, zel_mat_t*, float*) { zel_mat_transpose(a, a); }},
    {"without the identity there is a first operand",
     [](zel_mat_t* a, zel_mat_t* b, float*) { zel_mat_submul(nullptr, a, a, b, 0); }},
    {"a vector product is not in place",
     [](zel_mat_t*, zel_mat_t*, float* data) { _veccrossp_3(data, data + 3, data); }},
    {"a filter is there", [](zel_mat_t*, zel_mat_t*, float*) { zel_kalman_predict(nullptr); }},
    {"there is a measurement",
     [](zel_mat_t* a, zel_mat_t*, float*) { zel_kalman_correct(zel_kalman_create(2, 2, 1, a, a, a, a), nullptr); }},
    {"one frame at a time",
     [](zel_mat_t*, zel_mat_t*, float*) {
         tracked t(1);
         const exclusive_call other(processing);
         t.frame({{}});
     }},
    {"there is an input",
     [](zel_mat_t*, zel_mat_t*, float*) { zel_tracker_process(tracked(1).handle, nullptr, nullptr); }},
    {"confirmation takes a match",
     [](zel_mat_t*, zel_mat_t*, float*) {
         tracked t(1);
         zel_tracker_set_params(t.handle, 1, 0, 0, 1, 0);
         t.frame({{}});
     }},
    {"output does not overlap input",
     [](zel_mat_t*, zel_mat_t*, float*) {
         float rows[8] = {1};
         zel_tracker_process(tracked(1).handle, reinterpret_cast<float(*)[6]>(rows),
                             reinterpret_cast<float(*)[8]>(rows));
     }},
};

TEST(Duties, AreAsserted)
{
    for (const duty_case& duty : duties) {
        float data[8] = {};
        zel_mat_t a, b;
        zel_mat_initheader(&a, 2, 2, ZEL_F32, data);
        zel_mat_initheader(&b, 2, 2, ZEL_F32, data + 4);
        EXPECT_DEATH(duty.neglect(&a, &b, data), "Assertion") << duty.name;
    }
}
#endif

// --- the same result -------------------------------------------------------------------------------------------------

std::string outputs(bool other_between)
{
    std::string bytes;
    tracked t(30), other(30);
    traffic road(20, 7), elsewhere(25, 8);
    for (int n = 0; n < 150; ++n) {
        const auto rows = t.frame(road.next());
        bytes.append(reinterpret_cast<const char*>(rows.data()), rows.size() * sizeof(rows[0]));
        if (other_between)
            other.frame(elsewhere.next());
    }
    return bytes;
}

TEST(SameResult, WhateverLiesInFreshMemoryAndRunsBetween)
{
    const std::string expected = outputs(false);
    EXPECT_EQ(outputs(true), expected);
    mallopt(M_PERTURB, 0x5a);
    EXPECT_EQ(outputs(false), expected);
    mallopt(M_PERTURB, 0);
}

struct sequence_case {
    size_t objects;
    unsigned seed;
    int stable, removal;
    int rows, last_id;
    unsigned digest;           // of frame, identifier, class and index of each row
    std::array<float, 4> box;  // of the oldest track in the last frame
};

const sequence_case sequences[] = {
    {1, 1, 1, 4, 306, 5, 200612525, {681.7254F, 156.2552F, 692.4754F, 177.7552F}},
    {12, 2, 3, 10, 3535, 78, 1996605634, {558.2522F, 473.8005F, 570.7522F, 498.8005F}},
    {45, 3, 2, 5, 13661, 303, 2275958750, {612.1683F, -59.9495F, 620.1683F, -43.9495F}},
};

// The same on every processor and with every compiler: where rounding differs, it decides nothing, and moves no box by
// more than a thousandth of a unit.
TEST(SameResult, OnEveryProcessor)
{
    for (const sequence_case& c : sequences) {
        SCOPED_TRACE(testing::Message() << c.objects << " objects");
        tracked t(64, c.stable, c.removal);
        traffic road(c.objects, c.seed);
        std::vector<std::array<float, 8>> rows;
        int count = 0, last_id = 0;
        unsigned digest = 2166136261U;  // FNV-1a
        for (int n = 0; n < 300; ++n) {
            rows = t.frame(road.next());
            for (size_t i = 0; rows[i][0] != -1; ++i, ++count) {
                for (const float value : {static_cast<float>(n), rows[i][0], rows[i][1], rows[i][7]})
                    digest = (digest ^ static_cast<unsigned>(static_cast<int>(value))) * 16777619U;
                last_id = std::max(last_id, static_cast<int>(rows[i][0]));
            }
        }
        EXPECT_TRUE(count == c.rows && last_id == c.last_id) << count << " rows, " << last_id << " identifiers";
        EXPECT_EQ(digest, c.digest);
        for (size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(rows[0][2 + i], c.box[i], 1e-3) << i;
    }
}

}  // namespace
