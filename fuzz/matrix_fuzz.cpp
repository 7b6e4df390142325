// SPDX-License-Identifier: MIT
//
// One call of a matrix function, with operands of any type and shape, against a model that computes element by element.
// Integers must be exact. Floats must lie within the rounding of their terms, and be infinite or no number exactly where
// the terms make them so. Data are exactly as long as their matrices, so that the address sanitizer sees the first byte
// too many.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <limits>

#include "matrices.h"
#include "require.h"

namespace {

// --- operands --------------------------------------------------------------------------------------------------------

// Floats have few bits, so that most results are exact, and no two terms overflow that are finite themselves.
template <typename T, bool special>
T any_scalar(random_bits& random)
{
    if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(random());
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
using generator = T (*)(random_bits&);

template <typename T>
struct drawn : matrix<T> {
    drawn(int rows, int cols, int cn, random_bits& random, generator<T> value) : matrix<T>(rows, cols, cn)
    {
        this->fill(random, value);
    }
};

template <typename T>
bool same(const std::vector<T>& x, const std::vector<T>& y)
{
    return std::equal(x.begin(), x.end(), y.begin(), y.end(), same_bits<T>);
}

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
void require_each(matrix<T>& d, const F& expected)
{
    for (int i = 0; i < d.mat.rows; ++i)
        for (int j = 0; j < d.mat.cols; ++j)
            for (int k = 0; k < ZEL_MAT_CN(d.mat.type); ++k)
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

// Now and then runs the call with spoilt headers, when it must change nothing.
template <typename T, typename F>
void run_spoilt(const std::vector<zel_mat_t*>& mats, const matrix<T>& d, FuzzedDataProvider& in, const F& call)
{
    if (!in.ConsumeBool())
        return;
    const auto before = d.data;
    std::vector<zel_mat_t> fitting(mats.size());
    std::transform(mats.begin(), mats.end(), fitting.begin(), [](const zel_mat_t* mat) { return *mat; });
    spoil(mats, in);
    call();
    for (std::size_t n = 0; n < mats.size(); ++n)
        *mats[n] = fitting[n];
    require(same(d.data, before), "left unchanged");
}

// --- products --------------------------------------------------------------------------------------------------------

// One in three is a size of the tracker's own filters.
int any_size(FuzzedDataProvider& in)
{
    static const int common[] = {1, 4, 8};
    return in.ConsumeIntegralInRange(0, 2) ? in.ConsumeIntegralInRange(0, 40) : in.PickValueInArray(common);
}

template <typename T>
expectation<T> expected_product(const form& f, operands<T>& o, int i, int j)
{
    expectation<T> e;
    if (f.from != start::zero)
        e.add(f.from == start::identity ? i == j : wide(o.c.at(i, j)));
    for (int k = 0; k < o.inner; ++k) {
        const auto x = wide(f.trans_a ? o.a.at(k, i) : o.a.at(i, k)), y = wide(f.trans_b ? o.b.at(j, k) : o.b.at(k, j));
        e.add(f.function == call::submul ? 0 - x * y : x * y);
    }
    return e;
}

template <typename T>
void multiply(FuzzedDataProvider& in, random_bits& random, generator<T> value)
{
    const form& f = in.PickValueInArray(forms);
    const int m = any_size(in), inner = any_size(in), n = any_size(in);
    operands<T> o(f, m, inner, n);
    o.fill(random, value);
    std::vector<expectation<T>> expected;
    expected.reserve(static_cast<std::size_t>(m) * static_cast<std::size_t>(n));
    for (int t = 0; t < m * n; ++t)
        expected.push_back(expected_product(f, o, t / n, t % n));
    matrix<T>& d = f.from == start::third && in.ConsumeBool() ? o.c : o.d;
    std::vector<zel_mat_t*> mats = {o.a, o.b, d};
    if (f.from == start::third)
        mats.push_back(o.c);
    run(f, o.a, o.b, o.c, d);
    require_each(d, [&](int i, int j, int) { return expected[static_cast<std::size_t>(i * n + j)]; });
    run_spoilt(mats, d, in, [&] { run(f, o.a, o.b, o.c, d); });
}

// --- inverse ---------------------------------------------------------------------------------------------------------

// With a one added at the end of the diagonal the elimination computes the same values in another kernel.
void require_same_bordered(matrix<f32_t>& src, matrix<f32_t>& inverse)
{
    const int n = src.mat.rows;
    matrix<f32_t> bordered(n + 1, n + 1);
    for (int i = 0; i <= n; ++i)
        for (int j = 0; j <= n; ++j)
            bordered.at(i, j) = i < n && j < n ? src.at(i, j) : static_cast<float>(i == j);
    zel_mat_inv(bordered, bordered);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            require(inverse.at(i, j) == bordered.at(i, j), "the same within a larger matrix");
}

// A matrix that has a large element in each row and column, and only there, is inverted well without pivoting.
void invert(FuzzedDataProvider& in, random_bits& random, generator<f32_t> value)
{
    const int n = in.ConsumeBool() ? 4 : in.ConsumeIntegralInRange(0, 44);
    drawn<f32_t> src(n, n, 1, random, value), dst(n, n, 1, random, any_scalar<f32_t, false>);
    const bool special = value == any_scalar<f32_t, true>, dominant = in.ConsumeBool() && !special;
    for (int i = 0; dominant && i < n; ++i)
        src.at(i, i) = static_cast<float>(40 * n);
    const auto before = src.data, left = dst.data;
    const int result = zel_mat_inv(src, dst);
    require(result == (n > 40 ? -1 : 0), "refused for its size alone");
    require(same(src.data, before), "source unchanged");
    if (result != 0)
        return require(same(dst.data, left), "left unchanged");
    for (int i = 0; dominant && i < n; ++i)
        for (int j = 0; j < n; ++j) {
            float sum = 0;
            for (int k = 0; k < n; ++k)
                sum += src.at(i, k) * dst.at(k, j);
            require(std::fabs(sum - (i == j ? 1.0F : 0.0F)) < 1e-4F, "inverse");
        }
    const auto finite = [](float x) { return std::isfinite(x); };
    if (n < 40 && !special && std::all_of(dst.data.begin(), dst.data.end(), finite))
        require_same_bordered(src, dst);
    zel_mat_inv(src, src);
    require(same(dst.data, src.data), "the same in place");
}

// --- element by element ----------------------------------------------------------------------------------------------

template <typename T>
void combine(FuzzedDataProvider& in, random_bits& random, generator<T> value)
{
    enum { neg, scale, add, sub, transpose } const function = in.PickValueInArray({neg, scale, add, sub, transpose});
    const int rows = any_size(in), cols = any_size(in), cn = in.ConsumeBool() ? 1 : in.ConsumeIntegralInRange(1, 32);
    drawn<T> a(rows, cols, cn, random, value), b(rows, cols, cn, random, value);
    drawn<T> d(function == transpose ? cols : rows, function == transpose ? rows : cols, cn, random, value);
    T factor = value(random);
    const auto before = d.data;
    std::vector<zel_mat_t*> mats = {a, d};
    if (function == add || function == sub)
        mats.push_back(b);
    const auto call = [&] {
        function == neg     ? zel_mat_neg(a, d)
        : function == scale ? zel_mat_scale(&factor, a, d)
        : function == add   ? zel_mat_add(a, b, d)
        : function == sub   ? zel_mat_sub(a, b, d)
                            : zel_mat_transpose(a, d);
    };
    call();
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
    run_spoilt(mats, d, in, call);
}

template <typename T>
void fill(FuzzedDataProvider& in, random_bits& random)
{
    enum { identity, diagonal, zero, one } const function = in.PickValueInArray({identity, diagonal, zero, one});
    const int rows = any_size(in), cols = any_size(in), cn = in.ConsumeIntegralInRange(1, 32);
    drawn<T> d(rows, cols, cn, random, any_scalar<T, false>);
    drawn<T> values(1, std::min(rows, cols), 1, random, any_scalar<T, false>);
    const auto before = d.data;
    function == identity   ? zel_mat_setidentity(d)
    : function == diagonal ? zel_mat_setdiagonal(values.data.data(), d)
    : function == zero     ? zel_mat_setzero(d)
                           : zel_mat_setone(d);
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
        return combine<T>(in, random, special ? any_scalar<T, true> : any_scalar<T, false>);
    case 2:
        return invert(in, random, special ? any_scalar<f32_t, true> : any_scalar<f32_t, false>);
    default:
        return multiply<T>(in, random, special ? any_scalar<T, true> : any_scalar<T, false>);
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
