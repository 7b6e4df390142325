// SPDX-License-Identifier: MIT
//
// A row that the tracker reports.
#pragma once

#include "mot/mot.h"

namespace zeltrack {

struct track_row {
    mot_row box;    // in the coordinates of the file
    int detection;  // index among the frame's rows; -1 for a row without a detection
};

}  // namespace zeltrack
