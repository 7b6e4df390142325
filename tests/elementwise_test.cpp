// SPDX-License-Identifier: MIT
//
// Element-wise arithmetic, transpose, printing, and the 3 x 3 helpers on plain arrays.
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "matrices.h"

namespace {

// --- element-wise arithmetic -----------------------------------------------------------------------------------------

enum class op { neg, scale, add, sub };
constexpr op operations[] = {op::neg, op::scale, op::add, op::sub};

void run(op o, void* pval, zel_mat_t* a, zel_mat_t* b, zel_mat_t* d)
{
    switch (o) {
    case op::neg:
        return zel_mat_neg(a, d);
    case op::scale:
        return zel_mat_scale(pval, a, d);
    case op::add:
        return zel_mat_add(a, b, d);
    case op::sub:
        return zel_mat_sub(a, b, d);
    }
}

// Single precision is modelled in double and rounded once, which gives the one rounding of the operation itself.
template <typename T>
T model(op o, T v, T a, T b, T before)
{
    using M = std::conditional_t<std::is_integral_v<T>, u64_t, double>;
    const M x = static_cast<M>(a);
    switch (o) {
    case op::neg:
        if constexpr (std::is_floating_point_v<T>)
            return std::copysign(a, std::signbit(a) ? T(1) : T(-1));
        return std::is_unsigned_v<T> ? before : static_cast<T>(0 - x);
    case op::scale:
        return static_cast<T>(x * static_cast<M>(v));
    case op::add:
        return static_cast<T>(x + static_cast<M>(b));
    default:
        return static_cast<T>(x - static_cast<M>(b));
    }
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

// Bit for bit, except that any NaN stands for any other: which one an operation gives is not settled.
template <typename T>
bool same(const std::vector<T>& x, const std::vector<T>& y, bool any_nan)
{
    return std::equal(x.begin(), x.end(), y.begin(), y.end(), [=](T a, T b) {
        return (any_nan && std::isnan(static_cast<double>(a)) && std::isnan(static_cast<double>(b))) ||
               std::memcmp(&a, &b, sizeof(T)) == 0;
    });
}

template <typename T>
class Elementwise : public ::testing::Test {
protected:
    // Runs the operation on a and b into d, which may be one of them, and compares.
    void check(op o, T v, matrix<T>& a, matrix<T>& b, matrix<T>& d)
    {
        std::vector<T> expected;
        for (size_t t = 0; t < d.data.size(); ++t)
            expected.push_back(model(o, v, a.data[t], b.data[t], d.data[t]));
        run(o, &v, a, b, d);
        EXPECT_TRUE(same(d.data, expected, o != op::neg)) << static_cast<int>(o);
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
            matrix<T> a(rows, cols, cn);
            matrix<T> b(rows, cols, cn);
            matrix<T> d(rows, cols, cn);
            a.fill(bits);
            b.fill(bits);
            d.fill(bits);
            this->check(o, random_scalar<T>(bits), a, b, d);
            this->check(o, random_scalar<T>(bits), a, b, a);
            this->check(o, random_scalar<T>(bits), d, b, b);
            this->check(o, random_scalar<T>(bits), b, b, b);
        }
    }
}

TYPED_TEST(Elementwise, TakesEveryPairOfExtremes)
{
    using T = TypeParam;
    const auto values = extremes<T>();
    for (const op o : operations)
        for (const T v : values) {
            matrix<T> a(1, static_cast<int>(values.size()), 1, values);
            matrix<T> b(1, static_cast<int>(values.size()), 1, std::vector<T>(values.size(), v));
            matrix<T> d(1, static_cast<int>(values.size()));
            this->check(o, v, a, b, d);
        }
}

TYPED_TEST(Elementwise, ScalesByTheFactorAsItWasBefore)
{
    for (const size_t at : {0U, 8U, 36U}) {
        matrix<TypeParam> mat(1, 37);
        for (size_t t = 0; t < 37; ++t)
            mat.data[t] = TypeParam(t % 5 + 2);
        auto expected = mat.data;
        for (TypeParam& value : expected)
            value = static_cast<TypeParam>(value * mat.data[at]);
        zel_mat_scale(&mat.data[at], mat, mat);
        EXPECT_EQ(mat.data, expected) << at;
    }
}

TYPED_TEST(Elementwise, LeavesDstAloneWhenAnOperandDoesNotFit)
{
    random_bits bits(2);
    for (const op o : operations) {
        SCOPED_TRACE(static_cast<int>(o));
        matrix<TypeParam> a(2, 5, 2), b(2, 5, 2), d(2, 5, 2);
        for (matrix<TypeParam>* mat : {&a, &b, &d})
            mat->fill(bits);
        std::vector<zel_mat_t*> read = {a, d};
        if (o == op::add || o == op::sub)
            read.push_back(b);
        TypeParam v = 3;
        expect_refused(read, d, [&] { run(o, &v, a, b, d); });
    }
}

// --- transpose -------------------------------------------------------------------------------------------------------

template <typename T>
class Transpose : public ::testing::Test {
};
TYPED_TEST_SUITE(Transpose, scalar_types);

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

TYPED_TEST(Transpose, MovesWholeElementsBitForBit)
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
    matrix<f32_t> src(2, 7), dst(7, 2), square(2, 7);
    zel_mat_setone(src);
    expect_refused({src, dst}, dst, [&] { zel_mat_transpose(src, dst); });
    zel_mat_transpose(src, square);
    EXPECT_EQ(square.data, std::vector<f32_t>(14, 0));
}

TEST(NoElements, MeansNothingIsWritten)
{
    for (const auto& [rows, cols] : {std::pair{0, 2}, {2, 0}, {-1, 2}, {2, -1}}) {
        s32_t in[8] = {1, 2, 3, 4, 5, 6, 7, 8};
        s32_t out[8] = {};
        zel_mat_t src, dst, mirrored;
        zel_mat_initheader(&src, rows, cols, ZEL_S32, in + 4);
        zel_mat_initheader(&dst, rows, cols, ZEL_S32, out + 4);
        zel_mat_initheader(&mirrored, cols, rows, ZEL_S32, out + 4);
        for (const op o : operations)
            run(o, in, &src, &src, &dst);
        zel_mat_transpose(&src, &mirrored);
        EXPECT_TRUE(std::all_of(out, out + 8, [](s32_t v) { return v == 0; })) << rows << " x " << cols;
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
    {"title and two rows",
     "A",
     2,
     2,
     ZEL_F32,
     {0x3f800000, 0x40000000, 0x40400000, 0xc0800000},
     "A=\n   1.000000   2.000000\n   3.000000  -4.000000\n"},
    {"no title", nullptr, 1, 1, ZEL_F32, {0x3f800000}, "   1.000000\n"},
    {"title is no format", "%d%s", 0, 0, ZEL_F32, {}, "%d%s=\n"},
    {"unsigned bytes", nullptr, 1, 2, ZEL_U08, {7, 200}, "   7 200\n"},
    {"signed bytes are characters", nullptr, 1, 2, ZEL_S08, {65, 0xe9}, " A \xe9\n"},
    {"unsigned 16 bits read as signed", nullptr, 1, 2, ZEL_U16, {40000, 7}, " -25536      7\n"},
    {"signed 16 bits", nullptr, 1, 1, ZEL_S16, {0xfffb}, "     -5\n"},
    {"the smallest 32 bits fill their field", nullptr, 1, 2, ZEL_S32, {0x80000000, 1}, " -2147483648           1\n"},
    {"64 bits are not cut", nullptr, 1, 2, ZEL_S64, {u64_t{1} << 63, 42}, " -9223372036854775808          42\n"},
    {"double precision", nullptr, 1, 1, ZEL_F64, {0x4029000000000000}, "  12.500000\n"},
    {"channels: the first scalars of each row",
     nullptr,
     2,
     2,
     ZEL_MAT_TYPE(ZEL_U08, 3),
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
     "   1   2\n   7   8\n"},
    {"no rows", "B", 0, 3, ZEL_S32, {}, "B=\n"},
    {"rows without columns", "C", 2, 0, ZEL_F64, {}, "C=\n\n\n"},
};

TEST(Print, WritesTheWholeText)
{
    for (const print_case& p : prints) {
        SCOPED_TRACE(p.name);
        const size_t size = static_cast<size_t>(ZEL_ELEM_SIZE(p.type));
        std::vector<u64_t> data(p.scalars.size() + 1);
        for (size_t t = 0; t < p.scalars.size(); ++t)
            std::memcpy(reinterpret_cast<char*>(data.data()) + t * size, &p.scalars[t], size);
        zel_mat_t mat;
        zel_mat_initheader(&mat, p.rows, p.cols, p.type, data.data());
        std::string title = p.title ? p.title : "";
        testing::internal::CaptureStdout();
        zel_mat_print(p.title ? title.data() : nullptr, &mat);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), p.text);
    }
}

// --- 3 x 3 helpers ---------------------------------------------------------------------------------------------------

// 2^24 + 1 - 2^24 is 1 in double precision and 0 in single precision, fused or not.
constexpr float large = 16777216.0F;

struct helpers : ::testing::Test {
    void expect(const std::vector<float>& expected, const float* result)
    {
        EXPECT_EQ(std::vector<float>(result, result + expected.size()), expected);
    }
    float A[3][3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    float B[3][3] = {{9, 8, 7}, {6, 5, 4}, {3, 2, 1}};
    float E[3][3] = {{large, 1, -large}, {2, -1, 3}, {-large, 1, large}};
    float ones[3][3] = {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
    float C[3][3];
    float y[3];
};

TEST_F(helpers, MultiplyMatrices)
{
    _matmult_3x3(A, B, C);
    expect({30, 24, 18, 84, 69, 54, 138, 114, 90}, C[0]);
    _matmult_3x3t(A, B, C);
    expect({46, 28, 10, 118, 73, 28, 190, 118, 46}, C[0]);
    _matmult_3x3(E, ones, C);
    expect({1, 1, 1, 4, 4, 4, 1, 1, 1}, C[0]);
    _matmult_3x3t(ones, E, C);
    expect({1, 4, 1, 1, 4, 1, 1, 4, 1}, C[0]);
}

TEST_F(helpers, MultiplyVectors)
{
    float x[3] = {1, -2, 4};
    _matmult_3x3vec(A, x, y);
    expect({9, 18, 27}, y);
    _matmult_3x3tvec(A, x, y);
    expect({21, 24, 27}, y);
    _matmult_3x3vec(E, ones[0], y);
    expect({1, 4, 1}, y);
    float columns[3][3] = {{large, 1, -large}, {1, 1, 1}, {-large, 1, large}};
    _matmult_3x3tvec(columns, ones[0], y);
    expect({1, 3, 1}, y);
}

TEST_F(helpers, NegateFlippingTheSignOfZeros)
{
    A[0][0] = 0.0F;
    A[2][2] = -0.0F;
    _matneg_3x3(A);
    expect({0, -2, -3, -4, -5, -6, -7, -8, 0}, A[0]);
    EXPECT_TRUE(std::signbit(A[0][0]));
    EXPECT_FALSE(std::signbit(A[2][2]));
}

TEST_F(helpers, TakeTheDeterminantInSinglePrecision)
{
    EXPECT_EQ(_matdet_3x3(A), 0);
    float diagonal[3][3] = {{2, 0, 0}, {0, 3, 0}, {0, 0, 4}};
    EXPECT_EQ(_matdet_3x3(diagonal), 24);
    float unit[3][3] = {{1, 2, 3}, {0, 1, 4}, {5, 6, 0}};
    EXPECT_EQ(_matdet_3x3(unit), 1);
    float cofactors[3][3] = {{large, -1, -large}, {1, 1, 0}, {0, 1, 1}};  // of 1, 1 and 1
    EXPECT_EQ(_matdet_3x3(cofactors), 0);
}

TEST_F(helpers, MultiplyVectorsWithEachOther)
{
    float u[3] = {1, 2, 3};
    float v[3] = {4, 5, 6};
    _vecoutp_3(u, v, C);
    expect({4, 5, 6, 8, 10, 12, 12, 15, 18}, C[0]);
    _veccrossp_3(u, v, y);
    expect({-3, 6, -3}, y);
    EXPECT_EQ(_vecdotp_3(u, v), 32);
    EXPECT_EQ(_vecdotp_3(E[0], ones[0]), 1);
}

// 4097 * 4097 - 16785408 is 1, but no float holds the first product; the same for each component in turn.
TEST_F(helpers, TakeTheCrossProductInDoublePrecision)
{
    for (int i = 0; i < 3; ++i) {
        float u[3] = {};
        float v[3] = {};
        u[(i + 1) % 3] = v[(i + 2) % 3] = 4097;
        u[(i + 2) % 3] = 1;
        v[(i + 1) % 3] = 16785408.0F;
        _veccrossp_3(u, v, y);
        EXPECT_TRUE(y[i] == 1 && y[(i + 1) % 3] == 0 && y[(i + 2) % 3] == 0) << i;
    }
}

}  // namespace
