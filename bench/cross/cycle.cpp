// SPDX-License-Identifier: MIT
//
// A few cycles of one filter, each between two calls that are easy to find in a trace. The argument says whose.

#include <zel/_libzel.h>

#include <cstring>

#include "../eigen_filter.h"

extern "C" {
[[gnu::noinline]] void begin_cycle()
{
    asm volatile("");  // or the calls would be left out
}

[[gnu::noinline]] void end_cycle()
{
    asm volatile("");  // or the calls would be left out
}
}

namespace {

constexpr int cycles = 5;

zel_mat_t* matrix(int rows, int cols, const float* values)
{
    zel_mat_t* mat = zel_mat_create(rows, cols, ZEL_F32);
    std::memcpy(mat->data.f, values, static_cast<std::size_t>(rows) * static_cast<std::size_t>(mat->step));
    return mat;
}

void run_libzel()
{
    using namespace bench;
    zel_kalman_t* filter = zel_kalman_create(8, 4, 1, matrix(8, 8, model_A), matrix(4, 8, model_H),
                                             matrix(8, 8, model_Q), matrix(4, 4, model_R));
    for (int n = 0; n < cycles; ++n) {
        float box[4];
        measure_box(n, box);
        zel_mat_t z;
        zel_mat_initheader(&z, 4, 1, ZEL_F32, box);
        begin_cycle();
        zel_kalman_predict(filter);
        zel_kalman_correct(filter, &z);
        end_cycle();
    }
}

template <typename F>
void run_eigen(F cycle)
{
    const bench::eigen_model<bench::fixed> model;
    bench::eigen_filter<bench::fixed> filter;
    for (int n = 0; n < cycles; ++n) {
        float box[4];
        bench::measure_box(n, box);
        const Eigen::Vector4f z(box);
        begin_cycle();
        cycle(model, filter, z);
        end_cycle();
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const char* whose = argc > 1 ? argv[1] : "";
    if (std::strcmp(whose, "libzel") == 0)
        run_libzel();
    else if (std::strcmp(whose, "user") == 0)
        run_eigen(bench::user_cycle<bench::fixed>);
    else if (std::strcmp(whose, "expert") == 0)
        run_eigen(bench::expert_cycle);
    else
        return 2;
    return 0;
}
