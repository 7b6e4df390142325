// SPDX-License-Identifier: MIT
//
// Trials as JSON, one a line:
//   {"seed": 1, "trial": 7, "jitter": 0, "setting": {"iou": 0.2, "removal": "0.8s", "min-conf": null},
//    "fixed": {}, "objective": 52.1, "sequences": {"NAME": {"HOTA": 0.52, ...}, ...}}
// An option that has its default is null. A lost trial has "lost", the reason, in place of objective and sequences.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tune/objective.h"
#include "tune/trial.h"

namespace zeltrack {

std::string trial_line(const trial& of, const trial_set& set, const judge& by);

// Appends the trials of a file to those that were read before. What all trials have in common comes from the first; a
// later one that differs, or a line that is none, is a failure with file and line. The ranges of the parameters become
// those of the values.
void read_trials(std::istream& in, const std::string& name, trial_set& set);

}  // namespace zeltrack
