// SPDX-License-Identifier: MIT
//
// Runs a search: the trials that it asks for, on all sequences, in several processes, and at its end the trials that
// show the noise. The trials depend on nothing but the sequences and the options; the number of jobs is not among them.
#pragma once

#include <cstdint>
#include <string>

#include "tune/objective.h"
#include "tune/subject.h"
#include "tune/trial.h"

namespace zeltrack {

struct run_options {
    int trials = 300;
    std::uint64_t first_seed = 1;  // a search for each, one after the other
    std::uint64_t last_seed = 1;
    int jobs = 1;
    bool quiet = false;
};

// Appends the trials, by search and in the order in which they were asked for. False if a signal ended it.
bool run_trials(const std::vector<subject>& subjects, const judge& by, const run_options& options, trial_set& trials);

}  // namespace zeltrack
