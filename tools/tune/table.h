// SPDX-License-Identifier: MIT
//
// Findings as text: for the terminal, and as a file of options.
#pragma once

#include <string>

#include "tune/findings.h"

namespace zeltrack {

// What is told of a search.
struct tuning {
    const trial_set& trials;
    const judge& by;
    const objective& wanted;
    const findings& found;
};

std::string result_table(const tuning& of);

// For --config of track and view. Comments tell the command and what it found.
std::string config_text(const tuning& of, const std::string& command);

}  // namespace zeltrack
