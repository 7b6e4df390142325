// SPDX-License-Identifier: MIT
//
// Rows that are not finite, with the tracker compiled as if there were none. What it makes of them is not settled, but it
// must read and write nothing beyond its arrays: without the sanitizers, a pointer read where there is none is a crash.
#include <cstdint>
#include <initializer_list>

#include "zel_tracker.cpp"

namespace {

float not_finite(uint32_t bits)
{
    float value;
    memcpy(&value, &bits, sizeof(value));
    return value;
}

// Where the next frame has its arrays.
[[gnu::noinline]] void fill_stack()
{
    volatile unsigned char bytes[4096];
    for (volatile unsigned char& byte : bytes)
        byte = 0x5a;
}

}  // namespace

int main()
{
    float output[8][8];
    for (const uint32_t bits : {0x7fc00000U, 0xffc00000U, 0x7f800000U, 0xff800000U}) {
        const float wild = not_finite(bits);
        void* tracker = zel_tracker_create(1, 1, 8, 0.5F, 0.2F, 2, 6, 0);
        for (int frame = 0; frame < 20; ++frame) {
            const float sometimes = frame % 3 ? 0 : wild;
            float input[4][6] = {{1, sometimes, 0, 9, 9, 1}, {2, wild, 0, 9, 9, 1}, {3, 0, wild, 9, wild, wild}, {0}};
            fill_stack();
            zel_tracker_process(tracker, input, output);
        }
        zel_tracker_release(tracker);
    }
    return 0;
}
