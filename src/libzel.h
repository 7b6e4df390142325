/* SPDX-License-Identifier: MIT */
/**
 * @file
 * libzel: multi-object tracking by detection. Detections of each frame go in, numbered tracks come out.
 *
 * Read this first: in the input rows **a class of 0.0 ends the list**. A detector that numbers its classes from 0 must
 * add 1 to each of them, or its first class silently cuts the frame short.
 *
 * What holds for all of the library:
 * - A host makes one handle per sequence (one camera, one video) and calls zel_tracker_process() once for every frame,
 *   in order. A frame without detections must be passed too, as a first row of class 0.0: the frames in which nothing
 *   was seen are what retires a track.
 * - No two calls of zel_tracker_process() may run at the same time in the whole process, not even on different handles:
 *   each correction of a track inverts a matrix in one static work area. A handle belongs to one thread at a time.
 *   Everything else may run in parallel on different objects. No function starts a thread or takes a lock.
 * - "must" is the caller's duty: asserted where it can be seen, and not checked at all in a build with NDEBUG. A call
 *   that is refused says what it leaves unchanged.
 * - Memory is allocated by zel_tracker_create(), for a new track and for a track's confirmation, and nowhere else.
 *
 * The motion of a box is modelled by a linear Kalman filter (R. E. Kalman, "A New Approach to Linear Filtering and
 * Prediction Problems", 1960) over centre and size, each extrapolated from its last two values.
 */
#ifndef LIBZEL_H
#define LIBZEL_H

#include <stdint.h>

/** @cond */
#if defined(__GNUC__)
#define ZEL_API __attribute__((visibility("default")))
#else
#define ZEL_API
#endif
/** @endcond */

/**
 * @defgroup zel_common Version and scalars
 * @{
 */

#define ZEL_VERSION_MAJOR 1        /**< raised when programs must be rebuilt */
#define ZEL_VERSION_MINOR 0        /**< raised when something is added */
#define ZEL_VERSION_PATCH 0        /**< raised for corrections */
#define ZEL_VERSION_STRING "1.0.0" /**< the three of them */

typedef int8_t s08_t;   /**< scalars of ::ZEL_S08 */
typedef uint8_t u08_t;  /**< scalars of ::ZEL_U08 */
typedef int16_t s16_t;  /**< scalars of ::ZEL_S16 */
typedef uint16_t u16_t; /**< scalars of ::ZEL_U16 */
typedef int32_t s32_t;  /**< scalars of ::ZEL_S32 */
typedef int64_t s64_t;  /**< scalars of ::ZEL_S64 */
typedef uint64_t u64_t; /**< the bits of an #s64_t */
typedef float f32_t;    /**< scalars of ::ZEL_F32 */
typedef double f64_t;   /**< scalars of ::ZEL_F64 */

#ifdef __cplusplus
extern "C" {
#endif

/** Version of the library that runs, as "major.minor.patch"; ZEL_VERSION_STRING is that of the header. Static. */
ZEL_API const char* zel_version(void);

/**
 * @}
 * @defgroup zel_tracker Tracker
 * Detections of each frame in, numbered tracks out.
 * @{
 */

/**
 * Make a tracker for one sequence.
 *
 * @param im_w, im_h    Image size. Kept, but not used: boxes are neither scaled nor clipped.
 * @param nmaxobjs      Capacity, 0 or more: the most detections read per frame, the most tracks alive (tentative ones
 *                      included) and the most rows returned.
 * @param euc_thresh    Squared distance between a detection's centre and a track's predicted centre, in squared units
 *                      of the input. At or below it the pair counts as full overlap, whatever the boxes. Clamped
 *                      to [0, 1]; a NaN becomes 1.
 * @param iou_thresh    Intersection over union that a pair must exceed to match. Larger refuses more; at 1 nothing ever
 *                      matches. Clamped to [0, 1]; a NaN becomes 1.
 * @param fcnt_stable   Matched frames, the first included, after which a track is confirmed: it receives its identifier
 *                      and is reported. Less than 1 becomes 1, which reports every detection at once. A tentative
 *                      track that is missed four times in a row starts counting again.
 * @param fcnt_removal  Frames in a row that a track may be missed; the next miss removes it. Less than 1 becomes 1.
 *                      A tentative track is also removed at its sixth miss. The prediction stands still while a track
 *                      is missed, so that very long survival mostly serves objects that stop behind others.
 * @param ignore_class  0: a detection matches only tracks of its own class. Otherwise the class is ignored.
 * @return The handle, to be released with zel_tracker_release(); null, with nothing left allocated, if memory runs out
 *         or nmaxobjs is negative.
 *
 * Whatever the parameters, a detection matches only a track whose predicted centre is less than 10 units away. Choose
 * the unit of the coordinates so that 10 of it are a generous step: in pixels of full-HD video most objects step too
 * far.
 */
ZEL_API void* zel_tracker_create(int im_w, int im_h, int nmaxobjs, float euc_thresh, float iou_thresh, int fcnt_stable,
                                 int fcnt_removal, int ignore_class);

/**
 * Change the parameters between two frames. The values are stored as they are, without the clamping of
 * zel_tracker_create(); fcnt_stable must be at least 1. Live tracks keep their state: a tentative track that already
 * has enough matches is confirmed at its next match, a confirmed track keeps its identifier.
 */
ZEL_API void zel_tracker_set_params(void* handle, float euc_thresh, float iou_thresh, int fcnt_stable, int fcnt_removal,
                                    int ignore_class);

/**
 * Track one frame. No other call of zel_tracker_process(), on any handle, must begin before this one has returned.
 *
 * @param handle  From zel_tracker_create().
 * @param input   The detections, never null: rows of { class, smaller x, smaller y, larger x, larger y, score }, ended
 *                by a row of class 0.0 or by nmaxobjs rows, whichever comes first; nothing after that is read. The
 *                class is cut to an int (0.4 is class 0 and does not end the list; beyond the range of int it
 *                saturates; a NaN is class 0). The score is carried through. Corners are not ordered or clipped; any
 *                float is accepted.
 * @param output  The confirmed tracks, oldest first, or null if they are not wanted: room for nmaxobjs rows of
 *                { identifier, class, smaller x, smaller y, larger x, larger y, score, index of its input row }.
 *                If fewer than nmaxobjs rows are written, the first float of the row after them is -1.0 and the
 *                rest of the array is left unchanged. It must not overlap input.
 *
 * Each detection is compared with the track that is predicted nearest to it, and with no other.
 *
 * Identifiers count 1, 2, ... to 1048574 and then start again at 1. They are the handle's own: two handles give the
 * same ones.
 *
 * A confirmed track without a detection is reported for up to two more frames (one if fcnt_removal is 1): its last
 * element is then -1.0, its box stays at the last corrected one, class and score are those of its last detection. From
 * the third missed frame until its removal it is kept, but reported again only when it is matched again, under the same
 * identifier.
 *
 * A track that cannot be allocated, or that finds nmaxobjs tracks alive, is not started; its detection is dropped. A
 * track whose filter cannot be allocated stays tentative and is confirmed at its next match.
 */
ZEL_API void zel_tracker_process(void* handle, float (*input)[6], float (*output)[8]);

/** Free a handle with all its tracks. Null is accepted and does nothing. */
ZEL_API void zel_tracker_release(void* handle);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
