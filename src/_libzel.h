/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Matrices and Kalman filters: the two layers that the tracker of libzel.h stands on, for hosts that need
 * them directly.
 *
 * What holds for every matrix function, unless it says otherwise:
 * - Operands are headers (zel_mat_t) over dense row-major data: element (i, j), channel k, is the scalar at index
 *   (i * cols + j) * channels + k. Inputs come before the destination, a scalar or list of scalars comes first, flags
 *   come last. Pointers must not be null, and data must be aligned for their scalar type.
 * - The types (as whole integers) and shapes are checked. If they do not fit, the function returns at once and the
 *   destination is left unchanged; nothing reports it. Matrices with no rows or no columns are valid and empty.
 * - Integers wrap modulo their width and never saturate. Floats are computed in their own precision.
 * - Nothing is allocated but by the create functions. Calls that write different objects may run in parallel,
 *   apart from zel_mat_inv() and with it zel_kalman_correct(): see there.
 */
#ifndef LIBZEL_INTERNAL_H
#define LIBZEL_INTERNAL_H

#include "libzel.h"

/**
 * @defgroup zel_matrix Matrices
 * Dense matrices over eight scalar types.
 * @{
 * @name Depths
 * The scalar type of a matrix. There is no unsigned 32-bit or 64-bit one.
 * @{
 */

#define ZEL_U08 0 /**< #u08_t */
#define ZEL_S08 1 /**< #s08_t */
#define ZEL_U16 2 /**< #u16_t */
#define ZEL_S16 3 /**< #s16_t */
#define ZEL_S32 4 /**< #s32_t */
#define ZEL_F32 5 /**< #f32_t */
#define ZEL_S64 6 /**< #s64_t */
#define ZEL_F64 7 /**< #f64_t */

/** Type code of a depth and 1 to 32 channels: bits 0 to 2 are the depth, bits 3 to 7 the channels less one. */
#define ZEL_MAT_TYPE(depth, cn) ((depth) | (((cn)-1) << 3))
/** Depth of a type code. */
#define ZEL_MAT_DEPTH(type) ((type)&7)
/** Channels of a type code. */
#define ZEL_MAT_CN(type) ((((type) >> 3) & 31) + 1)
/** Bytes per scalar of a depth (or of a type code): 1, 1, 2, 2, 4, 4, 8, 8. */
#define ZEL_ELEM_SIZE(depth) (1 << (ZEL_MAT_DEPTH(depth) >> 1))

/** @} */

/** @cond */
#if defined(__GNUC__)
#define ZEL_ALIGNED_8 __attribute__((aligned(8)))
#else
#define ZEL_ALIGNED_8
#endif
/** @endcond */

#define ZEL_MAT_TRANS_SRC1 1     /**< zel_mat_mul(): the transpose of src1 */
#define ZEL_MAT_TRANS_SRC2 2     /**< zel_mat_mul(), zel_mat_muladd(): the transpose of src2 */
#define ZEL_MAT_FROM_IDENTITY 16 /**< zel_mat_submul(): the identity in place of src1 */

/**
 * Matrix header. step is the bytes from one row to the next and always the bytes of one row: rows follow each other
 * without a gap. rows * step must be below 2^31. The size is a multiple of 8 on every platform, so that data right
 * after a header are aligned for every depth.
 */
typedef struct _zel_mat_t {
    s32_t type; /**< ZEL_MAT_TYPE(depth, channels) */
    s32_t rows; /**< 0 or more */
    s32_t cols; /**< elements per row */
    s32_t step; /**< bytes per row */
    /** the scalars, in storage that the header does not own by itself */
    union {
        u08_t* p; /**< ZEL_U08, ZEL_S08 */
        s16_t* s; /**< ZEL_U16, ZEL_S16 */
        s32_t* i; /**< ZEL_S32 */
        u64_t* l; /**< ZEL_S64 */
        f32_t* f; /**< ZEL_F32 */
        f64_t* d; /**< ZEL_F64 */
    } data;
} ZEL_ALIGNED_8 zel_mat_t;

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name Headers
 * @{
 */

/**
 * Lay a header over memory of the caller's, which stays the caller's. Sets all five fields and checks none of them.
 * @return mat; null if mat is null, which is allowed and does nothing.
 */
ZEL_API zel_mat_t* zel_mat_initheader(zel_mat_t* mat, int rows, int cols, int type, void* data);

/**
 * Allocate a header with its data after it, in one block. The data are not cleared.
 * @return The matrix, to be released with zel_mat_release(); null if memory runs out, if rows or cols is negative, or
 *         if the bytes of the data or of one row do not fit in 31 bits.
 */
ZEL_API zel_mat_t* zel_mat_create(int rows, int cols, int type);

/**
 * Free a matrix of zel_mat_create(). Null, and a header whose data do not begin right after it, are left alone. Must
 * not be called on a matrix of a filter: its data do begin there, but the memory is the filter's.
 */
ZEL_API void zel_mat_release(zel_mat_t* mat);

/**
 * @}
 * @name Fills
 * All depths and channel counts. An empty matrix is left alone.
 * @{
 */

/** Ones on the diagonal, zeros elsewhere, in channel 0; other channels are left unchanged. Any shape. */
ZEL_API void zel_mat_setidentity(zel_mat_t* mat);

/** As zel_mat_setidentity(), with diagonal element k taking pvals[k]: min(rows, cols) scalars of the matrix's depth. */
ZEL_API void zel_mat_setdiagonal(void* pvals, zel_mat_t* mat);

/** All bytes zero, in every channel. */
ZEL_API void zel_mat_setzero(zel_mat_t* mat);

/** All scalars one, in every channel. */
ZEL_API void zel_mat_setone(zel_mat_t* mat);

/**
 * @}
 * @name Element-wise arithmetic
 * Every scalar of every channel, all depths. Operands must be of one type and shape. dst may be any of the sources;
 * data that overlap at a shift are not allowed.
 * @{
 */

/** dst = -src. Floats flip their sign bit. With ZEL_U08 and ZEL_U16 nothing is written. */
ZEL_API void zel_mat_neg(zel_mat_t* src, zel_mat_t* dst);

/** dst = src * value, where pval points at one scalar of the matrix's depth. It may lie in dst: it is read first. */
ZEL_API void zel_mat_scale(void* pval, zel_mat_t* src, zel_mat_t* dst);

/** dst = src1 + src2. */
ZEL_API void zel_mat_add(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* dst);

/** dst = src1 - src2. */
ZEL_API void zel_mat_sub(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* dst);

/**
 * @}
 * @name Transpose
 * @{
 */

/**
 * dst(j, i) = src(i, j), element by element with all channels, bit for bit. Types must agree, and dst must have as many
 * rows as src has columns and the reverse. dst must not share storage with src: nothing is transposed in place.
 */
ZEL_API void zel_mat_transpose(zel_mat_t* src, zel_mat_t* dst);

/**
 * @}
 * @name Printing
 * @{
 */

/**
 * Print a matrix to standard output with printf, a line per row, under the line "name=" unless name is null. For
 * looking at values while developing: of several channels, only the first cols scalars of a row are printed; ZEL_S08 is
 * printed as characters and ZEL_U16 as if signed.
 */
ZEL_API void zel_mat_print(char* name, zel_mat_t* mat);

/**
 * @}
 * @name Products
 * Single-channel operands of one type, all depths. With floats, products and sums may be fused; where the second factor
 * is transposed, sums may also be regrouped. An empty inner dimension gives zeros, or the matrix added to.
 * @{
 */

/**
 * Matrix product dst = src1 * src2, with one factor transposed on request.
 *
 *     flags                   dst             src1    src2    dst
 *     0                       src1 * src2     m x k   k x n   m x n
 *     ZEL_MAT_TRANS_SRC1      src1' * src2    k x m   k x n   m x n
 *     ZEL_MAT_TRANS_SRC2      src1 * src2'    m x k   n x k   m x n
 *
 * With both flags only src1 is transposed; other bits are ignored. dst must not share storage with src1 or src2.
 */
ZEL_API void zel_mat_mul(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* dst, int flags);

/**
 * Product plus matrix, dst = src1 * src2 + src3.
 *
 *     flags                   dst                    src1    src2    src3, dst
 *     0                       src1 * src2 + src3     m x k   k x n   m x n
 *     ZEL_MAT_TRANS_SRC2      src1 * src2' + src3    m x k   n x k   m x n
 *
 * Other bits are ignored: src1 is never transposed here. dst may be src3; it must not share storage with src1 or src2.
 */
ZEL_API void zel_mat_muladd(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* src3, zel_mat_t* dst, int flags);

/**
 * Matrix less product, dst = src1 - src2 * src3.
 *
 *     flag                    dst                    src1    src2    src3    dst
 *     0                       src1 - src2 * src3     m x n   m x k   k x n   m x n
 *     ZEL_MAT_FROM_IDENTITY   I - src2 * src3        null    m x k   k x n   m x n
 *
 * Other bits are ignored: neither factor is ever transposed here. With ZEL_MAT_FROM_IDENTITY src1 is not read, but if
 * it is not null its type must fit all the same. dst may be src1; it must not share storage with src2 or src3.
 */
ZEL_API void zel_mat_submul(zel_mat_t* src1, zel_mat_t* src2, zel_mat_t* src3, zel_mat_t* dst, int flag);

/**
 * @}
 * @name Inverse
 * @{
 */

/**
 * Inverse of a square ZEL_F32 matrix of one channel and at most 40 rows, by Gauss-Jordan elimination with a row
 * exchange only where a pivot is exactly zero. dst may be src.
 *
 * Each step is computed in double precision and rounded once. Works in a static area: a second inversion, of whatever
 * operands, must not begin in any thread before the first has returned.
 *
 * @return 0 if dst was written, or if the matrix is empty; -1 if the operands were refused (type, shape, size) and dst
 *         is left unchanged. A singular matrix is not detected, and the result is 0: dst then holds infinities,
 *         NaNs or, where rounding hides the zero pivot, large meaningless numbers.
 */
ZEL_API int zel_mat_inv(zel_mat_t* src, zel_mat_t* dst);

/**
 * @}
 * @}
 * @defgroup zel_kalman Kalman filter
 * A linear filter of ns states and nm measurements. All its matrices are ZEL_F32 of one channel. With x the state, P
 * its error covariance, z a measurement:
 *
 *     predict   x_pre  = A x_post                  P_pre  = A P_post A' + Q
 *     correct   K      = P_pre H' (H P_pre H' + R)^-1
 *               x_post = x_pre + K (z - H x_pre)   P_post = (I - K H) P_pre
 *
 * @{
 */

/**
 * A linear Kalman filter. The structure is private: it may change with every release. A host that reads or writes the
 * fields, named as above, includes zel_kalman.cpp, which is installed beside this header, in one of its C++ sources.
 */
typedef struct _zel_kalman_t zel_kalman_t;

/**
 * Make a filter, all zero. Before the first prediction, x_post and P_post are to be written and, with flag 0, the
 * model.
 *
 * @param ns, nm      Number of states and of measurements, both 1 or more.
 * @param flag        0: the filter carries A, H, Q and R itself, and the four arguments are ignored. Otherwise it
 *                    borrows the caller's, which must outlive it; any number of filters may share one set.
 * @param A, H, Q, R  Transition (ns x ns), measurement (nm x ns), process noise (ns x ns), measurement noise (nm x nm).
 *                    They are not checked: with wrong shapes or types the products that use them write nothing.
 * @return The filter, one allocation, to be released with zel_kalman_release(); null if memory runs out, if ns or nm is
 *         below 1, or if the whole does not fit in 31 bits.
 */
ZEL_API zel_kalman_t* zel_kalman_create(int ns, int nm, int flag, zel_mat_t* A, zel_mat_t* H, zel_mat_t* Q,
                                        zel_mat_t* R);

/** Free a filter with all it owns; borrowed model matrices stay the caller's. Null is accepted and does nothing. */
ZEL_API void zel_kalman_release(zel_kalman_t* kalman);

/**
 * Project state and covariance one step ahead. Reads only the posterior and writes only the prior, so a second
 * prediction without a correction between them gives the same: a prediction does not advance by itself.
 */
ZEL_API void zel_kalman_predict(zel_kalman_t* kalman);

/**
 * Fold a measurement (nm x 1) into the prediction. Reads only the prior and writes only the posterior.
 *
 * Inverts a matrix: a second correction, of whatever filter, must not begin in any thread before the first has
 * returned.
 * A measurement of another shape or type is not noticed: the innovation of the correction before is used again.
 * With nm above 40 nothing can be inverted: the gain stays 0 and the posterior is the prior.
 */
ZEL_API void zel_kalman_correct(zel_kalman_t* kalman, zel_mat_t* measurement);

/**
 * @}
 * @defgroup zel_3x3 Matrices of 3 x 3 and vectors of 3
 * On plain arrays, rows of three floats. Sums are formed in double precision and rounded once, apart from the
 * determinant and the outer product, which are single precision throughout. Outputs must not share storage with inputs.
 * @{
 */

ZEL_API void _matmult_3x3(float A[3][3], float B[3][3], float C[3][3]);  /**< C = A B */
ZEL_API void _matmult_3x3t(float A[3][3], float B[3][3], float C[3][3]); /**< C = A B' */
ZEL_API void _matmult_3x3vec(float A[3][3], float* x, float* y);         /**< y = A x */
ZEL_API void _matmult_3x3tvec(float A[3][3], float* x, float* y);        /**< y = A' x */
ZEL_API void _matneg_3x3(float A[3][3]);                                 /**< A = -A, in place */
ZEL_API float _matdet_3x3(float A[3][3]);                                /**< det A, by cofactors of the first row */
ZEL_API void _vecoutp_3(float* x, float* y, float O[3][3]);              /**< O = x y' */
ZEL_API void _veccrossp_3(float* x, float* y, float* z);                 /**< z = x cross y */
ZEL_API float _vecdotp_3(float* x, float* y);                            /**< x' y */

/** @} */

#ifdef __cplusplus
}
#endif

#endif
