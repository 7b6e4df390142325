// SPDX-License-Identifier: MIT
//
// The tracker's records. Private: a host sees the handle as void*, and these may change with every release.
#ifndef ZEL_TRACKER_H
#define ZEL_TRACKER_H

#include "_libzel.h"
#include "zel_list.h"

// A track. Boxes are centre x, centre y, width, height. It has a filter and a measurement exactly when id is not
// negative.
typedef struct _trk_obj_t {
    list_head list;  // first, so that a node converts to its record
    int state;       // always 0: id and the two counts tell the state
    int id;          // -1 while tentative
    int c;           // class and score of the latest matched detection
    float x;
    float y;
    float w;
    float h;
    float s;
    float px;  // the box before the latest match: the filter's second-last value at confirmation
    float py;
    float pw;
    float ph;
    zel_kalman_t* kalman;
    zel_mat_t* obv;  // 4 x 1
    float pr_x;      // the box predicted for the current frame
    float pr_y;
    float pr_w;
    float pr_h;
    int match_idx;    // detection of the current frame, or -1
    int miss_count;   // consecutive frames without a match
    int match_count;  // matched frames; starts again after a gap while tentative
} trk_obj_t;

// A detection of the current frame.
typedef struct _det_obj_t {
    int c;
    float x;
    float y;
    float w;
    float h;
    float s;
} det_obj_t;

// What a handle points at. The arrays have nmaxobjs entries; match_obj and match_score go with cur_obj.
typedef struct _tracker_t {
    list_head track_list;  // oldest first
    int track_count;
    int tid;  // identifier of the next confirmation
    int nmaxobjs;
    int ncurobjs;
    int im_w;
    int im_h;
    float euc_thresh;
    float iou_thresh;
    int fcnt_stable;
    int fcnt_removal;
    int ignore_class;
    zel_mat_t* A;
    zel_mat_t* H;
    zel_mat_t* Q;
    zel_mat_t* R;
    det_obj_t* cur_obj;
    trk_obj_t** match_obj;
    // Squared distance to the matched track; the gate where none was near enough, 0 where a match was refused or lost.
    float* match_score;
} tracker_t;

#endif
