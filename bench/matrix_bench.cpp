// SPDX-License-Identifier: MIT
//
// The matrix operations beside Eigen's with sizes that are known at run time only, as libzel's are.

#include <Eigen/Dense>
#include <algorithm>
#include <vector>

#include "bench.h"

namespace bench {
namespace {

template <typename T>
using eigen_mat = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic>;

using eigen_map = Eigen::Map<Eigen::MatrixXf, Eigen::Aligned64>;

template <typename T>
eigen_mat<T> random_eigen(int rows, int cols)
{
    return eigen_mat<T>::Random(rows, cols);
}

template <typename T>
mat random_mat(int rows, int cols, int depth)
{
    return copy_of(random_eigen<T>(rows, cols).data(), rows, cols, depth);
}

// --- products --------------------------------------------------------------------------------------------------------

template <typename T>
void add_product(const std::string& section, const std::string& line, int n, int depth)
{
    measure(cell(section, line, "libzel"), [=] {
        return [a = random_mat<T>(n, n, depth), b = random_mat<T>(n, n, depth), d = random_mat<T>(n, n, depth)] {
            zel_mat_mul(a.get(), b.get(), d.get(), 0);
        };
    });
    measure(cell(section, line, "Eigen dynamic"), [=] {
        return [a = random_eigen<T>(n, n), b = random_eigen<T>(n, n), d = random_eigen<T>(n, n)]() mutable {
            d.noalias() = a * b;
        };
    });
}

void add_products()
{
    for (int n = 8; n <= 128; n += 4)
        add_product<float>("product of n x n f32", "n = " + std::to_string(n), n, ZEL_F32);
    for (int n = 4; n <= 64; n += n < 16 ? 4 : 16)
        add_product<double>("product by depth", "f64, n = " + std::to_string(n), n, ZEL_F64);
    for (const int n : {8, 32, 128}) {
        const auto line = [=](const char* depth) { return depth + (", n = " + std::to_string(n)); };
        add_product<std::uint8_t>("product by depth", line("u08"), n, ZEL_U08);
        add_product<std::int16_t>("product by depth", line("s16"), n, ZEL_S16);
        add_product<std::int32_t>("product by depth", line("s32"), n, ZEL_S32);
    }
}

// --- transpose and element-wise --------------------------------------------------------------------------------------

void add_transposes()
{
    for (const int n : {8, 64, 512}) {
        const std::string line = "n = " + std::to_string(n);
        measure(cell("transpose of n x n f32", line, "libzel"), [=] {
            return [a = random_mat<float>(n, n, ZEL_F32), d = random_mat<float>(n, n, ZEL_F32)] {
                zel_mat_transpose(a.get(), d.get());
            };
        });
        measure(cell("transpose of n x n f32", line, "Eigen dynamic"), [=] {
            return [a = random_eigen<float>(n, n), d = random_eigen<float>(n, n)]() mutable { d = a.transpose(); };
        });
    }
}

template <typename F, typename G>
void add_elementwise(const std::string& line, F call, G eigen)
{
    measure(cell(elementwise, line, "libzel"), [call] {
        return [call, o = elementwise_operands()] {
            zel_mat_t mats[3];
            for (int n = 0; n < 3; ++n)
                zel_mat_initheader(&mats[n], elementwise_size, elementwise_size, ZEL_F32, o[n]);
            call(&mats[0], &mats[1], &mats[2]);
        };
    });
    measure(cell(elementwise, line, "Eigen dynamic"), [eigen] {
        return [eigen, o = elementwise_operands()] {
            const auto mapped = [&](int n) { return eigen_map(o[n], elementwise_size, elementwise_size); };
            auto d = mapped(2);
            eigen(mapped(0), mapped(1), d);
        };
    });
}

void add_elementwise_all()
{
    using M = eigen_map;
    add_elementwise("d = a + b", zel_mat_add, [](const M& a, const M& b, M& d) { d = a + b; });
    add_elementwise("d = a - b", zel_mat_sub, [](const M& a, const M& b, M& d) { d = a - b; });
    add_elementwise(
        "d = 3 a",
        [](zel_mat_t* a, zel_mat_t*, zel_mat_t* d) {
            float three = 3;
            zel_mat_scale(&three, a, d);
        },
        [](const M& a, const M&, M& d) { d = 3 * a; });
    add_elementwise(
        "d = -a", [](zel_mat_t* a, zel_mat_t*, zel_mat_t* d) { zel_mat_neg(a, d); },
        [](const M& a, const M&, M& d) { d = -a; });
}

// --- inverse ---------------------------------------------------------------------------------------------------------

// The loops that define the inverse, as plain as they are written, for any size that the work area holds: what the
// library itself runs for every other size. GCC is easily upset here: without the tests of n it may be a quarter
// faster.
[[gnu::noinline]] int plain_inverse(int n, const float* A, float* inverse)
{
    static float W[40][80];
    static float held[80];
    if (n > 40)
        return -1;
    const int n2 = 2 * n;
    const std::size_t row = sizeof(float) * static_cast<std::size_t>(n > 0 ? n : 0);
    for (int i = 0; i < n; ++i) {
        std::memcpy(W[i], A + i * n, row);
        for (int j = n; j < n2; ++j)
            W[i][j] = j == n + i ? 1.0F : 0.0F;
    }
    for (int i = 0; i < n; ++i) {
        if (W[i][i] == 0 && i < n - 1) {
            int k = i + 1;
            while (k < n - 1 && W[k][i] == 0)
                ++k;
            const std::size_t rest = sizeof(float) * static_cast<std::size_t>(n2 - i);
            std::memcpy(held, W[i] + i, rest);
            std::memcpy(W[i] + i, W[k] + i, rest);
            std::memcpy(W[k] + i, held, rest);
        }
        for (int j = 0; j < n; ++j) {
            if (j == i)
                continue;
            const double ratio = static_cast<double>(W[j][i]) / static_cast<double>(W[i][i]);
            for (int k = 0; k < n2; ++k)
                W[j][k] = static_cast<float>(static_cast<double>(W[j][k]) - ratio * static_cast<double>(W[i][k]));
        }
    }
    for (int i = 0; i < n; ++i) {
        const double a = 1 / static_cast<double>(W[i][i]);
        for (int j = 0; j < n2; ++j)
            W[i][j] = static_cast<float>(static_cast<double>(W[i][j]) * a);
    }
    for (int i = 0; i < n; ++i)
        std::memcpy(inverse + i * n, W[i] + n, row);
    return 0;
}

// As different from step to step as the covariances of many filters: branch prediction must not learn one by heart.
template <int n>
using square = Eigen::Matrix<float, n, n>;

template <int n>
std::vector<square<n>> covariances()
{
    std::vector<square<n>> all(256);
    for (square<n>& S : all) {
        S.setRandom();
        S = S * S.transpose() + square<n>::Identity();
    }
    return all;
}

template <int n, typename F>
void add_inverse(const std::string& column, F invert)
{
    measure(cell("inverse of n x n f32", "n = " + std::to_string(n), column), [=] {
        return [invert, all = covariances<n>(), result = square<n>(), next = 0U]() mutable {
            invert(all[next++ % 256], result);
        };
    });
}

template <int n>
void add_inverses()
{
    add_inverse<n>("libzel", [](square<n>& S, square<n>& inverse) {
        zel_mat_t src, dst;
        zel_mat_initheader(&src, n, n, ZEL_F32, S.data());
        zel_mat_initheader(&dst, n, n, ZEL_F32, inverse.data());
        zel_mat_inv(&src, &dst);
    });
    add_inverse<n>("plain loops", [rows = n](const square<n>& S, square<n>& inverse) {
        plain_inverse(rows, S.data(), inverse.data());
    });
    add_inverse<n>("Eigen fixed", [](square<n>& S, square<n>& inverse) { inverse = S.inverse(); });
}

}  // namespace

float* const* elementwise_operands()
{
    constexpr std::size_t count = std::size_t{elementwise_size} * elementwise_size;
    alignas(4096) static float memory[3][count];
    static float* const operands[3] = {memory[0], memory[1], memory[2]};
    for (float* operand : operands)
        std::fill_n(operand, count, 1.5F);
    return operands;
}

void add_matrices()
{
    add_products();
    add_transposes();
    add_elementwise_all();
    add_inverses<1>();
    add_inverses<2>();
    add_inverses<3>();
    add_inverses<4>();
    add_inverses<5>();
    add_inverses<6>();
    add_inverses<7>();
    add_inverses<8>();
    add_inverses<16>();
}

}  // namespace bench
