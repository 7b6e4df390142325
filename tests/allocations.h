// SPDX-License-Identifier: MIT
//
// The library's allocations, counted and refused. What the tests allocate themselves, with new, is not seen.
#ifndef ZEL_TESTS_ALLOCATIONS_H
#define ZEL_TESTS_ALLOCATIONS_H

#include <cstddef>

// Volatile, since link-time optimisation takes it that malloc() changes no variable of a program.
namespace allocations {

extern volatile int live;               // blocks not yet freed
extern volatile std::size_t requested;  // bytes of the last request, granted or not
extern volatile int granted;  // so many requests succeed, the one after them fails, and all after it succeed again

constexpr int unlimited = -1;

}  // namespace allocations

#endif
