// SPDX-License-Identifier: MIT
//
// What the tracker did with a sequence, and why, in the tracker's own units. A life is one track from birth to end;
// lives are numbered in the order of birth.
#pragma once

#include <vector>

namespace zeltrack {

struct centre_box {
    float x;
    float y;
    float w;
    float h;
};

enum class outcome : unsigned char {
    took,       // a track
    far,        // from every track of its class
    refused,    // by its nearest track, for too little overlap
    lost,       // to an earlier detection that is at least as near
    displaced,  // by a later detection that is nearer
};

// The association of a detection, and the reason for it.
struct association {
    outcome result = outcome::far;
    int nearest =
        -1;  // track of its class, within the gate or not, among the lives that began before this frame and had
             // not ended; -1 if there is none
    float distance = 0;  // to that track, squared
    float overlap = 0;   // with it: intersection over union; NaN of boxes without an area
    int rival = -1;      // the detection that it lost to or was displaced by
};

struct recorded_detection {
    int c;
    centre_box box;
    float score;
    association why;
    bool started = false;  // a track
};

enum class ending : unsigned char { end_of_file, missed_too_long, tentative_too_long };

// A track in one frame.
struct life_row {
    int detection;  // -1: missed
    bool reported;
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

struct recording {
    int frames = 0;
    std::vector<recorded_detection> detections;  // by frame
    std::vector<life> lives;
};

}  // namespace zeltrack
