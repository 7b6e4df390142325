// SPDX-License-Identifier: MIT
//
// The inverse of up to 8 rows, value for value as the elimination of zel_matrix.cpp gives it, which inverts the rest.
#ifndef ZEL_INVERSE_H
#define ZEL_INVERSE_H

#include "zel_vector.h"

namespace {

using pair = vec<f64_t, 2>;
using float_pair = vec<f32_t, 2>;

// GCC 12 forms the portable conversions of half a register from scalar ones.
inline float_pair as_floats(pair v)
{
#if defined(__SSE2__)
    const f64_t bits = _mm_cvtsd_f64(_mm_castps_pd(_mm_cvtpd_ps(v)));
    float_pair floats;
    memcpy(&floats, &bits, sizeof(floats));
    return floats;
#else
    return __builtin_convertvector(v, float_pair);
#endif
}

inline pair as_doubles(float_pair v)
{
#if defined(__SSE2__)
    f64_t bits;
    memcpy(&bits, &v, sizeof(bits));
    return _mm_cvtps_pd(_mm_castpd_ps(_mm_set_sd(bits)));
#elif defined(__aarch64__)
    return static_cast<pair>(vcvt_f64_f32(static_cast<float32x2_t>(v)));
#else
    return __builtin_convertvector(v, pair);
#endif
}

// To single precision and back. With SSE GCC 12 clears the upper half of the portable form's intermediate result, in
// the chain of operations that the inverse waits for.
inline pair rounded(pair v)
{
#if defined(__SSE2__)
    return _mm_cvtps_pd(_mm_cvtpd_ps(v));
#else
    return as_doubles(as_floats(v));
#endif
}

// Rows of floats, computed in double and rounded once, in pairs: one more than count if that is odd.
inline void subtract_row(f32_t* row, f64_t ratio, const f32_t* other, int count)
{
    for (int k = 0; k < count; k += 2)
        store<2>(row + k, as_floats(as_doubles(load<2>(row + k)) - ratio * as_doubles(load<2>(other + k))));
}
inline void scale_row(f32_t* row, f64_t scale, int count)
{
    for (int k = 0; k < count; k += 2)
        store<2>(row + k, as_floats(as_doubles(load<2>(row + k)) * scale));
}

constexpr int most_inverted = 8;

// Sums of the squares of all ratios below which no pivot changes after its step: 2^(44/n).
constexpr f64_t ratio_limits[most_inverted + 1] = {0, 1e13, 4e6, 25000, 2000, 440, 160, 75, 45};

// Gauss-Jordan elimination on [A | I] with rows of doubles that hold rounded floats. In step i only the columns of the
// window are updated, from i of A to i of I. Those after it are zero in row i. Those before it are eliminated: what
// rounding leaves of them is at most 2^-52 of the ratio times the pivot, and reaches the pivot of that column, the only
// one of them that is read again, times further ratios. While these are small it is less than half a unit in the last
// place of the pivot, and lost. False, and nothing written, if they are not or if a pivot is zero or tiny.
// n is 2 * pairs or one less.
template <int pairs, typename N>
inline bool invert(N n, const f32_t* A, f32_t* inv)
{
    pair w[2 * pairs][2 * pairs];
    f64_t scale[2 * pairs];
    const bool even = n % 2 == 0;  // or the last column of A is there twice
    const auto at = [&](int i, int j) { return w[i][j / 2][j % 2]; };
    repeat(n, [&](auto i) {
        unroll<pairs>([&](auto v) {
            const f32_t* a = A + i * n + 2 * v;
            w[i][v] = as_doubles(float_pair{a[0], a[v + 1 < pairs ? 1 : even]});
            w[i][pairs + v] = pair{i == 2 * v ? 1.0 : 0.0, i == 2 * v + 1 ? 1.0 : 0.0};
        });
    });
    if (!even)
        unroll<2 * pairs>([&](auto v) { w[2 * pairs - 1][v] = pair{}; });

    pair squares = {};
    f64_t smallest = 1;
    repeat(n, [&](auto i) {
        const f64_t pivot = at(i, i);
        squares += pivot - pivot;  // NaN unless it is finite
        const f64_t size_of_pivot = pivot < 0 ? -pivot : pivot;
        smallest = size_of_pivot < smallest ? size_of_pivot : smallest;
        pair row[pairs + 1];
        unroll<pairs + 1>([&](auto v) { row[v] = w[i][i / 2 + v]; });
        repeat(quotient<2, 1>(n), [&](auto h) {
            // with 1 / pivot in the place that has no ratio
            const bool low = i == 2 * h;
            const bool high = i == 2 * h + 1;
            const pair ratio = pair{low ? 1.0 : at(2 * h, i), high ? 1.0 : at(2 * h + 1, i)} / pivot;
            if (low)
                scale[i] = ratio[0];
            if (high)
                scale[i] = ratio[1];
            const pair others = {low ? 0.0 : ratio[0], high ? 0.0 : ratio[1]};
            squares += others * others;
            unroll<2>([&](auto l) {
                unroll<pairs + 1>([&](auto v) {
                    pair& entry = w[2 * h + l][i / 2 + v];
                    entry = rounded(entry - ratio[int{l}] * row[v]);
                });
            });
        });
        unroll<pairs + 1>([&](auto v) { w[i][i / 2 + v] = row[v]; });
    });
    if (!(squares[0] + squares[1] < ratio_limits[n] && smallest > 1e-27))
        return false;
    repeat(n, [&](auto i) {
        unroll<pairs>([&](auto v) {
            const float_pair entry = as_floats(w[i][pairs + v] * scale[i]);
            f32_t* d = inv + i * n + 2 * v;
            d[0] = entry[0];
            if (v + 1 < pairs || even)
                d[1] = entry[1];
        });
    });
    return true;
}

template <int pairs, typename N>
[[gnu::noinline, gnu::flatten]] bool invert_rows(N n, const f32_t* A, f32_t* inv)
{
    return invert<pairs>(n, A, inv);
}

// Constants for the 4 rows that the tracker inverts and for fewer, where they make the code smaller, too.
inline bool invert_small(int n, const f32_t* A, f32_t* inv)
{
    switch (n) {
    case 1:
        return invert_rows<1>(size<1>(), A, inv);
    case 2:
        return invert_rows<1>(size<2>(), A, inv);
    case 3:
        return invert_rows<2>(size<3>(), A, inv);
    case 4:
        return invert_rows<2>(size<4>(), A, inv);
    case 5:
    case 6:
        return invert_rows<3>(n, A, inv);
    case 7:
    case 8:
        return invert_rows<4>(n, A, inv);
    default:
        return false;
    }
}

}  // namespace

#endif
