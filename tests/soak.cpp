// SPDX-License-Identifier: MIT
//
// soak FRAMES [IDENTIFIER]: a long run with births and deaths, the first track taking the given identifier. After every
// frame the blocks in use must be those of the tracks alive, and at the end the process no larger than after a tenth.
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "allocations.h"
#include "traffic.h"
#include "zel_tracker.cpp"

namespace {

constexpr int objects = 40;
constexpr int capacity = 60;
constexpr int handle_blocks = 8;
constexpr long slack = 256 * 1024;  // bytes by which an allocator may still settle

void require(bool holds, const char* what, long frame)
{
    if (holds)
        return;
    std::fprintf(stderr, "frame %ld: %s\n", frame, what);
    std::exit(1);
}

struct census {
    int tracks = 0;
    std::vector<int> ids;
};

census count(const tracker_t& t)
{
    census all;
    for (const list_head* node = t.track_list.next; node != &t.track_list; node = node->next, ++all.tracks)
        if (reinterpret_cast<const trk_obj_t*>(node)->id >= 0)
            all.ids.push_back(reinterpret_cast<const trk_obj_t*>(node)->id);
    std::sort(all.ids.begin(), all.ids.end());
    return all;
}

void check(const tracker_t& t, const float (*output)[8], long frame)
{
    const census alive = count(t);
    require(alive.tracks == t.track_count && alive.tracks <= capacity, "tracks are not counted", frame);
    require(t.tid >= 1 && t.tid <= max_id, "the next identifier is out of range", frame);
    require(std::adjacent_find(alive.ids.begin(), alive.ids.end()) == alive.ids.end(), "two of one identifier", frame);
    const int blocks = handle_blocks + alive.tracks + 2 * static_cast<int>(alive.ids.size());
    require(allocations::live == blocks, "blocks are lost", frame);
    for (int n = 0; n < capacity && output[n][0] != -1; ++n)
        require(std::binary_search(alive.ids.begin(), alive.ids.end(), static_cast<int>(output[n][0])),
                "a row of no track", frame);
}

long resident()
{
    long size = 0, pages = 0;
    std::ifstream("/proc/self/statm") >> size >> pages;
    return pages * sysconf(_SC_PAGESIZE);
}

void run(tracker_t& t, long frames)
{
    traffic road(objects, 1);
    float output[capacity][8];
    long confirmed = 0, settled = 0;
    for (long frame = 1; frame <= frames; ++frame) {
        const int tid = t.tid;
        zel_tracker_process(&t, reinterpret_cast<float(*)[6]>(road.next().data()), output);
        confirmed += (t.tid - tid + max_id) % max_id;
        check(t, output, frame);
        if (frame % (frames / 10) != 0)
            continue;
        const long heap = static_cast<long>(mallinfo2().uordblks);  // 0 with a sanitizer, which keeps freed blocks
        std::printf("frame %ld: %ld confirmed, next %d, %d alive, heap %ld, resident %ld\n", frame, confirmed, t.tid,
                    t.track_count, heap, resident());
        if (settled == 0)
            settled = resident();
        require(heap == 0 || resident() <= settled + slack, "the process grows", frame);
    }
    require(confirmed > frames / 2, "too little happened", frames);
}

}  // namespace

int main(int argc, char** argv)
{
    const long frames = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 0;
    if (frames < 10) {
        std::fprintf(stderr, "Usage: soak FRAMES [IDENTIFIER], with 10 frames or more\n");
        return 2;
    }
    auto* handle = static_cast<tracker_t*>(zel_tracker_create(1, 1, capacity, 0.5F, 0.2F, 2, 6, 0));
    if (argc > 2)
        handle->tid = static_cast<int>(std::strtol(argv[2], nullptr, 10));
    run(*handle, frames);
    zel_tracker_release(handle);
    require(allocations::live == 0, "blocks are left", frames);
}
