// SPDX-License-Identifier: MIT
//
// Joins the tracks of a recording, which live tracking cannot do: what comes later is known.
#pragma once

#include <vector>

#include "mot/mot.h"

namespace zeltrack {

// A track that begins up to `gap` frames after another one ended takes its identifier where the straight continuation
// of the latter's last steps overlaps it enough; one to one, the largest overlaps first. Rows are by frame.
void stitch(std::vector<mot_row>& rows, int gap);

}  // namespace zeltrack
