/* SPDX-License-Identifier: MIT */
/* What the tracker asks of the heap, each as bytes and allocations but for the second: a handle without its capacity,
   the bytes of a place of the capacity, a track, a confirmation; then the bytes of a host kit for 64 and for 256
   objects, its tracker included. malloc and calloc are wrapped. */
#include <stddef.h>
#include <stdio.h>
#include <zel/host.h>

static long bytes;
static long blocks;
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);

void* __wrap_malloc(size_t size)
{
    bytes += (long)size;
    ++blocks;
    return __real_malloc(size);
}

void* __wrap_calloc(size_t count, size_t size)
{
    bytes += (long)(count * size);
    ++blocks;
    return __real_calloc(count, size);
}

static long handle_bytes(int capacity)
{
    bytes = blocks = 0;
    zel_tracker_release(zel_tracker_create(0, 0, capacity, 1, 0, 1, 1, 0));
    return bytes;
}

static long kit_bytes(int max_objects)
{
    zel_host_params_t params;
    zel_host_params_init(&params, sizeof(params));
    params.max_objects = max_objects;
    bytes = blocks = 0;
    zel_host_release(zel_host_create(&params));
    return bytes;
}

int main(void)
{
    float frame[2][6] = {{1, 0, 0, 4, 4, 1}, {0}};
    const long place = (handle_bytes(1256) - handle_bytes(1000)) / 256;
    const long handle = handle_bytes(1000) - 1000 * place;
    const long handle_blocks = blocks;
    void* tracker = zel_tracker_create(0, 0, 2, 1, 0, 2, 9, 0);
    bytes = blocks = 0;
    zel_tracker_process(tracker, frame, NULL);
    const long track = bytes, track_blocks = blocks;
    bytes = blocks = 0;
    zel_tracker_process(tracker, frame, NULL);
    printf("%ld %ld %ld %ld %ld %ld %ld", handle, handle_blocks, place, track, track_blocks, bytes, blocks);
    printf(" %ld", kit_bytes(64));
    printf(" %ld\n", kit_bytes(256));
    return 0;
}
