// SPDX-License-Identifier: MIT
//
// Products of floats, d = start +- a * b, on which a filter spends its time. One kernel forms them all: a block of d
// lies in registers from its start until it is complete, takes the terms in their order, and is stored once.
//
//   form                        d starts from              a is read by   b is read by
//   a * b                       -0.0                       rows           rows
//   a' * b                      -0.0                       columns        rows
//   a * b'                      -0.0                       rows           a panel
//   a * b + c                   c                          rows           rows
//   a * b' + c                  c                          rows           a panel
//   c - a * b                   c                          rows           a panel of -b; known sizes read b as above
//   I - a * b                   the rows of constants<T>   rows           and subtract
//
//   columns of d                AVX                        SSE2                       aarch64, wasm
//   1                           as its transpose, which is one row
//   up to a narrow vector       4 rows x 1 vector, of which the lanes that there are  3 rows x 1 vector
//   up to two                   4 rows x 2 vectors         4 rows x 2 vectors         3 rows x 2 vectors
//   one wide vector             8 rows x 1 wide one
//   up to two                   4 rows x 2 wide ones
//   more                        3 rows x 3 wide ones       3 rows x 3 vectors         3 rows x 2 vectors
//
// Where three vectors would leave a single one over, two are taken. Known sizes have 4 rows in place of 3 on aarch64.
// Processors without vectors of floats are like aarch64, with single scalars for vectors, of which they take 3.
//
// A panel is a part of b on the stack, laid out in rows of whole vectors: for transposed factors and for those of less
// than a vector, and to change a sign. Rows that are left over make smaller blocks. The last vector of a block overlaps
// the one before it where columns are left over: a block has read all its starts before it stores, so that c may be d.
// Nothing beside the operands is read or written.
//
// Sizes are run-time numbers or size<n> constants of the same templates. The products of common filters are instances
// of the second kind (is_known): small ones spend half of their time on what is not arithmetic, and that goes.
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
template <typename T, typename M = int, typename K = int, typename N = int, typename Minus = bool>
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
    Minus minus;  // the terms are subtracted
    int above;    // rows of the identity above the first one
};

// A part of so many rows and terms reads again what stays in the first-level cache.
constexpr int most_terms = 64;
constexpr int most_rows = target.compact ? 24 : 36;  // by which the constants below grow

// --- what sums start from --------------------------------------------------------------------------------------------

// Rows of starts, each a pitch after the one before.
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
    static constexpr int diagonal = most_rows + most_cols;  // the place of the one in identity
    T minus_zero[most_cols];
    T identity[2 * diagonal + 1];
};
template <typename T>
constexpr constants<T> make_constants()
{
    constants<T> made = {};
    for (T& zero : made.minus_zero)
        zero = -T(0);
    made.identity[constants<T>::diagonal] = 1;
    return made;
}
template <typename T>
constexpr constants<T> constant = make_constants<T>();

// From column j on, of all rows of a part. Where the diagonal passes them by, all of them are zero.
template <typename T, typename... Known>
inline starts<T> starts_of(const product<T, Known...>& p, int j)
{
    if (p.from == start::matrix)
        return {p.c + j, p.cols};
    if (p.from == start::nothing)
        return {p.inner > 0 ? constant<T>.minus_zero : constant<T>.identity, 0};
    const int right = j - p.above;
    const int farthest = constants<T>::most_cols;
    const int place = right < -farthest ? -farthest : right > most_rows ? most_rows : right;
    return {constant<T>.identity + constants<T>::diagonal + place, -1};
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
// of which the lowest may overlap, or scalars. Columns from count on repeat the one before.
template <int n, int w, typename T, typename K, typename C>
inline void lay_panel(const T* b, strides bt, K inner, int last, C count, T* panel)
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
                unroll<m>([&](auto l) { y[l] = load_halves<w>(from + l * bt.col, m * bt.col); });
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
        repeat(inner, [&](auto k) {
            store<w>(panel + k * pitch + v * w, make_vector<T, w>([&](auto l) { return column[l][k * bt.row]; }));
        });
    });
}

template <int n, int w, typename T>
[[gnu::noinline, gnu::flatten]] void lay_any_panel(const T* b, strides bt, int inner, int last, int count, T* panel)
{
    lay_panel<n, w>(b, bt, inner, last, count, panel);
}

// A call of its own where code is to be small and sizes are not known.
template <int n, int w, typename T, typename K, typename C>
inline void fill_panel(const T* b, strides bt, K inner, int last, C count, T* panel)
{
    if constexpr (target.compact && std::is_same<K, int>::value)
        lay_any_panel<n, w>(b, bt, inner, last, count, panel);
    else
        lay_panel<n, w>(b, bt, inner, last, count, panel);
}

// --- blocks ----------------------------------------------------------------------------------------------------------

// R rows and n vectors of w columns of d, of which the last begins at last; of a single vector, the first lanes alone
// where count is less.
template <int R, int n, int w, bool negative, typename T, typename K, typename C>
inline void multiply_block(const T* a, strides at, vector_rows<T> b, K inner, starts<T> from, T* d, ptrdiff_t pitch,
                           ptrdiff_t last, C count)
{
    const auto offset = [](auto v, ptrdiff_t end) { return v + 1 < n ? ptrdiff_t{v * w} : end; };
    vec<T, w> sum[R][n];
    unroll<R>([&](auto r) {
        unroll<n>([&](auto v) {
            if constexpr (n == 1)
                sum[r][v] = load_some<w>(from.row + offset(v, last), count);
            else
                sum[r][v] = load<w>(from.row + offset(v, last));
        });
        from.row += from.pitch;
    });
    ptrdiff_t row = 0;  // of b, and k of a: beyond the last term there may be nothing to point at
    ptrdiff_t k = 0;
    const auto add_row = [&](auto factor) {
        vec<T, w> y[n];
        unroll<n>([&](auto v) { y[v] = load<w>(b.row + row + offset(v, b.last)); });
        row += b.pitch;
        unroll<R>([&](auto r) {
            unroll<n>([&](auto v) {
                if constexpr (negative)
                    sum[r][v] -= y[v] * factor(r);
                else
                    sum[r][v] += y[v] * factor(r);
            });
        });
    };
    const auto add_one = [&](auto) {
        add_row([&](auto r) { return a[r * at.row + k]; });
        k += at.col;
    };
    constexpr int m = narrow<T>;
    const auto add_lanes = [&](auto) {
        vec<T, m> x[R];
        unroll<R>([&](auto r) { x[r] = load<m>(a + r * at.row + k); });
        unroll<m>([&](auto l) { add_row([&](auto r) { return x[r][int{l}]; }); });
        k += m;
    };
    if constexpr (!target.multiplies_by_lane) {
        repeat(inner, add_one);
    } else if constexpr (std::is_same<K, int>::value) {
        const int whole = at.col == 1 ? quotient<m>(inner) : 0;
        repeat(whole, add_lanes);
        repeat(inner - whole * m, add_one);
    } else {
        repeat(quotient<m>(inner), add_lanes);
        repeat(remainder<m>(inner), add_one);
    }
    T* out = d;
    unroll<R>([&](auto r) {
        unroll<n>([&](auto v) {
            if constexpr (n == 1)
                store_some<w>(out + offset(v, last), sum[r][v], count);
            else
                store<w>(out + offset(v, last), sum[r][v]);
        });
        out += pitch;
    });
}

// Calls block for R rows at a time and for what is left over.
template <int R, bool one_loop, typename M, typename F>
inline void in_blocks(M rows, F block)
{
    if constexpr (one_loop) {
        for (int left = rows; left > 0;) {
            if (left >= R) {
                block(size<R>());
                left -= R;
            } else {
                block(size<1>());
                --left;
            }
        }
    } else {
        repeat(int{quotient<R>(rows)}, [&](auto) { block(size<R>()); });
        if constexpr (R > 4)
            if (remainder<R>(rows) & 4)
                block(size<4>());
        if (remainder<R>(rows) & 2)
            block(size<2>());
        if (remainder<R>(rows) & 1)
            block(size<1>());
    }
}

// All rows of a part, n vectors of columns from column j on, of a single vector the first lanes that there are.
template <int n, int w, typename T, typename M, typename K, typename N, typename Minus, typename C>
inline void multiply_columns(const product<T, M, K, N, Minus>& p, int j, C columns)
{
    // Small code has one loop, for which what is left over are single rows; of 3 at once these are fewer than of 4.
    constexpr bool one_loop = target.compact && std::is_same<M, int>::value;
    constexpr int R = n == 3 || one_loop ? 3 : n == 1 && w > narrow<T> ? 8 : 4;
    constexpr bool negative = std::is_same<Minus, std::true_type>::value;
    const M rows = p.rows;
    const K inner = p.inner;
    const ptrdiff_t last = w == 1 ? n - 1 : n == 1 ? 0 : columns - w;  // single scalars never overlap
    const T* a = p.a;
    T* d = p.d + j;
    const ptrdiff_t pitch = p.cols;
    starts<T> from = starts_of(p, j);

    T panel[most_terms * n * w];
    vector_rows<T> b = {p.b + j * p.bt.col, p.bt.row, last};
    if (inner > 0 && (p.bt.col != 1 || (n == 1 && columns < w) || (p.minus && !negative))) {
        fill_panel<n, w>(b.row, p.bt, inner, static_cast<int>(last), columns, panel);
        b = {panel, n * w, (n - 1) * w};
    }
    if (p.minus && !negative)
        for (int k = 0; k < inner * n; ++k)
            store<w>(panel + k * w, -load<w>(panel + k * w));

    in_blocks<R, one_loop>(rows, [&](auto r) {
        multiply_block<r, n, w, negative>(a, p.at, b, inner, from, d, pitch, last, columns);
        a += r * p.at.row;
        d += r * pitch;
        from.row += r * from.pitch;
    });
}

// --- products --------------------------------------------------------------------------------------------------------

// Vectors of w columns that the next block takes of those that are left. Three share each factor that is spread to a
// vector; they are taken unless a single vector would be left over, and not where code is to be small.
constexpr int count_vectors(int left, int w)
{
    return (w == 1 || !target.compact) && left > 2 * w && (left <= 3 * w || left > 4 * w) ? 3 : left > w ? 2 : 1;
}

template <int n, int w, typename T, typename C>
[[gnu::noinline, gnu::flatten]] void multiply_any_columns(const product<T>& p, int j, C columns)
{
    multiply_columns<n, w>(p, j, columns);
}

// The columns of one vector at the most. Wide vectors are whole: less than one is the business of narrow ones.
template <int w, typename T>
inline void multiply_last_columns(const product<T>& p, int j)
{
    const int left = p.cols - j;
    if constexpr (target.compact)
        multiply_any_columns<1, w>(p, j, left);
    else if (w > narrow<T> || left == w)
        multiply_any_columns<1, w>(p, j, size<w>());
    else
        unroll<narrow<T> - 1>([&](auto less) {
            if (left == less + 1)
                multiply_any_columns<1, narrow<T>>(p, j, size<less + 1>());
        });
}

template <int w, typename T>
inline void multiply_part(const product<T>& p)
{
    for (int j = 0; j < p.cols;) {
        const int left = p.cols - j;
        const int n = count_vectors(left, w);
        const int columns = left < n * w ? left : n * w;
        if (n == 1)
            multiply_last_columns<w>(p, j);
        else if (n == 2 || (w > 1 && target.compact))
            multiply_any_columns<2, w>(p, j, columns);
        else
            multiply_any_columns<3, w>(p, j, columns);
        j += columns;
    }
}

// The same for a number of columns that is known when the kernel is compiled.
template <int w, int j, typename T, typename M, typename K, int cols, typename Minus>
inline void multiply_known_columns(const product<T, M, K, size<cols>, Minus>& p)
{
    constexpr int left = cols - j;
    constexpr int n = count_vectors(left, w);
    constexpr int columns = left < n * w ? left : n * w;
    multiply_columns<n, w>(p, j, size<columns>());
    if constexpr (columns < left)
        multiply_known_columns<w, j + columns>(p);
}

// --- known sizes -----------------------------------------------------------------------------------------------------

// A product in single precision of sizes that are constants, by the same kernel. It is not inlined, so that each saves
// only the registers that it needs.
template <turned t, bool minus, start from, int M, int K, int N>
[[gnu::noinline, gnu::flatten]] void multiply_known(const f32_t* a, const f32_t* b, const f32_t* c, f32_t* d)
{
    static_assert(t != turned::first, "the strides below are those of rows");
    constexpr bool column = N == 1;  // whose transpose is a row
    constexpr int cols = column ? M : N;
    constexpr int w = cols < wide_lanes<f32_t> ? narrow<f32_t> : wide_lanes<f32_t>;
    // Terms are unrolled where there are registers for a panel, or where there are at most 4.
    using terms = typename std::conditional<target.compact || K <= 4, size<K>, int>::type;
    product<f32_t, size<column ? 1 : M>, terms, size<cols>, std::integral_constant<bool, minus>> p = {};
    p.a = column ? b : a;
    p.b = column ? a : b;
    p.c = c;
    p.d = d;
    p.at = {K, 1};
    p.bt = column || t == turned::second ? strides{1, K} : strides{N, 1};
    if constexpr (std::is_same<terms, int>::value)
        p.inner = K;
    p.from = from;
    multiply_known_columns<w, 0>(p);
}

// Filters whose products are known: the tracker's, and constant velocity in one and two dimensions. Where code may be
// large, all that are no larger than the tracker's, and constant velocity and acceleration in more dimensions. A build
// that checks itself makes do with the few, since sanitizers would take minutes to compile all.
struct filter_size {
    int states;
    int measurements;
};
#if defined(NDEBUG)
constexpr bool knows_many = !target.compact;
#else
constexpr bool knows_many = false;
#endif
constexpr filter_size few[] = {{8, 4}, {4, 2}, {2, 1}};
constexpr filter_size large[] = {{9, 3}, {10, 4}, {12, 6}, {15, 6}};
constexpr filter_size largest = knows_many ? filter_size{15, 6} : filter_size{8, 4};

// Without measurements: in any filter of so many states.
constexpr bool is_known(int states, int measurements)
{
    const auto is = [=](filter_size f) {
        return f.states == states && (f.measurements == measurements || measurements == 0);
    };
    for (const filter_size f : few)
        if (is(f))
            return true;
    for (const filter_size f : large)
        if (knows_many && is(f))
            return true;
    return knows_many && states <= 8 && measurements <= 4 && measurements <= states;
}

// Calls f with n as a constant if it is 1 to most: compilers make a jump table of it. False if it is not, or if f was.
template <typename F, int... i>
inline bool as_constant(int n, F f, std::integer_sequence<int, i...>)
{
    return ((n == i + 1 && f(size<i + 1>())) || ...);
}
template <int most, typename F>
inline bool as_constant(int n, F f)
{
    return as_constant(n, f, std::make_integer_sequence<int, most>());
}

// A product in the cycle of a filter, by what each of its dimensions is.
enum dimension { one, states, measurements };
template <dimension rows, dimension inner, dimension cols>
struct shape {
    template <int s, int m>
    static constexpr int of(dimension d)
    {
        return d == one ? 1 : d == states ? s : m;
    }

    // Runs the kernel if there is one for these sizes.
    template <turned t, bool minus, start from>
    static bool run(int M, int K, int N, const f32_t* a, const f32_t* b, const f32_t* c, f32_t* d)
    {
        const auto given = [=](dimension which) { return rows == which ? M : inner == which ? K : N; };
        const auto fits = [=](dimension which, int n) {
            return (rows != which || M == n) && (inner != which || K == n) && (cols != which || N == n);
        };
        constexpr bool measured = rows == measurements || inner == measurements || cols == measurements;
        const int ns = given(states);
        const int nm = measured ? given(measurements) : 0;
        if (!fits(states, ns) || !fits(one, 1) || (measured && !fits(measurements, nm)))
            return false;
        const auto run_with = [=](auto s, auto m) {
            if constexpr (is_known(s, m))
                multiply_known<t, minus, from, of<s, m>(rows), of<s, m>(inner), of<s, m>(cols)>(a, b, c, d);
            return is_known(s, m);
        };
        return as_constant<largest.states>(ns, [=](auto s) {
            if constexpr (measured)
                return as_constant<largest.measurements>(nm, [=](auto m) { return run_with(s, m); });
            else
                return run_with(s, size<0>());
        });
    }
};
template <typename... Shape>
struct shapes {
};

// --- all sizes -------------------------------------------------------------------------------------------------------

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
void multiply_floats(const product<T>& p)
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
