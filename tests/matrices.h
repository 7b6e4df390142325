// SPDX-License-Identifier: MIT
//
// Matrices of every scalar type, products by a plain triple loop, and operands that do not fit.
#ifndef ZEL_TESTS_MATRICES_H
#define ZEL_TESTS_MATRICES_H

#include <zel/_libzel.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

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

template <typename T>
bool same_bits(T x, T y)
{
    return std::memcmp(&x, &y, sizeof(T)) == 0;
}

template <typename T>
bool both_nan(T x, T y)
{
    return std::isnan(static_cast<double>(x)) && std::isnan(static_cast<double>(y));
}

// A header over data of exactly its size, so that a sanitizer sees the first scalar too many.
template <typename T>
struct matrix {
    // cn has no default before values: a list of one value would be taken for it.
    matrix(int rows, int cols, int cn, const std::vector<T>& values) : data(values)
    {
        zel_mat_initheader(&mat, rows, cols, ZEL_MAT_TYPE(depth_of<T>(), cn), data.data());
    }
    matrix(int rows, int cols, int cn = 1)
        : matrix(rows, cols, cn, std::vector<T>(static_cast<size_t>(rows * cols * cn)))
    {
    }
    matrix(const matrix&) = delete;
    matrix& operator=(const matrix&) = delete;

    operator zel_mat_t*() { return &mat; }
    T& at(int i, int j, int k = 0) { return data[static_cast<size_t>((i * mat.cols + j) * ZEL_MAT_CN(mat.type) + k)]; }
    void fill(random_bits& bits, T (*value)(random_bits&) = random_scalar<T>)
    {
        std::generate(data.begin(), data.end(), [&] { return value(bits); });
    }

    zel_mat_t mat;
    std::vector<T> data;
};

// --- products --------------------------------------------------------------------------------------------------------

enum class call { mul, muladd, submul };
enum class start { zero, third, identity };

// d = start + a * b, or less a * b, where a or b may be given transposed.
struct form {
    const char* name;
    call function;
    int flags;
    bool trans_a, trans_b;
    start from;
};

const form forms[] = {
    {"product", call::mul, 0, false, false, start::zero},
    {"product: other bits are ignored", call::mul, ~3, false, false, start::zero},
    {"first transposed", call::mul, 1, true, false, start::zero},
    {"second transposed", call::mul, 2, false, true, start::zero},
    {"both bits: only the first", call::mul, 3, true, false, start::zero},
    {"sum: the first is never transposed", call::muladd, ~2, false, false, start::third},
    {"sum, second transposed", call::muladd, 2, false, true, start::third},
    {"sum, both bits: only the second", call::muladd, 3, false, true, start::third},
    {"difference: other bits are ignored", call::submul, ~16, false, false, start::third},
    {"from identity", call::submul, 16, false, false, start::identity},
    {"from identity: other bits are ignored", call::submul, 17, false, false, start::identity},
};

template <typename T>
struct operands {
    operands(const form& f, int m, int k, int n)
        : inner(k), a(f.trans_a ? k : m, f.trans_a ? m : k), b(f.trans_b ? n : k, f.trans_b ? k : n), c(m, n), d(m, n)
    {
    }
    void fill(random_bits& bits, T (*value)(random_bits&) = random_scalar<T>)
    {
        for (matrix<T>* mat : {&a, &b, &c, &d})
            mat->fill(bits, value);
    }

    int inner;
    matrix<T> a, b, c, d;
};

inline void run(const form& f, zel_mat_t* a, zel_mat_t* b, zel_mat_t* c, zel_mat_t* d)
{
    if (f.function == call::mul)
        zel_mat_mul(a, b, d, f.flags);
    else if (f.function == call::muladd)
        zel_mat_muladd(a, b, c, d, f.flags);
    else
        zel_mat_submul(f.from == start::identity ? nullptr : c, a, b, d, f.flags);
}

// Integers are modelled modulo 2^64 and cut to their width, which is exact wrap-around in every width.
template <typename T>
std::vector<T> triple_loop(const form& f, operands<T>& o)
{
    using M = std::conditional_t<std::is_integral_v<T>, u64_t, long double>;
    std::vector<T> result;
    for (int i = 0; i < o.d.mat.rows; ++i)
        for (int j = 0; j < o.d.mat.cols; ++j) {
            M sum = f.from == start::third ? static_cast<M>(o.c.at(i, j)) : M(f.from == start::identity && i == j);
            for (int k = 0; k < o.inner; ++k) {
                const M x = static_cast<M>(f.trans_a ? o.a.at(k, i) : o.a.at(i, k));
                const M y = static_cast<M>(f.trans_b ? o.b.at(j, k) : o.b.at(k, j));
                sum = f.function == call::submul ? sum - x * y : sum + x * y;
            }
            result.push_back(static_cast<T>(sum));
        }
    return result;
}

// --- operands that do not fit ----------------------------------------------------------------------------------------

struct misfit {
    const char* name;
    int rows, cols, type;
};

const misfit misfits[] = {{"a row more", 1, 0, 0},         {"a row less", -1, 0, 0},
                          {"a column more", 0, 1, 0},      {"a column less", 0, -1, 0},
                          {"cols x rows", 4, -4, 0},       {"another depth of the same size", 0, 0, 1},
                          {"other channels", 0, 0, 8 * 2}, {"a type bit beyond the channels", 0, 0, 256}};

// Calls the operation with one operand after the other misfitting in each way: dst, one of them, must stay as it was.
// Returns where it did not.
template <typename T, typename F>
std::string accepted_misfits(const std::vector<zel_mat_t*>& operands, const matrix<T>& dst, F call)
{
    std::string accepted;
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
            if (std::memcmp(dst.data.data(), before.data(), before.size() * sizeof(T)) != 0)
                accepted += "operand " + std::to_string(i) + ": " + wrong.name + "\n";
        }
    return accepted;
}

#endif
