// SPDX-License-Identifier: MIT
//
// The time of zel_tracker_process() for one frame of N objects against N tracks, in the steady state: every object is
// confirmed before the clock starts, and none enters or leaves while it runs.

#include <benchmark/benchmark.h>
#include <zel/libzel.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <random>

namespace {

using row_in = float[6];
using row_out = float[8];

constexpr int frame_count = 64;
constexpr float spacing = 40.0f;  // between the objects' starts: four times the gate, so that each keeps its own track
constexpr float radius = 20.0f;   // of the circle that each object runs through in frame_count steps of 2 units

// Objects on a square grid that circle their places, with noise on every box; the last frame leads on to the first.
class sequence {
public:
    explicit sequence(int objects)
        : stride_(static_cast<size_t>(objects) + 1), rows_(std::make_unique<row_in[]>(frame_count * stride_))
    {
        std::mt19937 random(1);
        std::normal_distribution<float> noise(0.0f, 0.3f);
        for (int f = 0; f < frame_count; ++f) {
            const float angle = 6.2831853f * static_cast<float>(f) / frame_count;
            for (int i = 0; i < objects; ++i) {
                const int line = i / 32;
                const int column = i % 32;
                const float x = spacing * static_cast<float>(column) + radius * std::cos(angle) + noise(random);
                const float y = spacing * static_cast<float>(line) + radius * std::sin(angle) + noise(random);
                const row_in row = {1.0f, x, y, x + 20.0f, y + 30.0f, 0.9f};
                std::copy(std::begin(row), std::end(row), frame(f)[i]);
            }
        }
    }

    // The rows of a frame; the one behind the objects has class 0.0 and ends them.
    row_in* frame(int f) { return &rows_[static_cast<size_t>(f) * stride_]; }

private:
    size_t stride_;
    std::unique_ptr<row_in[]> rows_;
};

void process(benchmark::State& state)
{
    const int objects = static_cast<int>(state.range(0));
    sequence frames(objects);
    const auto tracks = std::make_unique<row_out[]>(static_cast<size_t>(objects) + 1);
    const std::unique_ptr<void, decltype(&zel_tracker_release)> tracker(
        zel_tracker_create(1920, 1080, objects + 1, 1.0f, 0.3f, 3, 30, 0), zel_tracker_release);

    int frame = 0;
    const auto next = [&] {
        zel_tracker_process(tracker.get(), frames.frame(frame), tracks.get());
        frame = (frame + 1) % frame_count;
    };
    for (int i = 0; i < frame_count; ++i)
        next();
    for (auto _ : state)
        next();

    // Exactly the objects' first tracks are still there, or the time is of something else.
    const size_t last = static_cast<size_t>(objects) - 1;
    if (tracks[last][0] != static_cast<float>(objects) || tracks[last + 1][0] != -1.0f)
        state.SkipWithError("the objects lost their tracks");
    state.SetItemsProcessed(state.iterations() * objects);
}

BENCHMARK(process)->ArgName("objects")->Arg(10)->Arg(100);

}  // namespace

BENCHMARK_MAIN();
