// SPDX-License-Identifier: MIT
//
// Whole frames for several handles in turn, with parameters changed and memory refused between them. The fixture of the
// tests checks each of them. All is run twice, and the second run must give the same bytes.
#include <fuzzer/FuzzedDataProvider.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <optional>
#include <random>

#include "require.h"
#include "tracked.h"

namespace {

constexpr int most_rows = 70;   // more than one block of tracks
constexpr int most_steps = 24;  // enough for a track's whole life

struct host {
    std::optional<tracked> tracker;
    std::vector<input_row> rows;  // of the latest frame
};

// --- values ----------------------------------------------------------------------------------------------------------

// Mostly small whole numbers, which meet, tie and match.
float any_float(FuzzedDataProvider& in)
{
    static const float special[] = {NAN,           -NAN,     INFINITY, -INFINITY, FLT_MAX, -FLT_MAX,       1e19F,
                                    2147483648.0F, FLT_MIN,  1e-45F,   -0.0F,     0.0F,    -2147483648.0F, 0.5F,
                                    3e37F,         9.999999F};
    const auto kind = in.ConsumeIntegral<std::uint8_t>();
    if (kind < 0xc0)
        return static_cast<float>(kind % 64);
    if (kind < 0xf0)
        return special[kind % std::size(special)];
    const auto bits = in.ConsumeIntegral<std::uint32_t>();
    float value;
    memcpy(&value, &bits, sizeof(value));
    return value;
}

void set_any_params(tracker_t* handle, FuzzedDataProvider& in)
{
    const float euc = any_float(in);
    const float iou = any_float(in);
    const int stable = in.ConsumeIntegralInRange(1, 6);
    const int removal = in.ConsumeBool() ? in.ConsumeIntegralInRange(-1, 8) : in.ConsumeIntegral<int>();
    zel_tracker_set_params(handle, euc, iou, stable, removal, in.ConsumeBool());
}

std::vector<input_row> listed_rows(FuzzedDataProvider& in)
{
    std::vector<input_row> rows(in.ConsumeIntegralInRange<std::size_t>(0, 12));
    for (input_row& row : rows)
        std::generate(row.begin(), row.end(), [&] { return any_float(in); });
    return rows;
}

// More rows than the input could hold one by one.
std::vector<input_row> crowded_rows(FuzzedDataProvider& in)
{
    std::minstd_rand random(in.ConsumeIntegral<std::uint16_t>());
    const unsigned spread = in.ConsumeIntegralInRange(1U, 200U);
    std::vector<input_row> rows(in.ConsumeIntegralInRange<std::size_t>(0, most_rows + 2));
    for (input_row& row : rows) {
        const auto x = static_cast<float>(random() % spread);
        const auto y = static_cast<float>(random() % spread);
        const auto w = static_cast<float>(random() % 16);
        row = {static_cast<float>(random() % 50), x, y, x + w, y + 8, 0.5F};
    }
    return rows;
}

std::vector<input_row> moved_rows(std::vector<input_row> rows, FuzzedDataProvider& in)
{
    const auto step = static_cast<float>(in.ConsumeIntegralInRange(-12, 12));
    for (input_row& row : rows) {
        row[1] += step;
        row[3] += step;
    }
    return rows;
}

// --- frames ----------------------------------------------------------------------------------------------------------

void create(host& h, FuzzedDataProvider& in)
{
    const int capacity = in.ConsumeIntegralInRange(-1, most_rows);
    const float euc = any_float(in);
    const float iou = any_float(in);
    const int stable = in.ConsumeIntegralInRange(-1, 5);
    const int removal = in.ConsumeIntegralInRange(-1, 12);
    allocations::granted = in.ConsumeIntegralInRange(0, 4) ? allocations::unlimited : in.ConsumeIntegralInRange(0, 7);
    const bool refused = capacity < 0 || allocations::granted >= 0;
    h.tracker.emplace(capacity, stable, removal, euc, iou, in.ConsumeBool());
    allocations::granted = allocations::unlimited;
    require((h.tracker->handle == nullptr) == refused, "a handle unless memory is refused");
    if (refused)
        h.tracker.reset();
}

void process(tracked& tracker, const std::vector<input_row>& input, FuzzedDataProvider& in,
             std::vector<output_row>& result)
{
    if (in.ConsumeIntegralInRange(0, 7) == 0)
        allocations::granted = in.ConsumeIntegralInRange(0, 5);
    const auto rows = tracker.frame(input, in.ConsumeIntegralInRange(0, 15) != 0);
    allocations::granted = allocations::unlimited;
    result.insert(result.end(), rows.begin(), rows.end());
}

void step(host& h, FuzzedDataProvider& in, std::vector<output_row>& result)
{
    if (!h.tracker)
        return create(h, in);
    switch (in.ConsumeIntegralInRange(0, 15)) {
    case 0:
        return h.tracker.reset();
    case 1:
        return set_any_params(h.tracker->handle, in);
    case 2:
        if (h.tracker->handle->track_count == 0)
            h.tracker->handle->tid = max_id - 1;  // as after a million confirmations
        return;
    case 3:
        h.rows.clear();
        break;
    case 4:
    case 5:
        h.rows = crowded_rows(in);
        break;
    case 6:
    case 7:
    case 8:
        h.rows = listed_rows(in);
        break;
    default:
        h.rows = moved_rows(h.rows, in);
    }
    process(*h.tracker, h.rows, in, result);
}

std::vector<output_row> run(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider in(data, size);
    std::array<host, 3> hosts;
    std::vector<output_row> result;
    for (int n = 0; n < most_steps && in.remaining_bytes() > 0; ++n)
        step(hosts[in.ConsumeIntegralInRange<std::size_t>(0, hosts.size() - 1)], in, result);
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto first = run(data, size);
    const auto second = run(data, size);
    require(first.size() == second.size() &&
                (first.empty() || memcmp(first.data(), second.data(), first.size() * sizeof(output_row)) == 0),
            "the same input gives the same bytes");
    require(allocations::live == 0, "all is released");
    return 0;
}
