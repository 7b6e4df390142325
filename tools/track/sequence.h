// SPDX-License-Identifier: MIT
//
// The detections of one file, ready for the tracker.
#pragma once

#include <string>
#include <vector>

#include "mot/mot.h"
#include "track/options.h"

namespace zeltrack {

struct sequence {
    std::vector<mot_row> rows;  // by frame, within a frame as in the file
    int frames = 0;             // up to the last one of the file or, if that is more, of its seqinfo.ini
    double fps = 0;             // frames per second; 0: not known
    std::string info;           // the seqinfo.ini; empty: there is none
};

sequence load_sequence(const track_options& options);

// At most this much is chosen from a file; a hostile one could ask for any.
constexpr int max_chosen_capacity = 1 << 14;

// A capacity that no set of live tracks and no frame of the sequence can exceed.
int ample_capacity(const std::vector<mot_row>& rows, int removal);

}  // namespace zeltrack
