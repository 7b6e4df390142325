// SPDX-License-Identifier: MIT
//
// The handle and its frame: zel_host_process() at the end is the summary. Pixels become units in double, so that the
// conversion adds as little as possible to what the tracker rounds.
#include "host.h"

#include <float.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <cmath>

#include "_host.h"
#include "confidence.h"
#include "lives.h"
#include "lock.h"
#include "neighbours.h"
#include "params.h"
#include "size.h"
#include "steady.h"
#include "unstarted.h"

using namespace zelhost;

struct zel_host_t {
    zel_host_params_t params;
    void* tracker;
    zel_host_process_t process;
    void* context;
    bool records_known;

    // of max_objects entries
    float (*input)[6];
    float (*output)[8];
    int* kept;  // the caller's detections, by row of the input
    int kept_count;

    // of the largest frame so far
    int* candidates;
    int room;

    scale_choice scale;
    confidence_choice confidence;
    neighbours frames;
    camera motion;
    lives table;
    int idle_frames;  // in a row that reported no track
    int newest;       // the tracker's latest identifier, 0 before the first
    int id_base;      // identifiers of the streams before that go on in this one
    lock_waits waits;
    zel_host_status_t counts;  // the first fields only
};

// --- classes and identifiers -----------------------------------------------------------------------------------------

// The tracker's list ends at class 0, so the classes from 0 move up by 1. Negative ones stay: no two become the same.
static float class_to_tracker(int c)
{
    return static_cast<float>(c >= 0 ? c + 1 : c);
}

static int class_of_tracker(float value)
{
    const int c = static_cast<int>(value);
    return c > 0 ? c - 1 : c;
}

static constexpr int max_id = 0xFFFFE;

static int go_on(int id, int base)
{
    return (id - 1 + base) % max_id + 1;
}

// The tracker issues identifiers one by one and from 1 again after the last.
static bool newer(int id, int than)
{
    const int ahead = (id - than + max_id) % max_id;
    return ahead > 0 && ahead < max_id / 2;
}

// --- what goes in ----------------------------------------------------------------------------------------------------

static bool valid(const zel_host_detection_t& it)
{
    return std::isfinite(it.x1) && std::isfinite(it.y1) && std::isfinite(it.x2) && std::isfinite(it.y2) &&
           std::isfinite(it.confidence) && it.x1 <= it.x2 && it.y1 <= it.y2 && it.class_id >= -ZEL_HOST_MAX_CLASS &&
           it.class_id <= ZEL_HOST_MAX_CLASS;
}

static int capacity_of(const zel_host_t* host)
{
    return host->params.max_objects;
}

static bool fixed_confidence(const zel_host_t* host)
{
    return host->params.min_confidence != ZEL_HOST_AUTO_CONFIDENCE;
}

static int removal_now(const zel_host_t* host)
{
    return zel_host_removal(&host->params);
}

static float least_now(const zel_host_t* host)
{
    int reason;
    return fixed_confidence(host) ? host->params.min_confidence : least_confidence(&host->confidence, &reason);
}

// Room for a frame of so many detections. What cannot be had is cut off.
static int make_room(zel_host_t* host, int count)
{
    if (count <= host->room)
        return count;
    const int room = count < INT32_MAX / 2 ? count + count / 2 : count;
    auto* larger = static_cast<int*>(calloc(static_cast<size_t>(room), sizeof(int)));
    if (!larger || !make_neighbour_room(&host->frames, room)) {
        free(larger);
        return host->room;
    }
    free(host->candidates);
    host->candidates = larger;
    host->room = room;
    return count;
}

static void find_frame_neighbours(neighbours* frames, const zel_host_detection_t* detections, int count)
{
    for (int n = 0; n < count; ++n) {
        const zel_host_detection_t& it = detections[n];
        if (valid(it))
            frames->now.boxes[frames->now.count++] = {it.x1, it.y1, it.x2, it.y2, it.confidence, -1, 0};
    }
    find_neighbours(frames);
}

// What the automatic choices learn from a frame, before any of it is tracked. The least confidence comes of it.
static float look_at_frame(zel_host_t* host, const zel_host_detection_t* detections, int count)
{
    const bool steadied = host->params.steady != 0;
    next_frame(&host->frames);
    if (steadied || !fixed_confidence(host))
        find_frame_neighbours(&host->frames, detections, count);
    if (!fixed_confidence(host)) {
        // by place, not in the caller's order: detectors often sort by confidence, and the latest would be the weakest
        for (int n = 0; n < host->frames.now.count; ++n)
            add_confidence(&host->confidence, host->frames.now.boxes[n].confidence);
        split_confidences(&host->confidence, &host->frames.before);
    }
    const float least = least_now(host);
    if (steadied)
        follow_camera(&host->motion, &host->frames, least, host->params.steady);
    return least;
}

static int choose_candidates(zel_host_t* host, const zel_host_detection_t* detections, int count)
{
    const float least = look_at_frame(host, detections, count);
    int candidates = 0;
    for (int n = 0; n < count; ++n) {
        if (!valid(detections[n]))
            ++host->counts.invalid;
        else if (detections[n].confidence < least)
            ++host->counts.weak;
        else
            host->candidates[candidates++] = n;
    }
    return candidates;
}

// Leaves the strongest, in the caller's order.
static int cut(zel_host_t* host, const zel_host_detection_t* detections, int candidates)
{
    const int capacity = capacity_of(host);
    memcpy(host->kept, host->candidates, static_cast<size_t>(std::clamp(candidates, 0, capacity)) * sizeof(int));
    if (candidates <= capacity)
        return candidates;
    const auto stronger = [detections](int a, int b) {
        const float ca = detections[a].confidence;
        const float cb = detections[b].confidence;
        return ca > cb || (ca == cb && a < b);
    };
    int* const last = host->candidates + capacity - 1;
    std::nth_element(host->candidates, last, host->candidates + candidates, stronger);
    const int weakest = *last;
    int kept = 0;
    for (int n = 0; kept < capacity; ++n)
        if (n == weakest || (valid(detections[n]) && stronger(n, weakest)))
            host->kept[kept++] = n;
    host->counts.cut += static_cast<uint64_t>(candidates - capacity);
    return kept;
}

static double size_of(const zel_host_detection_t& it)
{
    return std::sqrt((static_cast<double>(it.x2) - static_cast<double>(it.x1)) *
                     (static_cast<double>(it.y2) - static_cast<double>(it.y1)));
}

static void note_sizes(zel_host_t* host, const zel_host_detection_t* detections, int count)
{
    for (int n = 0; n < count; ++n)
        add_size(&host->scale, size_of(detections[host->kept[n]]));
    choose_scale(&host->scale, host->params.scale);
}

// A plain cast of what no float holds is undefined.
static float to_float(double value)
{
    constexpr auto limit = static_cast<double>(FLT_MAX);
    return static_cast<float>(std::clamp(value, -limit, limit));
}

static void put(zel_host_t* host, const zel_host_detection_t* detections)
{
    const double scale = host->scale.scale;
    for (int n = 0; n < host->kept_count; ++n) {
        const zel_host_detection_t& it = detections[host->kept[n]];
        float* row = host->input[n];
        row[0] = class_to_tracker(it.class_id);
        row[1] = to_float((static_cast<double>(it.x1) - host->motion.offset_x) * scale);
        row[2] = to_float((static_cast<double>(it.y1) - host->motion.offset_y) * scale);
        row[3] = to_float((static_cast<double>(it.x2) - host->motion.offset_x) * scale);
        row[4] = to_float((static_cast<double>(it.y2) - host->motion.offset_y) * scale);
        row[5] = it.confidence;
    }
    if (host->kept_count < capacity_of(host))
        host->input[host->kept_count][0] = 0;
}

// A camera that goes on and on carries the image to where floats are coarse. Back to the middle while nothing is
// tracked; in the last resort with tracks, which then end.
static void recentre(zel_host_t* host)
{
    constexpr double early = 16384;  // units: floats are a thousandth of one apart
    constexpr double late = 262144;
    const bool idle = host->idle_frames > removal_now(host);
    const double limit = (idle ? early : late) / host->scale.scale;
    if (std::fabs(host->motion.offset_x) < limit && std::fabs(host->motion.offset_y) < limit)
        return;
    host->motion.offset_x = 0;
    host->motion.offset_y = 0;
}

static void take_in(zel_host_t* host, const zel_host_detection_t* detections, int count)
{
    const int considered = make_room(host, count);
    host->counts.detections += static_cast<uint64_t>(count);
    host->counts.cut += static_cast<uint64_t>(count - considered);
    const int candidates = choose_candidates(host, detections, considered);
    host->kept_count = cut(host, detections, candidates);
    note_sizes(host, detections, host->kept_count);
    recentre(host);
    if (host->scale.scale == 0) {  // only boxes without an area so far, of which no unit can be told
        host->counts.invalid += static_cast<uint64_t>(host->kept_count);
        host->kept_count = 0;
    }
    put(host, detections);
}

// --- the tracker -----------------------------------------------------------------------------------------------------

static void run_tracker(zel_host_t* host)
{
    const int live = host->records_known ? live_tracks(host->tracker) : 0;
    take_lock(&host->waits);
    if (host->process)
        host->process(host->context, host->tracker, host->input, host->output);
    else
        zel_tracker_process(host->tracker, host->input, host->output);
    give_lock();
    if (host->records_known)
        host->counts.unstarted += static_cast<uint64_t>(unstarted(host->tracker, live));
}

// --- what comes out --------------------------------------------------------------------------------------------------

static void count_row(zel_host_t* host, const float* row, zel_host_track_t* track)
{
    const int id = static_cast<int>(row[0]);
    life* it = life_of(&host->table, id, host->counts.frames, removal_now(host));
    if (it->hits == 0)
        it->hits = host->params.stable;
    else if (row[7] >= 0 && it->hits < INT32_MAX)
        ++it->hits;
    if (row[7] >= 0)
        it->last = host->counts.frames;
    if (newer(id, host->newest))
        host->newest = id;
    track->id = go_on(id, host->id_base);
    track->hits = it->hits;
    track->misses = static_cast<int>(host->counts.frames - it->last);
}

static void take_row(const zel_host_t* host, const float* row, zel_host_track_t* track)
{
    const double scale = host->scale.scale;
    const auto at = [scale](float value, double offset) {
        return to_float(static_cast<double>(value) / scale + offset);
    };
    track->class_id = class_of_tracker(row[1]);
    track->x1 = at(row[2], host->motion.offset_x);
    track->y1 = at(row[3], host->motion.offset_y);
    track->x2 = at(row[4], host->motion.offset_x);
    track->y2 = at(row[5], host->motion.offset_y);
    track->confidence = row[6];
    track->detection = row[7] >= 0 ? host->kept[static_cast<int>(row[7])] : -1;
}

static int take_out(zel_host_t* host, zel_host_track_t* tracks, int capacity)
{
    int written = 0;
    host->idle_frames = host->output[0][0] >= 0 ? 0 : std::min(host->idle_frames, INT32_MAX - 1) + 1;
    for (int n = 0; n < capacity_of(host) && host->output[n][0] >= 0; ++n) {
        const float* row = host->output[n];
        zel_host_track_t track;
        count_row(host, row, &track);
        if (written >= capacity || (row[7] < 0 && !host->params.coasted))
            continue;
        take_row(host, row, &track);
        tracks[written++] = track;
    }
    return written;
}

// --- the handle ------------------------------------------------------------------------------------------------------

static void* create_tracker(const zel_host_params_t* p)
{
    int reason;
    return zel_tracker_create(0, 0, p->max_objects, p->euc, p->iou, p->stable, removal_of(p, &reason), p->ignore_class);
}

static bool allocate(zel_host_t* host)
{
    const auto capacity = static_cast<size_t>(capacity_of(host));
    host->input = static_cast<float(*)[6]>(calloc(capacity, sizeof(*host->input)));
    host->output = static_cast<float(*)[8]>(calloc(capacity, sizeof(*host->output)));
    host->kept = static_cast<int*>(calloc(capacity, sizeof(int)));
    host->tracker = create_tracker(&host->params);
    return make_lives(&host->table, capacity_of(host)) && host->input && host->output && host->kept && host->tracker &&
           make_room(host, capacity_of(host)) == capacity_of(host);
}

static void start_choices(zel_host_t* host)
{
    host->counts = {};
    host->kept_count = 0;
    host->idle_frames = 0;
    host->scale = {};
    host->motion = {};
    host->confidence = {};
    clear_neighbours(&host->frames);
    choose_scale(&host->scale, host->params.scale);
}

zel_host_t* zel_host_create(const zel_host_params_t* params)
{
    zel_host_params_t read;
    if (read_params(params, &read))
        return nullptr;
    auto* host = static_cast<zel_host_t*>(calloc(1, sizeof(zel_host_t)));
    if (!host)
        return nullptr;
    host->params = read;
    host->records_known = records_known();
    if (!allocate(host)) {
        zel_host_release(host);
        return nullptr;
    }
    start_choices(host);
    return host;
}

const char* zel_host_set_params(zel_host_t* host, const zel_host_params_t* params)
{
    zel_host_params_t read;
    if (const char* wrong = read_params(params, &read))
        return wrong;
    if (read.max_objects != host->params.max_objects)
        return "max_objects";
    if (read.scale != host->params.scale && host->scale.frozen)
        return "scale";
    int reason;
    host->params = read;
    zel_tracker_set_params(host->tracker, read.euc, read.iou, read.stable, removal_of(&read, &reason),
                           read.ignore_class);
    choose_scale(&host->scale, read.scale);
    return nullptr;
}

int zel_host_reset(zel_host_t* host, int keep_identifiers)
{
    void* tracker = create_tracker(&host->params);
    if (!tracker)
        return -1;
    zel_tracker_release(host->tracker);
    host->tracker = tracker;
    host->id_base = keep_identifiers ? go_on(host->newest, host->id_base) : 0;
    host->newest = 0;
    clear_lives(&host->table);
    start_choices(host);
    return 0;
}

void zel_host_release(zel_host_t* host)
{
    if (!host)
        return;
    zel_tracker_release(host->tracker);
    free_lives(&host->table);
    free(host->input);
    free(host->output);
    free(host->kept);
    free(host->candidates);
    free_neighbours(&host->frames);
    free(host);
}

int zel_host_process(zel_host_t* host, const zel_host_detection_t* detections, int count, zel_host_track_t* tracks,
                     int capacity)
{
    ++host->counts.frames;
    take_in(host, detections, count);
    run_tracker(host);
    return take_out(host, tracks, capacity);
}

// --- the state of the choices ----------------------------------------------------------------------------------------

static void describe_confidence(const zel_host_t* host, zel_host_status_t* status)
{
    least_confidence(&host->confidence, &status->min_confidence_reason);
    if (fixed_confidence(host))
        status->min_confidence_reason = ZEL_HOST_FIXED;
    status->min_confidence = least_now(host);
    status->weak_seen = seen_again(&host->confidence.weak);
    status->strong_seen = seen_again(&host->confidence.strong);
}

static void describe_motion(const zel_host_t* host, zel_host_status_t* status)
{
    const camera& motion = host->motion;
    status->offset_x = motion.offset_x;
    status->offset_y = motion.offset_y;
    status->explained = explained(&motion);
    status->steady = motion.on ? 1 : 0;
    if (host->params.steady != ZEL_HOST_AUTO)
        status->steady_reason = ZEL_HOST_FIXED;
    else if (!motion_known(&motion))
        status->steady_reason = ZEL_HOST_WAITING;
    else
        status->steady_reason = motion.on ? ZEL_HOST_MOVING : ZEL_HOST_STILL;
}

void zel_host_get_status(const zel_host_t* host, zel_host_status_t* status, size_t size)
{
    zel_host_status_t now = host->counts;
    now.lock_waits = host->waits.count;
    now.lock_seconds = host->waits.seconds;
    describe_scale(&host->scale, &now);
    describe_confidence(host, &now);
    describe_motion(host, &now);
    now.removal = removal_of(&host->params, &now.removal_reason);
    memcpy(status, &now, std::min(size, sizeof(now)));
}

const char* zel_host_reason_text(int reason)
{
    static const char* const texts[] = {
        "fixed by the caller",
        "too little was seen yet",
        "chosen from what was seen",
        "all confidences are alike",
        "weak detections are seen again like strong ones",
        "the camera does not move",
        "the camera moves",
        "half a second at the frame rate",
        "the frame rate is not known",
    };
    constexpr int count = sizeof(texts) / sizeof(texts[0]);
    return reason >= 0 && reason < count ? texts[reason] : "";
}

// --- for the rest of the project -------------------------------------------------------------------------------------

void zel_host_replace_process(zel_host_t* host, zel_host_process_t process, void* context)
{
    host->process = process;
    host->context = context;
}

void zel_host_get_frame(const zel_host_t* host, zel_host_frame_t* frame)
{
    *frame = {host->kept, host->kept_count, host->scale.scale, host->motion.offset_x, host->motion.offset_y};
}

int zel_host_removal(const zel_host_params_t* params)
{
    int reason;
    return removal_of(params, &reason);
}
