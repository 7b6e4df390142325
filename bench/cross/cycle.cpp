// SPDX-License-Identifier: MIT
//
// A few cycles of one filter, each between two calls that are easy to find in a trace. The arguments say whose and of
// which size.

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

void run_libzel(int ns, int nm)
{
    const bench::model m = bench::model_of(ns, nm);
    zel_kalman_t* filter = zel_kalman_create(ns, nm, 1, matrix(ns, ns, m.A), matrix(nm, ns, m.H), matrix(ns, ns, m.Q),
                                             matrix(nm, nm, m.R));
    zel_mat_t* z = matrix(nm, 1, m.R);
    for (int n = 0; n < cycles; ++n) {
        bench::measure(n, nm, z->data.f);
        begin_cycle();
        zel_kalman_predict(filter);
        zel_kalman_correct(filter, z);
        end_cycle();
    }
}

template <int ns, int nm, typename F>
void run_eigen(F cycle)
{
    const bench::eigen_model<bench::fixed, ns, nm> model;
    bench::eigen_filter<bench::fixed, ns, nm> filter;
    bench::fixed<nm, 1> z;
    for (int n = 0; n < cycles; ++n) {
        bench::measure(n, nm, z.data());
        begin_cycle();
        cycle(model, filter, z);
        end_cycle();
    }
}

template <int ns, int nm>
bool run(const char* whose)
{
    using bench::fixed;
    if (std::strcmp(whose, "libzel") == 0)
        run_libzel(ns, nm);
    else if (std::strcmp(whose, "user") == 0)
        run_eigen<ns, nm>(bench::user_cycle<fixed, ns, nm>);
    else if (std::strcmp(whose, "expert") == 0)
        run_eigen<ns, nm>(bench::expert_cycle<fixed, ns, nm>);
    else
        return false;
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    const struct {
        const char* name;
        bool (*run)(const char*);
    } sizes[] = {{"2/1", run<2, 1>}, {"4/2", run<4, 2>}, {"6/3", run<6, 3>},   {"7/4", run<7, 4>},
                 {"8/4", run<8, 4>}, {"9/3", run<9, 3>}, {"15/6", run<15, 6>}, {"16/8", run<16, 8>}};
    for (const auto& size : sizes)
        if (argc == 3 && std::strcmp(argv[2], size.name) == 0)
            return size.run(argv[1]) ? 0 : 2;
    return 2;
}
