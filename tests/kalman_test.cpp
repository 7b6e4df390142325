// SPDX-License-Identifier: MIT
//
// The filter, its unit included for its fields. Random models are checked against a filter in double precision whose
// covariance is far from symmetric, so that it shows which operand is read transposed.
#include "zel_kalman.cpp"

#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "allocations.h"
#include "matrices.h"

namespace {

void set(zel_mat_t* mat, const std::vector<float>& values)
{
    ASSERT_EQ(values.size(), static_cast<size_t>(mat->rows * mat->cols));
    std::memcpy(mat->data.f, values.data(), values.size() * sizeof(float));
}

std::vector<float> get(const zel_mat_t* mat)
{
    return std::vector<float>(mat->data.f, mat->data.f + mat->rows * mat->cols);
}

// --- the block -------------------------------------------------------------------------------------------------------

struct block_case {
    const char* name;
    int ns, nm, flag;
    size_t headers, floats;  // with the padding that aligns the headers
};

const block_case blocks[] = {
    {"borrowed model", 8, 4, 1, 10, 308},
    {"own model", 8, 4, 0, 14, 484},
    {"any other flag borrows", 8, 4, 7, 10, 308},
    {"odd sizes are padded", 3, 1, 0, 14, 78},
};

TEST(Block, HoldsAllMatricesBackToBackAndZeroed)
{
    zel_mat_t model[4];
    for (const block_case& c : blocks) {
        SCOPED_TRACE(c.name);
        const int live = allocations::live;
        zel_kalman_t* f = zel_kalman_create(c.ns, c.nm, c.flag, &model[0], &model[1], &model[2], &model[3]);
        ASSERT_NE(f, nullptr);
        EXPECT_EQ(allocations::live, live + 1);
        EXPECT_EQ(allocations::requested, sizeof(zel_kalman_t) + c.headers * sizeof(zel_mat_t) + c.floats * 4);
        EXPECT_EQ(std::tie(f->ns, f->nm), std::tie(c.ns, c.nm));
        EXPECT_EQ(f->mbuf, f + 1);
        auto* next = static_cast<unsigned char*>(f->mbuf);
        for (size_t i = 0; i < 14; ++i) {
            zel_mat_t* mat = f->*slots[i].field;
            ASSERT_EQ(static_cast<void*>(mat), i < c.headers ? static_cast<void*>(next) : &model[i - 10]) << i;
            if (i >= c.headers)
                continue;
            EXPECT_EQ(mat->type, 5) << i;
            EXPECT_EQ(static_cast<void*>(mat->data.p), mat + 1) << i;
            const auto values = get(mat);
            EXPECT_EQ(values, std::vector<float>(values.size(), 0));
            next += (sizeof(zel_mat_t) + values.size() * 4 + 7) / 8 * 8;
        }
        zel_kalman_release(f);
        EXPECT_EQ(allocations::live, live);
    }
    zel_kalman_release(nullptr);
}

TEST(Block, IsRefusedWhenASizeIsNoSizeOrTheWholeDoesNotFit)
{
    const int sizes[][3] = {{0, 4, 1},     {4, 0, 1},       {-1, 4, 0},
                            {4, -1, 0},    {INT_MAX, 1, 1}, {1, INT_MAX, 1},
                            {65536, 1, 1}, {13400, 1, 1},   {INT_MAX, INT_MAX, 0},
                            {1, 16384, 1}};
    for (const auto& [ns, nm, flag] : sizes) {
        allocations::requested = 0;
        EXPECT_EQ(zel_kalman_create(ns, nm, flag, nullptr, nullptr, nullptr, nullptr), nullptr) << ns << ", " << nm;
        EXPECT_EQ(allocations::requested, 0U);
    }
    allocations::granted = 0;
    EXPECT_EQ(zel_kalman_create(1, 16383, 1, nullptr, nullptr, nullptr, nullptr), nullptr);
    EXPECT_GT(allocations::requested, 2000000000U);
    EXPECT_EQ(allocations::granted, allocations::unlimited);
}

// --- prediction and correction ---------------------------------------------------------------------------------------

struct release {
    void operator()(zel_kalman_t* f) const { zel_kalman_release(f); }
};
using owned_filter = std::unique_ptr<zel_kalman_t, release>;

// With a model of its own.
owned_filter make_filter(int ns, int nm)
{
    return owned_filter(zel_kalman_create(ns, nm, 0, nullptr, nullptr, nullptr, nullptr));
}

// Dense matrices in double precision.
struct grid {
    grid(int r, int c) : rows(r), cols(c), v(static_cast<size_t>(r * c)) {}
    grid(const zel_mat_t* m) : grid(m->rows, m->cols) { std::copy_n(m->data.f, v.size(), v.begin()); }
    double& at(int i, int j) { return v[static_cast<size_t>(i * cols + j)]; }
    double at(int i, int j) const { return v[static_cast<size_t>(i * cols + j)]; }

    int rows, cols;
    std::vector<double> v;
};

void expect_near(const grid& values, const std::vector<double>& expected, double tolerance = 1e-6)
{
    ASSERT_EQ(values.v.size(), expected.size());
    for (size_t t = 0; t < expected.size(); ++t)
        EXPECT_NEAR(values.v[t], expected[t], tolerance * (1 + std::abs(expected[t]))) << t;
}

TEST(Filter, PositionAndSpeed)
{
    const owned_filter f = make_filter(2, 1);
    set(f->A, {1, 1, 0, 1});
    set(f->H, {1, 0});
    set(f->Q, {0.1F, 0, 0, 0.1F});
    set(f->R, {1});
    set(f->x_post, {0, 1});
    set(f->P_post, {1, 0, 0, 1});
    zel_kalman_predict(f.get());
    zel_kalman_predict(f.get());  // does not advance by itself
    expect_near(f->x_pre, {1, 1});
    expect_near(f->P_pre, {2.1, 1, 1, 1.1});
    EXPECT_EQ(get(f->x_post), (std::vector<float>{0, 1}));
    EXPECT_EQ(get(f->P_post), (std::vector<float>{1, 0, 0, 1}));
    const auto prior = get(f->P_pre);
    matrix<f32_t> z(1, 1, 1, {2});
    zel_kalman_correct(f.get(), z);
    expect_near(f->temp3, {3.1});
    expect_near(f->K, {0.6774194, 0.3225806});
    expect_near(f->x_post, {1.6774194, 1.3225806});
    expect_near(f->P_post, {0.6774194, 0.3225806, 0.3225806, 0.7774194});
    EXPECT_EQ(get(f->x_pre), (std::vector<float>{1, 1}));
    EXPECT_EQ(get(f->P_pre), prior);
}

TEST(Filter, UsesTheLastInnovationWhenTheMeasurementDoesNotFit)
{
    const owned_filter f = make_filter(2, 1);
    set(f->A, {1, 0, 0, 1});
    set(f->H, {1, 0});
    set(f->R, {1});
    set(f->P_post, {1, 0, 0, 1});
    matrix<f32_t> z(1, 1, 1, {2});
    matrix<f32_t> two(2, 1, 1, {8, 8});
    matrix<f64_t> wide(1, 1, 1, {8});
    for (zel_mat_t* measurement : {&z.mat, &two.mat, &wide.mat}) {
        set(f->x_pre, {0, 0});
        set(f->P_pre, {1, 0, 0, 1});
        zel_kalman_correct(f.get(), measurement);
        expect_near(f->temp5, {2});
        expect_near(f->x_post, {1, 0});
    }
}

TEST(Filter, KeepsThePredictionWhenTheInverseRefuses)
{
    const owned_filter f = make_filter(2, 41);
    set(f->x_pre, {3, 4});
    set(f->P_pre, {1, 2, 3, 4});
    std::fill_n(f->H->data.f, 82, 1.0F);
    matrix<f32_t> z(41, 1);
    zel_kalman_correct(f.get(), z);
    EXPECT_EQ(get(f->x_post), (std::vector<float>{3, 4}));
    EXPECT_EQ(get(f->P_post), (std::vector<float>{1, 3, 2, 4}));  // transposed
}

// start + factor * a * b
grid sum(grid start, double factor, const grid& a, const grid& b)
{
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < b.cols; ++j)
            for (int k = 0; k < a.cols; ++k)
                start.at(i, j) += factor * a.at(i, k) * b.at(k, j);
    return start;
}

grid operator*(const grid& a, const grid& b)
{
    return sum(grid(a.rows, b.cols), 1, a, b);
}

grid transposed(const grid& a)
{
    grid t(a.cols, a.rows);
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j)
            t.at(j, i) = a.at(i, j);
    return t;
}

void randomize(zel_mat_t* mat, random_bits& bits, float diagonal = 0)
{
    for (int t = 0; t < mat->rows * mat->cols; ++t)
        mat->data.f[t] = random_real<f32_t>(bits) + (t / mat->cols == t % mat->cols ? diagonal : 0);
}

// The gain is multiplied out instead of dividing: K S' = P_pre H'.
TEST(Filter, FollowsItsEquationsForAsymmetricCovariancesOfAnySize)
{
    random_bits bits(1);
    for (const auto& [ns, nm] : {std::pair{1, 1}, {2, 1}, {1, 3}, {3, 2}, {5, 5}, {4, 7}, {8, 4}, {9, 3}, {17, 9}}) {
        SCOPED_TRACE(testing::Message() << ns << " states, " << nm << " measurements");
        const owned_filter f = make_filter(ns, nm);
        for (zel_mat_t* mat : {f->A, f->H, f->Q, f->x_post})
            randomize(mat, bits);
        randomize(f->P_post, bits, 2);
        randomize(f->R, bits, static_cast<float>(4 * ns + nm));
        matrix<f32_t> z(nm, 1);
        z.fill(bits, random_real<f32_t>);
        const grid A(f->A), H(f->H), Q(f->Q), R(f->R), x(f->x_post), P(f->P_post);

        zel_kalman_predict(f.get());
        expect_near(f->x_pre, (A * x).v, 1e-5);
        expect_near(f->P_pre, sum(Q, 1, A * transposed(P), transposed(A)).v, 1e-5);

        const grid x_pre(f->x_pre), P_pre(f->P_pre), PHt = P_pre * transposed(H);
        zel_kalman_correct(f.get(), z);
        const grid K(f->K);
        expect_near(K * transposed(sum(R, 1, H, PHt)), PHt.v, 1e-4);
        expect_near(f->x_post, sum(x_pre, 1, K, sum(grid(&z.mat), -1, H, x_pre)).v, 1e-4);
        expect_near(f->P_post, sum(transposed(P_pre), -1, K * H, transposed(P_pre)).v, 1e-4);
    }
}

}  // namespace
