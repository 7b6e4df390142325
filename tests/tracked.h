// SPDX-License-Identifier: MIT
//
// A tracker that is checked after each frame: its records, its rows and its memory must be as promised, whatever went in.
// require(bool, const char*) is the including file's.
#ifndef ZEL_TESTS_TRACKED_H
#define ZEL_TESTS_TRACKED_H

#include <algorithm>
#include <array>
#include <vector>

#include "allocations.h"
#include "zel_tracker.cpp"

using input_row = std::array<float, 6>;
using output_row = std::array<float, 8>;

template <size_t n>
float (*pointer(std::vector<std::array<float, n>>& rows))[n]
{
    return reinterpret_cast<float(*)[n]>(rows.data());
}

struct tracked {
    tracked(int capacity, int stable, int removal, float euc = 0.5F, float iou = 0.3F, int ignore_class = 0)
        : handle(
              static_cast<tracker_t*>(zel_tracker_create(640, 480, capacity, euc, iou, stable, removal, ignore_class)))
    {
    }
    ~tracked()
    {
        const int others = allocations::live - blocks();
        zel_tracker_release(handle);
        require(allocations::live == others, "all is released");
    }
    tracked(const tracked&) = delete;
    tracked& operator=(const tracked&) = delete;
    tracker_t* operator->() { return handle; }

    // Returns the reported rows.
    std::vector<output_row> frame(std::vector<input_row> input, bool wanted = true)
    {
        output_row untouched;
        untouched.fill(12345);
        std::vector<output_row> output(static_cast<size_t>(handle->nmaxobjs), untouched);
        const int others = allocations::live - blocks();
        cut(input);
        zel_tracker_process(handle, pointer(input), wanted ? pointer(output) : nullptr);
        require_sound();
        require(allocations::live == others + blocks(), "a block for a track, two for its filter");
        const auto end = std::find_if(output.begin(), output.end(), [](const output_row& row) { return row[0] == -1; });
        for (auto row = end; row != output.end(); ++row)
            require(std::equal(row->begin() + (row == end), row->end(), untouched.begin()), "nothing else is written");
        output.erase(wanted ? end : output.begin(), output.end());
        require(!wanted || output.size() == reported(), "a row for each track that is reported");
        return output;
    }
    // Intake and association alone.
    void associate(std::vector<input_row> input)
    {
        cut(input);
        tracker_extract(handle, pointer(input));
        tracker_match(handle);
    }
    std::vector<trk_obj_t*> tracks() const
    {
        std::vector<trk_obj_t*> all;
        for (list_head* node = handle->track_list.next; node != &handle->track_list; node = node->next)
            all.push_back(track_of(node));
        return all;
    }

    tracker_t* handle;

private:
    // To the rows that may be read, so that a sanitizer sees one too many.
    void cut(std::vector<input_row>& input) const
    {
        const auto end = std::find_if(input.begin(), input.end(), [](const input_row& row) { return row[0] == 0; });
        const auto rows = static_cast<size_t>(end - input.begin()) + 1;
        input.resize(std::min(rows, static_cast<size_t>(handle->nmaxobjs)));
        input.shrink_to_fit();
        input.reserve(1);  // null is no input
    }
    int blocks() const
    {
        int blocks = handle ? 8 + handle->track_count : 0;
        for (const trk_obj_t* obj : handle ? tracks() : std::vector<trk_obj_t*>())
            blocks += obj->id >= 0 ? 2 : 0;
        return blocks;
    }
    size_t reported() const
    {
        const auto all = tracks();
        return static_cast<size_t>(std::count_if(all.begin(), all.end(), [](const trk_obj_t* obj) {
            return obj->id >= 0 && obj->miss_count < reported_misses;
        }));
    }
    void require_sound() const
    {
        std::vector<int> ids;
        for (const trk_obj_t* obj : tracks()) {
            require((obj->id >= 0) == (obj->kalman != nullptr), "a filter exactly with an identifier");
            require((obj->id >= 0) == (obj->obv != nullptr), "a measurement exactly with an identifier");
            require(obj->id == -1 || (obj->id >= 1 && obj->id <= max_id), "an identifier within its range");
            require((obj->match_idx >= 0) == (obj->miss_count == 0), "matched or missed");
            require(obj->match_idx < 0 || handle->match_obj[obj->match_idx] == obj, "matched on both sides");
            require(obj->miss_count == 0 || obj->miss_count <= handle->fcnt_removal, "not missed for too long");
            require(obj->id >= 0 || obj->miss_count <= tentative_misses, "not tentative for too long");
            if (obj->id >= 0)
                ids.push_back(obj->id);
        }
        std::sort(ids.begin(), ids.end());
        require(std::adjacent_find(ids.begin(), ids.end()) == ids.end(), "no two tracks of one identifier");
        const int count = static_cast<int>(tracks().size());
        require(handle->track_count == count && count <= handle->nmaxobjs, "tracks are counted, up to the capacity");
    }
};

#endif
