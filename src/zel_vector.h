// SPDX-License-Identifier: MIT
//
// Vectors of floats and integers, as the compilers offer them on every processor, for the products and for the
// association of the tracker. What a processor has of its own is named in one place, right below.
#ifndef ZEL_VECTOR_H
#define ZEL_VECTOR_H

#include <stddef.h>
#include <string.h>

#include <type_traits>
#include <utility>

#include "libzel.h"

#if defined(__AVX__)
#include <immintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

// Vectors are passed between inlined functions alone, so that nobody sees how a processor without them passes them.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

namespace {

// --- what differs between processors ---------------------------------------------------------------------------------

struct processor {
    int bytes;                // of the widest register
    bool floats;              // the compiler keeps vectors of floats in it
    bool multiplies_by_lane;  // a scalar factor is a lane of a register that was loaded with several
    bool compact;             // small code counts more than the last tenth of time
};
#if defined(__AVX__)
constexpr processor target = {32, true, false, false};
#elif defined(__SSE2__)
constexpr processor target = {16, true, false, false};
#elif defined(__aarch64__) || defined(__wasm_simd128__)
constexpr processor target = {16, true, true, true};
#else
// Among them ARM with 32 bits, where NEON rounds denormal numbers to zero: compilers take vectors of floats apart,
// lane by lane through memory.
constexpr processor target = {16, false, false, true};
#endif

// How many scalars fill a register of 128 bits and the widest one; 1 for floats that have no vectors.
template <typename T>
constexpr int narrow = target.floats || std::is_integral<T>::value ? 16 / int{sizeof(T)} : 1;
template <typename T>
constexpr int wide_lanes = target.bytes / 16 * narrow<T>;

// --- vectors ---------------------------------------------------------------------------------------------------------

// unaligned is what memory is read as: matrices are aligned for their scalars only. It may alias its scalars, and
// nothing else.
template <typename T, int w>
struct lanes {
    typedef T vec __attribute__((vector_size(w * sizeof(T))));
    typedef T unaligned __attribute__((vector_size(w * sizeof(T)), aligned(alignof(T))));
};
template <typename T>
struct lanes<T, 1> {
    typedef T vec;
    typedef T unaligned;
};
template <typename T, int w>
using vec = typename lanes<T, w>::vec;

template <int w, typename T>
inline vec<T, w> load(const T* p)
{
    // The analyser does not see that sums which start from nothing load no start.
    return *reinterpret_cast<const typename lanes<T, w>::unaligned*>(p);  // NOLINT(clang-analyzer-core.NullDereference)
}

template <int w, typename T>
inline void store(T* p, vec<T, w> v)
{
    *reinterpret_cast<typename lanes<T, w>::unaligned*>(p) = v;
}

// A size that is known when the kernel is compiled.
template <int n>
struct size {
    constexpr operator int() const { return n; }
};

// (n + more) / by and n % by, of what is not negative.
template <int by, int more = 0, int n>
constexpr size<(n + more) / by> quotient(size<n>)
{
    return {};
}
template <int by, int more = 0>
constexpr int quotient(int n)
{
    return static_cast<int>(static_cast<unsigned>(n + more) / by);
}
template <int by, int n>
constexpr size<n % by> remainder(size<n>)
{
    return {};
}
template <int by>
constexpr int remainder(int n)
{
    return static_cast<int>(static_cast<unsigned>(n) % by);
}

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

// Lane l of the result is lane index[l] of a and b, one after the other.
template <int... index, typename V>
inline V shuffle(V a, V b)
{
#if defined(__clang__)
    return __builtin_shufflevector(a, b, index...);
#else
    typedef decltype(a < b) indices;
    return __builtin_shuffle(a, b, indices{index...});
#endif
}

// The same for a size that is known when the kernel is compiled, and a plain loop for one that is not.
template <int n, typename F>
inline void repeat(size<n>, F f)
{
    unroll<n>(f);
}
template <typename F>
inline void repeat(int n, F f)
{
#if !defined(__clang__)
#pragma GCC unroll 1  // which GCC would unroll to the largest n that it can think of
#endif
    for (int i = 0; i < n; ++i)
        f(i);
}

// Lane l is f(size<l>()).
template <typename T, typename F, int... l>
inline vec<T, sizeof...(l)> make_vector(F f, std::integer_sequence<int, l...>)
{
    return vec<T, sizeof...(l)>{f(size<l>())...};
}
template <typename T, int w, typename F>
inline vec<T, w> make_vector(F f)
{
    return make_vector<T>(f, std::make_integer_sequence<int, w>());
}

// The first count lanes, of which there is at least one; the others are zero.
template <int w, typename T, typename C>
inline vec<T, w> load_some(const T* p, C count)
{
    if (count >= w)
        return load<w>(p);
    return make_vector<T, w>([=](auto l) { return l < count ? p[l] : T(0); });
}

template <int w, typename T, typename C>
inline void store_some(T* p, vec<T, w> v, C count)
{
    if (count >= w)
        return store<w>(p, v);
    if (count >= w / 2)
        memcpy(p, &v, sizeof(v) / 2);
    if constexpr (w == 4) {
        if (count == 1)
            p[0] = v[0];
        if (count == 3)
            p[2] = v[2];
    }
}

// Lane l of v in all lanes.
template <int l, typename V, int... i>
inline V spread(V v, std::integer_sequence<int, i...>)
{
    return shuffle<(i * 0 + l)...>(v, v);
}

// The first half of each of a and b, lane by lane in turn, and the second half; in a register of 256 bits, of each of
// its halves.
template <typename T, int w, bool second, int... l>
inline vec<T, w> zip(vec<T, w> a, vec<T, w> b, std::integer_sequence<int, l...>)
{
    constexpr int n = narrow<T>;
    return shuffle<(l % 2 * w + l / n * n + l % n / 2 + second * n / 2)...>(a, b);
}

// Columns become rows: of a square, or of each of the halves. The rows of a half are zipped with those of the other.
template <typename T, int w>
inline void transpose(vec<T, w>* r)
{
    constexpr int n = narrow<T>;
    constexpr auto all = std::make_integer_sequence<int, w>();
    for (int round = 1; round < n; round *= 2) {
        vec<T, w> z[n];
        unroll<n / 2>([&](auto i) {
            z[2 * i] = zip<T, w, false>(r[i], r[i + n / 2], all);
            z[2 * i + 1] = zip<T, w, true>(r[i], r[i + n / 2], all);
        });
        unroll<n>([&](auto i) { r[i] = z[i]; });
    }
}

// Two registers of 128 bits as one of 256, the second so many scalars after the first; and one as it is.
template <int w, typename T>
inline vec<T, w> load_halves(const T* low, [[maybe_unused]] ptrdiff_t to_high)
{
#if defined(__AVX__)
    if constexpr (w > narrow<T>)
        return (vec<T, w>)_mm256_set_m128((__m128)load<narrow<T>>(low + to_high), (__m128)load<narrow<T>>(low));
    else
#endif
        return load<w>(low);
}

}  // namespace

#endif
