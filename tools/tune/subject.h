// SPDX-License-Identifier: MIT
//
// The sequences that settings are tried on, and one trial on one of them: options in, figures out. All of it is loaded
// once, before children are forked, and only read from then on.
#pragma once

#include <string>
#include <vector>

#include "eval/figure_list.h"
#include "eval/truth.h"
#include "track/options.h"
#include "track/sequence.h"
#include "tune/parameter.h"

namespace zeltrack {

struct subject {
    std::string name;
    std::string detections;  // the files
    std::string truth;
    sequence input;
    int length = 0;  // that the figures are for
    scorer scoring;  // with its truth
};

// The options of track as a user would type them. Wrong ones are a failure, as in track.
track_options options_of(const setting& fixed, const setting& chosen, const std::string& detections);

std::vector<subject> load_subjects(const pairing& pairs, const setting& fixed, rules_choice rules, bool quiet);

// What is searched if nobody says otherwise, without the options that are fixed.
std::vector<parameter> usual_space(const std::vector<subject>& subjects, const setting& fixed);

// The figures, which are named, in their order. With a jitter other than 0, of boxes that are moved by a little.
std::vector<double> try_setting(const subject& on, const setting& fixed, const setting& chosen, int jitter,
                                const std::vector<const figure*>& wanted);

}  // namespace zeltrack
