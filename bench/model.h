// SPDX-License-Identifier: MIT
//
// The model that all filters of the comparison run: centre and size of a box and the same one frame earlier, each of
// which goes on as it did. Rows of 8, or of 4 for R.
#pragma once

namespace bench {

constexpr float model_A[64] = {
    2, 0, -1, 0,  0, 0, 0,  0,   //
    0, 2, 0,  -1, 0, 0, 0,  0,   //
    1, 0, 0,  0,  0, 0, 0,  0,   //
    0, 1, 0,  0,  0, 0, 0,  0,   //
    0, 0, 0,  0,  2, 0, -1, 0,   //
    0, 0, 0,  0,  0, 2, 0,  -1,  //
    0, 0, 0,  0,  1, 0, 0,  0,   //
    0, 0, 0,  0,  0, 1, 0,  0,   //
};
constexpr float model_H[32] = {
    1, 0, 0, 0, 0, 0, 0, 0,  //
    0, 1, 0, 0, 0, 0, 0, 0,  //
    0, 0, 0, 0, 1, 0, 0, 0,  //
    0, 0, 0, 0, 0, 1, 0, 0,  //
};
constexpr float q = 0.1F;
constexpr float model_Q[64] = {
    q, 0, 0, 0, 0, 0, 0, 0,  //
    0, q, 0, 0, 0, 0, 0, 0,  //
    0, 0, q, 0, 0, 0, 0, 0,  //
    0, 0, 0, q, 0, 0, 0, 0,  //
    0, 0, 0, 0, q, 0, 0, 0,  //
    0, 0, 0, 0, 0, q, 0, 0,  //
    0, 0, 0, 0, 0, 0, q, 0,  //
    0, 0, 0, 0, 0, 0, 0, q,  //
};
constexpr float model_R[16] = {
    1, 0, 0, 0,  //
    0, 1, 0, 0,  //
    0, 0, 1, 0,  //
    0, 0, 0, 1,  //
};

// What is measured at the given step: a box that runs to and fro.
inline void measure_box(int step, float (&box)[4])
{
    const auto x = static_cast<float>(step & 31);
    box[0] = x;
    box[1] = 0.5F * x;
    box[2] = 20;
    box[3] = 40;
}

}  // namespace bench
