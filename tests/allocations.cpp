// SPDX-License-Identifier: MIT
//
// What the linker puts in the place of malloc, calloc and free.
#include "allocations.h"

namespace allocations {

volatile int live = 0;
volatile std::size_t requested = 0;
volatile int granted = unlimited;

static bool grant(std::size_t bytes)
{
    requested = bytes;
    return granted < 0 || granted-- > 0;
}

static void* count(void* block)
{
    live += block != nullptr;
    return block;
}

}  // namespace allocations

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size)
{
    return allocations::grant(size) ? allocations::count(__real_malloc(size)) : nullptr;
}

void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return allocations::grant(count * size) ? allocations::count(__real_calloc(count, size)) : nullptr;
}

void __wrap_free(void* block)
{
    allocations::live -= block != nullptr;
    __real_free(block);
}
}
