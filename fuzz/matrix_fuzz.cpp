// SPDX-License-Identifier: MIT
//
// One call of a matrix function, with operands of any type and shape, against a model that computes element by element.
// Integers must be exact. Floats must lie within the rounding of their terms, and be infinite or no number exactly where
// the terms make them so. Data are exactly as long as their matrices, so that the address sanitizer sees the first byte
// too many.
#include <fuzzer/FuzzedDataProvider.h>
#include <zel/_libzel.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

#include "require.h"

namespace {

using random_bits = std::minstd_rand;

// --- operands --------------------------------------------------------------------------------------------------------

template <typename T>
constexpr int depth_of()
{
    if (sizeof(T) < 4)
        return (sizeof(T) == 1 ? ZEL_U08 : ZEL_U16) + std::is_signed_v<T>;
    return (sizeof(T) == 4 ? ZEL_S32 : ZEL_S64) + std::is_floating_point_v<T>;
}

// Floats have few bits, so that most results are exact, and no two terms overflow that are finite themselves.
template <typename T>
T any_scalar(random_bits& random, bool special)
{
    if constexpr (std::is_integral_v<T>) {
        return static_cast<T>((std::uint64_t{random()} << 33U) ^ (std::uint64_t{random()} << 11U) ^ random());
    } else {
        using limits = std::numeric_limits<T>;
        const T specials[] = {limits::quiet_NaN(), limits::infinity(), -limits::infinity(), limits::denorm_min(),
                              T(-0.0)};
        if (special && random() % 16 == 0)
            return specials[random() % std::size(specials)];
        const T whole = static_cast<T>(static_cast<int>(random() % 65) - 32);
        return random() % 8 ? whole : whole / 7;
    }
}

template <typename T>
struct matrix {
    matrix(int rows, int cols, int cn, random_bits& random, bool special)
        : size(static_cast<std::size_t>(rows * cols * cn)), data(new T[size])
    {
        zel_mat_initheader(&mat, rows, cols, ZEL_MAT_TYPE(depth_of<T>(), cn), data.get());
        std::generate(data.get(), data.get() + size, [&] { return any_scalar<T>(random, special); });
    }
    T at(int i, int j, int k = 0) const { return data[static_cast<std::size_t>((i * mat.cols + j) * cn() + k)]; }
    int cn() const { return ZEL_MAT_CN(mat.type); }
    std::vector<T> copy() const { return {data.get(), data.get() + size}; }
    bool holds(const T* values) const { return size == 0 || std::memcmp(data.get(), values, size * sizeof(T)) == 0; }

    zel_mat_t mat;
    std::size_t size;
    std::unique_ptr<T[]> data;
};

// --- the model -------------------------------------------------------------------------------------------------------

// A sum of terms as it must come out, give or take the rounding of any order of summation.
template <typename T>
struct expectation {
    using wide = std::conditional_t<std::is_integral_v<T>, std::uint64_t, long double>;

    void add(wide term)
    {
        sum += term;
        if constexpr (std::is_floating_point_v<T>)
            magnitude += std::fabs(term);
        ++terms;
    }
    bool met_by(T value) const
    {
        if constexpr (std::is_integral_v<T>) {
            return value == static_cast<T>(sum);
        } else {
            if (!std::isfinite(sum))
                return std::isnan(sum) ? std::isnan(value) : static_cast<wide>(value) == sum;
            const wide error = magnitude * terms * std::numeric_limits<T>::epsilon() + std::numeric_limits<T>::min();
            return std::fabs(static_cast<wide>(value) - sum) <= error;
        }
    }

    wide sum = 0;
    long double magnitude = 0;
    int terms = 0;
};

template <typename T>
typename expectation<T>::wide wide(T value)
{
    return static_cast<typename expectation<T>::wide>(value);
}

// Calls expected(i, j, k) for every scalar of d.
template <typename T, typename F>
void require_each(const matrix<T>& d, const F& expected)
{
    for (int i = 0; i < d.mat.rows; ++i)
        for (int j = 0; j < d.mat.cols; ++j)
            for (int k = 0; k < d.cn(); ++k)
                require(expected(i, j, k).met_by(d.at(i, j, k)), "scalar as in the model");
}

template <typename T>
expectation<T> just(typename expectation<T>::wide value)
{
    expectation<T> e;
    e.add(value);
    return e;
}

// --- calls that do not fit -------------------------------------------------------------------------------------------

// Makes one of the headers, all of which must agree, disagree; what it then says of its data is not to be believed.
void spoil(const std::vector<zel_mat_t*>& mats, FuzzedDataProvider& in)
{
    zel_mat_t& mat = *mats[in.ConsumeIntegralInRange<std::size_t>(0, mats.size() - 1)];
    switch (in.ConsumeIntegralInRange(0, 2)) {
    case 0:
        mat.rows += in.ConsumeIntegralInRange(1, 1000);
        break;
    case 1:
        mat.cols += in.ConsumeIntegralInRange(1, 1000);
        break;
    default:
        mat.type ^= 1 << in.ConsumeIntegralInRange(0, 30);
    }
}

// Runs the call, and once more with spoilt headers, when it must change nothing.
template <typename T, typename F>
void run(const std::vector<zel_mat_t*>& mats, matrix<T>& d, FuzzedDataProvider& in, const F& call)
{
    call();
    if (!in.ConsumeBool())
        return;
    const auto before = d.copy();
    std::vector<zel_mat_t> fitting(mats.size());
    std::transform(mats.begin(), mats.end(), fitting.begin(), [](const zel_mat_t* mat) { return *mat; });
    spoil(mats, in);
    call();
    for (std::size_t n = 0; n < mats.size(); ++n)
        *mats[n] = fitting[n];
    require(d.holds(before.data()), "left unchanged");
}

// --- products --------------------------------------------------------------------------------------------------------

// One in three is a size of the tracker's own filters.
int any_size(FuzzedDataProvider& in)
{
    static const int common[] = {1, 4, 8};
    return in.ConsumeIntegralInRange(0, 2) ? in.ConsumeIntegralInRange(0, 40) : in.PickValueInArray(common);
}

template <typename T>
void multiply(FuzzedDataProvider& in, random_bits& random, bool special)
{
    enum { mul, muladd, submul } const function = in.PickValueInArray({mul, muladd, submul});
    const int flags = in.ConsumeIntegralInRange(0, 31);
    const bool trans_a = function == mul && flags & ZEL_MAT_TRANS_SRC1;
    const bool trans_b = function != submul && !trans_a && flags & ZEL_MAT_TRANS_SRC2;
    const bool from_identity = function == submul && flags & ZEL_MAT_FROM_IDENTITY;
    const int m = any_size(in), inner = any_size(in), n = any_size(in);
    matrix<T> a(trans_a ? inner : m, trans_a ? m : inner, 1, random, special);
    matrix<T> b(trans_b ? n : inner, trans_b ? inner : n, 1, random, special);
    matrix<T> c(m, n, 1, random, special), other(m, n, 1, random, special);
    const auto start = c.copy();
    matrix<T>& d = function != mul && !from_identity && in.ConsumeBool() ? c : other;

    std::vector<zel_mat_t*> mats = {&a.mat, &b.mat, &d.mat};
    if (function != mul && !from_identity)
        mats.push_back(&c.mat);
    bool checked = false;
    run(mats, d, in, [&] {
        if (function == mul)
            zel_mat_mul(&a.mat, &b.mat, &d.mat, flags);
        else if (function == muladd)
            zel_mat_muladd(&a.mat, &b.mat, &c.mat, &d.mat, flags);
        else
            zel_mat_submul(from_identity ? nullptr : &c.mat, &a.mat, &b.mat, &d.mat, flags);
        if (checked)
            return;
        checked = true;
        require_each(d, [&](int i, int j, int) {
            expectation<T> e;
            if (from_identity)
                e.add(i == j);
            else if (function != mul)
                e.add(wide(start[static_cast<std::size_t>(i * n + j)]));
            for (int k = 0; k < inner; ++k) {
                const auto term = wide(trans_a ? a.at(k, i) : a.at(i, k)) * wide(trans_b ? b.at(j, k) : b.at(k, j));
                e.add(function == submul ? 0 - term : term);
            }
            return e;
        });
    });
}

// --- inverse ---------------------------------------------------------------------------------------------------------

// With a one added at the end of the diagonal the elimination computes the same values in another kernel.
void require_same_bordered(const matrix<f32_t>& src, const matrix<f32_t>& inverse)
{
    const int n = src.mat.rows;
    random_bits none(1);
    matrix<f32_t> bordered(n + 1, n + 1, 1, none, false);
    for (int i = 0; i <= n; ++i)
        for (int j = 0; j <= n; ++j)
            bordered.data[static_cast<std::size_t>(i * (n + 1) + j)] =
                i < n && j < n ? src.at(i, j) : static_cast<float>(i == j);
    zel_mat_inv(&bordered.mat, &bordered.mat);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            require(inverse.at(i, j) == bordered.at(i, j), "the same within a larger matrix");
}

bool is_finite(const matrix<f32_t>& mat)
{
    return std::all_of(mat.data.get(), mat.data.get() + mat.size, [](float value) { return std::isfinite(value); });
}

// A matrix that has a large element in each row and column, and only there, is inverted well without pivoting.
void invert(FuzzedDataProvider& in, random_bits& random, bool special)
{
    const int n = in.ConsumeBool() ? 4 : in.ConsumeIntegralInRange(0, 44);
    matrix<f32_t> src(n, n, 1, random, special), dst(n, n, 1, random, false);
    const bool dominant = in.ConsumeBool() && !special;
    for (int i = 0; dominant && i < n; ++i)
        src.data[static_cast<std::size_t>(i * n + i)] = static_cast<float>(40 * n);
    const auto before = src.copy(), left = dst.copy();
    const int result = zel_mat_inv(&src.mat, &dst.mat);
    require(result == (n > 40 ? -1 : 0), "refused for its size alone");
    require(src.holds(before.data()), "source unchanged");
    if (result != 0)
        return require(dst.holds(left.data()), "left unchanged");
    for (int i = 0; dominant && i < n; ++i)
        for (int j = 0; j < n; ++j) {
            float sum = 0;
            for (int k = 0; k < n; ++k)
                sum += src.at(i, k) * dst.at(k, j);
            require(std::fabs(sum - (i == j ? 1.0F : 0.0F)) < 1e-4F, "inverse");
        }
    if (n < 40 && !special && is_finite(dst))
        require_same_bordered(src, dst);
    zel_mat_inv(&src.mat, &src.mat);
    require(dst.holds(src.data.get()), "the same in place");
}

// --- element by element ----------------------------------------------------------------------------------------------

template <typename T>
void combine(FuzzedDataProvider& in, random_bits& random, bool special)
{
    enum { neg, scale, add, sub, transpose } const function = in.PickValueInArray({neg, scale, add, sub, transpose});
    const int rows = any_size(in), cols = any_size(in), cn = in.ConsumeBool() ? 1 : in.ConsumeIntegralInRange(1, 32);
    matrix<T> a(rows, cols, cn, random, special), b(rows, cols, cn, random, special);
    matrix<T> d(function == transpose ? cols : rows, function == transpose ? rows : cols, cn, random, special);
    T factor = any_scalar<T>(random, special);
    const auto before = d.copy();
    std::vector<zel_mat_t*> mats = {&a.mat, &d.mat};
    if (function == add || function == sub)
        mats.push_back(&b.mat);
    run(mats, d, in, [&] {
        function == neg     ? zel_mat_neg(&a.mat, &d.mat)
        : function == scale ? zel_mat_scale(&factor, &a.mat, &d.mat)
        : function == add   ? zel_mat_add(&a.mat, &b.mat, &d.mat)
        : function == sub   ? zel_mat_sub(&a.mat, &b.mat, &d.mat)
                            : zel_mat_transpose(&a.mat, &d.mat);
    });
    require_each(d, [&](int i, int j, int k) {
        if (function == transpose)
            return just<T>(wide(a.at(j, i, k)));
        if (function == neg && std::is_unsigned_v<T>)
            return just<T>(wide(before[static_cast<std::size_t>((i * cols + j) * cn + k)]));
        const auto x = wide(a.at(i, j, k)), y = wide(b.at(i, j, k));
        return just<T>(function == neg     ? 0 - x
                       : function == scale ? x * wide(factor)
                       : function == add   ? x + y
                                           : x - y);
    });
}

template <typename T>
void fill(FuzzedDataProvider& in, random_bits& random)
{
    enum { identity, diagonal, zero, one } const function = in.PickValueInArray({identity, diagonal, zero, one});
    const int rows = any_size(in), cols = any_size(in), cn = in.ConsumeIntegralInRange(1, 32);
    matrix<T> d(rows, cols, cn, random, false);
    matrix<T> values(1, std::min(rows, cols), 1, random, false);
    const auto before = d.copy();
    function == identity   ? zel_mat_setidentity(&d.mat)
    : function == diagonal ? zel_mat_setdiagonal(values.data.get(), &d.mat)
    : function == zero     ? zel_mat_setzero(&d.mat)
                           : zel_mat_setone(&d.mat);
    require_each(d, [&](int i, int j, int k) {
        if (function == zero || function == one)
            return just<T>(function == one);
        if (k > 0)
            return just<T>(wide(before[static_cast<std::size_t>((i * cols + j) * cn + k)]));
        return just<T>(i != j ? 0 : function == identity ? 1 : wide(values.at(0, i)));
    });
}

template <typename T>
void call_one(FuzzedDataProvider& in)
{
    random_bits random(in.ConsumeIntegral<std::uint32_t>());
    const bool special = in.ConsumeBool();
    switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
        return fill<T>(in, random);
    case 1:
        return combine<T>(in, random, special);
    case 2:
        return invert(in, random, special);
    default:
        return multiply<T>(in, random, special);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static constexpr void (*calls[])(FuzzedDataProvider&) = {call_one<u08_t>, call_one<s08_t>, call_one<u16_t>,
                                                             call_one<s16_t>, call_one<s32_t>, call_one<f32_t>,
                                                             call_one<s64_t>, call_one<f64_t>};
    FuzzedDataProvider in(data, size);
    in.PickValueInArray(calls)(in);
    return 0;
}
