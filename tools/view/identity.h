// SPDX-License-Identifier: MIT
//
// Ground truth beside the tracks: which identifier follows which true object, and where that changes.
#pragma once

#include <map>
#include <vector>

#include "track/track_row.h"

namespace zeltrack {

struct identity_change {
    int frame;
    int object;  // identifier in the ground truth
    int before;  // of the track
    int after;
};

class identity_watch {
public:
    // An object is followed by the track that followed it before, as long as their boxes share half of their union;
    // else by the one that it shares most with.
    void observe(int frame, const mot_row* first, const mot_row* last, const std::vector<track_row>& tracks);

    const std::vector<identity_change>& changes() const { return changes_; }

private:
    void follow(int frame, int object, int id);

    std::map<int, int> followers_;  // identifier of the latest track, by object
    std::vector<identity_change> changes_;
};

}  // namespace zeltrack
