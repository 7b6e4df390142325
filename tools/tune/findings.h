// SPDX-License-Identifier: MIT
//
// What the trials say. Nothing is run for it, so that trials from elsewhere say the same.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tune/held_out.h"
#include "tune/noise.h"
#include "tune/objective.h"
#include "tune/trial.h"

namespace zeltrack {

struct ranked_trial {
    const trial* of;
    double objective;
};

// How much the objective loses if one option of the best setting alone goes back to its default.
struct option_effect {
    std::string name;
    std::optional<double> loss;  // nothing: it was not tried
};

struct findings {
    std::vector<ranked_trial> ranking;  // each setting once, the best first; of equal ones that with the fewest options
    ranked_trial initial;               // the defaults
    double gain = 0;
    std::vector<option_effect> effects;
    std::optional<held_out_gain> held_out;  // none with fewer than three groups
    std::optional<gain_noise> noise;        // none if that was not tried
    std::size_t lost = 0;
};

// Fails if the defaults are not among the trials.
findings find(const trial_set& trials, const judge& by);

// What to make of the gain, in a sentence.
std::string verdict(const findings& of);

}  // namespace zeltrack
