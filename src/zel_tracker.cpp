// SPDX-License-Identifier: MIT
//
// The tracker: detections of a frame in, numbered tracks out. zel_tracker_process() at the end sums up a frame.
// The filter is part of this unit, which reads and writes its state directly.
#include "zel_tracker.h"

#include <assert.h>
#include <limits.h>
#include <math.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include "libzel.h"
#include "zel_contract.h"
#include "zel_kalman.cpp"
#include "zel_vector.h"

// --- the motion model ------------------------------------------------------------------------------------------------

// State: centre x, y, the same one frame earlier, width, height, the same one frame earlier. Each quantity
// changes as it did between the last two frames: new = 2 * current - previous.
static const float Adata[64] = {
    2, 0, -1, 0,  0, 0, 0,  0,   //
    0, 2, 0,  -1, 0, 0, 0,  0,   //
    1, 0, 0,  0,  0, 0, 0,  0,   //
    0, 1, 0,  0,  0, 0, 0,  0,   //
    0, 0, 0,  0,  2, 0, -1, 0,   //
    0, 0, 0,  0,  0, 2, 0,  -1,  //
    0, 0, 0,  0,  1, 0, 0,  0,   //
    0, 0, 0,  0,  0, 1, 0,  0,   //
};

// Measured: centre x, y, width, height.
static const float Hdata[32] = {
    1, 0, 0, 0, 0, 0, 0, 0,  //
    0, 1, 0, 0, 0, 0, 0, 0,  //
    0, 0, 0, 0, 1, 0, 0, 0,  //
    0, 0, 0, 0, 0, 1, 0, 0,  //
};

static constexpr float q = 0.1F;
static const float Qdata[64] = {
    q, 0, 0, 0, 0, 0, 0, 0,  //
    0, q, 0, 0, 0, 0, 0, 0,  //
    0, 0, q, 0, 0, 0, 0, 0,  //
    0, 0, 0, q, 0, 0, 0, 0,  //
    0, 0, 0, 0, q, 0, 0, 0,  //
    0, 0, 0, 0, 0, q, 0, 0,  //
    0, 0, 0, 0, 0, 0, q, 0,  //
    0, 0, 0, 0, 0, 0, 0, q,  //
};

static const float Rdata[16] = {
    1, 0, 0, 0,  //
    0, 1, 0, 0,  //
    0, 0, 1, 0,  //
    0, 0, 0, 1,  //
};

static constexpr int state_size = 8;
static constexpr int measurement_size = 4;

// Where the box stands in the state, in the order of the measurement.
static constexpr int state_x = 0;
static constexpr int state_y = 1;
static constexpr int state_w = 4;
static constexpr int state_h = 5;

// --- limits of the life cycle ----------------------------------------------------------------------------------------

static constexpr float gate = 100.0F;        // squared distance at which a track is too far for a detection
static constexpr int max_id = 0xFFFFE;       // small enough to be exact in the float of an output row
static constexpr int tentative_misses = 5;   // a tentative track does not survive more
static constexpr int forgetting_misses = 3;  // with more, a tentative track's matches no longer count
static constexpr int reported_misses = 3;    // a confirmed track with as many is not reported

// --- track records ---------------------------------------------------------------------------------------------------

// The record that a node of track_list begins.
static trk_obj_t* track_of(list_head* node)
{
    return reinterpret_cast<trk_obj_t*>(node);
}

static trk_obj_t* create_trk_obj(void)
{
    auto* obj = static_cast<trk_obj_t*>(calloc(1, sizeof(trk_obj_t)));
    if (obj)
        obj->id = -1;
    return obj;
}

static void kalman_destroy(trk_obj_t* obj)
{
    zel_kalman_release(obj->kalman);
    zel_mat_release(obj->obv);
}

// Gives a track its filter and its measurement. If either cannot be allocated, the track is left without both.
static void kalman_init(tracker_t* tracker, trk_obj_t* obj)
{
    zel_kalman_t* kalman =
        zel_kalman_create(state_size, measurement_size, 1, tracker->A, tracker->H, tracker->Q, tracker->R);
    zel_mat_t* obv = zel_mat_create(measurement_size, 1, ZEL_MAT_TYPE(ZEL_F32, 1));
    if (!kalman || !obv) {
        zel_kalman_release(kalman);
        zel_mat_release(obv);
        return;
    }
    zel_mat_setidentity(kalman->P_post);
    const float state[state_size] = {obj->x, obj->y, obj->px, obj->py, obj->w, obj->h, obj->pw, obj->ph};
    memcpy(kalman->x_post->data.f, state, sizeof(state));
    obj->kalman = kalman;
    obj->obv = obv;
}

static void kalman_predict(trk_obj_t* obj)
{
    if (obj->id < 0) {
        obj->pr_x = obj->x;
        obj->pr_y = obj->y;
        obj->pr_w = obj->w;
        obj->pr_h = obj->h;
        return;
    }
    zel_kalman_predict(obj->kalman);
    const float* x_pre = obj->kalman->x_pre->data.f;
    obj->pr_x = x_pre[state_x];
    obj->pr_y = x_pre[state_y];
    obj->pr_w = x_pre[state_w];
    obj->pr_h = x_pre[state_h];
}

static void kalman_correct(trk_obj_t* obj)
{
    const float box[measurement_size] = {obj->x, obj->y, obj->w, obj->h};
    memcpy(obj->obv->data.f, box, sizeof(box));
    zel_kalman_correct(obj->kalman, obj->obv);
    const float* x_post = obj->kalman->x_post->data.f;
    obj->x = x_post[state_x];
    obj->y = x_post[state_y];
    obj->w = x_post[state_w];
    obj->h = x_post[state_h];
}

static void destroy_trk_obj(trk_obj_t* obj)
{
    if (obj->id >= 0)
        kalman_destroy(obj);
    free(obj);
}

// --- boxes -----------------------------------------------------------------------------------------------------------

// Length shared by two intervals of given centre and width; negative when they are apart.
static float overlap(float x1, float w1, float x2, float w2)
{
    const float l1 = x1 - w1 / 2;
    const float l2 = x2 - w2 / 2;
    const float r1 = x1 + w1 / 2;
    const float r2 = x2 + w2 / 2;
    const float left = l1 > l2 ? l1 : l2;
    const float right = r1 < r2 ? r1 : r2;
    return right - left;
}

static float box_intersection(const float* a, const float* b)
{
    const float w = overlap(a[0], a[2], b[0], b[2]);
    const float h = overlap(a[1], a[3], b[1], b[3]);
    return w > 0 && h > 0 ? w * h : 0;
}

static float box_iou(const float* a, const float* b)
{
    const float inter = box_intersection(a, b);
    return inter / (a[2] * a[3] + b[2] * b[3] - inter);
}

// --- intake and association ------------------------------------------------------------------------------------------

// Truncation as the target processor does it: saturating, and 0 for a NaN. A plain cast is undefined for these.
static int class_of(float value)
{
    constexpr float limit = 2147483648.0F;  // 2^31
    if (value >= limit)
        return INT_MAX;
    if (value < -limit)
        return INT_MIN;
    return value == value ? static_cast<int>(value) : 0;
}

static void tracker_extract(tracker_t* tracker, float (*input)[6])
{
    int n = 0;
    for (; n < tracker->nmaxobjs && input[n][0] != 0.0F; ++n) {
        const float* row = input[n];
        det_obj_t* det = &tracker->cur_obj[n];
        det->c = class_of(row[0]);
        det->x = (row[1] + row[3]) * 0.5F;
        det->y = (row[2] + row[4]) * 0.5F;
        det->w = row[3] - row[1];
        det->h = row[4] - row[2];
        det->s = row[5];
    }
    tracker->ncurobjs = n;
}

// Claims change no prediction, so the search runs first, for all detections at once: tracks are gathered from the list
// in blocks, and each block is compared with every detection, whose nearest track so far is in match_obj and
// match_score. Tracks are compared a group at a time; most groups have none that is nearer. Walking the list for each
// detection took ten times as long at a thousand of each.
static constexpr int block_size = 64;
static constexpr int group_size = 16;

struct track_block {
    float x[block_size];  // predicted centres
    float y[block_size];
    trk_obj_t* obj[block_size];
    int count;
};

// The squared distances of a group of centres, and whether any is below mind. No other place computes one: the compiler
// might fuse one formula and not the other, and equal distances would differ.
static bool any_nearer(const float* x, const float* y, const det_obj_t* det, float mind, float* d)
{
    vec<s32_t, 4> nearer = {};
    for (int l = 0; l < group_size; l += 4) {
        const vec<f32_t, 4> dx = load<4>(x + l) - det->x;
        const vec<f32_t, 4> dy = load<4>(y + l) - det->y;
        const vec<f32_t, 4> distance = dx * dx + dy * dy;
        nearer |= distance < mind;
        store<4>(d + l, distance);
    }
    s64_t halves[2];
    memcpy(halves, &nearer, sizeof(nearer));
    return (halves[0] | halves[1]) != 0;
}

// Searches the block for the track of its class that is nearest to detection n. Strictly nearer, in list order: on a
// tie the older track wins.
static void look_in_block(tracker_t* tracker, const track_block* block, int n)
{
    const det_obj_t* det = &tracker->cur_obj[n];
    float mind = tracker->match_score[n];
    for (int g = 0; g < block->count; g += group_size) {
        float d[group_size];
        if (!any_nearer(block->x + g, block->y + g, det, mind, d))
            continue;
        // up to count, not to the end of the group: with -ffinite-math-only a padded place may seem to be nearer
        for (int l = 0; l < group_size && g + l < block->count; ++l) {
            if (!(d[l] < mind) || (!tracker->ignore_class && block->obj[g + l]->c != det->c))
                continue;
            mind = d[l];
            tracker->match_obj[n] = block->obj[g + l];
        }
    }
    tracker->match_score[n] = mind;
}

// Searches the block for all detections, and empties it. The last group is padded with centres at infinity.
static void search_block(tracker_t* tracker, track_block* block)
{
    for (int k = block->count; k % group_size != 0; ++k) {
        block->x[k] = HUGE_VALF;
        block->y[k] = HUGE_VALF;
    }
    for (int n = 0; n < tracker->ncurobjs; ++n)
        look_in_block(tracker, block, n);
    block->count = 0;
}

// The nearest track of every detection that is nearer than the given squared distance.
static void find_nearest(tracker_t* tracker, float limit)
{
    for (int n = 0; n < tracker->ncurobjs; ++n) {
        tracker->match_obj[n] = nullptr;
        tracker->match_score[n] = limit;
    }
    track_block block;
    block.count = 0;
    for (list_head* node = tracker->track_list.next; node != &tracker->track_list; node = node->next) {
        trk_obj_t* obj = track_of(node);
        block.x[block.count] = obj->pr_x;
        block.y[block.count] = obj->pr_y;
        block.obj[block.count] = obj;
        if (++block.count == block_size)
            search_block(tracker, &block);
    }
    search_block(tracker, &block);
}

static float predicted_iou(const trk_obj_t* obj, const det_obj_t* det)
{
    const float pbox[4] = {obj->pr_x, obj->pr_y, obj->pr_w, obj->pr_h};
    const float cbox[4] = {det->x, det->y, det->w, det->h};
    return box_iou(pbox, cbox);
}

static bool overlaps_enough(const tracker_t* tracker, const trk_obj_t* obj, const det_obj_t* det, float d)
{
    return (d <= tracker->euc_thresh ? 1.0F : predicted_iou(obj, det)) > tracker->iou_thresh;
}

static void unmatch(tracker_t* tracker, int n)
{
    tracker->match_obj[n] = nullptr;
    tracker->match_score[n] = 0;
}

// Detection n claims its nearest track. A detection that is refused or displaced gets no second choice.
static void claim_track(tracker_t* tracker, int n)
{
    trk_obj_t* obj = tracker->match_obj[n];
    const int pm = obj->match_idx;
    if (!overlaps_enough(tracker, obj, &tracker->cur_obj[n], tracker->match_score[n]))
        return unmatch(tracker, n);
    if (pm >= 0) {
        if (!(tracker->match_score[pm] > tracker->match_score[n]))
            return unmatch(tracker, n);
        unmatch(tracker, pm);
    }
    obj->match_idx = n;
}

static void predict_tracks(tracker_t* tracker)
{
    for (list_head* node = tracker->track_list.next; node != &tracker->track_list; node = node->next) {
        kalman_predict(track_of(node));
        track_of(node)->match_idx = -1;
    }
}

static void tracker_match(tracker_t* tracker)
{
    predict_tracks(tracker);
    find_nearest(tracker, gate);
    for (int n = 0; n < tracker->ncurobjs; ++n)
        if (tracker->match_obj[n])
            claim_track(tracker, n);
}

// --- life cycle ------------------------------------------------------------------------------------------------------

static void take_detection(trk_obj_t* obj, const det_obj_t* det)
{
    obj->c = det->c;
    obj->x = det->x;
    obj->y = det->y;
    obj->w = det->w;
    obj->h = det->h;
    obj->s = det->s;
}

static void tracker_add_objects(tracker_t* tracker)
{
    for (int n = 0; n < tracker->ncurobjs && tracker->track_count < tracker->nmaxobjs; ++n) {
        if (tracker->match_obj[n])
            continue;
        trk_obj_t* obj = create_trk_obj();
        if (!obj)
            continue;
        take_detection(obj, &tracker->cur_obj[n]);
        obj->match_idx = n;
        tracker->match_obj[n] = obj;
        list_add_tail(&obj->list, &tracker->track_list);
        ++tracker->track_count;
    }
}

// The filter comes first: a track that cannot have one stays tentative and uses up no identifier.
static void confirm(tracker_t* tracker, trk_obj_t* obj)
{
    kalman_init(tracker, obj);
    if (!obj->kalman)
        return;
    obj->id = tracker->tid;
    tracker->tid = tracker->tid < max_id ? tracker->tid + 1 : 1;
}

// Counters stop at the top instead of wrapping: a parked object is matched for years.
static int next_count(int count)
{
    return count < INT_MAX ? count + 1 : count;
}

// fcnt_stable may change between frames: whether a track is confirmed is told by its id, not by its count.
static void update_matched(tracker_t* tracker, trk_obj_t* obj)
{
    obj->px = obj->x;
    obj->py = obj->y;
    obj->pw = obj->w;
    obj->ph = obj->h;
    take_detection(obj, &tracker->cur_obj[obj->match_idx]);
    obj->match_count = next_count(obj->match_count);
    obj->miss_count = 0;
    if (obj->id >= 0)
        kalman_correct(obj);
    else if (obj->match_count >= tracker->fcnt_stable)
        confirm(tracker, obj);
}

static void remove_track(tracker_t* tracker, trk_obj_t* obj)
{
    __list_del(obj->list.prev, obj->list.next);
    --tracker->track_count;
    destroy_trk_obj(obj);
}

static bool outlived(const tracker_t* tracker, const trk_obj_t* obj)
{
    return obj->miss_count > tracker->fcnt_removal;
}

static void update_missed(tracker_t* tracker, trk_obj_t* obj)
{
    const bool tentative = obj->id < 0;
    obj->miss_count = next_count(obj->miss_count);
    if (outlived(tracker, obj) || (tentative && obj->miss_count > tentative_misses))
        remove_track(tracker, obj);
    else if (tentative && obj->miss_count > forgetting_misses)
        obj->match_count = 0;
}

static void tracker_update(tracker_t* tracker)
{
    list_head* next;
    for (list_head* node = tracker->track_list.next; node != &tracker->track_list; node = next) {
        next = node->next;  // before the record is freed
        trk_obj_t* obj = track_of(node);
        if (obj->match_idx >= 0)
            update_matched(tracker, obj);
        else
            update_missed(tracker, obj);
    }
}

// --- output ----------------------------------------------------------------------------------------------------------

static void write_row(const trk_obj_t* obj, float* row)
{
    row[0] = static_cast<float>(obj->id);
    row[1] = static_cast<float>(obj->c);
    row[2] = obj->x - obj->w * 0.5F;
    row[3] = obj->y - obj->h * 0.5F;
    row[4] = obj->x + obj->w * 0.5F;
    row[5] = obj->y + obj->h * 0.5F;
    row[6] = obj->s;
    row[7] = static_cast<float>(obj->match_idx);
}

static void tracker_get_tracks(tracker_t* tracker, float (*output)[8])
{
    int n = 0;
    for (list_head* node = tracker->track_list.next; node != &tracker->track_list && n < tracker->nmaxobjs;
         node = node->next) {
        const trk_obj_t* obj = track_of(node);
        if (obj->id >= 0 && obj->miss_count < reported_misses)
            write_row(obj, output[n++]);
    }
    if (n < tracker->nmaxobjs)
        output[n][0] = -1.0F;
}

// --- the handle ------------------------------------------------------------------------------------------------------

static float clamp_thresh(float value)
{
    const float capped = value < 1.0F ? value : 1.0F;  // a NaN comes out as 1
    return capped > 0.0F ? capped : 0.0F;
}

static int at_least_one(int value)
{
    return value < 1 ? 1 : value;
}

static zel_mat_t* create_model(int rows, int cols, const float* values)
{
    zel_mat_t* mat = zel_mat_create(rows, cols, ZEL_MAT_TYPE(ZEL_F32, 1));
    if (mat)
        memcpy(mat->data.f, values, static_cast<size_t>(mat->rows) * static_cast<size_t>(mat->step));
    return mat;
}

// Allocates all that a handle owns; false if any of it could not be. An array has at least one entry, so that null
// means failure.
static bool allocate_parts(tracker_t* tracker)
{
    const size_t capacity = static_cast<size_t>(at_least_one(tracker->nmaxobjs));
    tracker->cur_obj = static_cast<det_obj_t*>(calloc(capacity, sizeof(det_obj_t)));
    tracker->match_obj = static_cast<trk_obj_t**>(calloc(capacity, sizeof(trk_obj_t*)));
    tracker->match_score = static_cast<float*>(calloc(capacity, sizeof(float)));
    tracker->A = create_model(state_size, state_size, Adata);
    tracker->H = create_model(measurement_size, state_size, Hdata);
    tracker->Q = create_model(state_size, state_size, Qdata);
    tracker->R = create_model(measurement_size, measurement_size, Rdata);
    return tracker->cur_obj && tracker->match_obj && tracker->match_score && tracker->A && tracker->H && tracker->Q &&
           tracker->R;
}

const char* zel_version(void)
{
    return ZEL_VERSION_STRING;
}

void* zel_tracker_create(int im_w, int im_h, int nmaxobjs, float euc_thresh, float iou_thresh, int fcnt_stable,
                         int fcnt_removal, int ignore_class)
{
    if (nmaxobjs < 0)
        return nullptr;
    auto* tracker = static_cast<tracker_t*>(calloc(1, sizeof(tracker_t)));
    if (!tracker)
        return nullptr;
    list_init(&tracker->track_list);
    tracker->tid = 1;
    tracker->nmaxobjs = nmaxobjs;
    tracker->im_w = im_w;
    tracker->im_h = im_h;
    zel_tracker_set_params(tracker, clamp_thresh(euc_thresh), clamp_thresh(iou_thresh), at_least_one(fcnt_stable),
                           at_least_one(fcnt_removal), ignore_class);
    if (!allocate_parts(tracker)) {
        zel_tracker_release(tracker);
        return nullptr;
    }
    return tracker;
}

void zel_tracker_set_params(void* handle, float euc_thresh, float iou_thresh, int fcnt_stable, int fcnt_removal,
                            int ignore_class)
{
    auto* tracker = static_cast<tracker_t*>(handle);
    assert(tracker);
    tracker->euc_thresh = euc_thresh;
    tracker->iou_thresh = iou_thresh;
    tracker->fcnt_stable = fcnt_stable;
    tracker->fcnt_removal = fcnt_removal;
    tracker->ignore_class = ignore_class;
}

static bool processing;

void zel_tracker_process(void* handle, float (*input)[6], float (*output)[8])
{
    auto* tracker = static_cast<tracker_t*>(handle);
    assert(tracker && input && tracker->fcnt_stable >= 1);
    const exclusive_call alone(processing);
    tracker_extract(tracker, input);
    assert(!output || apart(input, static_cast<size_t>(tracker->ncurobjs) * sizeof(*input), output,
                            static_cast<size_t>(tracker->nmaxobjs) * sizeof(*output)));
    tracker_match(tracker);
    tracker_add_objects(tracker);
    tracker_update(tracker);
    if (output)
        tracker_get_tracks(tracker, output);
}

void zel_tracker_release(void* handle)
{
    auto* tracker = static_cast<tracker_t*>(handle);
    if (!tracker)
        return;
    list_head* next;
    for (list_head* node = tracker->track_list.next; node != &tracker->track_list; node = next) {
        next = node->next;
        destroy_trk_obj(track_of(node));
    }
    zel_mat_release(tracker->A);
    zel_mat_release(tracker->H);
    zel_mat_release(tracker->Q);
    zel_mat_release(tracker->R);
    free(tracker->cur_obj);
    free(tracker->match_obj);
    free(tracker->match_score);
    free(tracker);
}
