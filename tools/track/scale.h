// SPDX-License-Identifier: MIT
//
// The unit in which the tracker sees the boxes. Its gate is an absolute 10 units, so the scale decides how far an
// object may step from one frame to the next.
#pragma once

namespace zeltrack {

constexpr double gate_units = 10;
constexpr double min_scale = 1e-6;
constexpr double max_scale = 1e6;

}  // namespace zeltrack
