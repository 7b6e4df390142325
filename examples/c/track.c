/* SPDX-License-Identifier: MIT */
/*
 * A host in C99. Two invented objects, one of which the detector misses in the frames 5 and 6, go through the tracker.
 * They step less than 10 units from frame to frame, as they must; the pixels of a camera are scaled first, see
 * adapter.c.
 *
 *     cc -std=c99 track.c $(pkg-config --cflags --libs zel) -o track
 */
#include <stdio.h>
#include <string.h>
#include <zel/libzel.h>

enum { CAPACITY = 16, FRAMES = 8 };

/* Stands for the detector: fills rows of class, smaller x, smaller y, larger x, larger y, score; returns how many. */
static int detect(int frame, float rows[CAPACITY][6])
{
    const float x = 2.0F * (float)frame;
    const float walker[6] = {1, x, 20, x + 10, 50, 0.9F};
    const float car[6] = {2, 200 - x, 60, 240 - x, 80, 0.8F};
    int count = 0;
    if (frame != 5 && frame != 6)
        memcpy(rows[count++], walker, sizeof(walker));
    memcpy(rows[count++], car, sizeof(car));
    return count;
}

static void print_rows(int frame, float rows[CAPACITY][8])
{
    int n;
    for (n = 0; n < CAPACITY && rows[n][0] > 0; ++n) {
        const float* row = rows[n];
        printf("frame %d: object %.0f of class %.0f at %.2f %.2f %.2f %.2f, ", frame, row[0], row[1], row[2], row[3],
               row[4], row[5]);
        if (row[7] < 0)
            printf("not seen\n");
        else
            printf("detection %.0f, score %.2f\n", row[7], row[6]);
    }
}

int main(void)
{
    static float detections[CAPACITY][6];
    static float tracks[CAPACITY][8];
    int frame;
    void* tracker = zel_tracker_create(320, 240, CAPACITY, 1.0F, 0.3F, 3, 10, 0);
    if (!tracker) {
        fprintf(stderr, "out of memory\n");
        return 1;
    }
    for (frame = 1; frame <= FRAMES; ++frame) {
        const int count = detect(frame, detections);
        if (count < CAPACITY)
            detections[count][0] = 0; /* ends the list */
        zel_tracker_process(tracker, detections, tracks);
        print_rows(frame, tracks);
    }
    zel_tracker_release(tracker);
    return 0;
}
