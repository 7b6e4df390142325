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

// The matrices of a filter of ns states and nm measurements, row by row. Other sizes than 8 and 4 are nm positions with
// as many speeds, accelerations and so on as there are states: each goes on by the one nm places behind it.
struct model {
    float A[32 * 32];
    float H[32 * 32];
    float Q[32 * 32];
    float R[32 * 32];
};

inline model model_of(int ns, int nm)
{
    model m = {};
    for (int i = 0; i < ns; ++i) {
        m.A[i * ns + i] = 1;
        m.Q[i * ns + i] = q;
        if (i + nm < ns)
            m.A[i * ns + i + nm] = 1;
    }
    for (int i = 0; i < nm; ++i) {
        m.H[i * ns + i] = 1;
        m.R[i * nm + i] = 1;
    }
    if (ns == 8 && nm == 4) {
        for (int t = 0; t < 64; ++t)
            m.A[t] = model_A[t];
        for (int t = 0; t < 32; ++t)
            m.H[t] = model_H[t];
    }
    return m;
}

// What is measured at the given step: a box of constant size that runs to and fro.
inline void measure(int step, int nm, float* z)
{
    const auto x = static_cast<float>(step & 31);
    for (int i = 0; i < nm; ++i)
        z[i] = i % 4 == 0 ? x : i % 4 == 1 ? 0.5F * x : static_cast<float>(10 * (i % 4));
}

}  // namespace bench
