// SPDX-License-Identifier: MIT
//
// Linear Kalman filter. A filter and all its matrices are one block, laid out once at creation and never resized.
// Compiled as part of the tracker, which works on the filter's fields; installed beside the headers for hosts that do
// the same. The functions are weak so that such a host may also link the static library.
#include "_libzel.h"

#include <assert.h>
#include <limits.h>
#include <stddef.h>
#include <stdlib.h>

struct alignas(8) _zel_kalman_t {
    s32_t ns;
    s32_t nm;
    zel_mat_t* x_pre;
    zel_mat_t* x_post;
    zel_mat_t* P_pre;
    zel_mat_t* P_post;
    zel_mat_t* K;
    zel_mat_t* temp1;
    zel_mat_t* temp2;
    zel_mat_t* temp3;
    zel_mat_t* temp4;
    zel_mat_t* temp5;
    zel_mat_t* A;
    zel_mat_t* H;
    zel_mat_t* Q;
    zel_mat_t* R;
    void* mbuf;  // the matrices, right after the filter itself
};

static_assert(sizeof(zel_kalman_t) % alignof(zel_mat_t) == 0, "the first header lies right after the filter");

// The matrices in the order in which they lie in the block; the last four are the model.
enum dimension { one, states, measurements };
struct slot {
    zel_mat_t* zel_kalman_t::*field;
    dimension rows;
    dimension cols;
};
static constexpr int kalman_slots = 14;
static constexpr int kalman_own_slots = 10;
static constexpr slot slots[kalman_slots] = {
    {&zel_kalman_t::x_pre, states, one},
    {&zel_kalman_t::x_post, states, one},
    {&zel_kalman_t::P_pre, states, states},
    {&zel_kalman_t::P_post, states, states},
    {&zel_kalman_t::K, states, measurements},
    {&zel_kalman_t::temp1, states, states},
    {&zel_kalman_t::temp2, states, measurements},
    {&zel_kalman_t::temp3, measurements, measurements},
    {&zel_kalman_t::temp4, measurements, measurements},
    {&zel_kalman_t::temp5, measurements, one},
    {&zel_kalman_t::A, states, states},
    {&zel_kalman_t::H, measurements, states},
    {&zel_kalman_t::Q, states, states},
    {&zel_kalman_t::R, measurements, measurements},
};

// No filter with a larger dimension fits in 31 bits, and below it the size of no single matrix overflows.
static constexpr int max_dimension = 16384;

// Sizes of the matrices that lie in the block; returns their number. Sizes are multiples of 8, so that every header and
// with it every data area is aligned.
static int getmsizes(int* msizes, int* mrows, int* mcols, int ns, int nm, int flag)
{
    const int dimensions[] = {1, ns, nm};
    const int mcount = flag ? kalman_own_slots : kalman_slots;
    for (int i = 0; i < mcount; ++i) {
        mrows[i] = dimensions[slots[i].rows];
        mcols[i] = dimensions[slots[i].cols];
        const int size = static_cast<int>(sizeof(zel_mat_t)) + mrows[i] * mcols[i] * static_cast<int>(sizeof(f32_t));
        msizes[i] = (size + 7) & ~7;
    }
    return mcount;
}

[[gnu::weak]] zel_kalman_t* zel_kalman_create(int ns, int nm, int flag, zel_mat_t* A, zel_mat_t* H, zel_mat_t* Q,
                                              zel_mat_t* R)
{
    int msizes[kalman_slots];
    int mrows[kalman_slots];
    int mcols[kalman_slots];
    if (ns < 1 || nm < 1 || ns > max_dimension || nm > max_dimension)
        return nullptr;
    const int mcount = getmsizes(msizes, mrows, mcols, ns, nm, flag);
    s64_t size = sizeof(zel_kalman_t);
    for (int i = 0; i < mcount; ++i)
        size += msizes[i];
    if (size > INT_MAX)
        return nullptr;
    auto* kalman = static_cast<zel_kalman_t*>(calloc(1, static_cast<size_t>(size)));
    if (!kalman)
        return nullptr;

    kalman->ns = ns;
    kalman->nm = nm;
    kalman->mbuf = kalman + 1;
    auto* p = static_cast<u08_t*>(kalman->mbuf);
    for (int i = 0; i < mcount; ++i) {
        auto* mat = reinterpret_cast<zel_mat_t*>(p);
        kalman->*slots[i].field = zel_mat_initheader(mat, mrows[i], mcols[i], ZEL_MAT_TYPE(ZEL_F32, 1), mat + 1);
        p += msizes[i];
    }
    if (flag) {
        kalman->A = A;
        kalman->H = H;
        kalman->Q = Q;
        kalman->R = R;
    }
    return kalman;
}

[[gnu::weak]] void zel_kalman_release(zel_kalman_t* kalman)
{
    free(kalman);
}

[[gnu::weak]] void zel_kalman_predict(zel_kalman_t* kalman)
{
    assert(kalman);
    const zel_kalman_t& f = *kalman;
    // x_pre = A x_post
    zel_mat_mul(f.A, f.x_post, f.x_pre, 0);
    // P_pre = A P_post' A' + Q
    zel_mat_mul(f.A, f.P_post, f.temp1, ZEL_MAT_TRANS_SRC2);
    zel_mat_muladd(f.temp1, f.A, f.Q, f.P_pre, ZEL_MAT_TRANS_SRC2);
}

// Covariances are read transposed where both readings mean the same: rounding leaves them a little asymmetric, and the
// results depend on which one is taken.
[[gnu::weak]] void zel_kalman_correct(zel_kalman_t* kalman, zel_mat_t* measurement)
{
    assert(kalman && measurement);
    const zel_kalman_t& f = *kalman;
    // S = H P_pre H' + R
    zel_mat_mul(f.P_pre, f.H, f.temp2, ZEL_MAT_TRANS_SRC2);
    zel_mat_muladd(f.H, f.temp2, f.R, f.temp3, 0);
    // K = P_pre H' (S^-1)'
    zel_mat_inv(f.temp3, f.temp4);
    zel_mat_mul(f.temp2, f.temp4, f.K, ZEL_MAT_TRANS_SRC2);
    // x_post = x_pre + K (z - H x_pre)
    zel_mat_submul(measurement, f.H, f.x_pre, f.temp5, 0);
    zel_mat_muladd(f.K, f.temp5, f.x_pre, f.x_post, 0);
    // P_post = (I - K H) P_pre'
    zel_mat_submul(nullptr, f.K, f.H, f.temp1, ZEL_MAT_FROM_IDENTITY);
    zel_mat_mul(f.temp1, f.P_pre, f.P_post, ZEL_MAT_TRANS_SRC2);
}
