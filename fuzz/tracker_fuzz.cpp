// SPDX-License-Identifier: MIT
//
// Whole frames for several handles in turn, with parameters changed and memory refused between them. The arrays are as
// long as the interface says, on the heap, so that the address sanitizer sees a row too many. All is run twice, and the
// second run must give the same bytes.
#include "zel_tracker.cpp"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "allocations.h"
#include "require.h"

namespace {

using input_row = std::array<float, 6>;
using bytes = std::vector<unsigned char>;

constexpr int most_rows = 70;   // more than one block of tracks
constexpr int most_steps = 24;  // enough for a track's whole life
constexpr int handle_blocks = 8;
constexpr unsigned char untouched = 0xab;

struct host {
    host() = default;
    ~host() { zel_tracker_release(handle); }
    host(const host&) = delete;
    host& operator=(const host&) = delete;

    tracker_t* handle = nullptr;
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

// --- what must hold --------------------------------------------------------------------------------------------------

void require_sound(const trk_obj_t& obj, const tracker_t& t)
{
    require(obj.list.next->prev == &obj.list && obj.list.prev->next == &obj.list, "linked both ways");
    require((obj.id >= 0) == (obj.kalman != nullptr), "a filter exactly with an identifier");
    require((obj.id >= 0) == (obj.obv != nullptr), "a measurement exactly with an identifier");
    require(obj.id == -1 || (obj.id >= 1 && obj.id <= max_id), "identifier within its range");
    require(obj.match_idx >= -1 && obj.match_idx < t.ncurobjs, "index of a detection");
    require((obj.match_idx >= 0) == (obj.miss_count == 0), "matched or missed");
    require(obj.match_idx < 0 || t.match_obj[obj.match_idx] == &obj, "matched on both sides");
    require(obj.miss_count == 0 || obj.miss_count <= t.fcnt_removal, "not missed for too long");
    require(obj.id >= 0 || obj.miss_count <= tentative_misses, "not tentative for too long");
}

// Returns the number of tracks that are reported.
int require_sound(const tracker_t& t)
{
    int tracks = 0, reported = 0;
    for (list_head* node = t.track_list.next; node != &t.track_list; node = node->next, ++tracks) {
        require_sound(*track_of(node), t);
        reported += track_of(node)->id >= 0 && track_of(node)->miss_count < reported_misses;
    }
    require(tracks == t.track_count && tracks <= t.nmaxobjs, "tracks are counted");
    const auto matched = std::count_if(t.match_obj, t.match_obj + t.ncurobjs, [](trk_obj_t* obj) { return obj; });
    require(matched <= tracks, "a track has one detection");
    return reported;
}

int blocks_of(const host& h)
{
    if (!h.handle)
        return 0;
    int blocks = handle_blocks + h.handle->track_count;
    for (list_head* node = h.handle->track_list.next; node != &h.handle->track_list; node = node->next)
        blocks += track_of(node)->id >= 0 ? 2 : 0;
    return blocks;
}

void require_written(const float (*output)[8], int reported, const tracker_t& t)
{
    for (int n = 0; n < reported; ++n) {
        require(output[n][0] >= 1 && output[n][0] <= max_id, "rows begin with an identifier");
        require(output[n][7] >= -1 && output[n][7] < static_cast<float>(t.ncurobjs), "rows end with an index");
    }
    if (reported == t.nmaxobjs)
        return;
    require(output[reported][0] == -1.0F, "the end is marked");
    const auto* rest = reinterpret_cast<const unsigned char*>(&output[reported][1]);
    const auto* end = reinterpret_cast<const unsigned char*>(output + t.nmaxobjs);
    require(std::all_of(rest, end, [](unsigned char byte) { return byte == untouched; }), "nothing else is written");
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
    h.handle = static_cast<tracker_t*>(zel_tracker_create(1, 1, capacity, euc, iou, stable, removal, in.ConsumeBool()));
    allocations::granted = allocations::unlimited;
    require((h.handle == nullptr) == refused, "a handle unless memory is refused");
}

// Copied to where they end exactly behind the last row that may be read.
std::unique_ptr<float[][6]> exact_input(const std::vector<input_row>& rows, int capacity)
{
    const auto end = std::find_if(rows.begin(), rows.end(), [](const input_row& row) { return row[0] == 0.0F; });
    const auto taken = std::min(end - rows.begin(), std::ptrdiff_t{capacity});
    const auto count = static_cast<std::size_t>(taken + (taken < capacity));
    std::unique_ptr<float[][6]> input(new float[count][6]);
    for (std::size_t n = 0; n < count; ++n) {
        const input_row row = n < static_cast<std::size_t>(taken) ? rows[n] : input_row{};
        std::copy(row.begin(), row.end(), input[n]);
    }
    return input;
}

void process(host& h, FuzzedDataProvider& in, bytes& result)
{
    const auto capacity = static_cast<std::size_t>(h.handle->nmaxobjs);
    const auto input = exact_input(h.rows, h.handle->nmaxobjs);
    const std::unique_ptr<float[][8]> output(new float[capacity][8]);
    const std::size_t size = capacity * sizeof(output[0]);
    memset(output.get(), untouched, size);
    if (in.ConsumeIntegralInRange(0, 7) == 0)
        allocations::granted = in.ConsumeIntegralInRange(0, 5);
    const bool wanted = in.ConsumeIntegralInRange(0, 15) != 0;
    zel_tracker_process(h.handle, input.get(), wanted ? output.get() : nullptr);
    allocations::granted = allocations::unlimited;
    const int reported = require_sound(*h.handle);
    if (!wanted)
        return;
    require_written(output.get(), reported, *h.handle);
    const auto* written = reinterpret_cast<const unsigned char*>(output.get());
    result.insert(result.end(), written, written + size);
}

void step(host& h, FuzzedDataProvider& in, bytes& result)
{
    if (!h.handle)
        return create(h, in);
    switch (in.ConsumeIntegralInRange(0, 15)) {
    case 0:
        zel_tracker_release(h.handle);
        h.handle = nullptr;
        return;
    case 1:
        return set_any_params(h.handle, in);
    case 2:
        h.handle->tid = max_id - 1;  // as after a million confirmations
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
    process(h, in, result);
}

bytes run(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider in(data, size);
    std::array<host, 3> hosts;
    bytes result;
    const int live = allocations::live;
    for (int n = 0; n < most_steps && in.remaining_bytes() > 0; ++n) {
        step(hosts[in.ConsumeIntegralInRange<std::size_t>(0, hosts.size() - 1)], in, result);
        require(allocations::live == live + blocks_of(hosts[0]) + blocks_of(hosts[1]) + blocks_of(hosts[2]),
                "a block for each part of a handle, one for a track, two for its filter");
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const int live = allocations::live;
    require(run(data, size) == run(data, size), "the same input gives the same bytes");
    require(allocations::live == live, "all is released");
    return 0;
}
