// SPDX-License-Identifier: MIT
//
// How much of a gain is chance. The best setting and the defaults are tried again with boxes that are moved by so
// little that no tracker should mind; what the gain differs by from one time to the next says nothing of the settings.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "mot/mot.h"
#include "tune/objective.h"

namespace zeltrack {

constexpr int jitter_count = 5;
constexpr double jitter_pixels = 0.3;

// Moves each edge of each box by up to jitter_pixels. The same number moves the same boxes alike.
void jitter_boxes(std::vector<mot_row>& rows, int number);

struct gain_noise {
    double mean = 0;   // of the gains
    double limit = 0;  // twice their standard deviation: a gain up to here is within the noise
};

// From those trials of the best setting and of the defaults that have the same jitter; two pairs at least.
std::optional<gain_noise> noise_of(const trial_set& trials, const setting& best, const judge& by);

}  // namespace zeltrack
