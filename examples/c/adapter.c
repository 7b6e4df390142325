/* SPDX-License-Identifier: MIT */
/*
 * The same scene from a detector with other habits: classes that count from 0, boxes as centre and size, in fractions
 * of the image. What comes back is put into the detector's terms again, in pixels.
 *
 *     cc -std=c99 adapter.c $(pkg-config --cflags --libs zel) -o adapter
 */
#include <stdio.h>
#include <zel/libzel.h>

enum { CAPACITY = 16, FRAMES = 8, IMAGE_WIDTH = 1280, IMAGE_HEIGHT = 960 };

typedef struct {
    int label; /* from 0 */
    float cx, cy, w, h;
    float confidence;
} detection;

/*
 * Units of the tracker per pixel. An object may step less than 10 units between two frames; 10 / SCALE = 80 pixels are
 * about the size of a box here, sqrt(width * height).
 */
static const float SCALE = 0.125F;

/* The tracker takes whatever it is given: corners in the wrong order never overlap, and a class of 0 ends the list. */
static int is_sound(const detection* d)
{
    return d->label >= 0 && d->w > 0 && d->h > 0;
}

/* From a detector's list to the rows of a frame, or -1 if it is wrong. The class gains 1, so that it is not 0. */
static int put(const detection* found, int count, float rows[CAPACITY][6])
{
    const float sx = IMAGE_WIDTH * SCALE;
    const float sy = IMAGE_HEIGHT * SCALE;
    int n;
    if (count > CAPACITY)
        count = CAPACITY;
    for (n = 0; n < count; ++n) {
        const detection* d = &found[n];
        float* row = rows[n];
        if (!is_sound(d))
            return -1;
        row[0] = (float)(d->label + 1);
        row[1] = (d->cx - d->w / 2) * sx;
        row[2] = (d->cy - d->h / 2) * sy;
        row[3] = (d->cx + d->w / 2) * sx;
        row[4] = (d->cy + d->h / 2) * sy;
        row[5] = d->confidence;
    }
    if (count < CAPACITY)
        rows[count][0] = 0;
    return 0;
}

static int detect(int frame, detection* found)
{
    const float x = (float)frame / 160;
    const detection walker = {0, x + 0.015625F, 35.0F / 240, 0.03125F, 0.125F, 0.9F};
    const detection car = {1, 0.6875F - x, 70.0F / 240, 0.125F, 20.0F / 240, 0.8F};
    int count = 0;
    if (frame != 5 && frame != 6)
        found[count++] = walker;
    found[count++] = car;
    return count;
}

int main(void)
{
    static float rows[CAPACITY][6];
    static float tracks[CAPACITY][8];
    detection found[2];
    int failed = 0;
    int frame;
    int n;
    void* tracker = zel_tracker_create(IMAGE_WIDTH, IMAGE_HEIGHT, CAPACITY, 1.0F, 0.3F, 3, 10, 0);
    if (!tracker) {
        fprintf(stderr, "out of memory\n");
        return 1;
    }
    for (frame = 1; frame <= FRAMES; ++frame) {
        failed = put(found, detect(frame, found), rows) < 0;
        if (failed) {
            fprintf(stderr, "frame %d: expected labels from 0 and boxes that are not empty\n", frame);
            break;
        }
        zel_tracker_process(tracker, rows, tracks);
        for (n = 0; n < CAPACITY && tracks[n][0] > 0; ++n) {
            const float* t = tracks[n];
            if (t[7] >= 0) /* the last element leads back to the detection */
                printf("frame %d: object %.0f, label %d, box %.1f %.1f %.1f %.1f\n", frame, t[0],
                       found[(int)t[7]].label, t[2] / SCALE, t[3] / SCALE, t[4] / SCALE, t[5] / SCALE);
        }
    }
    zel_tracker_release(tracker);
    return failed;
}
