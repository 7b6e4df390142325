// SPDX-License-Identifier: MIT
//
// Single-precision products and the 4 x 4 inverse, on which a filter spends its time. A product is formed in blocks
// whose sums stay in registers: each operand is loaded once per block and each result stored once, where plain loops
// load and store the sums at every term and take four times as long.
//
// Sizes are run-time numbers or size<n> constants of the same templates. With constants the loops unroll and every
// address is an immediate; the few shapes that a filter of 8 states and 4 measurements uses are instances of that kind.
//
// Vectors are the compilers' portable ones. On the in-order target the number of sums that grow at once decides: a
// multiply-add takes several cycles but one can start in each, so that eight sums take half the time of two.
#ifndef ZEL_MATRIX_F32_H
#define ZEL_MATRIX_F32_H

#include <stddef.h>
#include <string.h>

#include <type_traits>
#include <utility>

#include "_libzel.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace {

// --- what differs between processors ---------------------------------------------------------------------------------

struct processor {
    int widest;               // floats in a register
    bool multiplies_by_lane;  // a scalar factor comes from a lane of a register that was loaded for four
    bool turns_by_dots;       // b is read transposed by dot products, whose lanes are summed up at the end
};
#if defined(__AVX__)
constexpr processor target = {8, false, false};       // spreads a scalar over a register while it loads it
#elif defined(__SSE2__) || defined(__wasm_simd128__)  // the same sums in pages of the command
constexpr processor target = {4, false, true};  // needs a shuffle for each factor, and so saves them
#else
constexpr processor target = {4, true, false};
#endif
constexpr int widest = target.widest;

// --- vectors ---------------------------------------------------------------------------------------------------------

// anywhere is what memory is read as: matrices are aligned for their scalars only.
template <int w>
struct lanes {
    typedef f32_t vec __attribute__((vector_size(w * sizeof(f32_t))));
    typedef f32_t anywhere __attribute__((vector_size(w * sizeof(f32_t)), aligned(alignof(f32_t)), may_alias));
    typedef s32_t index __attribute__((vector_size(w * sizeof(s32_t))));
};
template <int w>
using vec = typename lanes<w>::vec;

template <int w>
inline vec<w> load(const f32_t* p)
{
    return *reinterpret_cast<const typename lanes<w>::anywhere*>(p);
}

template <int w>
inline void store(f32_t* p, vec<w> v)
{
    *reinterpret_cast<typename lanes<w>::anywhere*>(p) = v;
}

// A size that is known when the kernel is compiled.
template <int n>
struct size {
    constexpr operator int() const { return n; }
};

// Calls f with size<0>() to size<n - 1>(): a loop whose index is a constant, so that arrays of vectors become
// registers.
template <typename F, int... i>
inline void unroll([[maybe_unused]] F f, std::integer_sequence<int, i...>)
{
    (f(size<i>()), ...);
}
template <int n, typename F>
inline void unroll(F f)
{
    unroll(f, std::make_integer_sequence<int, n>());
}

// Lane l of v as a factor of a vector.
template <int l>
inline auto lane(vec<4> v)
{
    if constexpr (target.multiplies_by_lane)
        return v[l];
    else
        return __builtin_shufflevector(v, v, l, l, l, l);
}

// Columns become rows.
inline void transpose(vec<4>* r)
{
    const vec<4> a = __builtin_shufflevector(r[0], r[1], 0, 4, 1, 5);
    const vec<4> b = __builtin_shufflevector(r[0], r[1], 2, 6, 3, 7);
    const vec<4> c = __builtin_shufflevector(r[2], r[3], 0, 4, 1, 5);
    const vec<4> d = __builtin_shufflevector(r[2], r[3], 2, 6, 3, 7);
    r[0] = __builtin_shufflevector(a, c, 0, 1, 4, 5);
    r[1] = __builtin_shufflevector(a, c, 2, 3, 6, 7);
    r[2] = __builtin_shufflevector(b, d, 0, 1, 4, 5);
    r[3] = __builtin_shufflevector(b, d, 2, 3, 6, 7);
}

// The same in each half.
inline void transpose(vec<8>* r)
{
    const vec<8> a = __builtin_shufflevector(r[0], r[1], 0, 8, 1, 9, 4, 12, 5, 13);
    const vec<8> b = __builtin_shufflevector(r[0], r[1], 2, 10, 3, 11, 6, 14, 7, 15);
    const vec<8> c = __builtin_shufflevector(r[2], r[3], 0, 8, 1, 9, 4, 12, 5, 13);
    const vec<8> d = __builtin_shufflevector(r[2], r[3], 2, 10, 3, 11, 6, 14, 7, 15);
    r[0] = __builtin_shufflevector(a, c, 0, 1, 8, 9, 4, 5, 12, 13);
    r[1] = __builtin_shufflevector(a, c, 2, 3, 10, 11, 6, 7, 14, 15);
    r[2] = __builtin_shufflevector(b, d, 0, 1, 8, 9, 4, 5, 12, 13);
    r[3] = __builtin_shufflevector(b, d, 2, 3, 10, 11, 6, 7, 14, 15);
}

// The sums over the lanes of four vectors.
inline vec<4> sum_lanes(const vec<4>* s)
{
    const vec<4> a = __builtin_shufflevector(s[0], s[1], 0, 4, 1, 5) + __builtin_shufflevector(s[0], s[1], 2, 6, 3, 7);
    const vec<4> b = __builtin_shufflevector(s[2], s[3], 0, 4, 1, 5) + __builtin_shufflevector(s[2], s[3], 2, 6, 3, 7);
    return __builtin_shufflevector(a, b, 0, 1, 4, 5) + __builtin_shufflevector(a, b, 2, 3, 6, 7);
}

inline vec<4> sum_lanes(const vec<8>* s)
{
    vec<4> half[4];
    unroll<4>([&](auto c) {
        half[c] = __builtin_shufflevector(s[c], s[c], 0, 1, 2, 3) + __builtin_shufflevector(s[c], s[c], 4, 5, 6, 7);
    });
    return sum_lanes(half);
}

// --- what sums start from --------------------------------------------------------------------------------------------

// at<w>(i, j) is the start of row i from column j on; plus() adds it to sums that are complete otherwise.

// -0.0 is the zero that leaves every first term as it is.
struct from_nothing {
    from_nothing(const f32_t*, int) {}
    template <int w>
    vec<w> at(int, int) const
    {
        return -vec<w>{};
    }
    f32_t scalar_at(int, int) const { return -0.0F; }
    vec<4> plus(vec<4> sum, int, int) const { return sum; }
};

struct from_matrix {
    const f32_t* c;
    int cols;
    const f32_t* element(int i, int j) const { return c + static_cast<ptrdiff_t>(i) * cols + j; }
    template <int w>
    vec<w> at(int i, int j) const
    {
        return load<w>(element(i, j));
    }
    f32_t scalar_at(int i, int j) const { return *element(i, j); }
    vec<4> plus(vec<4> sum, int i, int j) const { return at<4>(i, j) + sum; }
};

struct from_identity {
    from_identity(const f32_t*, int) {}
    template <int w>
    vec<w> at(int i, int j) const
    {
        typename lanes<w>::index column;
        unroll<w>([&](auto l) { column[int(l)] = l; });
        return __builtin_convertvector((column == i - j) & 1, vec<w>);
    }
    f32_t scalar_at(int i, int j) const { return i == j ? 1.0F : 0.0F; }
};

enum class sign { plus, minus };

template <sign s, typename V, typename W>
inline void add_term(V& sum, V x, W y)
{
    if constexpr (s == sign::plus)
        sum += x * y;
    else
        sum -= x * y;
}

// --- d = start +- a * b ----------------------------------------------------------------------------------------------

// Element (i, k) of the first factor lies at i * row + k * inner, as it is or transposed.
struct strides {
    ptrdiff_t row;
    ptrdiff_t inner;
};

// R rows and n vectors of w columns of d, from (i, j) on.
template <int R, int n, int w, sign s, typename Start, typename K, typename N>
inline void multiply_block(const f32_t* a, strides at, const f32_t* b, f32_t* d, K inner, N cols, Start start, int i,
                           int j)
{
    const ptrdiff_t pitch = cols;
    vec<w> sum[R][n];
    unroll<R>([&](auto r) { unroll<n>([&](auto v) { sum[r][v] = start.template at<w>(i + r, j + v * w); }); });
    const auto add_row = [&](int k, auto factor) {
        vec<w> y[n];
        unroll<n>([&](auto v) { y[v] = load<w>(b + k * pitch + j + v * w); });
        unroll<R>([&](auto r) { unroll<n>([&](auto v) { add_term<s>(sum[r][v], y[v], factor(r)); }); });
    };
    const int fours = target.multiplies_by_lane && at.inner == 1 ? inner / 4 * 4 : 0;
    if constexpr (target.multiplies_by_lane)
        for (int k = 0; k < fours; k += 4) {
            vec<4> x[R];
            unroll<R>([&](auto r) { x[r] = load<4>(a + (i + r) * at.row + k); });
            unroll<4>([&](auto l) { add_row(k + l, [&](auto r) { return lane<l>(x[r]); }); });
        }
    for (int k = fours; k < inner; ++k)
        add_row(k, [&](auto r) { return a[(i + r) * at.row + k * at.inner]; });
    unroll<R>([&](auto r) { unroll<n>([&](auto v) { store<w>(d + (i + r) * pitch + j + v * w, sum[r][v]); }); });
}

// All rows of n vectors of columns, in blocks of R rows while there are as many.
template <int R, int n, int w, sign s, typename Start, typename M, typename K, typename N>
inline void multiply_columns(M rows, K inner, N cols, const f32_t* a, strides at, const f32_t* b, f32_t* d, Start start,
                             int j)
{
    int i = 0;
    for (; i + R <= rows; i += R)
        multiply_block<R, n, w, s>(a, at, b, d, inner, cols, start, i, j);
    if constexpr (R > 4)
        for (; i + 4 <= rows; i += 4)
            multiply_block<4, n, w, s>(a, at, b, d, inner, cols, start, i, j);
    for (; i < rows; ++i)
        multiply_block<1, n, w, s>(a, at, b, d, inner, cols, start, i, j);
}

// Eight or nine sums at once. Nine need a factor spread for three vectors only, which takes SSE a tenth less time; a
// constant number of columns that is a multiple of eight has no use for them.
template <sign s, typename Start, typename M, typename K, typename N>
inline void multiply_plain(M rows, K inner, N cols, const f32_t* a, strides at, const f32_t* b, f32_t* d, Start start)
{
    constexpr int n = std::is_same<N, int>::value ? 3 : 2;
    const ptrdiff_t pitch = cols;
    int j = 0;
    for (; j + n * widest <= cols; j += n * widest)
        multiply_columns<9 / n, n, widest, s>(rows, inner, cols, a, at, b, d, start, j);
    if constexpr (widest > 4)
        for (; j + widest <= cols; j += widest)
            multiply_columns<8, 1, widest, s>(rows, inner, cols, a, at, b, d, start, j);
    for (; j + 4 <= cols; j += 4)
        multiply_columns<4, 1, 4, s>(rows, inner, cols, a, at, b, d, start, j);
    for (; j < cols; ++j)
        for (int i = 0; i < rows; ++i) {
            f32_t sum = start.scalar_at(i, j);
            for (int k = 0; k < inner; ++k)
                add_term<s>(sum, a[i * at.row + k * at.inner], b[k * pitch + j]);
            d[i * pitch + j] = sum;
        }
}

// --- d = start +- a * x, a column ------------------------------------------------------------------------------------

// Four rows at a time, transposed in registers, so that each sum still takes its terms in order.
template <sign s, typename Start, typename M, typename K>
inline void multiply_column(M rows, K inner, const f32_t* a, const f32_t* x, f32_t* d, Start start)
{
    const ptrdiff_t pitch = inner;
    const int fours = inner / 4 * 4;
    int i = 0;
    for (; i + 4 <= rows; i += 4) {
        vec<4> sum = start.template at<4>(i, 0);
        for (int k = 0; k < fours; k += 4) {
            vec<4> y[4];
            unroll<4>([&](auto r) { y[r] = load<4>(a + (i + r) * pitch + k); });
            transpose(y);
            unroll<4>([&](auto l) { add_term<s>(sum, y[l], lane<l>(load<4>(x + k))); });
        }
        for (int k = fours; k < inner; ++k)
            unroll<4>([&](auto r) {
                f32_t one = sum[int(r)];
                add_term<s>(one, a[(i + r) * pitch + k], x[k]);
                sum[int(r)] = one;
            });
        store<4>(d + i, sum);
    }
    for (; i < rows; ++i) {
        f32_t sum = start.scalar_at(i, 0);
        for (int k = 0; k < inner; ++k)
            add_term<s>(sum, a[i * pitch + k], x[k]);
        d[i] = sum;
    }
}

// --- d = start + a * b' ----------------------------------------------------------------------------------------------

// w rows of b, four scalars of each, become four rows of w columns.
inline void load_turned(const f32_t* b, ptrdiff_t pitch, vec<4>* y)
{
    unroll<4>([&](auto c) { y[c] = load<4>(b + c * pitch); });
    transpose(y);
}
inline void load_turned(const f32_t* b, ptrdiff_t pitch, vec<8>* y)
{
    unroll<4>([&](auto c) {
        const vec<4> low = load<4>(b + c * pitch);
        const vec<4> high = load<4>(b + (c + 4) * pitch);
        y[c] = __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
    });
    transpose(y);
}

// R rows and n vectors of w columns of d, from (i, j) on, with b transposed in registers. For multiples of four terms.
template <int R, int n, int w, typename Start, int K, typename N>
inline void multiply_turned_block(const f32_t* a, const f32_t* b, f32_t* d, size<K>, N cols, Start start, int i, int j)
{
    vec<w> sum[R][n];
    unroll<R>([&](auto r) { unroll<n>([&](auto v) { sum[r][v] = start.template at<w>(i + r, j + v * w); }); });
    for (int k = 0; k < K; k += 4) {
        vec<w> y[n][4];
        unroll<n>([&](auto v) { load_turned(b + (j + v * w) * K + k, K, y[v]); });
        unroll<R>([&](auto r) {
            const f32_t* x = a + (i + r) * K + k;
            unroll<4>([&](auto l) {
                unroll<n>([&](auto v) {
                    if constexpr (target.multiplies_by_lane)
                        sum[r][v] += y[v][l] * lane<l>(load<4>(x));
                    else
                        sum[r][v] += y[v][l] * x[l];
                });
            });
        });
    }
    unroll<R>([&](auto r) { unroll<n>([&](auto v) { store<w>(d + (i + r) * cols + j + v * w, sum[r][v]); }); });
}

// Four columns by dot products. The four rows of b stay in registers for all rows of a.
template <typename Start, typename M, int K, typename N>
inline void multiply_dot_columns(M rows, size<K>, N cols, const f32_t* a, const f32_t* b, f32_t* d, Start start, int j)
{
    vec<4> y[4][K / 4];
    unroll<4>([&](auto c) { unroll<K / 4>([&](auto k) { y[c][k] = load<4>(b + (j + c) * K + k * 4); }); });
    for (int i = 0; i < rows; ++i) {
        vec<4> sum[4];
        unroll<4>([&](auto c) { sum[c] = load<4>(a + i * K) * y[c][0]; });
        unroll<K / 4 - 1>(
            [&](auto k) { unroll<4>([&](auto c) { sum[c] += load<4>(a + i * K + k * 4 + 4) * y[c][k + 1]; }); });
        store<4>(d + i * cols + j, start.plus(sum_lanes(sum), i, j));
    }
}

// For constant sizes that whole blocks fill.
template <typename Start, typename M, typename K, typename N>
inline void multiply_turned(M rows, K inner, N cols, const f32_t* a, const f32_t* b, f32_t* d, Start start)
{
    constexpr int w = cols < widest ? 4 : widest;
    constexpr int n = cols / w < 8 / w ? cols / w : 8 / w;
    static_assert(rows % 8 == 0 && inner % 4 == 0 && cols % (n * w) == 0, "the blocks must fill the result");
    for (int j = 0; j < cols; j += n * w)
        if constexpr (target.turns_by_dots)
            unroll<n>([&](auto v) { multiply_dot_columns(rows, inner, cols, a, b, d, start, j + v * w); });
        else
            for (int i = 0; i < rows; i += 8)
                multiply_turned_block<8, n, w>(a, b, d, inner, cols, start, i, j);
}

// --- d += a * b' for any sizes ---------------------------------------------------------------------------------------

// R rows and four columns, each sum spread over the lanes of a vector until the end.
template <int R>
inline void add_dots(const f32_t* a, const f32_t* b, f32_t* d, ptrdiff_t inner, ptrdiff_t cols)
{
    vec<widest> sum[R][4];
    unroll<R>([&](auto r) { unroll<4>([&](auto c) { sum[r][c] = -vec<widest>{}; }); });
    ptrdiff_t k = 0;
    for (; k + widest <= inner; k += widest) {
        vec<widest> x[R];
        unroll<R>([&](auto r) { x[r] = load<widest>(a + r * inner + k); });
        unroll<4>([&](auto c) {
            const vec<widest> y = load<widest>(b + c * inner + k);
            unroll<R>([&](auto r) { sum[r][c] += x[r] * y; });
        });
    }
    unroll<R>([&](auto r) {
        vec<4> total = load<4>(d + r * cols) + sum_lanes(sum[r]);
        for (ptrdiff_t t = k; t < inner; ++t)
            unroll<4>([&](auto c) { total[int(c)] += a[r * inner + t] * b[c * inner + t]; });
        store<4>(d + r * cols, total);
    });
}

[[gnu::noinline, gnu::flatten]] void accumulate_dots_f32(const f32_t* a, const f32_t* b, f32_t* d, ptrdiff_t rows,
                                                         ptrdiff_t inner, ptrdiff_t cols)
{
    ptrdiff_t j = 0;
    for (; j + 4 <= cols; j += 4) {
        ptrdiff_t i = 0;
        for (; i + 3 <= rows; i += 3)
            add_dots<3>(a + i * inner, b + j * inner, d + i * cols + j, inner, cols);
        for (; i < rows; ++i)
            add_dots<1>(a + i * inner, b + j * inner, d + i * cols + j, inner, cols);
    }
    for (; j < cols; ++j)
        for (ptrdiff_t i = 0; i < rows; ++i)
            for (ptrdiff_t k = 0; k < inner; ++k)
                d[i * cols + j] += a[i * inner + k] * b[j * inner + k];
}

// --- which kernel ----------------------------------------------------------------------------------------------------

// Which factor of a product is read transposed.
enum class turned { none, first, second };

// d +-= a * b for any sizes, in parts of so many rows and terms that what a part reads again stays in the first-level
// cache. Rows of b a multiple of 512 bytes apart share an eighth of its sets, so that fewer of them fit.
template <turned t, sign s>
[[gnu::noinline, gnu::flatten]] void accumulate_rows_f32(const f32_t* a, const f32_t* b, f32_t* d, int rows, int inner,
                                                         int cols)
{
    if (t == turned::none && cols == 1)
        return multiply_column<s>(rows, inner, a, b, d, from_matrix{d, cols});
    const strides at = t == turned::first ? strides{1, rows} : strides{inner, 1};
    const ptrdiff_t pitch = cols;
    const int height = 36;
    const int depth = cols % 128 == 0 ? 32 : 64;
    for (int i = 0; i < rows; i += height)
        for (int k = 0; k < inner; k += depth) {
            f32_t* part = d + i * pitch;
            multiply_plain<s>(rows - i < height ? rows - i : height, inner - k < depth ? inner - k : depth, cols,
                              a + i * at.row + k * at.inner, at, b + k * pitch, part, from_matrix{part, cols});
        }
}

// Sizes in one number; 0 if one of them is negative or above 15.
constexpr int code_of(int rows, int inner, int cols)
{
    return ((rows | inner | cols) & ~15) == 0 ? rows << 8 | inner << 4 | cols : 0;
}

// Sizes that have a kernel of their own. It is not inlined, so that each saves only the registers that it needs.
template <int M, int K, int N>
struct sizes {
    static constexpr int code = code_of(M, K, N);

    template <turned t, sign s, typename Start>
    [[gnu::noinline, gnu::flatten]] static void run(const f32_t* a, const f32_t* b, const f32_t* c, f32_t* d)
    {
        static_assert(t != turned::first, "there is no kernel with the first factor transposed");
        const Start start{c, N};
        if constexpr (t == turned::second)
            multiply_turned(size<M>(), size<K>(), size<N>(), a, b, d, start);
        else if constexpr (N == 1)
            multiply_column<s>(size<M>(), size<K>(), a, b, d, start);
        else
            multiply_plain<s>(size<M>(), size<K>(), size<N>(), a, strides{K, 1}, b, d, start);
    }
};

// d = start +- a * b for any sizes: the start is laid into d and added to.
template <turned t, sign s, typename Start>
[[gnu::noinline]] void multiply_any_f32(const f32_t* a, const f32_t* b, const f32_t* c, f32_t* d, int rows, int inner,
                                        int cols)
{
    const Start start{c, cols};
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j)
            d[static_cast<ptrdiff_t>(i) * cols + j] = start.scalar_at(i, j);
    if constexpr (t == turned::second)
        accumulate_dots_f32(a, b, d, rows, inner, cols);
    else
        accumulate_rows_f32<t, s>(a, b, d, rows, inner, cols);
}

// d = start +- a * b, by a kernel of its own if the sizes are among Known.
template <turned t, sign s, typename Start, typename... Known>
inline void multiply_f32(const f32_t* a, const f32_t* b, const f32_t* c, f32_t* d, int rows, int inner, int cols)
{
    [[maybe_unused]] const int code = code_of(rows, inner, cols);
    if (!((code == Known::code && (Known::template run<t, s, Start>(a, b, c, d), true)) || ...))
        multiply_any_f32<t, s, Start>(a, b, c, d, rows, inner, cols);
}

// --- the 4 x 4 inverse -----------------------------------------------------------------------------------------------

typedef f64_t pair __attribute__((vector_size(16)));
typedef f32_t float_pair __attribute__((vector_size(8)));

inline float_pair as_floats(pair v)
{
    return __builtin_convertvector(v, float_pair);
}

// For the target GCC 12 forms the portable conversion from scalar ones, a third of the instructions of the inverse.
inline pair as_doubles(float_pair v)
{
#if defined(__aarch64__)
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

// Gauss-Jordan elimination on [A | I] as the general loop does it, value for value: the rows are doubles that hold
// rounded floats. False, and nothing written, if a pivot is zero: exchanging rows is left to the general loop.
[[gnu::noinline, gnu::flatten]] bool invert_4x4(const f32_t* A, f32_t* inv)
{
    pair w[4][4];
    unroll<4>([&](auto i) {
        unroll<2>([&](auto v) {
            float_pair half;
            memcpy(&half, A + i * 4 + v * 2, sizeof(half));
            w[i][v] = as_doubles(half);
            w[i][2 + v] = pair{i == v * 2 ? 1.0 : 0.0, i == v * 2 + 1 ? 1.0 : 0.0};
        });
    });
    const auto diagonal = [&](auto i) { return w[i][i / 2][i % 2]; };
    f64_t pivot[4];
    f64_t scale[4];
    bool regular = true;
    unroll<4>([&](auto i) {
        pivot[i] = diagonal(i);
        regular = regular && pivot[i] != 0.0;
        if (!regular)
            return;
        // the three ratios, and 1 / pivot in the place that has none
        const auto entry = [&](auto j) { return i == j ? 1.0 : w[j][i / 2][i % 2]; };
        const pair r[2] = {pair{entry(size<0>()), entry(size<1>())} / pivot[i],
                           pair{entry(size<2>()), entry(size<3>())} / pivot[i]};
        scale[i] = r[i / 2][i % 2];
        unroll<4>([&](auto j) {
            if constexpr (i != j)
                unroll<4>([&](auto v) { w[j][v] = rounded(w[j][v] - r[j / 2][j % 2] * w[i][v]); });
        });
    });
    if (!regular)
        return false;
    // 1 / pivot was formed with the ratios, off the critical chain. What rounding leaves of a column seldom changes an
    // earlier pivot; only then is it divided again.
    unroll<3>([&](auto i) {
        if (diagonal(i) != pivot[i])
            scale[i] = 1.0 / diagonal(i);
    });
    unroll<4>([&](auto i) {
        const float_pair low = as_floats(w[i][2] * scale[i]);
        const float_pair high = as_floats(w[i][3] * scale[i]);
        // a whole row: products read it so, and a load that takes from two stores has to wait for both
        store<4>(inv + i * 4, __builtin_shufflevector(low, high, 0, 1, 2, 3));
    });
    return true;
}

}  // namespace

#endif
