// SPDX-License-Identifier: MIT
//
// What a fuzz target asserts, in every kind of build.
#ifndef ZEL_FUZZ_REQUIRE_H
#define ZEL_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

// The fuzzer keeps an input that aborts, and the sanitizer's stack trace names the line.
inline void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

#endif
