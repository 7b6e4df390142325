// SPDX-License-Identifier: MIT
//
// The time of zel_tracker_process() for one frame: in a steady state in which every track is matched in every frame, on
// synthetic sequences with births, deaths and misses, and of the association alone.

#include <zel/host.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

#include "bench.h"
#include "synth/synth.h"

// What the linker puts in the place of malloc and calloc, for the library's calls alone. The library frees what it
// allocates, so frees need not be counted.
static long allocation_count = 0;

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);

void* __wrap_malloc(std::size_t size)
{
    ++allocation_count;
    return __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size)
{
    ++allocation_count;
    return __real_calloc(count, size);
}
}

namespace bench {
namespace {

using row_in = float[6];
using row_out = float[8];
using frame = std::unique_ptr<row_in[]>;  // ended by a row of class 0.0

constexpr double min_seconds = 0.05;  // more than elsewhere: no two frames of a synthetic sequence are alike

// --- sequences -------------------------------------------------------------------------------------------------------

// Objects on a square grid that circle their places, with noise on every box and in an order that changes from frame to
// frame; the last frame leads on to the first. The places lie four times the gate apart, so that each object keeps its
// own track.
std::vector<frame> circling(int objects)
{
    constexpr int period = 64;
    constexpr float spacing = 40.0F;
    constexpr float radius = 20.0F;
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0.0F, 0.3F);
    std::vector<int> order(static_cast<std::size_t>(objects));
    std::iota(order.begin(), order.end(), 0);
    std::vector<frame> frames;
    for (int f = 0; f < period; ++f) {
        frames.push_back(std::make_unique<row_in[]>(order.size() + 1));
        std::shuffle(order.begin(), order.end(), random);
        const float angle = 6.2831853F * static_cast<float>(f) / period;
        for (std::size_t n = 0; n < order.size(); ++n) {
            const int line = order[n] / 32;
            const int place = order[n] % 32;
            const float x = spacing * static_cast<float>(place) + radius * std::cos(angle) + noise(random);
            const float y = spacing * static_cast<float>(line) + radius * std::sin(angle) + noise(random);
            const row_in row = {1.0F, x, y, x + 20.0F, y + 30.0F, 0.9F};
            std::copy(std::begin(row), std::end(row), frames.back()[n]);
        }
    }
    return frames;
}

// As the zeltrack command makes them, in pixels. Played to the end and back again, so that they have no seam.
using host_frame = std::vector<zel_host_detection_t>;

std::vector<host_frame> synthetic(int objects)
{
    constexpr int length = 200;
    zeltrack::synth_options options;
    options.objects = objects;
    options.miss = 0.05;
    zeltrack::synth_scene scene(options);
    std::vector<host_frame> frames(2 * length);
    std::vector<zeltrack::mot_row> found, truth;
    for (std::size_t f = 0; f < length; ++f) {
        scene.next_frame(found, truth);
        for (const zeltrack::mot_row& r : found)
            frames[f].push_back({r.left, r.top, r.left + r.width, r.top + r.height, r.conf, 0});
        frames[frames.size() - 1 - f] = frames[f];
    }
    return frames;
}

// The same for the tracker, scaled as the host kit does.
std::vector<frame> scaled(const std::vector<host_frame>& pixels, float scale)
{
    std::vector<frame> frames;
    for (const host_frame& found : pixels) {
        frames.push_back(std::make_unique<row_in[]>(found.size() + 1));
        for (std::size_t n = 0; n < found.size(); ++n) {
            const zel_host_detection_t& d = found[n];
            const row_in row = {1.0F, d.x1 * scale, d.y1 * scale, d.x2 * scale, d.y2 * scale, d.confidence};
            std::copy(std::begin(row), std::end(row), frames.back()[n]);
        }
    }
    return frames;
}

// --- frames ----------------------------------------------------------------------------------------------------------

class tracker {
public:
    explicit tracker(int capacity, int stable = 3)
        : tracks_(std::make_unique<row_out[]>(static_cast<std::size_t>(capacity))),
          handle_(zel_tracker_create(1920, 1080, capacity, 1.0F, 0.3F, stable, 10, 0), zel_tracker_release)
    {
    }

    void process(const frame& rows) { zel_tracker_process(handle_.get(), rows.get(), tracks_.get()); }
    void* handle() { return handle_.get(); }
    const row_out& track(int n) const { return tracks_[static_cast<std::size_t>(n)]; }

private:
    std::unique_ptr<row_out[]> tracks_;
    std::unique_ptr<void, decltype(&zel_tracker_release)> handle_;
};

// The host kit with all of its choices automatic.
class kit {
public:
    explicit kit(int capacity) : tracks_(static_cast<std::size_t>(capacity)), handle_(nullptr, zel_host_release)
    {
        zel_host_params_t params;
        zel_host_params_init(&params, sizeof(params));
        params.max_objects = capacity;
        handle_.reset(zel_host_create(&params));
    }

    void process(const host_frame& found)
    {
        zel_host_process(handle_.get(), found.data(), static_cast<int>(found.size()), tracks_.data(),
                         static_cast<int>(tracks_.size()));
    }

    zel_host_status_t status() const
    {
        zel_host_status_t it;
        zel_host_get_status(handle_.get(), &it, sizeof(it));
        return it;
    }

private:
    std::vector<zel_host_track_t> tracks_;
    std::unique_ptr<zel_host_t, decltype(&zel_host_release)> handle_;
};

template <typename Tracker, typename Frame>
void run_frames(benchmark::State& state, Tracker& it, const std::vector<Frame>& frames)
{
    std::size_t next = 0;
    const auto process_next = [&] {
        it.process(frames[next]);
        next = next + 1 < frames.size() ? next + 1 : 0;
    };
    for (int n = 0; n < 64; ++n)
        process_next();
    const long before = allocation_count;
    for (auto _ : state)
        process_next();
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(allocation_count - before), benchmark::Counter::kAvgIterations);
}

void run_steady(benchmark::State& state, int objects)
{
    tracker it(objects + 1);
    run_frames(state, it, circling(objects));
    // exactly the objects' first tracks are still there, or the time is of something else
    if (it.track(objects - 1)[0] != static_cast<float>(objects) || it.track(objects)[0] != -1.0F)
        state.SkipWithError("the objects lost their tracks");
}

void run_synthetic(benchmark::State& state, int objects)
{
    const std::vector<host_frame> pixels = synthetic(objects);
    kit first(4 * objects);
    first.process(pixels[0]);
    tracker it(4 * objects, 2);
    run_frames(state, it, scaled(pixels, static_cast<float>(first.status().scale)));
}

void run_kit(benchmark::State& state, int objects)
{
    kit it(4 * objects);
    run_frames(state, it, synthetic(objects));
    if (it.status().weak > it.status().detections / 5)
        state.SkipWithError("the kit tracked other detections than the bare tracker");
}

// --- the association alone -------------------------------------------------------------------------------------------

double thread_seconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double seconds_of(tracker& it, const frame& rows)
{
    const double before = thread_seconds();
    it.process(rows);
    return thread_seconds() - before;
}

// A frame whose detections all find their track, but are refused (at an overlap threshold of 1) and cannot start one
// (at full capacity), less a frame without detections: what is left are the intake and the association.
void run_association(benchmark::State& state, int objects)
{
    constexpr int never = 1 << 30;
    tracker it(objects);
    const std::vector<frame> frames = circling(objects);
    const frame empty = std::make_unique<row_in[]>(1);
    for (int n = 0; n < 8; ++n)
        it.process(frames[static_cast<std::size_t>(n)]);
    zel_tracker_set_params(it.handle(), 1.0F, 1.0F, 3, never, 0);
    for (int n = 0; n < 8; ++n)
        it.process(empty);

    double seconds = 0;
    for (auto _ : state) {
        const double with_detections = seconds_of(it, frames[8]);
        const double difference = with_detections - seconds_of(it, empty);
        state.SetIterationTime(std::max(difference, 1e-9));
        seconds += difference;
    }
    state.counters["ns per pair"] =
        benchmark::Counter(1e9 * seconds / objects / objects, benchmark::Counter::kAvgIterations);
}

using run = void (*)(benchmark::State& state, int objects);

benchmark::internal::Benchmark* add(const std::string& section, int objects, run body,
                                    const std::string& column = "libzel")
{
    const std::string line = "N = " + std::to_string(objects);
    return benchmark::RegisterBenchmark(cell(section, line, column).c_str(),
                                        [=](benchmark::State& state) { body(state, objects); })
        ->MinTime(min_seconds);
}

}  // namespace

void add_frames()
{
    const std::string steady = "frame of N objects against N tracks";
    const std::string synth = "frame of a synthetic sequence of N objects";
    for (const int objects : {10, 30, 100, 300, 1000}) {
        add(steady, objects, run_steady);
        add_user_cycles(steady, "N = " + std::to_string(objects), objects);
        add(synth, objects, run_synthetic);
        add(synth, objects, run_kit, "host kit");
        add_user_cycles(synth, "N = " + std::to_string(objects), objects);
    }
    for (const int objects : {10, 30, 100, 300, 1000})
        add("association of N detections with N tracks", objects, run_association)->UseManualTime();
}

}  // namespace bench
