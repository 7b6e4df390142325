// SPDX-License-Identifier: MIT
//
// Rows of a tracker as scoring would read them from the file that they would be written to.
#pragma once

#include "eval/score.h"
#include "mot/mot.h"

namespace zeltrack {

// The number that a file has for it, as long as it has no more digits than a float. The difference is a rounding, but
// boxes whose overlap is exactly a threshold are not rare.
double as_written(float value);

score_row to_score(const mot_row& row);

}  // namespace zeltrack
