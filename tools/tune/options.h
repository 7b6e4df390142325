// SPDX-License-Identifier: MIT
//
// What a user can choose about a search.
#pragma once

#include <string>
#include <vector>

#include "eval/truth.h"
#include "tune/objective.h"
#include "tune/runner.h"

namespace zeltrack {

class command_line;

struct tune_options {
    std::vector<std::string> detections;
    std::vector<std::string> truths;
    std::vector<std::string> from;  // trials made elsewhere
    objective maximize;
    std::vector<parameter> parameters;
    setting fixed;
    std::vector<std::string> groups;
    rules_choice rules = rules_choice::automatic;
    run_options run;
    std::string output;
    std::string trials_out;
    std::string report;
    bool skip_missing = false;
    bool no_sync = false;
};

void declare_options(command_line& line, tune_options& options);

}  // namespace zeltrack
