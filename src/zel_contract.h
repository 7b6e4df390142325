// SPDX-License-Identifier: MIT
//
// What the sources ask of the compiler, and assert of their callers: the duties that the headers call "must". Under
// NDEBUG nothing is asserted.
#ifndef ZEL_CONTRACT_H
#define ZEL_CONTRACT_H

#if defined(__FAST_MATH__) || __FINITE_MATH_ONLY__
#warning "libzel is compiled with -ffast-math or -ffinite-math-only: see SECURITY.md for what it then promises"
#endif

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

namespace {

// No byte of one area lies in the other. Empty areas lie nowhere.
[[maybe_unused]] inline bool apart(const void* x, size_t x_size, const void* y, size_t y_size)
{
    const uintptr_t p = reinterpret_cast<uintptr_t>(x);
    const uintptr_t q = reinterpret_cast<uintptr_t>(y);
    return x_size == 0 || y_size == 0 || (p < q ? x_size <= q - p : y_size <= p - q);
}

// A call that must have returned before another begins anywhere in the process.
class exclusive_call {
public:
#ifdef NDEBUG
    explicit exclusive_call(bool&) {}
#else
    explicit exclusive_call(bool& running) : running_(running)
    {
        const bool overlaps = __atomic_test_and_set(&running_, __ATOMIC_ACQUIRE);
        assert(!overlaps);
    }
    ~exclusive_call()
    {
        __atomic_clear(&running_, __ATOMIC_RELEASE);
    }
    exclusive_call(const exclusive_call&) = delete;
    exclusive_call& operator=(const exclusive_call&) = delete;

private:
    bool& running_;
#endif
};

}  // namespace

#endif
