/* SPDX-License-Identifier: MIT */
/*
 * A host in C99 on the host kit: two cameras, each in a thread of its own. The kit takes the detector's boxes in
 * pixels, chooses what is worth tracking, and holds the lock that the tracker needs.
 *
 *     cc -std=c99 streams.c $(pkg-config --cflags --libs zelhost) -pthread -o streams
 */
#include <pthread.h>
#include <stdio.h>
#include <zel/host.h>

enum { CAPACITY = 64, FRAMES = 40 };

struct stream {
    const char* name;
    float speed; /* pixels per frame */
    int detected;
    int last_id;
    int failed;
};

/* Stands for the detector: one object that passes, which is missed in every eighth frame. */
static int detect(const struct stream* it, int frame, zel_host_detection_t found[CAPACITY])
{
    const float x = it->speed * (float)frame;
    const zel_host_detection_t object = {x, 100, x + 60, 260, 0.9F, 0};
    if (frame % 8 == 0)
        return 0;
    found[0] = object;
    return 1;
}

static void* track(void* argument)
{
    struct stream* it = argument;
    zel_host_params_t params;
    zel_host_t* host;
    int frame;
    zel_host_params_init(&params, sizeof(params));
    params.frame_rate = 25;
    params.max_objects = CAPACITY;
    host = zel_host_create(&params);
    it->failed = host == NULL;
    for (frame = 1; host && frame <= FRAMES; ++frame) {
        zel_host_detection_t found[CAPACITY];
        zel_host_track_t tracks[CAPACITY];
        const int count = zel_host_process(host, found, detect(it, frame, found), tracks, CAPACITY);
        int n;
        for (n = 0; n < count; ++n) {
            ++it->detected;
            it->last_id = tracks[n].id;
        }
    }
    zel_host_release(host);
    return NULL;
}

int main(void)
{
    struct stream streams[2] = {{"gate", 4, 0, 0, 0}, {"yard", -9, 0, 0, 0}};
    pthread_t threads[2];
    int n;
    for (n = 0; n < 2; ++n)
        if (pthread_create(&threads[n], NULL, track, &streams[n]) != 0)
            return 1;
    for (n = 0; n < 2; ++n) {
        pthread_join(threads[n], NULL);
        if (streams[n].failed)
            return 1;
        printf("%s: object %d in %d of %d frames\n", streams[n].name, streams[n].last_id, streams[n].detected, FRAMES);
    }
    return 0;
}
