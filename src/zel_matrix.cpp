// SPDX-License-Identifier: MIT
//
// Dense matrices over eight scalar types. Signed and unsigned integers of one width share their bits under wrap-around
// arithmetic, so every operation is one template with six instances, picked by by_depth(); and as all integer
// arithmetic is unsigned, no operand can overflow.
#include "_libzel.h"

#include <limits.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <type_traits>

#include "zel_contract.h"
#include "zel_inverse.h"
#include "zel_product.h"

static_assert(sizeof(zel_mat_t) % 8 == 0, "data right after a header must be aligned for every depth");

using u32_t = uint32_t;

// --- the scalar types ------------------------------------------------------------------------------------------------

// The type an operation is computed in. Two 16-bit factors would be promoted to int, which their product overflows.
template <typename T>
struct wide {
    using type = T;
};
template <>
struct wide<u08_t> {
    using type = u32_t;
};
template <>
struct wide<u16_t> {
    using type = u32_t;
};
template <typename T>
using wide_t = typename wide<T>::type;

template <typename T>
static inline wide_t<T> widened(T x)
{
    return x;
}

// The one dispatch over the depths: calls f with a scalar of the type that computes a matrix of the given type code.
template <typename F>
static inline void by_depth(int type, F f)
{
    switch (ZEL_MAT_DEPTH(type)) {
    case ZEL_U08:
    case ZEL_S08:
        return f(u08_t());
    case ZEL_U16:
    case ZEL_S16:
        return f(u16_t());
    case ZEL_S32:
        return f(u32_t());
    case ZEL_F32:
        return f(f32_t());
    case ZEL_S64:
        return f(u64_t());
    default:
        return f(f64_t());
    }
}

template <typename T>
static inline T* scalars(const zel_mat_t* mat)
{
    return static_cast<T*>(static_cast<void*>(mat->data.p));
}

// --- shapes ----------------------------------------------------------------------------------------------------------

static inline bool is_empty(const zel_mat_t* mat)
{
    return mat->rows <= 0 || mat->cols <= 0;
}

static inline bool has_shape(const zel_mat_t* mat, int rows, int cols)
{
    // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): a null where none is allowed is the caller's
    return mat->rows == rows && mat->cols == cols;
}

static inline size_t count_elements(const zel_mat_t* mat)
{
    return is_empty(mat) ? 0 : static_cast<size_t>(mat->rows) * static_cast<size_t>(mat->cols);
}

static inline size_t count_channels(const zel_mat_t* mat)
{
    return static_cast<size_t>(ZEL_MAT_CN(mat->type));
}

static inline size_t count_scalars(const zel_mat_t* mat)
{
    return count_elements(mat) * count_channels(mat);
}

static inline size_t count_bytes(const zel_mat_t* mat)
{
    return count_scalars(mat) * static_cast<size_t>(ZEL_ELEM_SIZE(mat->type));
}

// Bytes of rows * cols elements, or -1 if they or one row do not fit in 31 bits.
static int data_size(int rows, int cols, int type)
{
    if (rows < 0 || cols < 0)
        return -1;
    const s64_t step = s64_t{ZEL_MAT_CN(type) * ZEL_ELEM_SIZE(type)} * cols;
    if (step > INT_MAX || step * rows > INT_MAX)
        return -1;
    return static_cast<int>(step * rows);
}

// --- what must hold of operands that fit -----------------------------------------------------------------------------

[[maybe_unused]] static inline bool is_sound(const zel_mat_t* mat)
{
    if (is_empty(mat))
        return true;
    const int size = data_size(mat->rows, mat->cols, mat->type);
    uintptr_t unaligned = 1;
    by_depth(mat->type,
             [&](auto zero) { unaligned = reinterpret_cast<uintptr_t>(mat->data.p) % alignof(decltype(zero)); });
    return size >= 0 && size / mat->rows == mat->step && mat->data.p && unaligned == 0;
}

// The destination is written while factors are still being read: it must not share their storage.
[[maybe_unused]] static inline bool is_factor(const zel_mat_t* src, const zel_mat_t* dst)
{
    return is_sound(src) && apart(src->data.p, count_bytes(src), dst->data.p, count_bytes(dst));
}

// Each scalar of a term is read before the destination is written there: the two may be one matrix.
[[maybe_unused]] static inline bool is_term(const zel_mat_t* src, const zel_mat_t* dst)
{
    return src->data.p == dst->data.p ? is_sound(src) : is_factor(src, dst);
}

// --- headers ---------------------------------------------------------------------------------------------------------

zel_mat_t* zel_mat_initheader(zel_mat_t* mat, int rows, int cols, int type, void* data)
{
    if (!mat)
        return nullptr;
    mat->type = type;
    mat->rows = rows;
    mat->cols = cols;
    // unsigned: any cols is taken, and a row that does not fit must still not overflow
    mat->step =
        static_cast<s32_t>(static_cast<u32_t>(ZEL_MAT_CN(type) * ZEL_ELEM_SIZE(type)) * static_cast<u32_t>(cols));
    mat->data.p = static_cast<u08_t*>(data);
    return mat;
}

zel_mat_t* zel_mat_create(int rows, int cols, int type)
{
    const int size = data_size(rows, cols, type);
    if (size < 0)
        return nullptr;
    auto* mat = static_cast<zel_mat_t*>(malloc(sizeof(zel_mat_t) + static_cast<size_t>(size)));
    return mat ? zel_mat_initheader(mat, rows, cols, type, mat + 1) : nullptr;
}

void zel_mat_release(zel_mat_t* mat)
{
    if (mat && mat->data.p == reinterpret_cast<u08_t*>(mat + 1))
        free(mat);
}

// --- fills -----------------------------------------------------------------------------------------------------------

// Writes channel 0 alone. next() gives the diagonal values in turn.
template <typename T, typename F>
static void fill_diagonal(zel_mat_t* mat, F next)
{
    T* d = scalars<T>(mat);
    const int rows = mat->rows;
    const int cols = mat->cols;
    const size_t cn = count_channels(mat);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j, d += cn)
            *d = i == j ? next() : T(0);
}

[[gnu::noinline]] void zel_mat_setidentity(zel_mat_t* mat)  // which products start from, too
{
    assert(mat && is_sound(mat));
    by_depth(mat->type, [=](auto zero) {
        using T = decltype(zero);
        fill_diagonal<T>(mat, [] { return T(1); });
    });
}

void zel_mat_setdiagonal(void* pvals, zel_mat_t* mat)
{
    assert(mat && is_sound(mat) && (pvals || is_empty(mat)));
    by_depth(mat->type, [=](auto zero) {
        using T = decltype(zero);
        const T* value = static_cast<const T*>(pvals);
        fill_diagonal<T>(mat, [&] { return *value++; });
    });
}

void zel_mat_setzero(zel_mat_t* mat)
{
    assert(mat && is_sound(mat));
    if (!is_empty(mat))
        memset(mat->data.p, 0, count_bytes(mat));
}

void zel_mat_setone(zel_mat_t* mat)
{
    assert(mat && is_sound(mat));
    by_depth(mat->type, [=](auto zero) {
        using T = decltype(zero);
        T* d = scalars<T>(mat);
        const size_t count = count_scalars(mat);
        for (size_t t = 0; t < count; ++t)
            d[t] = T(1);
    });
}

// --- element-wise arithmetic -----------------------------------------------------------------------------------------

static inline bool has_layout(const zel_mat_t* mat, const zel_mat_t* other)
{
    return mat->type == other->type && has_shape(mat, other->rows, other->cols);
}

// Narrowed in the expression that negates: otherwise GCC computes it in wider vectors.
template <typename T>
static inline T negated(T x)
{
    return static_cast<T>(-static_cast<wide_t<T>>(x));
}

// d = f(sources), scalar by scalar. All four operations are this loop.
template <typename T, typename F, typename... Sources>
static void each_scalar(size_t count, F f, T* d, const Sources*... sources)
{
    for (size_t t = 0; t < count; ++t)
        d[t] = static_cast<T>(f(sources[t]...));
}

void zel_mat_neg(zel_mat_t* src, zel_mat_t* dst)
{
    assert(src && dst);
    const int depth = ZEL_MAT_DEPTH(src->type);
    if (!has_layout(src, dst) || depth == ZEL_U08 || depth == ZEL_U16)
        return;
    assert(is_term(src, dst) && is_sound(dst));
    by_depth(dst->type, [=](auto zero) {
        using T = decltype(zero);
        each_scalar(
            count_scalars(dst), [](auto x) { return negated(x); }, scalars<T>(dst), scalars<T>(src));
    });
}

void zel_mat_scale(void* pval, zel_mat_t* src, zel_mat_t* dst)
{
    assert(pval && src && dst);
    if (!has_layout(src, dst))
        return;
    assert(is_term(src, dst) && is_sound(dst));
    by_depth(dst->type, [=](auto zero) {
        using T = decltype(zero);
        const T value = *static_cast<const T*>(pval);
        each_scalar(
            count_scalars(dst), [=](T x) { return widened(x) * widened(value); }, scalars<T>(dst), scalars<T>(src));
    });
}

// dst = f(src1, src2)
template <typename F>
static void combine(const zel_mat_t* src1, const zel_mat_t* src2, zel_mat_t* dst, F f)
{
    assert(src1 && src2 && dst);
    if (!has_layout(src1, src2) || !has_layout(src1, dst))
        return;
    assert(is_term(src1, dst) && is_term(src2, dst) && is_sound(dst));
    by_depth(dst->type, [=](auto zero) {
        using T = decltype(zero);
        each_scalar(count_scalars(dst), f, scalars<T>(dst), scalars<T>(src1), scalars<T>(src2));
    });
}

void zel_mat_add(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* dst)
{
    combine(src1, src2, dst, [](auto x, auto y) { return widened(x) + widened(y); });
}

void zel_mat_sub(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* dst)
{
    combine(src1, src2, dst, [](auto x, auto y) { return widened(x) - widened(y); });
}

// --- transpose -------------------------------------------------------------------------------------------------------

static inline size_t smaller(size_t x, size_t y)
{
    return x < y ? x : y;
}

template <size_t bytes>
static inline void copy_element(u08_t* d, const u08_t* s, size_t cn)
{
    for (size_t k = 0; k < cn; ++k, d += bytes, s += bytes)
        memcpy(d, s, bytes);
}

// As much of a block of one channel, height x width, as makes up squares that are transposed in registers. Integers,
// whose bits nothing changes.
template <typename T>
static void transpose_squares(u08_t* d, const u08_t* s, size_t rows, size_t cols, size_t height, size_t width)
{
    constexpr int m = narrow<T>;
    for (size_t j = 0; j + m <= width; j += m)
        for (size_t i = 0; i + m <= height; i += m) {
            const u08_t* from = s + (i * cols + j) * sizeof(T);
            u08_t* to = d + (j * rows + i) * sizeof(T);
            vec<T, m> square[m];
            unroll<m>([&](auto r) { memcpy(&square[r], from + r * cols * sizeof(T), 16); });
            transpose<T, m>(square);
            unroll<m>([&](auto r) { memcpy(to + r * rows * sizeof(T), &square[r], 16); });
        }
}

// Scalars are moved as integers of their size, whatever they mean. In square blocks of one cache line of the
// destination: row by row, each store would go to another line, and a 512 x 512 matrix of 4-byte scalars takes 7 times
// as long.
template <typename T>
static void transpose_elements(const zel_mat_t* src, zel_mat_t* dst)
{
    constexpr size_t bytes = sizeof(T);
    constexpr size_t block = 64 / bytes;
    const size_t rows = static_cast<size_t>(src->rows);
    const size_t cols = static_cast<size_t>(src->cols);
    const size_t cn = count_channels(src);
    for (size_t i0 = 0; i0 < rows; i0 += block)
        for (size_t j0 = 0; j0 < cols; j0 += block) {
            const u08_t* s = src->data.p + (i0 * cols + j0) * cn * bytes;
            u08_t* d = dst->data.p + (j0 * rows + i0) * cn * bytes;
            const size_t height = smaller(block, rows - i0);
            const size_t width = smaller(block, cols - j0);
            const bool squares = bytes == 4 && cn == 1;
            const size_t done_rows = squares ? height - height % narrow<T> : 0;
            const size_t done_cols = squares ? width - width % narrow<T> : 0;
            if constexpr (bytes == 4)
                if (squares)
                    transpose_squares<T>(d, s, rows, cols, height, width);
            for (size_t j = 0; j < width; ++j)
                for (size_t i = j < done_cols ? done_rows : 0; i < height; ++i)
                    copy_element<bytes>(d + (j * rows + i) * cn * bytes, s + (i * cols + j) * cn * bytes, cn);
        }
}

void zel_mat_transpose(zel_mat_t* src, zel_mat_t* dst)
{
    assert(src && dst);
    if (src->type != dst->type || !has_shape(dst, src->cols, src->rows) || is_empty(src))
        return;
    assert(is_factor(src, dst) && is_sound(dst));
    switch (ZEL_ELEM_SIZE(src->type)) {
    case 1:
        return transpose_elements<u08_t>(src, dst);
    case 2:
        return transpose_elements<u16_t>(src, dst);
    case 4:
        return transpose_elements<u32_t>(src, dst);
    default:
        return transpose_elements<u64_t>(src, dst);
    }
}

// --- printing --------------------------------------------------------------------------------------------------------

// A scalar as it is passed to printf. Both 16-bit depths are read as signed.
static inline int printed(u08_t value)
{
    return value;
}
static inline int printed(u16_t value)
{
    return static_cast<s16_t>(value);
}
static inline int printed(u32_t value)
{
    return static_cast<s32_t>(value);
}
static inline double printed(f32_t value)
{
    return static_cast<double>(value);
}
static inline long long printed(u64_t value)
{
    return static_cast<long long>(value);
}
static inline double printed(f64_t value)
{
    return value;
}

// By depth.
static constexpr const char* print_formats[] = {" %3d", " %c", " %6d", " %6d", " %11d", " %10f", " %11lld", " %10f"};

void zel_mat_print(char* name, zel_mat_t* mat)
{
    assert(mat && is_sound(mat));
    if (name)
        printf("%s=\n", name);
    const char* format = print_formats[ZEL_MAT_DEPTH(mat->type)];
    by_depth(mat->type, [=](auto zero) {
        using T = decltype(zero);
        const ptrdiff_t pitch = mat->step / ZEL_ELEM_SIZE(mat->type);
        for (int i = 0; i < mat->rows; ++i) {
            for (int j = 0; j < mat->cols; ++j)
                printf(format, printed(scalars<T>(mat)[i * pitch + j]));
            printf("\n");
        }
    });
}

// --- products --------------------------------------------------------------------------------------------------------

template <typename T>
static inline T multiply_add(T sum, T x, T y)
{
    return static_cast<T>(widened(sum) + widened(x) * widened(y));
}

template <typename T>
static void add_row(T* __restrict d, T factor, const T* __restrict b, int cols)
{
    for (int j = 0; j < cols; ++j)
        d[j] = multiply_add(d[j], factor, b[j]);
}

// d +-= a * b. Rows of d gain multiples of the rows of b. A negated factor subtracts exactly, so that sums and
// differences are one loop.
template <typename T>
static void accumulate_rows(const T* a, strides at, const T* b, T* d, int rows, int inner, int cols, bool minus)
{
    for (ptrdiff_t i = 0; i < rows; ++i, d += cols)
        for (ptrdiff_t k = 0; k < inner; ++k) {
            const T factor = a[i * at.row + k * at.col];
            add_row(d, minus ? negated(factor) : factor, b + k * cols, cols);
        }
}

// d += a * b', each element the dot product of two rows.
template <typename T>
static void accumulate_dots(const T* a, const T* b, T* d, int rows, int inner, int cols)
{
    for (ptrdiff_t i = 0; i < rows; ++i, a += inner)
        for (ptrdiff_t j = 0; j < cols; ++j, ++d) {
            T sum = *d;
            for (ptrdiff_t k = 0; k < inner; ++k)
                sum = multiply_add(sum, a[k], b[j * inner + k]);
            *d = sum;
        }
}

// What the sums start from, laid into d; c is null where that is nothing.
static void lay_start(start from, const zel_mat_t* c, zel_mat_t* d)
{
    if (from == start::identity)
        zel_mat_setidentity(d);
    else if (!c)
        zel_mat_setzero(d);
    else
        memmove(d->data.p, c->data.p, count_bytes(d));  // the two may be one matrix
}

// The same for all depths, or for floats alone: integers have the start laid into d, and terms added to it.
template <typename T>
[[gnu::always_inline]] static inline void multiply_depth(const zel_mat_t* a, const zel_mat_t* b, const zel_mat_t* c,
                                                         zel_mat_t* d, int inner, turned t, bool minus, start from)
{
    // factors without terms may have no data, to which nothing may be added
    const strides at = inner == 0 ? strides{} : t == turned::first ? strides{1, d->rows} : strides{inner, 1};
    const strides bt = inner == 0 ? strides{} : t == turned::second ? strides{1, inner} : strides{d->cols, 1};
    if constexpr (std::is_floating_point<T>::value) {
        const bool column = d->cols == 1;  // whose transpose is a row
        const product<T> p = {scalars<T>(column ? b : a),
                              scalars<T>(column ? a : b),
                              c ? scalars<T>(c) : nullptr,
                              scalars<T>(d),
                              column ? strides{bt.col, bt.row} : at,
                              column ? strides{at.col, at.row} : bt,
                              column ? 1 : d->rows,
                              inner,
                              column ? d->rows : d->cols,
                              from,
                              minus,
                              0};
        multiply_floats(p);
    } else {
        lay_start(from, c, d);
        if (t == turned::second)
            accumulate_dots(scalars<T>(a), scalars<T>(b), scalars<T>(d), d->rows, inner, d->cols);
        else
            accumulate_rows(scalars<T>(a), at, scalars<T>(b), scalars<T>(d), d->rows, inner, d->cols, minus);
    }
}

[[gnu::noinline]] static void multiply_any_depth(const zel_mat_t* a, const zel_mat_t* b, const zel_mat_t* c,
                                                 zel_mat_t* d, int inner, turned t, bool minus, start from)
{
    by_depth(d->type, [=](auto zero) { multiply_depth<decltype(zero)>(a, b, c, d, inner, t, minus, from); });
}

// d = start +- a * b for operands of one type. The shapes are those for which there may be a kernel.
template <turned t, bool minus, start from, typename... Shape>
static inline void multiply(const zel_mat_t* a, const zel_mat_t* b, const zel_mat_t* c, zel_mat_t* d, shapes<Shape...>)
{
    const int rows = t == turned::first ? a->cols : a->rows;
    const int cols = t == turned::second ? b->rows : b->cols;
    const int inner = t == turned::first ? a->rows : a->cols;
    if (inner != (t == turned::second ? b->cols : b->rows) || !has_shape(d, rows, cols))
        return;
    if (from == start::matrix && !has_shape(c, rows, cols))
        return;
    assert(is_factor(a, d) && is_factor(b, d) && (!c || is_term(c, d)) && is_sound(d));
    if (ZEL_MAT_DEPTH(d->type) == ZEL_F32 &&
        (Shape::template run<t, minus, from>(rows, inner, cols, a->data.f, b->data.f, c ? c->data.f : nullptr,
                                             d->data.f) ||
         ...))
        return;
    if (rows > 0 && cols > 0)
        multiply_any_depth(a, b, c, d, inner, t, minus, from);
}

static inline bool is_single_channel(const zel_mat_t* mat)
{
    return ZEL_MAT_CN(mat->type) == 1;
}

void zel_mat_mul(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* dst, int flags)
{
    assert(src1 && src2 && dst);
    if (!is_single_channel(src1) || src2->type != src1->type || dst->type != src1->type)
        return;
    if (flags & ZEL_MAT_TRANS_SRC1)
        multiply<turned::first, false, start::nothing>(src1, src2, nullptr, dst, shapes<>());
    else if (flags & ZEL_MAT_TRANS_SRC2)
        multiply<turned::second, false, start::nothing>(
            src1, src2, nullptr, dst,
            shapes<shape<states, states, states>, shape<states, states, measurements>,
                   shape<states, measurements, measurements>>());
    else
        multiply<turned::none, false, start::nothing>(src1, src2, nullptr, dst, shapes<shape<states, states, one>>());
}

void zel_mat_muladd(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* src3, zel_mat_t* dst, int flags)
{
    assert(src1 && src2 && src3 && dst);
    if (!is_single_channel(src1) || src2->type != src1->type || src3->type != src1->type || dst->type != src1->type)
        return;
    if (flags & ZEL_MAT_TRANS_SRC2)
        multiply<turned::second, false, start::matrix>(src1, src2, src3, dst, shapes<shape<states, states, states>>());
    else
        multiply<turned::none, false, start::matrix>(
            src1, src2, src3, dst,
            shapes<shape<measurements, states, measurements>, shape<states, measurements, one>>());
}

void zel_mat_submul(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* src3, zel_mat_t* dst, int flag)
{
    assert((src1 || (flag & ZEL_MAT_FROM_IDENTITY)) && src2 && src3 && dst);
    if (!is_single_channel(src2) || (src1 && src1->type != src2->type) || src3->type != src2->type ||
        dst->type != src2->type)
        return;
    if (flag & ZEL_MAT_FROM_IDENTITY)
        multiply<turned::none, true, start::identity>(src2, src3, nullptr, dst,
                                                      shapes<shape<states, measurements, states>>());
    else
        multiply<turned::none, true, start::matrix>(src2, src3, src1, dst, shapes<shape<measurements, states, one>>());
}

// --- inverse ---------------------------------------------------------------------------------------------------------

// Gauss-Jordan elimination on [A | I] (Golub and Van Loan, "Matrix Computations"). Rows are stored in single precision;
// every update is computed in double and rounded once. Only a pivot of exactly zero exchanges rows.
static int _matinv_nxn(int n, float* A, float* inv)
{
    constexpr int max_rows = 40;
    static float W[max_rows][2 * max_rows];
    static float tmp[2 * max_rows];

    if (n > max_rows)
        return -1;
    const int n2 = 2 * n;
    const size_t row = sizeof(float) * static_cast<size_t>(n > 0 ? n : 0);
    for (int i = 0; i < n; ++i) {
        memcpy(W[i], A + i * n, row);
        memset(W[i] + n, 0, row);
        W[i][n + i] = 1.0F;
    }

    for (int i = 0; i < n; ++i) {
        if (W[i][i] == 0.0F && i < n - 1) {
            int k = i + 1;
            while (k < n - 1 && W[k][i] == 0.0F)
                ++k;
            const size_t rest = sizeof(float) * static_cast<size_t>(n2 - i);
            memcpy(tmp, W[i] + i, rest);
            memcpy(W[i] + i, W[k] + i, rest);
            memcpy(W[k] + i, tmp, rest);
        }
        for (int j = 0; j < n; ++j)
            if (j != i)
                subtract_row(W[j], static_cast<double>(W[j][i]) / static_cast<double>(W[i][i]), W[i], n2);
    }

    for (int i = 0; i < n; ++i) {
        scale_row(W[i] + n, 1.0 / static_cast<double>(W[i][i]), n);
        memcpy(inv + i * n, W[i] + n, row);
    }
    return 0;
}

static bool inverting;

int zel_mat_inv(zel_mat_t* src, zel_mat_t* dst)
{
    assert(src && dst);
    if (src->type != dst->type || src->rows != dst->rows || src->cols != dst->cols)
        return -1;
    if (src->type != ZEL_MAT_TYPE(ZEL_F32, 1) || src->rows != src->cols)
        return -1;
    assert(is_term(src, dst) && is_sound(dst));
    const exclusive_call alone(inverting);
    if (invert_small(src->rows, src->data.f, dst->data.f))
        return 0;
    return _matinv_nxn(src->rows, src->data.f, dst->data.f);
}

// --- 3 x 3 -----------------------------------------------------------------------------------------------------------

[[maybe_unused]] static constexpr size_t matrix_bytes = sizeof(float[3][3]);
[[maybe_unused]] static constexpr size_t vector_bytes = sizeof(float[3]);

// In double, rounded once.
static inline float dot3(float a0, float b0, float a1, float b1, float a2, float b2)
{
    return static_cast<float>(static_cast<double>(a0) * static_cast<double>(b0) +
                              static_cast<double>(a1) * static_cast<double>(b1) +
                              static_cast<double>(a2) * static_cast<double>(b2));
}

static inline float dot3(const float* x, const float* y)
{
    return dot3(x[0], y[0], x[1], y[1], x[2], y[2]);
}

// Column j of A times x.
static inline float column_dot3(float A[3][3], int j, const float* x)
{
    return dot3(A[0][j], x[0], A[1][j], x[1], A[2][j], x[2]);
}

// Row i of C is B' times row i of A.
void _matmult_3x3(float A[3][3], float B[3][3], float C[3][3])
{
    assert(apart(A, matrix_bytes, C, matrix_bytes) && apart(B, matrix_bytes, C, matrix_bytes));
    for (int i = 0; i < 3; ++i)
        _matmult_3x3tvec(B, A[i], C[i]);
}

// Row i of C is B times row i of A.
void _matmult_3x3t(float A[3][3], float B[3][3], float C[3][3])
{
    assert(apart(A, matrix_bytes, C, matrix_bytes) && apart(B, matrix_bytes, C, matrix_bytes));
    for (int i = 0; i < 3; ++i)
        _matmult_3x3vec(B, A[i], C[i]);
}

void _matmult_3x3vec(float A[3][3], float* x, float* y)
{
    assert(apart(A, matrix_bytes, y, vector_bytes) && apart(x, vector_bytes, y, vector_bytes));
    for (int i = 0; i < 3; ++i)
        y[i] = dot3(A[i], x);
}

void _matmult_3x3tvec(float A[3][3], float* x, float* y)
{
    assert(apart(A, matrix_bytes, y, vector_bytes) && apart(x, vector_bytes, y, vector_bytes));
    for (int j = 0; j < 3; ++j)
        y[j] = column_dot3(A, j, x);
}

void _matneg_3x3(float A[3][3])
{
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            A[i][j] = -A[i][j];
}

float _matdet_3x3(float A[3][3])
{
    return A[0][0] * (A[1][1] * A[2][2] - A[1][2] * A[2][1]) - A[0][1] * (A[1][0] * A[2][2] - A[1][2] * A[2][0]) +
           A[0][2] * (A[1][0] * A[2][1] - A[1][1] * A[2][0]);
}

void _vecoutp_3(float* x, float* y, float O[3][3])
{
    assert(apart(x, vector_bytes, O, matrix_bytes) && apart(y, vector_bytes, O, matrix_bytes));
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            O[i][j] = x[i] * y[j];
}

static inline float cross2(float a, float d, float b, float c)
{
    return static_cast<float>(static_cast<double>(a) * static_cast<double>(d) -
                              static_cast<double>(b) * static_cast<double>(c));
}

void _veccrossp_3(float* x, float* y, float* z)
{
    assert(apart(x, vector_bytes, z, vector_bytes) && apart(y, vector_bytes, z, vector_bytes));
    z[0] = cross2(x[1], y[2], x[2], y[1]);
    z[1] = cross2(x[2], y[0], x[0], y[2]);
    z[2] = cross2(x[0], y[1], x[1], y[0]);
}

float _vecdotp_3(float* x, float* y)
{
    return dot3(x, y);
}
