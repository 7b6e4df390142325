/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Host kit: what stands between a detector and the tracker. Detections go in as detectors give them, in pixels; tracks
 * come out as applications want them, in pixels. The kit chooses what is worth tracking, steadies a camera that moves,
 * scales, calls libzel, and undoes all of it in what comes out.
 *
 *     zel_host_t* host = zel_host_create(NULL);
 *     for each frame:
 *         n = zel_host_process(host, detections, count, tracks, capacity);
 *     zel_host_release(host);
 *
 * What holds for all of the kit:
 * - A host makes one handle per stream (one camera, one video) and calls zel_host_process() once for every frame, in
 *   order, frames without detections included.
 * - A handle belongs to one thread at a time. Different handles may be used by different threads at the same time: the
 *   kit holds the process-wide lock that zel_tracker_process() needs.
 * - Every choice is automatic and may be fixed by hand instead; zel_host_get_status() tells what each came to, and why.
 * - "must" is the caller's duty and is not checked. A call that is refused says what it leaves unchanged.
 * - Memory is allocated by zel_host_create(), by zel_host_reset(), where libzel does it for a new track, and when a
 *   frame has more detections than any before it.
 *
 * The automatic choices see one frame at a time and nothing of the future: a file and a camera give the same tracks.
 */
#ifndef ZEL_HOST_H
#define ZEL_HOST_H

#include <stddef.h>
#include <stdint.h>
#include <zel/libzel.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zel_host Host kit
 * Detections in pixels in, tracks in pixels out.
 * @{
 */

/** In zel_host_params_t.scale, .removal and .steady: the kit chooses. */
#define ZEL_HOST_AUTO (-1)

/** In zel_host_params_t.min_confidence: the kit chooses. It is FLT_MAX, as a threshold of no use. */
#define ZEL_HOST_AUTO_CONFIDENCE 3.402823466e+38f

/** The largest class. Larger ones would not be told apart by the tracker. */
#define ZEL_HOST_MAX_CLASS 16777215

/** One stream. */
typedef struct zel_host_t zel_host_t;

/** How a stream is tracked. To be filled by zel_host_params_init(), then changed where wanted. */
typedef struct zel_host_params_t {
    size_t size; /**< of this structure as the caller knows it; set by zel_host_params_init() */

    /**
     * Units of the tracker per pixel, 1e-6 to 1e6: a detection is compared only with tracks that are predicted less
     * than 10 units away. #ZEL_HOST_AUTO, the default: 10 divided by the median size, sqrt(width * height), of the
     * detections in the first frame that has any, which makes that distance one size of a box. Boxes without an area
     * do not tell a size; where there are only such, they are dropped as invalid. The scale stays for the stream,
     * because live tracks cannot be rescaled.
     */
    double scale;

    double frame_rate; /**< frames per second, above 0 to 1e6; 0, the default: not known */

    /**
     * Detections of a lower confidence are dropped; any finite number. #ZEL_HOST_AUTO_CONFIDENCE, the default: found by
     * Otsu's method (N. Otsu, "A Threshold Selection Method from Gray-Level Histograms", 1979) among the latest
     * confidences, and used only while the detections below it are seen again in the next frame less often than those
     * above, as false ones are.
     */
    float min_confidence;

    float iou;   /**< as iou_thresh of zel_tracker_create(): overlap that a match must exceed; 0 to 1, default 0.3 */
    float euc;   /**< as euc_thresh of zel_tracker_create(): 0 to 1, default 1 */
    int stable;  /**< matched frames, the first included, at which a track is reported; 1 or more, default 2 */
    int removal; /**< frames in a row that a track may be missed, 1 or more. #ZEL_HOST_AUTO, the default: half a second
                       where frame_rate is known, 10 frames otherwise */
    int steady;  /**< 1: take the camera's own motion, the median motion of the detections, out before tracking and
                       put it back into the tracks. 0: never. #ZEL_HOST_AUTO, the default: while the camera moves */
    int ignore_class; /**< 0, the default: a detection matches only tracks of its class; 1: tracks of all classes */
    int coasted;      /**< 1: also report a track that has no detection in a frame, at its last place, for up to two
                           frames; 0, the default: report only what was detected */
    int max_objects;  /**< capacity: detections tracked per frame and tracks alive, the ones not yet reported included;
                           1 to 1000000, default 256 */
} zel_host_params_t;

/** What a detector found. Coordinates are in pixels, confidence and coordinates finite, corners in order. */
typedef struct zel_host_detection_t {
    float x1;         /**< left */
    float y1;         /**< top */
    float x2;         /**< right; not less than x1 */
    float y2;         /**< bottom; not less than y1 */
    float confidence; /**< in any unit, the larger the surer */
    int class_id;     /**< detectors count from 0; any number from -#ZEL_HOST_MAX_CLASS to #ZEL_HOST_MAX_CLASS */
} zel_host_detection_t;

/** One track in one frame. */
typedef struct zel_host_track_t {
    int id;       /**< 1 to 1048574; the same object, the same identifier. After the last one they start again at 1 */
    int class_id; /**< of its latest detection */
    float x1;     /**< left, in pixels of this frame, smoothed */
    float y1;     /**< top */
    float x2;     /**< right */
    float y2;     /**< bottom */
    float confidence; /**< of its latest detection */
    int detection;    /**< index into the detections of this frame; -1: it coasts, see zel_host_params_t.coasted */
    int hits;         /**< frames in which it was detected, counted from zel_host_params_t.stable at its first report */
    int misses;       /**< frames in a row without a detection: 0 unless it coasts */
} zel_host_track_t;

/** Why an automatic choice is as it is. */
typedef enum zel_host_reason_t {
    ZEL_HOST_FIXED = 0,      /**< the caller fixed it */
    ZEL_HOST_WAITING = 1,    /**< too little was seen yet */
    ZEL_HOST_CHOSEN = 2,     /**< chosen from what was seen */
    ZEL_HOST_ALIKE = 3,      /**< confidences: all alike, nothing is dropped */
    ZEL_HOST_PERSISTENT = 4, /**< confidences: weak detections are seen again like strong ones, nothing is dropped */
    ZEL_HOST_STILL = 5,      /**< steadying: the camera does not move */
    ZEL_HOST_MOVING = 6,     /**< steadying: the camera moves */
    ZEL_HOST_RATE = 7,       /**< removal: half a second at the frame rate */
    ZEL_HOST_NO_RATE = 8     /**< removal: the frame rate is not known */
} zel_host_reason_t;

/** What was done since zel_host_create() or zel_host_reset(), and what the choices are at present. */
typedef struct zel_host_status_t {
    uint64_t frames;     /**< that were processed */
    uint64_t detections; /**< that came in */
    uint64_t invalid;    /**< dropped: a number that is not finite, corners out of order, a class out of range */
    uint64_t weak;       /**< dropped: below the least confidence */
    uint64_t cut;        /**< dropped: beyond max_objects in their frame, where the strongest are taken */
    uint64_t unstarted;  /**< detections whose track could not be begun or not be confirmed: memory ran out. Stays 0
                              if the libzel that runs is of another version than the kit */
    uint64_t lock_waits; /**< frames that had to wait for the lock; not set back by zel_host_reset() */
    double lock_seconds; /**< that they waited in all; not set back by zel_host_reset() */

    double scale;        /**< units per pixel; 0: not yet known */
    double first_size;   /**< sqrt(width * height) that the scale was chosen for, in pixels; 0: none */
    double typical_size; /**< median of the latest detections that were tracked, up to 500; 0: none */
    double offset_x;     /**< steadying: how far the camera has carried the image, in pixels */
    double offset_y;     /**< the same downwards */
    double explained;    /**< steadying: share of the detections' steps that the camera's motion explains, up to 1 */
    double weak_seen;    /**< share of the detections below the threshold that were seen again; -1: too few yet */
    double strong_seen;  /**< the same of those above it */

    float min_confidence;      /**< at present; -FLT_MAX: nothing is dropped */
    int min_confidence_reason; /**< #ZEL_HOST_FIXED, WAITING, CHOSEN, ALIKE or PERSISTENT */
    int scale_reason;          /**< #ZEL_HOST_FIXED, WAITING or CHOSEN */
    int scale_misled;          /**< 1: the first frame's boxes were more than 3 times larger or smaller than the ones
                                    that followed. Too large costs little. Too small breaks tracks of quick objects:
                                    fix the scale at 10 / typical_size, or reset */
    int steady;                /**< 1: on at present */
    int steady_reason;         /**< #ZEL_HOST_FIXED, WAITING, STILL or MOVING */
    int removal;               /**< frames */
    int removal_reason;        /**< #ZEL_HOST_FIXED, RATE or NO_RATE */
} zel_host_status_t;

/** Fill params with the defaults. size is sizeof(zel_host_params_t) where it is called. */
ZEL_API void zel_host_params_init(zel_host_params_t* params, size_t size);

/** The name of the first field with a value out of its range, as written above; null if all are right. Static. */
ZEL_API const char* zel_host_params_check(const zel_host_params_t* params);

/**
 * Make a handle for one stream.
 *
 * @param params  Copied. Null stands for the defaults.
 * @return The handle, to be released with zel_host_release(); null, with nothing left allocated, if memory runs out or
 *         zel_host_params_check() names a field.
 */
ZEL_API zel_host_t* zel_host_create(const zel_host_params_t* params);

/**
 * Change parameters between two frames. All but max_objects and scale may be changed while tracks live; scale, too, up
 * to the first detection of a stream. They take effect from the next frame.
 *
 * @return Null if done. Otherwise the name of the first field whose value is out of range or cannot be changed now, and
 *         everything is left unchanged.
 */
ZEL_API const char* zel_host_set_params(zel_host_t* host, const zel_host_params_t* params);

/**
 * Track one frame.
 *
 * @param host        From zel_host_create().
 * @param detections  The frame's detections in any order; left unchanged. May be null if count is 0. A detection with a
 *                    number that is not finite, with corners out of order or with a class out of range is dropped and
 *                    counted, the others are tracked. Boxes without an area and boxes beyond the image are taken.
 * @param count       Of the detections, any number from 0. If more than max_objects are strong enough, those with the
 *                    highest confidences are tracked (of equal ones, the earlier), the rest is dropped and counted.
 * @param tracks      Receives the frame's tracks, oldest first. May be null if capacity is 0.
 * @param capacity    Room in tracks, 0 or more; max_objects is always enough. What does not fit is not written.
 * @return The number of tracks written.
 */
ZEL_API int zel_host_process(zel_host_t* host, const zel_host_detection_t* detections, int count,
                             zel_host_track_t* tracks, int capacity);

/**
 * Begin a new stream with the same parameters: all tracks end, the automatic choices start again and the counts go back
 * to 0.
 *
 * @param host              From zel_host_create().
 * @param keep_identifiers  0: identifiers start again at 1. Otherwise they go on after the last one.
 * @return 0, or -1 if memory runs out and everything is left unchanged.
 */
ZEL_API int zel_host_reset(zel_host_t* host, int keep_identifiers);

/** Fill status. size is sizeof(zel_host_status_t) where it is called. */
ZEL_API void zel_host_get_status(const zel_host_t* host, zel_host_status_t* status, size_t size);

/** A zel_host_reason_t in English words, such as "the camera moves"; "" for any other number. Static. */
ZEL_API const char* zel_host_reason_text(int reason);

/** Free a handle with all its tracks. Null is accepted and does nothing. */
ZEL_API void zel_host_release(zel_host_t* host);

/**
 * Take the kit's process-wide lock: only for hosts that, beside the kit, call zel_tracker_process(),
 * zel_kalman_correct() or zel_mat_inv() themselves. No function of the kit must be called by the thread that holds it.
 * The lock is one for each copy of the kit: where several parts of a process track, all must use the shared library.
 */
ZEL_API void zel_host_lock(void);

/** Give the lock back. */
ZEL_API void zel_host_unlock(void);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
