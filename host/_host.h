/* SPDX-License-Identifier: MIT
 *
 * What the kit offers to the rest of this project and to nobody else. Not installed and not exported by the shared
 * library: who uses it links the static one.
 */
#ifndef ZEL_HOST_PRIVATE_H
#define ZEL_HOST_PRIVATE_H

#include "host.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Takes the place of zel_tracker_process(), with the handle and the arrays that the kit would call it with, once per
   frame and within the lock. It must leave in output what the tracker would. */
typedef void (*zel_host_process_t)(void* context, void* tracker, float (*input)[6], float (*output)[8]);

/* Null for process stands for zel_tracker_process() again. */
void zel_host_replace_process(zel_host_t* host, zel_host_process_t process, void* context);

/* How the rows of the latest frame came about: tracker = (pixel - offset) * scale. */
typedef struct zel_host_frame_t {
    const int* detections; /* by row of the tracker's input: the index among the caller's; valid until the next frame */
    int count;             /* of those rows */
    double scale;
    double offset_x;
    double offset_y;
} zel_host_frame_t;

void zel_host_get_frame(const zel_host_t* host, zel_host_frame_t* frame);

/* Frames that a track may be missed with these parameters, which must be right. */
int zel_host_removal(const zel_host_params_t* params);

#ifdef __cplusplus
}
#endif

#endif
