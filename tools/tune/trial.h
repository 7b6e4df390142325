// SPDX-License-Identifier: MIT
//
// A setting that was tried, and what all trials have in common.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tune/parameter.h"

namespace zeltrack {

struct trial {
    std::uint64_t seed = 0;  // of the search that it belongs to
    int number = 0;          // in it
    int jitter = 0;          // 0: the boxes as they are; 1 to jitter_count: moved by a little
    setting chosen;
    std::vector<std::vector<double>> figures;  // by sequence and figure; none if it was lost
    std::string lost;                          // why
};

struct trial_set {
    std::vector<std::string> sequences;
    std::vector<std::string> figures;  // that were kept
    setting fixed;                     // options that are not searched
    std::vector<parameter> space;
    std::vector<trial> trials;
};

}  // namespace zeltrack
