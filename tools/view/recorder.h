// SPDX-License-Identifier: MIT
//
// Runs the tracker stage by stage and notes what each stage did, so that every reason in a recording is a fact.
// Compiled with the tracker's unit; a program that uses it gets its zel_tracker_ and zel_kalman_ functions from there.
#pragma once

#include <cstddef>
#include <vector>

#include "view/recording.h"

struct _tracker_t;
struct _trk_obj_t;

namespace zeltrack {

class recorder {
public:
    // zel_tracker_process() with a recorder for its context: the same tracks, bit for bit. Every frame of a handle must
    // go through the same recorder.
    static void process(void* context, void* handle, float (*input)[6], float (*output)[8]);

    const recording& result() const { return recording_; }

private:
    struct live_track {
        const _trk_obj_t* record;
        int number;  // of its life
        int match_count;
    };

    life& life_of(const live_track& track) { return recording_.lives[static_cast<std::size_t>(track.number)]; }
    association& association_of(int n);
    void associate(_tracker_t& tracker);
    void note_nearest(const _tracker_t& tracker);
    void claim(_tracker_t& tracker, int n);
    void note_births(const _tracker_t& tracker);
    void note_rows(const _tracker_t& tracker);
    void note_update(const _tracker_t& tracker);
    void note_changes(live_track& track);

    recording recording_;
    int current_ = 0;               // detections of the current frame
    std::vector<live_track> live_;  // oldest first, like the tracker's list
};

}  // namespace zeltrack
