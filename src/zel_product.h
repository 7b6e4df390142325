// SPDX-License-Identifier: MIT
//
// Products of floats, d = start +- a * b, on which a filter spends its time. One kernel forms them all: a block of d lies
// in registers from its start until it is complete, takes the terms in their order, and is stored once.
//
//   form                        d starts from              a is read by   b is read by
//   a * b                       -0.0                       rows           rows
//   a' * b                      -0.0                       columns        rows
//   a * b'                      -0.0                       rows           a panel
//   a * b + c                   c                          rows           rows
//   a * b' + c                  c                          rows           a panel
//   c - a * b                   c                          rows           a panel of -b
//   I - a * b                   the rows of constants<T>   rows           a panel of -b
//
//   columns of d                AVX                        SSE2                       others
//   1                           as its transpose, which is one row
//   up to 4                     4 rows x 4, padded if they are less
//   up to two narrow vectors    4 rows x 2 vectors         4 rows x 2 vectors         4 rows x 2 vectors
//   one wide vector             8 rows x 1 wide one
//   more                        3 rows x 3 wide ones       3 rows x 3 vectors         4 rows x 2 vectors
//   (f64 on others: 4 rows x 4 columns throughout)
//
// A panel is a part of b on the stack, laid out in rows of whole vectors: for transposed and for narrow factors, and to
// change a sign. Rows that are left over make blocks of 2 and of 1. The last vector of a block overlaps the one before it
// where columns are left over: a block has read all its starts before it stores, so that c may be d. Nothing beside the
// operands is read or written.
//
// Sizes are run-time numbers or size<n> constants of the same templates. The few shapes of a filter of 8 states and 4
// measurements, which is the tracker's, are instances of the second kind.
//
// On the in-order target the number of sums that grow at once decides: a multiply-add takes several cycles but one can
// start in each, so that eight sums take half the time of two.
#ifndef ZEL_PRODUCT_H
#define ZEL_PRODUCT_H

#include <stddef.h>

#include <type_traits>

#include "zel_vector.h"

namespace {

// Which factor of a product is read transposed.
enum class turned { none, first, second };

enum class start { nothing, matrix, identity };

// Element (i, k) of a factor lies at i * row + k * col.
struct strides {
    ptrdiff_t row;
    ptrdiff_t col;
};

// d = start +- a * b, of which c is the start if that is a matrix. c may be d.
template <typename T, typename M = int, typename K = int, typename N = int>
struct product {
    const T* a;
    const T* b;
    const T* c;
    T* d;
    strides at;
    strides bt;
    M rows;
    K inner;
    N cols;
    start from;
    bool minus;  // the terms are subtracted
    int above;   // rows of the identity above the first one
};

// A part of so many rows and terms reads again what stays in the first-level cache.
constexpr int least_cols = 4;  // less are padded
constexpr int most_terms = 64;
constexpr int most_rows = 36;

// --- what sums start from --------------------------------------------------------------------------------------------

// Rows of starts, of which each lies a pitch behind the one before.
template <typename T>
struct starts {
    const T* row;
    ptrdiff_t pitch;
};

// -0.0 is the zero that leaves every first term as it is. The rows of the identity are one array, in which each begins
// one scalar before the row above it.
template <typename T>
struct constants {
    static constexpr int most_cols = 3 * wide_lanes<T>;
    static constexpr int one = most_rows + most_cols;  // its place in identity
    T minus_zero[most_cols];
    T identity[2 * one + 1];
};
template <typename T>
constexpr constants<T> make_constants()
{
    constants<T> made = {};
    for (T& zero : made.minus_zero)
        zero = -T(0);
    made.identity[constants<T>::one] = 1;
    return made;
}
template <typename T>
constexpr constants<T> constant = make_constants<T>();

// From column j on, of all rows of a part. Where the diagonal passes them by, all of them are zero.
template <typename T, typename M, typename K, typename N>
inline starts<T> starts_of(const product<T, M, K, N>& p, int j)
{
    if (p.from == start::matrix)
        return {p.c + j, p.cols};
    if (p.from == start::nothing)
        return {p.inner > 0 ? constant<T>.minus_zero : constant<T>.identity, 0};
    const int right = j - p.above;
    const int farthest = constants<T>::most_cols;
    const int place = right < -farthest ? -farthest : right > most_rows ? most_rows : right;
    return {constant<T>.identity + constants<T>::one + place, -1};
}

// --- panels ----------------------------------------------------------------------------------------------------------

// Rows of b as a block reads them: n vectors, of which the last begins at last.
template <typename T>
struct vector_rows {
    const T* row;
    ptrdiff_t pitch;
    ptrdiff_t last;
};

// Lays out n vectors of w columns of b for all its rows, the last of them from last on: squares of a transposed factor,
// of which the lowest may overlap, or scalars. In place of columns from count on the one before is laid out again.
template <int n, int w, typename T, typename K>
inline void lay_panel(const T* b, strides bt, K inner, int last, int count, T* panel)
{
    constexpr int m = narrow<T>;
    constexpr int pitch = n * w;
    if (bt.row == 1 && inner >= m && last + w <= count) {
        unroll<n>([&](auto v) {
            const T* column = b + (v + 1 < n ? v * w : last) * bt.col;
            repeat(quotient<m, m - 1>(inner), [&](int i) {
                const ptrdiff_t k = i * m + m <= inner ? i * m : inner - m;
                const T* from = column + k;
                T* to = panel + k * pitch + v * w;
                vec<T, w> y[m];
                unroll<m>([&](auto l) { y[l] = load_halves<w>(from + l * bt.col, from + (l + m) * bt.col); });
                transpose<T, w>(y);
                unroll<m>([&](auto l) { store<w>(to + l * pitch, y[l]); });
            });
        });
        return;
    }
    unroll<n>([&](auto v) {
        const T* column[w];
        const int first = v + 1 < n ? v * w : last;
        unroll<w>([&](auto l) { column[l] = b + (first + l < count ? first + l : count - 1) * bt.col; });
        for (int k = 0; k < inner; ++k)
            store<w>(panel + k * pitch + v * w, make_vector<T, w>([&](auto l) { return column[l][k * bt.row]; }));
    });
}

template <int n, int w, typename T>
[[gnu::noinline, gnu::flatten]] void lay_any_panel(const T* b, strides bt, int inner, int last, int count, T* panel)
{
    lay_panel<n, w>(b, bt, inner, last, count, panel);
}

// A call of its own where code is to be small and sizes are not known.
template <int n, int w, typename T, typename K>
inline void fill_panel(const T* b, strides bt, K inner, int last, int count, T* panel)
{
    if constexpr (target.compact && std::is_same<K, int>::value)
        lay_any_panel<n, w>(b, bt, inner, last, count, panel);
    else
        lay_panel<n, w>(b, bt, inner, last, count, panel);
}

// --- blocks ----------------------------------------------------------------------------------------------------------

// R rows and n vectors of w columns of d, of which the last begins at last.
template <int R, int n, int w, typename T, typename K>
inline void multiply_block(const T* a, strides at, vector_rows<T> b, K inner, starts<T> from, T* d, ptrdiff_t pitch,
                           ptrdiff_t last)
{
    const auto offset = [](auto v, ptrdiff_t end) { return v + 1 < n ? ptrdiff_t{v * w} : end; };
    vec<T, w> sum[R][n];
    unroll<R>([&](auto r) {
        unroll<n>([&](auto v) { sum[r][v] = load<w>(from.row + offset(v, last)); });
        from.row += from.pitch;
    });
    ptrdiff_t row = 0;  // of b, and k of a: beyond the last term there may be nothing to point at
    ptrdiff_t k = 0;
    const auto add_row = [&](auto factor) {
        vec<T, w> y[n];
        unroll<n>([&](auto v) { y[v] = load<w>(b.row + row + offset(v, b.last)); });
        row += b.pitch;
        unroll<R>([&](auto r) { unroll<n>([&](auto v) { sum[r][v] += y[v] * factor(r); }); });
    };
    const auto add_one = [&](int) {
        add_row([&](auto r) { return a[r * at.row + k]; });
        k += at.col;
    };
    if (target.multiplies_by_lane && at.col == 1) {
        constexpr int m = narrow<T>;
        repeat(quotient<m>(inner), [&](int) {
            vec<T, m> x[R];
            unroll<R>([&](auto r) { x[r] = load<m>(a + r * at.row + k); });
            unroll<m>([&](auto l) { add_row([&](auto r) { return x[r][int{l}]; }); });
            k += m;
        });
        repeat(remainder<m>(inner), add_one);
    } else {
        repeat(inner, add_one);
    }
    T* out = d;
    unroll<R>([&](auto r) {
        unroll<n>([&](auto v) { store<w>(out + offset(v, last), sum[r][v]); });
        out += pitch;
    });
}

// All rows of a part, n vectors of columns from column j on.
template <int n, int w, typename T, typename M, typename K, typename N>
inline void multiply_columns(const product<T, M, K, N>& p, int j)
{
    constexpr int R = n == 3 ? 3 : n == 1 && w > narrow<T> ? 8 : 4;
    const strides at = p.inner > 0 ? p.at : strides{};  // a factor without terms may have no data
    const M rows = p.rows;
    const K inner = p.inner;
    const int left = p.cols - j;
    const int count = left < n * w ? left : n * w;
    const bool padding = n * w == least_cols && count < least_cols;
    const ptrdiff_t last = padding ? (n - 1) * w : count - w;
    const T* a = p.a;
    T* d = p.d + j;
    ptrdiff_t pitch = p.cols;
    starts<T> from = starts_of(p, j);

    T panel[most_terms * n * w];
    vector_rows<T> b = {inner > 0 ? p.b + j * p.bt.col : p.b, p.bt.row, last};
    if (inner > 0 && (p.bt.col != 1 || padding || p.minus)) {
        fill_panel<n, w>(b.row, p.bt, inner, static_cast<int>(last), count, panel);
        b = {panel, n * w, (n - 1) * w};
    }
    if (p.minus)
        for (int k = 0; k < inner * n; ++k)
            store<w>(panel + k * w, -load<w>(panel + k * w));

    T padded[n * w == least_cols ? most_rows * n * w : 1];
    if (padding) {
        if (p.from == start::matrix) {
            lay_any_panel<n, w>(from.row, {pitch, 1}, rows, static_cast<int>(last), count, padded);
            from = {padded, n * w};
        }
        d = padded;
        pitch = n * w;
    }
    const auto block = [&](auto r) {
        multiply_block<r, n, w>(a, at, b, inner, from, d, pitch, last);
        a += r * at.row;
        d += r * pitch;
        from.row += r * from.pitch;
    };
    repeat(quotient<R>(rows), [&](int) { block(size<R>()); });
    if (R > 4 && remainder<R>(rows) & 4)
        block(size<4>());
    if (remainder<R>(rows) & 2)
        block(size<2>());
    if (remainder<R>(rows) & 1)
        block(size<1>());
    if (padding)
        for (int i = 0; i < rows; ++i)
            unroll<n * w>([&](auto l) {
                if (l < count)
                    p.d[static_cast<ptrdiff_t>(i) * p.cols + j + l] = padded[i * n * w + l];
            });
}

// --- products --------------------------------------------------------------------------------------------------------

template <int n, int w, typename T>
[[gnu::noinline, gnu::flatten]] void multiply_any_columns(const product<T>& p, int j)
{
    multiply_columns<n, w>(p, j);
}

// In vectors of w, of which three together need a factor spread for three only.
template <int w, typename T>
inline void multiply_part(const product<T>& p)
{
    constexpr int least = least_cols / w > 1 ? least_cols / w : 1;
    constexpr int most = target.compact ? 2 : 3;
    int j = 0;
    if (most == 3)
        for (; p.cols - j > 2 * w && (p.cols - j <= 3 * w || p.cols - j > 4 * w); j += 3 * w)
            multiply_any_columns<most, w>(p, j);
    for (; p.cols - j > least * w; j += 2 * w)
        multiply_any_columns<2, w>(p, j);
    if (j < p.cols)
        multiply_any_columns<least, w>(p, j);
}

// Sizes of single precision that have a kernel of their own: the same with constants. It is not inlined, so that each
// saves only the registers that it needs.
template <int M, int K, int N>
struct sizes {
    static constexpr int code = M << 8 | K << 4 | N;

    // Terms are unrolled where there are registers for a panel.
    template <int n>
    using terms = typename std::conditional<target.compact, size<n>, int>::type;

    template <bool minus, start from, turned t>
    [[gnu::noinline, gnu::flatten]] static void run(const f32_t* a, const f32_t* b, const f32_t* c, f32_t* d)
    {
        constexpr bool column = N == 1;  // whose transpose is a row
        constexpr int cols = column ? M : N;
        constexpr int w = cols < wide_lanes<f32_t> ? narrow<f32_t> : wide_lanes<f32_t>;
        product<f32_t, size<column ? 1 : M>, terms<K>, size<cols>> p = {};
        p.a = column ? b : a;
        p.b = column ? a : b;
        p.c = c;
        p.d = d;
        p.at = {K, 1};
        p.bt = column || t == turned::second ? strides{1, K} : strides{N, 1};
        if constexpr (std::is_same<terms<K>, int>::value)
            p.inner = K;
        p.from = from;
        p.minus = minus;
        multiply_columns<cols / w, w>(p, 0);
    }
};

template <typename T>
void multiply_floats(const product<T>& p);

// By parts.
template <typename T>
[[gnu::noinline]] void multiply_large(const product<T>& whole)
{
    product<T> p = whole;
    for (int i = 0; i < whole.rows; i += most_rows) {
        const ptrdiff_t offset = static_cast<ptrdiff_t>(i) * p.cols;
        p.rows = whole.rows - i < most_rows ? whole.rows - i : most_rows;
        p.from = whole.from;
        p.above = i;
        p.c = whole.c ? whole.c + offset : nullptr;
        p.d = whole.d + offset;
        int k = 0;
        do {
            p.inner = whole.inner - k < most_terms ? whole.inner - k : most_terms;
            p.a = whole.a + i * p.at.row + k * p.at.col;
            p.b = whole.b + k * p.bt.row;
            multiply_floats(p);
            p.from = start::matrix;
            p.c = p.d;
            k += most_terms;
        } while (k < whole.inner);
    }
}

template <typename T>
[[gnu::noinline]] void multiply_floats(const product<T>& p)
{
    if (p.rows > most_rows || p.inner > most_terms)
        multiply_large(p);
    else if (wide_lanes<T> == narrow<T> || p.cols < wide_lanes<T>)
        multiply_part<narrow<T>>(p);
    else
        multiply_part<wide_lanes<T>>(p);
}

}  // namespace

#endif
