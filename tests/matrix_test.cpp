// SPDX-License-Identifier: MIT
//
// Headers, fills, products and the inverse. Integers and whole-numbered floats must come out exact in every depth.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <array>
#include <climits>
#include <cstddef>
#include <limits>
#include <tuple>

#include "allocations.h"
#include "matrices.h"

namespace {

using scalar_types = testing::Types<u08_t, s08_t, u16_t, s16_t, s32_t, f32_t, s64_t, f64_t>;

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
        EXPECT_EQ(std::tuple(ZEL_MAT_TYPE(depth, cn), ZEL_ELEM_SIZE(depth)), std::tuple(code, size));
        EXPECT_EQ(std::tuple(ZEL_MAT_DEPTH(beyond), ZEL_MAT_CN(beyond)), std::tuple(depth, cn)) << code;
        zel_mat_t mat;
        u08_t data;
        EXPECT_EQ(zel_mat_initheader(&mat, -2, 5, beyond, &data), &mat);
        EXPECT_EQ(std::tie(mat.type, mat.rows, mat.cols, mat.step), std::tuple(beyond, -2, 5, step)) << code;
        EXPECT_EQ(mat.data.p, &data) << code;
    }
    EXPECT_EQ(zel_mat_initheader(nullptr, 1, 1, 5, nullptr), nullptr);
}

struct create_case {
    const char* name;
    int rows, cols, type;
    long long bytes;  // asked of the allocator besides the header; -1: refused before it is asked
};

const create_case creates[] = {
    {"channels count", 2, 5, 18, 60},
    {"no rows", 0, 7, 5, 0},
    {"negative rows", -1, 4, 5, -1},
    {"negative columns", 4, -1, 5, -1},
    {"largest of 31 bits", INT_MAX, 1, 0, INT_MAX},
    {"would wrap to nothing in 32 bits", 65536, 65536, 0, -1},
    {"would wrap to nothing in 64 bits", INT_MIN, INT_MIN, 255, -1},
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
        EXPECT_EQ(std::tie(mat->rows, mat->cols, mat->type), std::tie(c.rows, c.cols, c.type));
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
struct EveryDepth : testing::Test {
};
TYPED_TEST_SUITE(EveryDepth, scalar_types);

const int fill_shapes[][3] = {{1, 1, 1},  {3, 3, 1},  {2, 4, 1},   {4, 2, 1}, {2, 2, 3}, {5, 3, 2},
                              {1, 17, 1}, {33, 1, 1}, {9, 31, 32}, {0, 3, 1}, {3, 0, 2}, {0, 0, 1}};

TYPED_TEST(EveryDepth, IsFilledWithItsPatternAndNothingElse)
{
    using T = TypeParam;
    for (const auto& [rows, cols, cn] : fill_shapes) {
        SCOPED_TRACE(testing::Message() << rows << " x " << cols << " of " << cn);
        matrix<T> mat(rows, cols, cn);
        std::vector<T> values, identity, diagonal;
        for (int t = 0; t < rows * cols * cn; ++t) {
            const int i = t / cn / cols, j = t / cn % cols;
            identity.push_back(T(t % cn ? 9 : i == j));
            diagonal.push_back(T(t % cn ? 9 : i == j ? 100 + j : 0));
        }
        for (int i = 0; i < std::min(rows, cols); ++i)
            values.push_back(T(100 + i));
        std::fill(mat.data.begin(), mat.data.end(), T(9));
        zel_mat_setidentity(mat);
        EXPECT_EQ(mat.data, identity);
        zel_mat_setdiagonal(values.data(), mat);
        EXPECT_EQ(mat.data, diagonal);
        zel_mat_setone(mat);
        EXPECT_EQ(mat.data, std::vector<T>(identity.size(), T(1)));
        zel_mat_setzero(mat);
        EXPECT_EQ(mat.data, std::vector<T>(identity.size(), T(0)));
    }
}

// --- products --------------------------------------------------------------------------------------------------------

// A few pages between two that must not be touched.
class guarded_pages {
public:
    guarded_pages()
    {
        mprotect(memory_, page, PROT_NONE);
        mprotect(memory_ + page + room, page, PROT_NONE);
    }
    guarded_pages(const guarded_pages&) = delete;
    guarded_pages& operator=(const guarded_pages&) = delete;
    ~guarded_pages() { munmap(memory_, room + 2 * page); }

    // A copy that ends where the pages end, or begins where they begin.
    u08_t* hold(const void* data, size_t bytes, bool end)
    {
        u08_t* copy = memory_ + page + (end ? room - bytes : 0);
        std::memcpy(copy, data, bytes);
        return copy;
    }

private:
    static constexpr size_t page = 4096;
    static constexpr size_t room = 8 * page;
    u08_t* memory_ =
        static_cast<u08_t*>(mmap(nullptr, room + 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
};

// Also written over the third operand. Only what cannot come out exact is given a tolerance.
template <typename T>
void expect_product(const form& f, int m, int k, int n, random_bits& bits, T (*value)(random_bits&) = random_scalar<T>,
                    double tolerance = 0)
{
    operands<T> o(f, m, k, n);
    o.fill(bits, value);
    const auto expected = triple_loop(f, o);
    run(f, o.a, o.b, o.c, o.d);
    if (f.from == start::third)
        run(f, o.a, o.b, o.c, o.c);
    for (size_t t = 0; t < expected.size(); ++t)
        for (const T result : {o.d.data[t], f.from == start::third ? o.c.data[t] : o.d.data[t]})
            ASSERT_TRUE(result == expected[t] || both_nan(result, expected[t]) ||
                        std::abs(static_cast<double>(result) - static_cast<double>(expected[t])) <= tolerance)
                << f.name << ": " << m << " x " << k << " x " << n << " at " << t << ": " << +result << " for "
                << +expected[t];
}

// Every size up to 40 as rows, terms and columns, alone and with others around the vector lengths of every depth.
TYPED_TEST(EveryDepth, MultipliesAsAPlainTripleLoopInEveryForm)
{
    random_bits bits(1);
    for (const form& f : forms) {
        ASSERT_NO_FATAL_FAILURE(expect_product<TypeParam>(f, 40, 0, 3, bits));
        for (int s = 0; s <= 40; ++s)
            for (const int t : {1, 2, 3, 4, 8, 17}) {
                ASSERT_NO_FATAL_FAILURE(expect_product<TypeParam>(f, s, t, 1 + s % 9, bits));
                ASSERT_NO_FATAL_FAILURE(expect_product<TypeParam>(f, 1 + s % 9, s, t, bits));
                ASSERT_NO_FATAL_FAILURE(expect_product<TypeParam>(f, t, 1 + s % 9, s, bits));
                ASSERT_NO_FATAL_FAILURE(expect_product<TypeParam>(f, t, s, s, bits));
            }
    }
}

// Every operand ends where the next page must not be touched, or begins after such a page. The result goes over the
// start, too.
template <typename T>
void expect_product_between_pages(const form& f, int m, int k, int n, random_bits& bits, guarded_pages (&pages)[4])
{
    for (const bool end : {true, false}) {
        operands<T> o(f, m, k, n);
        o.fill(bits);
        const auto expected = triple_loop(f, o);
        matrix<T>* const all[] = {&o.a, &o.b, &o.c, &o.d};
        for (int i = 0; i < 4; ++i)
            all[i]->mat.data.p = pages[i].hold(all[i]->data.data(), all[i]->data.size() * sizeof(T), end);
        for (matrix<T>* d : {&o.d, f.from == start::third ? &o.c : &o.d}) {
            run(f, o.a, o.b, o.c, *d);
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), reinterpret_cast<T*>(d->mat.data.p)))
                << f.name << ": " << m << " x " << k << " x " << n;
        }
    }
}

TYPED_TEST(EveryDepth, TouchesNothingBesideItsOperands)
{
    random_bits bits(2);
    guarded_pages pages[4];
    for (const form& f : forms)
        for (const auto& [m, k, n] :
             {std::array{8, 8, 8}, {8, 4, 1}, {7, 4, 7}, {3, 5, 2}, {5, 1, 3}, {9, 9, 10}, {37, 70, 13}})
            expect_product_between_pages<TypeParam>(f, m, k, n, bits, pages);
}

// Many of these sizes have kernels of their own.
TEST(Products, OfEveryFilterTouchNothingBesideTheirOperands)
{
    random_bits bits(6);
    guarded_pages pages[4];
    const int sizes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 12, 15};
    for (const form& f : forms)
        for (const int m : sizes)
            for (const int k : sizes)
                for (const int n : sizes)
                    expect_product_between_pages<f32_t>(f, m, k, n, bits, pages);
}

TYPED_TEST(EveryDepth, KeepsTheProductWhenAnOperandDoesNotFit)
{
    random_bits bits(3);
    for (const form& f : forms) {
        operands<TypeParam> o(f, 3, 5, 7);
        o.fill(bits);
        std::vector<zel_mat_t*> read = {o.a, o.b, o.d};
        if (f.from == start::third)
            read.push_back(o.c);
        const auto call = [&] { run(f, o.a, o.b, o.c, o.d); };
        EXPECT_EQ(accepted_misfits(read, o.d, call), "") << f.name;
        for (zel_mat_t* mat : read)
            mat->type |= 8;  // two channels, and all types agree
        const auto before = o.d.data;
        call();
        EXPECT_EQ(o.d.data, before) << f.name;
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
struct FloatProducts : testing::Test {
};
TYPED_TEST_SUITE(FloatProducts, decltype(testing::Types<f32_t, f64_t>()));

template <typename T>
T random_special(random_bits& bits)
{
    const auto choice = bits() % 64;
    const T number = random_scalar<T>(bits);
    if (choice == 0)
        return std::numeric_limits<T>::quiet_NaN();
    return choice < 4 ? std::copysign(std::numeric_limits<T>::infinity(), number) : number;
}

// Everything but small whole numbers is an infinity or a NaN, so that each element is known exactly. Sizes that are
// formed in one block, and some that are formed in several.
TYPED_TEST(FloatProducts, CarryInfinitiesAndNaNs)
{
    random_bits bits(5);
    const int shapes[][3] = {{8, 8, 8}, {8, 8, 4}, {8, 4, 4}, {4, 8, 4},    {8, 4, 8},     {8, 8, 1},
                             {4, 8, 1}, {8, 4, 1}, {7, 9, 5}, {33, 66, 19}, {35, 70, 128}, {75, 70, 19}};
    for (const form& f : forms)
        for (const auto& [m, k, n] : shapes)
            for (TypeParam (*const value)(random_bits&) : {random_special<TypeParam>, random_scalar<TypeParam>})
                expect_product<TypeParam>(f, m, k, n, bits, value);
}

// Terms may be fused and regrouped: the bound is that of any order of summation.
TYPED_TEST(FloatProducts, AreWithinTheRoundingOfTheirTerms)
{
    random_bits bits(4);
    for (const form& f : forms)
        expect_product<TypeParam>(f, 7, 35, 19, bits, random_real<TypeParam>,
                                  36 * 36 * std::numeric_limits<TypeParam>::epsilon() / 2);
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
        if (f.trans_b)
            continue;  // whose terms may be regrouped
        EXPECT_EQ(o.d.data[19], 0) << f.name;
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

const float inf = std::numeric_limits<float>::infinity();

const inverse_case inverses[] = {
    {"one element", 1, {2}, {0.5F}, 0},
    {"two rows", 2, {4, 7, 2, 6}, {0.6F, -0.7F, -0.2F, 0.4F}, 1e-6F},
    {"three rows", 3, {1, 2, 3, 0, 1, 4, 5, 6, 0}, {-24, 18, 5, 20, -15, -4, -5, 4, 1}, 1e-4F},
    {"a zero pivot exchanges rows", 2, {0, 1, 1, 0}, {0, 1, 1, 0}, 0},
    {"the search goes on to the last row", 3, {0, 2, 0, 0, 0, 4, 8, 0, 0}, {0, 0, 0.125F, 0.5F, 0, 0, 0, 0.25F, 0}, 0},
    {"a tiny pivot is used as it is", 2, {tiny, 1, 1, 1}, {0, 1, 1, -tiny}, 0},
    {"rows are scaled in double", 2, {1, 0, 21, 7}, {1, 0, -3, 1.0F / 7}, 0},
    {"updates are computed in double", 2, {3, 1, 1, 1}, {0.5F, -0.5F, -0.5F, 1.5F}, 0},
    {"a singular matrix", 2, {1, 1, 1, 1}, {NAN, NAN, -inf, inf}, 0},
};

TEST(Inverse, GivesTheWorkedExamplesAlsoInPlace)
{
    for (const inverse_case& c : inverses) {
        matrix<f32_t> src(c.n, c.n, 1, c.matrix), dst(c.n, c.n);
        EXPECT_EQ(zel_mat_inv(src, dst), 0);
        EXPECT_EQ(src.data, c.matrix);
        EXPECT_EQ(zel_mat_inv(src, src), 0);
        for (size_t t = 0; t < c.inverse.size(); ++t)
            for (const f32_t result : {src.data[t], dst.data[t]})
                EXPECT_TRUE(result == c.inverse[t] || both_nan(result, c.inverse[t]) ||
                            std::abs(result - c.inverse[t]) <= c.tolerance)
                    << c.name << ": " << result << " for " << c.inverse[t] << " at " << t;
    }
}

// From large to small: what an inversion leaves in the work area must not reach the next one.
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

f32_t random_pattern(random_bits& bits)
{
    const auto pattern = static_cast<uint32_t>(bits());
    f32_t value;
    std::memcpy(&value, &pattern, sizeof(value));
    return value;
}

// Up to eight rows have kernels of their own, which must give what the general loop gives: regular matrices, small
// whole numbers, dense and sparse, with zero pivots, and values of every size. More rows and columns of the identity
// change nothing but the kernel.
TEST(Inverse, OfUpToEightRowsIsThatWithinNine)
{
    random_bits bits(7);
    f32_t (*const values[])(random_bits&) = {
        random_real<f32_t>, random_pattern, [](random_bits& b) { return static_cast<f32_t>(b() % 5) - 2; },
        [](random_bits& b) { return b() % 4 ? 0 : random_scalar<f32_t>(b); },
        [](random_bits& b) { return std::ldexp(random_real<f32_t>(b), static_cast<int>(b() % 60) - 30); }};
    int finite = 0;
    for (int round = 0; round < 80000; ++round) {
        const int n = 1 + round % 8;
        matrix<f32_t> few(n, n), nine(9, 9);
        few.fill(bits, values[round % 5]);
        zel_mat_setidentity(nine);
        for (int t = 0; t < n * n; ++t)
            nine.at(t / n, t % n) = few.at(t / n, t % n);
        EXPECT_EQ(zel_mat_inv(few, few), 0);
        EXPECT_EQ(zel_mat_inv(nine, nine), 0);
        if (!std::all_of(nine.data.begin(), nine.data.end(), [](f32_t x) { return std::isfinite(x); }))
            continue;  // singular, or with an infinity on the way
        ++finite;
        for (int t = 0; t < n * n; ++t)
            ASSERT_EQ(few.at(t / n, t % n), nine.at(t / n, t % n)) << n << " rows in round " << round << " at " << t;
    }
    EXPECT_GT(finite, 40000);
}

TEST(Inverse, RefusesOperandsThatDiffer)
{
    matrix<f32_t> src(6, 6), dst(6, 6);
    zel_mat_setidentity(src);
    EXPECT_EQ(accepted_misfits({src, dst}, dst, [&] { EXPECT_EQ(zel_mat_inv(src, dst), -1); }), "");
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
