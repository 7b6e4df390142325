// SPDX-License-Identifier: MIT
//
// For the thread sanitizer: what may run in parallel, which is calls that write different matrices, and predictions
// of different filters. Operands and models that are only read are shared.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "zel_kalman.cpp"

namespace {

constexpr int n = 33;

struct square {
    square() : data(n * n) { zel_mat_initheader(&mat, n, n, ZEL_F32, data.data()); }

    zel_mat_t mat;
    std::vector<float> data;
};

// Runs the same on both threads and on this one, whose results must agree.
void expect_parallel(const std::function<std::vector<float>()>& work)
{
    std::vector<float> results[2];
    std::thread first([&] { results[0] = work(); });
    std::thread second([&] { results[1] = work(); });
    first.join();
    second.join();
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(results[0], work());
}

TEST(Threads, MayWriteDifferentMatrices)
{
    square a, b;
    std::minstd_rand random(1);
    for (square* mat : {&a, &b})
        for (float& value : mat->data)
            value = static_cast<float>(random() % 64);
    expect_parallel([&] {
        square c, d;
        for (int round = 0; round < 20; ++round) {
            for (const int flags : {0, ZEL_MAT_TRANS_SRC1, ZEL_MAT_TRANS_SRC2})
                zel_mat_mul(&a.mat, &b.mat, &c.mat, flags);
            zel_mat_muladd(&a.mat, &b.mat, &c.mat, &d.mat, 0);
            zel_mat_muladd(&a.mat, &b.mat, &c.mat, &d.mat, ZEL_MAT_TRANS_SRC2);
            zel_mat_submul(&a.mat, &b.mat, &d.mat, &c.mat, 0);
            zel_mat_submul(nullptr, &a.mat, &b.mat, &d.mat, ZEL_MAT_FROM_IDENTITY);
            zel_mat_transpose(&c.mat, &d.mat);
            zel_mat_add(&a.mat, &d.mat, &d.mat);
        }
        return d.data;
    });
}

TEST(Threads, MayPredictDifferentFiltersOfOneModel)
{
    zel_kalman_t* model = zel_kalman_create(8, 4, 0, nullptr, nullptr, nullptr, nullptr);
    for (zel_mat_t* mat : {model->A, model->H, model->Q, model->R})
        zel_mat_setidentity(mat);
    expect_parallel([&] {
        zel_kalman_t* filter = zel_kalman_create(8, 4, 1, model->A, model->H, model->Q, model->R);
        zel_mat_setone(filter->x_post);
        zel_mat_setone(filter->P_post);
        for (int round = 0; round < 200; ++round)
            zel_kalman_predict(filter);
        std::vector<float> result(filter->P_pre->data.f, filter->P_pre->data.f + 64);
        result.insert(result.end(), filter->x_pre->data.f, filter->x_pre->data.f + 8);
        zel_kalman_release(filter);
        return result;
    });
    zel_kalman_release(model);
}

}  // namespace
