// SPDX-License-Identifier: MIT
//
// What a device in the field relies on: any input and any failed allocation is survived, memory is taken only where the
// headers say, and the same input gives the same result. Arrays are exactly as long as they must be, so that a
// sanitizer sees a row too many.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <string>

static void require(bool holds, const char* what)
{
    EXPECT_TRUE(holds) << what;
}

#include "tracked.h"
#include "traffic.h"

namespace {

constexpr int plenty = 1000000;  // requests that a test grants in order to count them

// --- any input -------------------------------------------------------------------------------------------------------

TEST(AnyInput, IsSurvivedInEveryColumnByTentativeAndConfirmedTracks)
{
    const float wild[] = {NAN,     -NAN,    INFINITY, -INFINITY, FLT_MAX, -FLT_MAX, FLT_MIN, 1e-45F,
                          -1e-45F, 1.8e19F, -1e38F,   -0.0F,     3e9F,    -3e9F,    1e-30F,  65536};
    for (const float value : wild)
        for (size_t column = 0; column < 6; ++column)
            for (const int stable : {1, 2, 4}) {
                tracked t(3, stable, 2);
                const input_row calm = {1, 10, 10, 20, 20, 1};
                input_row row = calm;
                row[column] = value;
                for (const input_row& second : {calm, row, row, calm, row})
                    t.frame({calm, second, second, calm});
                t.frame({row, row, row});
                for (int n = 0; n < 3; ++n)
                    t.frame({});
                EXPECT_EQ(t->track_count, 0) << value << " in column " << column;
            }
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
            std::vector<input_row> rows;
            for (const float x : c.objects)
                rows.push_back({1, x, 0, x + 8, 8, 1});
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
    bool refused = true;
    for (int k = 0; refused; ++k) {
        SCOPED_TRACE(k);
        const int live = allocations::live;
        allocations::granted = k;
        tracked t(8, 2, 6);
        ASSERT_EQ(t.handle == nullptr, k < 8);
        EXPECT_EQ(allocations::live, t.handle ? live + 8 : live);
        for (int n = 0; t.handle && n < 16; ++n) {
            const float x = static_cast<float>(2 * n);
            t.frame(
                {{1, x, 0, x + 9, 9, 1}, {1, 100 - x, 80, 109 - x, 89, 1}, {n < 8 ? 2.0F : 0.0F, 50, 50, 59, 59, 1}});
        }
        refused = allocations::granted == allocations::unlimited;
        allocations::granted = allocations::unlimited;
        if (!t.handle)
            continue;
        EXPECT_EQ(t->track_count, 2);  // all is made up for
        EXPECT_EQ(t->tid, 4);          // the third was confirmed, too, and is gone
    }
}

// Through the end of the identifiers' range. scripts/soak asks for more frames.
TEST(Memory, IsNotLostInALongRun)
{
    const char* asked = std::getenv("ZEL_SOAK_FRAMES");
    const long frames = asked ? std::atol(asked) : 4000;
    tracked t(60, 2, 6);
    t->tid = asked ? 1 : max_id - 1000;
    traffic road(40, 1);
    long confirmed = 0;
    for (long frame = 1; frame <= frames; ++frame) {
        const int tid = t->tid;
        t.frame(road.next());
        confirmed += (t->tid - tid + max_id) % max_id;
        ASSERT_FALSE(HasFailure()) << "frame " << frame;
    }
    EXPECT_GT(confirmed, frames / 2);
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
         tracked t(1, 1, 1);
         const exclusive_call other(processing);
         t.frame({{}});
     }},
    {"there is an input",
     [](zel_mat_t*, zel_mat_t*, float*) { zel_tracker_process(tracked(1, 1, 1).handle, nullptr, nullptr); }},
    {"confirmation takes a match",
     [](zel_mat_t*, zel_mat_t*, float*) {
         tracked t(1, 1, 1);
         zel_tracker_set_params(t.handle, 1, 0, 0, 1, 0);
         t.frame({{}});
     }},
    {"output does not overlap input",
     [](zel_mat_t*, zel_mat_t*, float*) {
         float rows[8] = {1};
         zel_tracker_process(tracked(1, 1, 1).handle, reinterpret_cast<float(*)[6]>(rows),
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

std::vector<output_row> outputs(bool other_between)
{
    std::vector<output_row> all;
    tracked t(30, 2, 6), other(30, 2, 6);
    traffic road(20, 7), elsewhere(25, 8);
    for (int n = 0; n < 150; ++n) {
        const auto rows = t.frame(road.next());
        all.insert(all.end(), rows.begin(), rows.end());
        if (other_between)
            other.frame(elsewhere.next());
    }
    return all;
}

TEST(SameResult, WhateverLiesInFreshMemoryAndRunsBetween)
{
    const auto expected = outputs(false);
    EXPECT_GT(expected.size(), 1000U);
    EXPECT_EQ(outputs(true), expected);
    mallopt(M_PERTURB, 0x5a);
    EXPECT_EQ(outputs(false), expected);
    mallopt(M_PERTURB, 0);
}

// Where rounding differs, it decides nothing: as many rows and identifiers as on x86-64.
TEST(SameResult, OnEveryProcessor)
{
    tracked t(64, 2, 5, 0.5F, 0.2F);
    traffic road(45, 3);
    size_t rows = 0;
    std::vector<output_row> last;
    for (int n = 0; n < 300; ++n) {
        last = t.frame(road.next());
        rows += last.size();
    }
    EXPECT_EQ(rows, 13661U);
    EXPECT_EQ(t->tid, 304);
    const float oldest[] = {612.1683F, -59.9495F, 620.1683F, -43.9495F};
    for (size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(last[0][2 + i], oldest[i], 1e-3) << i;
}

}  // namespace
