// SPDX-License-Identifier: MIT
//
// Why a detection took its track or went without one. Who took which track and who had no track near enough are facts
// of the tracker's records. They do not tell refused, lost and displaced apart: that is found here, over the boxes that
// the tracks were predicted at.
#pragma once

#include <vector>

#include "zel_tracker.h"

namespace zeltrack {

// A track at the association of a frame, in the tracker's own units.
struct predicted_track {
    float x;  // centre
    float y;
    float w;
    float h;
    int c;
    int match_idx;  // the detection that it kept in the end, or -1
};

enum class verdict : unsigned char {
    took,       // a track
    far,        // from every track of its class
    refused,    // by its nearest track, for too little overlap
    lost,       // to an earlier detection that is at least as near
    displaced,  // by a later detection that is nearer
};

struct fate {
    verdict what = verdict::far;
    int nearest = -1;    // track of its class, within the gate or not; -1 if there is none at all
    float distance = 0;  // to that track, squared
    float overlap = 0;   // with it: intersection over union
    int rival = -1;      // the detection that it lost to or was displaced by
};

// Of every detection of the frame that the tracker has just processed. The tracks are those alive at its association,
// oldest first, the ones that it removed since included.
std::vector<fate> find_fates(const tracker_t& tracker, const std::vector<predicted_track>& tracks);

}  // namespace zeltrack
