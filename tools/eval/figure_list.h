// SPDX-License-Identifier: MIT
//
// All figures by name, for whoever shows them.
#pragma once

#include <vector>

#include "eval/score.h"

namespace zeltrack {

struct figure {
    enum class kind { ratio, count, sum };  // shown in percent, whole, and with two decimals
    const char* group;                      // in JSON
    const char* name;
    kind shown;
    int better;  // 1: the larger, -1: the smaller, 0: neither
    double (*value)(const sequence_score& score);
    const threshold_curve& (*curve)(const sequence_score& score);  // null: not of thresholds; else value is its mean
};

const std::vector<figure>& figures();

}  // namespace zeltrack
