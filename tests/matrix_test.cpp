// SPDX-License-Identifier: MIT
//
// Headers, fills, products and the inverse. Integers and whole-numbered floats must come out exact in every depth.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

#include "allocations.h"
#include "matrices.h"

namespace {

// --- headers ---------------------------------------------------------------------------------------------------------

static_assert(offsetof(zel_mat_t, rows) == 4 && offsetof(zel_mat_t, cols) == 8 && offsetof(zel_mat_t, step) == 12 &&
                  offsetof(zel_mat_t, data) == 16 && sizeof(zel_mat_t) == 24,
              "hosts are compiled against this layout");

// depth, channels, code, bytes per scalar, bytes of a row of 5
const int types[][5] = {{ZEL_U08, 1, 0, 1, 5},      {ZEL_S08, 1, 1, 1, 5},  {ZEL_U16, 1, 2, 2, 10},
                        {ZEL_S16, 1, 3, 2, 10},     {ZEL_S32, 1, 4, 4, 20}, {ZEL_F32, 1, 5, 4, 20},
                        {ZEL_S64, 1, 6, 8, 40},     {ZEL_F64, 1, 7, 8, 40}, {ZEL_U16, 3, 18, 2, 30},
                        {ZEL_F64, 32, 255, 8, 1280}};

TEST(Header, CarriesTheTypeCodeAndTheBytesOfARow)
{
    for (const auto& [depth, cn, code, size, step] : types) {
        const int beyond = code | 0x300;  // bits that no depth or channel count reads
        EXPECT_TRUE(ZEL_MAT_TYPE(depth, cn) == code && ZEL_ELEM_SIZE(depth) == size) << code;
        EXPECT_TRUE(ZEL_MAT_DEPTH(beyond) == depth && ZEL_MAT_CN(beyond) == cn) << code;
        zel_mat_t mat;
        u08_t data;
        EXPECT_EQ(zel_mat_initheader(&mat, -2, 5, beyond, &data), &mat);
        EXPECT_TRUE(mat.type == beyond && mat.rows == -2 && mat.cols == 5 && mat.data.p == &data) << code;
        EXPECT_EQ(mat.step, step) << code;
    }
    EXPECT_EQ(zel_mat_initheader(nullptr, 1, 1, 5, nullptr), nullptr);
}

struct create_case {
    const char* name;
    int rows, cols, type;
    long long bytes;  // asked of the allocator behind the header; -1: refused before it is asked
};

const create_case creates[] = {
    {"single precision", 3, 4, 5, 48},
    {"channels count", 2, 5, 18, 60},
    {"no rows", 0, 7, 5, 0},
    {"no columns", 7, 0, 5, 0},
    {"negative rows", -1, 4, 5, -1},
    {"negative columns", 4, -1, 5, -1},
    {"two negatives make no size", -3, -4, 5, -1},
    {"largest of 31 bits", INT_MAX, 1, 0, INT_MAX},
    {"first beyond 31 bits", 1 << 30, 2, 0, -1},
    {"would wrap to nothing in 32 bits", 65536, 65536, 0, -1},
    {"would wrap to nothing in 64 bits", INT_MIN, INT_MIN, 255, -1},
    {"would wrap to something small", (1 << 24) + 1, 1, 255, -1},
    {"a row alone does not fit", 0, INT_MAX, 5, -1},
};

TEST(Create, AsksForOneBlockOrRefuses)
{
    for (const create_case& c : creates) {
        SCOPED_TRACE(c.name);
        allocations::requested = 0;
        allocations::granted = 0;  // some of them are too large to be made
        EXPECT_EQ(zel_mat_create(c.rows, c.cols, c.type), nullptr);
        allocations::granted = allocations::unlimited;
        EXPECT_EQ(allocations::requested, c.bytes < 0 ? 0 : sizeof(zel_mat_t) + static_cast<size_t>(c.bytes));
        if (c.bytes < 0 || c.bytes == INT_MAX)
            continue;
        const int live = allocations::live;
        zel_mat_t* mat = zel_mat_create(c.rows, c.cols, c.type);
        ASSERT_NE(mat, nullptr);
        EXPECT_TRUE(mat->rows == c.rows && mat->cols == c.cols && mat->type == c.type);
        EXPECT_EQ(static_cast<void*>(mat->data.p), mat + 1);
        EXPECT_EQ(allocations::live, live + 1);
        zel_mat_release(mat);
        EXPECT_EQ(allocations::live, live);
    }
}

TEST(Release, LeavesNullAndForeignDataAlone)
{
    const int live = allocations::live;
    zel_mat_release(nullptr);
    matrix<f32_t> mat(2, 2, 1, {1, 2, 3, 4});
    zel_mat_release(mat);
    EXPECT_EQ(mat.data, (std::vector<f32_t>{1, 2, 3, 4}));
    EXPECT_EQ(allocations::live, live);
}

// --- fills -----------------------------------------------------------------------------------------------------------

template <typename T>
class Fills : public ::testing::Test {
};
TYPED_TEST_SUITE(Fills, scalar_types);

const int fill_shapes[][3] = {{1, 1, 1},  {3, 3, 1},  {2, 4, 1},   {4, 2, 1}, {2, 2, 3}, {5, 3, 2},
                              {1, 17, 1}, {33, 1, 1}, {9, 31, 32}, {0, 3, 1}, {3, 0, 2}, {0, 0, 1}};

TYPED_TEST(Fills, WriteTheirPatternAndNothingElse)
{
    using T = TypeParam;
    for (const auto& [rows, cols, cn] : fill_shapes) {
        SCOPED_TRACE(testing::Message() << rows << " x " << cols << " of " << cn);
        const size_t count = static_cast<size_t>(rows * cols * cn);
        matrix<T> mat(rows, cols, cn);
        std::vector<T> values(static_cast<size_t>(std::min(rows, cols)));
        std::iota(values.begin(), values.end(), T(100));
        std::vector<T> identity(count, T(9));
        std::vector<T> diagonal(count, T(9));
        for (int t = 0; t < rows * cols; ++t) {
            const bool on = t / cols == t % cols;
            identity[static_cast<size_t>(t * cn)] = T(on);
            diagonal[static_cast<size_t>(t * cn)] = on ? values[static_cast<size_t>(t % cols)] : T(0);
        }
        std::fill(mat.data.begin(), mat.data.end(), T(9));
        zel_mat_setidentity(mat);
        EXPECT_EQ(mat.data, identity);
        std::fill(mat.data.begin(), mat.data.end(), T(9));
        zel_mat_setdiagonal(values.data(), mat);
        EXPECT_EQ(mat.data, diagonal);
        zel_mat_setone(mat);
        EXPECT_EQ(mat.data, std::vector<T>(count, T(1)));
        zel_mat_setzero(mat);
        EXPECT_EQ(mat.data, std::vector<T>(count, T(0)));
    }
}

TEST(Fills, LeaveTheNeighboursOfAnEmptyMatrixAlone)
{
    u08_t data[3] = {7, 8, 9};
    zel_mat_t mat;
    for (const auto& [rows, cols] : {std::pair{0, 0}, {0, 3}, {3, 0}, {-1, 1}, {1, -1}}) {
        zel_mat_initheader(&mat, rows, cols, ZEL_U08, data + 1);
        zel_mat_setidentity(&mat);
        zel_mat_setdiagonal(data, &mat);
        zel_mat_setone(&mat);
        zel_mat_setzero(&mat);
        EXPECT_TRUE(data[0] == 7 && data[1] == 8 && data[2] == 9);
    }
}

// --- products --------------------------------------------------------------------------------------------------------

enum class call { mul, muladd, submul };
enum class start { zero, third, identity };

// d = start + a * b, or less a * b, where a or b may be given transposed.
struct form {
    const char* name;
    call function;
    int flags;
    bool trans_a, trans_b;
    start from;
};

const form forms[] = {
    {"product", call::mul, 0, false, false, start::zero},
    {"product: other bits are ignored", call::mul, ~3, false, false, start::zero},
    {"first transposed", call::mul, 1, true, false, start::zero},
    {"second transposed", call::mul, 2, false, true, start::zero},
    {"both bits: only the first", call::mul, 3, true, false, start::zero},
    {"sum", call::muladd, 0, false, false, start::third},
    {"sum: the first is never transposed", call::muladd, ~2, false, false, start::third},
    {"sum, second transposed", call::muladd, 2, false, true, start::third},
    {"sum, both bits: only the second", call::muladd, 3, false, true, start::third},
    {"difference", call::submul, 0, false, false, start::third},
    {"difference: other bits are ignored", call::submul, ~16, false, false, start::third},
    {"from identity", call::submul, 16, false, false, start::identity},
    {"from identity: other bits are ignored", call::submul, 17, false, false, start::identity},
};

template <typename T>
struct operands {
    operands(const form& f, int m, int k, int n)
        : inner(k), a(f.trans_a ? k : m, f.trans_a ? m : k), b(f.trans_b ? n : k, f.trans_b ? k : n), c(m, n), d(m, n)
    {
    }
    void fill(random_bits& bits, T (*value)(random_bits&) = random_scalar<T>)
    {
        for (matrix<T>* mat : {&a, &b, &c, &d})
            mat->fill(bits, value);
    }

    int inner;
    matrix<T> a, b, c, d;
};

void run(const form& f, zel_mat_t* a, zel_mat_t* b, zel_mat_t* c, zel_mat_t* d)
{
    switch (f.function) {
    case call::mul:
        return zel_mat_mul(a, b, d, f.flags);
    case call::muladd:
        return zel_mat_muladd(a, b, c, d, f.flags);
    case call::submul:
        return zel_mat_submul(f.from == start::identity ? nullptr : c, a, b, d, f.flags);
    }
}

// Integers are modelled modulo 2^64 and cut to their width, which is exact wrap-around in every width.
template <typename T>
std::vector<T> triple_loop(const form& f, operands<T>& o)
{
    using M = std::conditional_t<std::is_integral_v<T>, u64_t, long double>;
    std::vector<T> result;
    for (int i = 0; i < o.d.mat.rows; ++i)
        for (int j = 0; j < o.d.mat.cols; ++j) {
            M sum = f.from == start::third ? static_cast<M>(o.c.at(i, j)) : M(f.from == start::identity && i == j);
            for (int k = 0; k < o.inner; ++k) {
                const M x = static_cast<M>(f.trans_a ? o.a.at(k, i) : o.a.at(i, k));
                const M y = static_cast<M>(f.trans_b ? o.b.at(j, k) : o.b.at(k, j));
                sum = f.function == call::submul ? sum - x * y : sum + x * y;
            }
            result.push_back(static_cast<T>(sum));
        }
    return result;
}

template <typename T>
class Products : public ::testing::Test {
};
TYPED_TEST_SUITE(Products, scalar_types);

// Around the vector lengths of every depth, the sizes of the tracker's filters, and none.
TYPED_TEST(Products, EqualAPlainTripleLoopInEveryForm)
{
    random_bits bits(1);
    for (const form& f : forms)
        for (const int m : {0, 1, 3, 4, 7, 8, 9, 17})
            for (const int k : {0, 1, 3, 4, 5, 7, 8, 9, 31})
                for (const int n : {0, 1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 31, 33}) {
                    operands<TypeParam> o(f, m, k, n);
                    o.fill(bits);
                    run(f, o.a, o.b, o.c, o.d);
                    ASSERT_EQ(o.d.data, triple_loop(f, o)) << f.name << ": " << m << " x " << k << " x " << n;
                }
}

// Sizes that are formed in one go, and one that is formed in several parts of rows and terms.
TYPED_TEST(Products, MayWriteOverTheThirdOperand)
{
    random_bits bits(2);
    const int shapes[][3] = {{8, 8, 8}, {4, 8, 4}, {8, 4, 1}, {4, 8, 1}, {5, 6, 19}, {35, 70, 128}};
    for (const form& f : forms)
        for (const auto& [m, k, n] : shapes) {
            if (f.from != start::third)
                continue;
            operands<TypeParam> o(f, m, k, n);
            o.fill(bits);
            const auto expected = triple_loop(f, o);
            run(f, o.a, o.b, o.c, o.c);
            ASSERT_EQ(o.c.data, expected) << f.name << ": " << m << " x " << k << " x " << n;
        }
}

TYPED_TEST(Products, LeaveDstAloneWhenAnOperandDoesNotFit)
{
    random_bits bits(3);
    for (const form& f : forms) {
        SCOPED_TRACE(f.name);
        operands<TypeParam> o(f, 3, 5, 7);
        o.fill(bits);
        std::vector<zel_mat_t*> read = {o.a, o.b, o.d};
        if (f.from == start::third)
            read.push_back(o.c);
        expect_refused(read, o.d, [&] { run(f, o.a, o.b, o.c, o.d); });
        for (zel_mat_t* mat : read)
            mat->type |= 8;  // two channels, and all types agree
        const auto before = o.d.data;
        run(f, o.a, o.b, o.c, o.d);
        EXPECT_TRUE(o.d.data == before);
    }
}

TEST(Products, FromIdentityReadsNothingOfTheFirstButItsType)
{
    matrix<f32_t> k(2, 1, 1, {1, 2});
    matrix<f32_t> h(1, 2, 1, {3, 4});
    matrix<f32_t> d(2, 2, 1, {9, 9, 9, 9});
    zel_mat_t other;
    zel_mat_submul(zel_mat_initheader(&other, 1, 1, ZEL_F64, nullptr), k, h, d, ZEL_MAT_FROM_IDENTITY);
    EXPECT_EQ(d.data, (std::vector<f32_t>{9, 9, 9, 9}));
    zel_mat_submul(zel_mat_initheader(&other, 5, 7, ZEL_F32, nullptr), k, h, d, ZEL_MAT_FROM_IDENTITY);
    EXPECT_EQ(d.data, (std::vector<f32_t>{-2, -4, -6, -7}));
}

TEST(Products, TakeEmptyMatricesWithoutData)
{
    zel_mat_t none;
    zel_mat_initheader(&none, 0, 0, ZEL_F32, nullptr);
    for (const form& f : forms)
        run(f, &none, &none, &none, &none);
}

template <typename T>
class FloatProducts : public ::testing::Test {
};
TYPED_TEST_SUITE(FloatProducts, float_types);

// Everything but small whole numbers is an infinity or a NaN, so that each element is known exactly.
TYPED_TEST(FloatProducts, CarryInfinitiesAndNaNs)
{
    const auto value = [](random_bits& bits) {
        const auto choice = bits() % 64;
        if (choice == 0)
            return std::numeric_limits<TypeParam>::quiet_NaN();
        const TypeParam number = random_scalar<TypeParam>(bits);
        return choice < 4 ? std::copysign(std::numeric_limits<TypeParam>::infinity(), number) : number;
    };
    random_bits bits(5);
    const int shapes[][3] = {{8, 8, 8}, {8, 8, 4}, {8, 4, 4}, {4, 8, 4}, {8, 4, 8},
                             {8, 8, 1}, {4, 8, 1}, {8, 4, 1}, {7, 9, 5}, {33, 66, 19}};
    for (const form& f : forms)
        for (const auto& [m, k, n] : shapes) {
            operands<TypeParam> o(f, m, k, n);
            o.fill(bits, value);
            const auto expected = triple_loop(f, o);
            run(f, o.a, o.b, o.c, o.d);
            for (size_t t = 0; t < expected.size(); ++t)
                ASSERT_TRUE(o.d.data[t] == expected[t] || (std::isnan(o.d.data[t]) && std::isnan(expected[t])))
                    << f.name << ": " << m << " x " << k << " x " << n << " at " << t;
        }
}

// Terms may be fused and regrouped: the bound is that of any order of summation.
TYPED_TEST(FloatProducts, AreWithinTheRoundingOfTheirTerms)
{
    random_bits bits(4);
    const int k = 35;
    const TypeParam bound = (k + 1) * (k + 1) * std::numeric_limits<TypeParam>::epsilon() / 2;
    for (const form& f : forms) {
        operands<TypeParam> o(f, 7, k, 19);
        o.fill(bits, random_real<TypeParam>);
        const auto expected = triple_loop(f, o);
        run(f, o.a, o.b, o.c, o.d);
        for (size_t t = 0; t < expected.size(); ++t)
            ASSERT_NEAR(o.d.data[t], expected[t], bound) << f.name;
    }
}

// 2^p + 1 - 2^p is 0 where the 1 is rounded away, as it is when terms are added one by one in this precision.
TYPED_TEST(FloatProducts, AddTheirTermsInOrderAndInTheirOwnPrecision)
{
    const TypeParam large = std::ldexp(TypeParam(1), std::numeric_limits<TypeParam>::digits);
    for (const form& f : forms) {
        operands<TypeParam> o(f, 1, 3, 20);
        o.a.data = {large, 1, -large};
        zel_mat_setone(o.b);
        run(f, o.a, o.b, o.c, o.d);
        EXPECT_TRUE(o.d.data[19] == 0 || f.trans_b) << f.name;  // whose terms may be regrouped
    }
}

// --- inverse ---------------------------------------------------------------------------------------------------------

struct inverse_case {
    const char* name;
    int n;
    std::vector<f32_t> matrix, inverse;
    float tolerance;
};

const float tiny = std::ldexp(1.0F, -60);

const inverse_case inverses[] = {
    {"one element", 1, {2}, {0.5F}, 0},
    {"two rows", 2, {4, 7, 2, 6}, {0.6F, -0.7F, -0.2F, 0.4F}, 1e-6F},
    {"three rows", 3, {1, 2, 3, 0, 1, 4, 5, 6, 0}, {-24, 18, 5, 20, -15, -4, -5, 4, 1}, 1e-4F},
    {"a zero pivot exchanges rows", 2, {0, 1, 1, 0}, {0, 1, 1, 0}, 0},
    {"the search goes on to the last row", 3, {0, 2, 0, 0, 0, 4, 8, 0, 0}, {0, 0, 0.125F, 0.5F, 0, 0, 0, 0.25F, 0}, 0},
    {"a tiny pivot is used as it is", 2, {tiny, 1, 1, 1}, {0, 1, 1, -tiny}, 0},
    {"rows are scaled in double", 2, {1, 0, 21, 7}, {1, 0, -3, 1.0F / 7}, 0},
    {"updates are computed in double", 2, {3, 1, 1, 1}, {0.5F, -0.5F, -0.5F, 1.5F}, 0},
};

TEST(Inverse, GivesTheWorkedExamplesAlsoInPlace)
{
    for (const inverse_case& c : inverses) {
        SCOPED_TRACE(c.name);
        matrix<f32_t> src(c.n, c.n, 1, c.matrix);
        matrix<f32_t> dst(c.n, c.n);
        EXPECT_EQ(zel_mat_inv(src, dst), 0);
        EXPECT_EQ(src.data, c.matrix);
        EXPECT_EQ(zel_mat_inv(src, src), 0);
        EXPECT_EQ(src.data, dst.data);
        for (size_t t = 0; t < c.inverse.size(); ++t)
            EXPECT_NEAR(dst.data[t], c.inverse[t], c.tolerance);
    }
}

// With one power of two in each row and column every step is exact, whatever rows are exchanged.
TEST(Inverse, IsExactForScaledPermutationsOfEverySize)
{
    random_bits bits(5);
    for (int n = 0; n <= 40; ++n) {
        matrix<f32_t> src(n, n), dst(n, n), expected(n, n);
        std::vector<int> order(static_cast<size_t>(n));
        std::iota(order.begin(), order.end(), 0);
        std::shuffle(order.begin(), order.end(), bits);
        for (int i = 0; i < n; ++i) {
            const int j = order[static_cast<size_t>(i)];
            src.at(i, j) = std::ldexp(1.0F, i % 9 - 4);
            expected.at(j, i) = std::ldexp(1.0F, 4 - i % 9);
        }
        EXPECT_EQ(zel_mat_inv(src, dst), 0);
        EXPECT_EQ(dst.data, expected.data) << n;
    }
}

// From large to small: what an inversion leaves behind must not reach the next one.
TEST(Inverse, TimesItsMatrixIsTheIdentityUpToFortyRows)
{
    random_bits bits(6);
    for (int n = 40; n > 0; --n) {
        matrix<f32_t> src(n, n), dst(n, n), unit(n, n);
        src.fill(bits, random_real<f32_t>);
        for (int i = 0; i < n; ++i)
            src.at(i, i) += static_cast<f32_t>(i % 2 ? n : -n);
        EXPECT_EQ(zel_mat_inv(src, dst), 0);
        zel_mat_mul(src, dst, unit, 0);
        for (int t = 0; t < n * n; ++t)
            ASSERT_NEAR(unit.at(0, t), t / n == t % n, 1e-5) << n;
    }
}

// The elimination, plainly, for four rows: rows exchanged where a pivot is zero, every step in double and stored in single.
std::vector<f32_t> eliminate_four_rows(const std::vector<f32_t>& a)
{
    f32_t w[4][8] = {};
    for (size_t i = 0; i < 4; ++i) {
        std::copy_n(a.begin() + static_cast<ptrdiff_t>(4 * i), 4, w[i]);
        w[i][4 + i] = 1;
    }
    for (size_t i = 0; i < 4; ++i) {
        size_t other = i + 1;
        while (other < 3 && w[other][i] == 0)
            ++other;
        if (w[i][i] == 0 && i < 3)
            std::swap_ranges(w[i] + i, w[i] + 8, w[other] + i);
        for (size_t j = 0; j < 4; ++j) {
            const f64_t ratio = f64_t{w[j][i]} / f64_t{w[i][i]};
            for (size_t k = 0; k < 8 && j != i; ++k)
                w[j][k] = static_cast<f32_t>(f64_t{w[j][k]} - ratio * f64_t{w[i][k]});
        }
    }
    std::vector<f32_t> inverse;
    for (size_t t = 0; t < 16; ++t)
        inverse.push_back(static_cast<f32_t>(f64_t{w[t / 4][4 + t % 4]} * (1.0 / f64_t{w[t / 4][t / 4]})));
    return inverse;
}

// Four rows have a way of their own, which must give the same bits: for regular matrices, for small whole numbers, of which
// many are singular or have zero pivots, and for values of every size up to infinity.
TEST(Inverse, OfFourRowsIsTheGeneralEliminationBitForBit)
{
    random_bits bits(7);
    const auto wild = [](random_bits& b) {
        const auto pattern = static_cast<u64_t>(b());
        f32_t value;
        std::memcpy(&value, &pattern, sizeof(value));
        return value;
    };
    f32_t (*const values[])(random_bits&) = {random_real<f32_t>, [](random_bits& b) { return f32_t(int(b() % 5) - 2); },
                                             wild};
    for (int n = 0; n < 120000; ++n) {
        matrix<f32_t> src(4, 4), dst(4, 4);
        src.fill(bits, values[n % 3]);
        EXPECT_EQ(zel_mat_inv(src, dst), 0);
        const auto expected = eliminate_four_rows(src.data);
        for (size_t t = 0; t < 16; ++t)
            ASSERT_TRUE(std::memcmp(&dst.data[t], &expected[t], sizeof(f32_t)) == 0 ||
                        (std::isnan(dst.data[t]) && std::isnan(expected[t])))
                << n << " at " << t << ": " << dst.data[t] << " for " << expected[t];
    }
}

// The last one has its zero pivot where there is no row below to exchange with.
TEST(Inverse, OfASingularMatrixIsNotFinite)
{
    std::vector<f32_t> last_zero(40 * 40, 0);
    for (size_t i = 0; i < 39; ++i)
        last_zero[i * 41] = 1;
    const std::pair<int, std::vector<f32_t>> singular[] = {{2, {0, 0, 0, 0}}, {2, {1, 1, 1, 1}}, {40, last_zero}};
    for (const auto& [n, values] : singular) {
        matrix<f32_t> mat(n, n, 1, values);
        EXPECT_EQ(zel_mat_inv(mat, mat), 0);
        EXPECT_TRUE(std::none_of(mat.data.begin(), mat.data.end(), [](f32_t v) { return std::isfinite(v); }));
    }
}

TEST(Inverse, RefusesOperandsThatDiffer)
{
    matrix<f32_t> src(6, 6), dst(6, 6);
    zel_mat_setidentity(src);
    expect_refused({src, dst}, dst, [&] { EXPECT_EQ(zel_mat_inv(src, dst), -1); });
}

TEST(Inverse, RefusesWhatItCannotInvert)
{
    const int refused[][3] = {{41, 41, ZEL_F32}, {2, 3, ZEL_F32}, {2, 2, ZEL_F64},
                              {2, 2, ZEL_S32},   {2, 2, 13},      {2, 2, 261}};
    for (const auto& [rows, cols, type] : refused) {
        std::vector<f64_t> in(41 * 41, 1), out(41 * 41, 7);
        zel_mat_t src, dst;
        zel_mat_initheader(&src, rows, cols, type, in.data());
        zel_mat_initheader(&dst, rows, cols, type, out.data());
        EXPECT_EQ(zel_mat_inv(&src, &dst), -1) << rows << " x " << cols << " of type " << type;
        EXPECT_EQ(out, std::vector<f64_t>(41 * 41, 7));
    }
}

}  // namespace
