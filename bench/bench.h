// SPDX-License-Identifier: MIT
//
// What all benchmarks share. Each is one cell of the final table: a section, a line in it and a column, which is libzel
// or a peer that computes the same.
#pragma once

#include <benchmark/benchmark.h>
#include <zel/_libzel.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace bench {

struct mat_deleter {
    void operator()(zel_mat_t* mat) const { zel_mat_release(mat); }
};
using mat = std::unique_ptr<zel_mat_t, mat_deleter>;

inline mat copy_of(const void* values, int rows, int cols, int type = ZEL_F32)
{
    mat copy(zel_mat_create(rows, cols, type));
    std::memcpy(copy->data.p, values, static_cast<size_t>(copy->rows) * static_cast<size_t>(copy->step));
    return copy;
}

// The name of a benchmark. Sections, lines and columns stand in the table in the order in which they are first named.
std::string cell(const std::string& section, const std::string& line, const std::string& column);

// Moves what is allocated after it. Where the heap puts the operands of a call of a few nanoseconds can double its
// time: with other places in each repetition, the median owes nothing to a lucky or unlucky one.
class heap_shift {
public:
    heap_shift() : block_(std::malloc(static_cast<std::size_t>(std::rand() % 256) * 16)) {}
    heap_shift(const heap_shift&) = delete;
    heap_shift& operator=(const heap_shift&) = delete;
    ~heap_shift() { std::free(block_); }

private:
    void* volatile block_;
};

// make() prepares the data, untimed, and returns the step that is timed.
template <typename F>
void measure(const std::string& name, F make)
{
    benchmark::RegisterBenchmark(name.c_str(), [make](benchmark::State& state) {
        const heap_shift shift;
        auto step = make();
        auto* opaque = &step;  // from here on the compiler cannot tell what a step reads, nor who looks at its result
        benchmark::DoNotOptimize(opaque);
        for (auto _ : state) {
            (*opaque)();
            benchmark::ClobberMemory();
        }
    });
}

// The operands of the element-wise operations, 1 MiB each, are the same memory for every peer: its physical pages make
// a larger difference than who works on them.
constexpr int elementwise_size = 512;
constexpr const char* elementwise = "element-wise on 1 MiB of f32";
float* const* elementwise_operands();

void add_cycles();
void add_calls();
void add_matrices();
void add_frames();
void add_opencv();

// The column that frames are measured against: n cycles of one filter, as a user of Eigen writes them.
void add_user_cycles(const std::string& section, const std::string& line, int n);

}  // namespace bench
