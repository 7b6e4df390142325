// SPDX-License-Identifier: MIT
//
// Matrices for the tests, of every scalar type, and operands that do not fit.
#ifndef ZEL_TESTS_MATRICES_H
#define ZEL_TESTS_MATRICES_H

#include <gtest/gtest.h>
#include <zel/_libzel.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <type_traits>
#include <vector>

using scalar_types = ::testing::Types<u08_t, s08_t, u16_t, s16_t, s32_t, f32_t, s64_t, f64_t>;
using float_types = ::testing::Types<f32_t, f64_t>;
using random_bits = std::mt19937_64;

// Depths are numbered by size; of two with one size the signed integer or the float of 4 or 8 bytes comes second.
template <typename T>
constexpr int depth_of()
{
    if (sizeof(T) < 4)
        return (sizeof(T) == 1 ? ZEL_U08 : ZEL_U16) + std::is_signed_v<T>;
    return (sizeof(T) == 4 ? ZEL_S32 : ZEL_S64) + std::is_floating_point_v<T>;
}

// Integers of all their bits; floats that are small whole numbers, so that sums and products of them are exact.
template <typename T>
T random_scalar(random_bits& bits)
{
    if constexpr (std::is_integral_v<T>)
        return static_cast<T>(bits());
    else
        return static_cast<T>(static_cast<int>(bits() % 17) - 8);
}

template <typename T>
T random_real(random_bits& bits)
{
    return std::uniform_real_distribution<T>(-1, 1)(bits);
}

// A header over data of exactly its size, so that a sanitizer sees the first scalar too many.
template <typename T>
struct matrix {
    matrix(int rows, int cols, int cn = 1) : data(static_cast<size_t>(rows * cols * cn))
    {
        zel_mat_initheader(&mat, rows, cols, ZEL_MAT_TYPE(depth_of<T>(), cn), data.data());
    }
    // cn is not left out, or a list of one value would be taken for it.
    matrix(int rows, int cols, int cn, const std::vector<T>& values) : matrix(rows, cols, cn)
    {
        EXPECT_EQ(values.size(), data.size());
        std::copy(values.begin(), values.end(), data.begin());
    }
    matrix(const matrix&) = delete;
    matrix& operator=(const matrix&) = delete;

    operator zel_mat_t*() { return &mat; }
    T& at(int i, int j) { return data[static_cast<size_t>((i * mat.cols + j) * ZEL_MAT_CN(mat.type))]; }
    void fill(random_bits& bits, T (*value)(random_bits&) = random_scalar<T>)
    {
        std::generate(data.begin(), data.end(), [&] { return value(bits); });
    }

    zel_mat_t mat;
    std::vector<T> data;
};

struct misfit {
    const char* name;
    int rows, cols, type;
};

const misfit misfits[] = {{"a row more", 1, 0, 0},         {"a row less", -1, 0, 0},
                          {"a column more", 0, 1, 0},      {"a column less", 0, -1, 0},
                          {"cols x rows", 4, -4, 0},       {"another depth of the same size", 0, 0, 1},
                          {"other channels", 0, 0, 8 * 2}, {"a type bit beyond the channels", 0, 0, 256}};

// Calls the operation with one operand after the other misfitting in each way: dst, one of them, must stay as it was.
template <typename T, typename F>
void expect_refused(const std::vector<zel_mat_t*>& operands, const matrix<T>& dst, F call)
{
    const std::vector<T> before = dst.data;
    for (size_t i = 0; i < operands.size(); ++i)
        for (const misfit& wrong : misfits) {
            zel_mat_t& mat = *operands[i];
            const zel_mat_t fitting = mat;
            mat.rows += wrong.rows;
            mat.cols += wrong.cols;
            mat.type ^= wrong.type;
            call();
            mat = fitting;
            EXPECT_EQ(std::memcmp(dst.data.data(), before.data(), before.size() * sizeof(T)), 0)
                << "operand " << i << ": " << wrong.name;
        }
}

#endif
