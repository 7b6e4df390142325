// SPDX-License-Identifier: MIT
//
// What the tracker did, read off its private records after each frame. A life is one track from birth to end; its record
// may be used again for another track later, so lives have numbers of their own, in the order of birth.
#pragma once

#include <cstddef>
#include <vector>

#include "view/fate.h"

namespace zeltrack {

struct centre_box {
    float x;
    float y;
    float w;
    float h;
};

enum class ending : unsigned char { end_of_file, missed_too_long, tentative_too_long };

// A track in one frame.
struct life_row {
    int detection;         // -1: missed
    centre_box predicted;  // in the frame of birth: the box
    centre_box box;
};

struct life {
    int birth = 0;       // frame, from 1
    int confirmed = -1;  // row in which it received its identifier
    int id = -1;
    ending end = ending::end_of_file;
    std::vector<life_row> rows;  // one per frame from birth on; the last one is the frame of removal, if any
    std::vector<int> forgotten;  // rows in which its count of matches was set back to 0
};

struct recorded_detection {
    det_obj_t det;
    fate why;      // its nearest track is counted among the lives that began before this frame and have not ended
    bool started;  // a track
};

struct recording {
    std::vector<int> detections_of_frame;
    std::vector<recorded_detection> detections;
    std::vector<life> lives;
};

class recorder {
public:
    // To be called once after every frame that the tracker has processed.
    void observe(const tracker_t& tracker);

    const recording& result() const { return recording_; }

private:
    struct live_track {
        const trk_obj_t* record;
        int number;
        int c;
        int match_count;
        int miss_count;
    };

    life& life_of(const live_track& track) { return recording_.lives[static_cast<std::size_t>(track.number)]; }
    void start(const trk_obj_t& obj);
    predicted_track carry_on(const trk_obj_t& obj, live_track track);
    predicted_track end(const tracker_t& tracker, const live_track& track);
    void note_changes(const trk_obj_t& obj, const live_track& before);

    recording recording_;
    std::vector<live_track> live_;  // oldest first, like the tracker's list
};

}  // namespace zeltrack
