// SPDX-License-Identifier: MIT
//
// The unit in which the tracker sees the boxes. Its gate is an absolute 10 units, so the scale decides how far an
// object may step from one frame to the next, and matters more than every other parameter.
#pragma once

#include <vector>

#include "mot/mot.h"

namespace zeltrack {

constexpr double gate_units = 10;
constexpr double min_scale = 1e-6;
constexpr double max_scale = 1e6;

// The scale that makes the gate half the size of the median box, its size being sqrt(width * height); 1 if no box has
// an area.
double automatic_scale(const std::vector<mot_row>& rows);

}  // namespace zeltrack
