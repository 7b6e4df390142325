/* SPDX-License-Identifier: MIT */
/*
 * A host for many cameras: the library is one thread per process, so each camera gets a process of its own. A camera is
 * here a file of lines frame,id,left,top,width,height,conf in the order of the frames; the tracks of FILE go to
 * FILE.tracks, in the same layout. A camera that fails does not take the others along.
 *
 *     cc -std=c99 cameras.c $(pkg-config --cflags --libs zel) -o cameras
 *     ./cameras SCALE FILE...
 */
#define _POSIX_C_SOURCE 200809L
#include <stdio.h>
#include <stdlib.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zel/libzel.h>

enum { CAPACITY = 256 };

typedef struct {
    const char* name;
    FILE* in;
    FILE* out;
    void* tracker;
    float scale;
    float rows[CAPACITY][6];
    float tracks[CAPACITY][8];
} camera;

static void finish_frame(camera* c, int frame, int count)
{
    int n;
    if (count < CAPACITY)
        c->rows[count][0] = 0;
    zel_tracker_process(c->tracker, c->rows, c->tracks);
    for (n = 0; n < CAPACITY && c->tracks[n][0] > 0; ++n) {
        const float* t = c->tracks[n];
        if (t[7] >= 0)
            fprintf(c->out, "%d,%.0f,%.8g,%.8g,%.8g,%.8g,%g,-1,-1,-1\n", frame, t[0], t[2] / c->scale, t[3] / c->scale,
                    (t[4] - t[2]) / c->scale, (t[5] - t[3]) / c->scale, t[6]);
    }
}

/* Every frame counts, also one without a line: missed frames retire a track. */
static int track(camera* c)
{
    int frame = 1;
    int count = 0;
    int line = 1;
    int next;
    float l, t, w, h, conf;
    int fields;
    for (; (fields = fscanf(c->in, "%d,%*f,%f,%f,%f,%f,%f%*[^\n]", &next, &l, &t, &w, &h, &conf)) == 6; ++line) {
        if (next < frame || !(w > 0 && h > 0)) /* the tracker would take the box as it is */
            break;
        for (; frame < next; ++frame, count = 0)
            finish_frame(c, frame, count);
        if (count < CAPACITY) {
            float* row = c->rows[count++];
            row[0] = 1;
            row[1] = l * c->scale;
            row[2] = t * c->scale;
            row[3] = (l + w) * c->scale;
            row[4] = (t + h) * c->scale;
            row[5] = conf;
        }
    }
    if (fields != EOF || ferror(c->in)) {
        fprintf(stderr, "%s:%d: expected frame,id,left,top,width,height,conf, frames from 1 in order, no box empty\n",
                c->name, line);
        return 1;
    }
    finish_frame(c, frame, count);
    return 0;
}

/* The whole life of a camera's process; its result is the exit status. */
static int run(const char* name, float scale)
{
    static camera c;
    char output[4096];
    int failed;
    c.name = name;
    c.scale = scale;
    c.in = fopen(name, "r");
    if (c.in && snprintf(output, sizeof(output), "%s.tracks", name) < (int)sizeof(output))
        c.out = fopen(output, "w");
    c.tracker = zel_tracker_create(0, 0, CAPACITY, 1.0F, 0.3F, 3, 10, 0);
    if (!c.in || !c.out || !c.tracker) {
        perror(name);
        return 1;
    }
    failed = track(&c);
    zel_tracker_release(c.tracker);
    return fclose(c.out) != 0 || failed;
}

int main(int argc, char** argv)
{
    const float scale = argc > 2 ? strtof(argv[1], NULL) : 0;
    int failed = 0;
    int status;
    int n;
    if (!(scale > 0)) {
        fprintf(stderr, "Usage: cameras SCALE FILE...\n");
        return 2;
    }
    for (n = 2; n < argc; ++n) {
        const pid_t child = fork();
        if (child == 0)
            exit(run(argv[n], scale));
        failed |= child < 0;
    }
    while (wait(&status) > 0)
        failed |= status != 0;
    return failed;
}
