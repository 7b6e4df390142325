// SPDX-License-Identifier: MIT
//
// Element-wise arithmetic, transpose, printing, and the 3 x 3 helpers on plain arrays.
#include <gtest/gtest.h>

#include <limits>

#include "matrices.h"

namespace {

using scalar_types = testing::Types<u08_t, s08_t, u16_t, s16_t, s32_t, f32_t, s64_t, f64_t>;

// --- element-wise arithmetic -----------------------------------------------------------------------------------------

enum class op { neg, scale, add, sub };
constexpr op operations[] = {op::neg, op::scale, op::add, op::sub};

void run(op o, void* pval, zel_mat_t* a, zel_mat_t* b, zel_mat_t* d)
{
    o == op::neg     ? zel_mat_neg(a, d)
    : o == op::scale ? zel_mat_scale(pval, a, d)
    : o == op::add   ? zel_mat_add(a, b, d)
                     : zel_mat_sub(a, b, d);
}

// Single precision is modelled in double and rounded once, which gives the one rounding of the operation itself.
template <typename T>
T model(op o, T v, T a, T b, T before)
{
    using M = std::conditional_t<std::is_integral_v<T>, u64_t, double>;
    const M x = static_cast<M>(a), y = static_cast<M>(b);
    if (o != op::neg)
        return static_cast<T>(o == op::scale ? x * static_cast<M>(v) : o == op::add ? x + y : x - y);
    if constexpr (std::is_floating_point_v<T>)
        return std::copysign(a, std::signbit(a) ? T(1) : T(-1));
    return std::is_unsigned_v<T> ? before : static_cast<T>(0 - x);
}

template <typename T>
std::vector<T> extremes()
{
    using limits = std::numeric_limits<T>;
    std::vector<T> values = {limits::lowest(), limits::max(), T(0), T(1), T(-1), T(2), T(limits::max() / 2)};
    if constexpr (std::is_floating_point_v<T>)
        values.insert(values.end(), {T(-0.0), limits::infinity(), -limits::infinity(), limits::quiet_NaN(),
                                     -limits::quiet_NaN(), limits::denorm_min(), T(0.1)});
    return values;
}

template <typename T>
class Elementwise : public ::testing::Test {
protected:
    // Runs the operation on a and b into d, which may be one of them, and compares: bit for bit, except that which NaN
    // an operation other than a negation gives is not settled. The factor may be part of a matrix, too.
    void check(op o, T* factor, matrix<T>& a, matrix<T>& b, matrix<T>& d)
    {
        std::vector<T> expected;
        for (size_t t = 0; t < d.data.size(); ++t)
            expected.push_back(model(o, *factor, a.data[t], b.data[t], d.data[t]));
        run(o, factor, a, b, d);
        for (size_t t = 0; t < d.data.size(); ++t)
            ASSERT_TRUE(same_bits(d.data[t], expected[t]) || (o != op::neg && both_nan(d.data[t], expected[t])))
                << "operation " << static_cast<int>(o) << " at " << t << ": " << +d.data[t] << " for " << +expected[t];
    }
};
TYPED_TEST_SUITE(Elementwise, scalar_types);

const int shapes[][3] = {{1, 1, 1},  {1, 7, 1},  {3, 5, 1},  {2, 2, 3},  {15, 1, 1},  {4, 4, 1}, {17, 1, 1},
                         {1, 31, 1}, {3, 11, 2}, {5, 13, 1}, {2, 3, 32}, {1, 129, 1}, {0, 3, 1}, {3, 0, 1}};

TYPED_TEST(Elementwise, EqualsExactArithmeticCutToTheWidth)
{
    using T = TypeParam;
    random_bits bits(1);
    for (const auto& [rows, cols, cn] : shapes) {
        SCOPED_TRACE(testing::Message() << rows << " x " << cols << " of " << cn);
        for (const op o : operations) {
            matrix<T> a(rows, cols, cn), b(rows, cols, cn), d(rows, cols, cn);
            for (matrix<T>* mat : {&a, &b, &d})
                mat->fill(bits);
            T factor = random_scalar<T>(bits);
            this->check(o, &factor, a, b, d);
            this->check(o, &factor, d, b, b);
            this->check(o, &factor, b, b, b);
            for (const size_t at : {0U, 8U, 36U})
                if (at < a.data.size())
                    this->check(o, &a.data[at], a, b, a);
        }
    }
}

TYPED_TEST(Elementwise, TakesEveryPairOfExtremes)
{
    using T = TypeParam;
    const auto values = extremes<T>();
    const int count = static_cast<int>(values.size());
    for (const op o : operations)
        for (T v : values) {
            matrix<T> a(1, count, 1, values), b(1, count, 1, std::vector<T>(values.size(), v)), d(1, count);
            this->check(o, &v, a, b, d);
        }
}

TYPED_TEST(Elementwise, LeavesDstAloneWhenAnOperandDoesNotFit)
{
    for (const op o : operations) {
        matrix<TypeParam> a(2, 5, 2), b(2, 5, 2), d(2, 5, 2);
        zel_mat_setone(a);
        std::vector<zel_mat_t*> read = {a, d};
        if (o == op::add || o == op::sub)
            read.push_back(b);
        TypeParam v = 3;
        EXPECT_EQ(accepted_misfits(read, d, [&] { run(o, &v, a, b, d); }), "") << static_cast<int>(o);
    }
}

// --- transpose -------------------------------------------------------------------------------------------------------

const int transposed_shapes[][3] = {{1, 1, 1},   {1, 9, 1},   {9, 1, 2},   {2, 3, 1},   {8, 8, 1},    {7, 9, 3},
                                    {16, 24, 1}, {17, 15, 1}, {64, 64, 1}, {65, 63, 1}, {130, 70, 1}, {31, 33, 2},
                                    {5, 3, 32},  {24, 40, 4}, {0, 3, 1},   {3, 0, 1}};

template <typename T>
T random_pattern(random_bits& bits)
{
    const u64_t pattern = bits() | (bits() % 4 ? 0 : 0x7ff0'0000'7f80'0000);  // every fourth float a NaN
    T value;
    std::memcpy(&value, &pattern, sizeof(T));
    return value;
}

TYPED_TEST(Elementwise, TransposeMovesWholeElementsBitForBit)
{
    using T = TypeParam;
    random_bits bits(3);
    for (const auto& [rows, cols, cn] : transposed_shapes) {
        matrix<T> src(rows, cols, cn), dst(cols, rows, cn);
        src.fill(bits, random_pattern<T>);
        zel_mat_transpose(src, dst);
        const size_t size = static_cast<size_t>(cn) * sizeof(T);
        for (int i = 0; i < rows; ++i)
            for (int j = 0; j < cols; ++j)
                ASSERT_EQ(std::memcmp(&src.at(i, j), &dst.at(j, i), size), 0) << rows << " x " << cols << " of " << cn;
    }
}

TEST(Transpose, LeavesDstAloneWhenItIsNotTheMirroredShapeOrType)
{
    matrix<f32_t> src(2, 7), dst(7, 2);
    zel_mat_setone(src);
    const auto call = [&] { zel_mat_transpose(src, dst); };
    EXPECT_EQ(accepted_misfits({src, dst}, dst, call), "");
    std::swap(dst.mat.rows, dst.mat.cols);
    call();
    EXPECT_EQ(dst.data, std::vector<f32_t>(14, 0));
}

TEST(NoElements, MeansNothingIsWritten)
{
    for (const auto& [rows, cols] : {std::pair{0, 0}, {0, 2}, {2, 0}, {-1, 2}, {2, -1}}) {
        s32_t in[8] = {1, 2, 3, 4, 5, 6, 7, 8};
        s32_t out[8] = {9, 9, 9, 9, 9, 9, 9, 9};
        zel_mat_t src, dst, mirrored;
        zel_mat_initheader(&src, rows, cols, ZEL_S32, in + 4);
        zel_mat_initheader(&dst, rows, cols, ZEL_S32, out + 4);
        zel_mat_initheader(&mirrored, cols, rows, ZEL_S32, out + 4);
        for (const op o : operations)
            run(o, in, &src, &src, &dst);
        zel_mat_transpose(&src, &mirrored);
        zel_mat_setidentity(&dst);
        zel_mat_setdiagonal(in, &dst);
        zel_mat_setone(&dst);
        zel_mat_setzero(&dst);
        EXPECT_EQ(std::count(out, out + 8, 9), 8) << rows << " x " << cols;
    }
}

// --- printing --------------------------------------------------------------------------------------------------------

struct print_case {
    const char* name;
    const char* title;
    int rows, cols, type;
    std::vector<u64_t> scalars;  // bits of each
    const char* text;
};

const print_case prints[] = {
    {"title and two rows", "A", 2, 1, ZEL_F32, {0x3f800000, 0xc0800000}, "A=\n   1.000000\n  -4.000000\n"},
    {"no title", nullptr, 1, 1, ZEL_F32, {0x3f800000}, "   1.000000\n"},
    {"title is no format", "%d%s", 0, 0, ZEL_F32, {}, "%d%s=\n"},
    {"unsigned bytes", nullptr, 1, 2, ZEL_U08, {7, 200}, "   7 200\n"},
    {"signed bytes are characters", nullptr, 1, 2, ZEL_S08, {65, 0xe9}, " A \xe9\n"},
    {"unsigned 16 bits read as signed", nullptr, 1, 2, ZEL_U16, {40000, 7}, " -25536      7\n"},
    {"signed 16 bits", nullptr, 1, 1, ZEL_S16, {0xfffb}, "     -5\n"},
    {"the smallest 32 bits fill their field", nullptr, 1, 2, ZEL_S32, {0x80000000, 1}, " -2147483648           1\n"},
    {"64 bits are not cut", nullptr, 1, 2, ZEL_S64, {u64_t{1} << 63, 42}, " -9223372036854775808          42\n"},
    {"double precision", nullptr, 1, 1, ZEL_F64, {0x4029000000000000}, "  12.500000\n"},
    {"three channels of two rows",
     nullptr,
     2,
     2,
     8 * 2,
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
     "   1   2\n   7   8\n"},
    {"no rows", "B", 0, 3, ZEL_S32, {}, "B=\n"},
    {"rows without columns", "C", 2, 0, ZEL_F64, {}, "C=\n\n\n"},
};

// Through the union's field of that width, so that the byte order does not matter.
void set_bits(const zel_mat_t& mat, size_t t, u64_t bits)
{
    const int size = ZEL_ELEM_SIZE(mat.type);
    if (size == 1)
        mat.data.p[t] = static_cast<u08_t>(bits);
    else if (size == 2)
        mat.data.s[t] = static_cast<s16_t>(bits);
    else if (size == 4)
        mat.data.i[t] = static_cast<s32_t>(bits);
    else
        mat.data.l[t] = bits;
}

TEST(Print, WritesTheWholeText)
{
    for (const print_case& p : prints) {
        SCOPED_TRACE(p.name);
        std::vector<u64_t> data(p.scalars.size() + 1);
        zel_mat_t mat;
        zel_mat_initheader(&mat, p.rows, p.cols, p.type, data.data());
        for (size_t t = 0; t < p.scalars.size(); ++t)
            set_bits(mat, t, p.scalars[t]);
        std::string title = p.title ? p.title : "";
        testing::internal::CaptureStdout();
        zel_mat_print(p.title ? title.data() : nullptr, &mat);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), p.text);
    }
}

// --- 3 x 3 helpers ---------------------------------------------------------------------------------------------------

// Whole numbers of 20 bits: sums of their products are exact in double precision, and rounded once on storing.
float random_whole(random_bits& bits)
{
    return static_cast<float>(bits() % (1U << 21U)) - (1U << 20U);
}

// Of three scalars each, so far apart.
float dot(const float* x, int x_step, const float* y, int y_step)
{
    double sum = 0;
    for (int k = 0; k < 3; ++k)
        sum += static_cast<double>(x[k * x_step]) * static_cast<double>(y[k * y_step]);
    return static_cast<float>(sum);
}

TEST(Helpers, RoundExactSumsOfProductsOnce)
{
    random_bits bits(4);
    for (int round = 0; round < 100; ++round) {
        float A[3][3], B[3][3], AB[3][3], ABt[3][3], O[3][3], Ax[3], Atx[3], cross[3];
        std::generate_n(A[0], 9, [&] { return random_whole(bits); });
        std::generate_n(B[0], 9, [&] { return random_whole(bits); });
        _matmult_3x3(A, B, AB);
        _matmult_3x3t(A, B, ABt);
        _matmult_3x3vec(A, B[0], Ax);
        _matmult_3x3tvec(A, B[0], Atx);
        _vecoutp_3(A[0], B[0], O);
        _veccrossp_3(A[0], B[0], cross);
        EXPECT_EQ(_vecdotp_3(A[0], B[0]), dot(A[0], 1, B[0], 1));
        for (int i = 0; i < 3; ++i) {
            const int j = (i + 1) % 3, k = (i + 2) % 3;
            const float u[3] = {A[0][j], -A[0][k], 0}, v[3] = {B[0][k], B[0][j], 0};
            EXPECT_EQ(cross[i], dot(u, 1, v, 1));
            EXPECT_EQ(Ax[i], dot(A[i], 1, B[0], 1));
            EXPECT_EQ(Atx[i], dot(A[0] + i, 3, B[0], 1));
            for (int c = 0; c < 3; ++c) {
                EXPECT_EQ(AB[i][c], dot(A[i], 1, B[0] + c, 3));
                EXPECT_EQ(ABt[i][c], dot(A[i], 1, B[c], 1));
                EXPECT_EQ(O[i][c], A[0][i] * B[0][c]);
            }
        }
    }
}

TEST(Helpers, NegateFlippingTheSignOfZeros)
{
    float A[3][3] = {{0.0F, 2, 3}, {4, 5, 6}, {7, 8, -0.0F}};
    _matneg_3x3(A);
    const float* scalars = A[0];
    EXPECT_EQ(std::vector<float>(scalars, scalars + 9), (std::vector<float>{0, -2, -3, -4, -5, -6, -7, -8, 0}));
    EXPECT_TRUE(std::signbit(A[0][0]));
    EXPECT_FALSE(std::signbit(A[2][2]));
}

TEST(Helpers, TakeTheDeterminantInSinglePrecision)
{
    const float large = 16777216;  // 2^24, to which a float cannot add 1
    struct {
        float A[3][3], determinant;
    } cases[] = {{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, 0},
                 {{{2, 0, 0}, {0, 3, 0}, {0, 0, 4}}, 24},
                 {{{1, 2, 3}, {0, 1, 4}, {5, 6, 0}}, 1},
                 {{{large, -1, -large}, {1, 1, 0}, {0, 1, 1}}, 0}};  // its cofactors are 1, 1 and 1
    for (auto& [A, determinant] : cases)
        EXPECT_EQ(_matdet_3x3(A), determinant);
}

}  // namespace
