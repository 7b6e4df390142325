// SPDX-License-Identifier: MIT
//
// Leave-one-out: what a setting is worth on sequences that had no part in choosing it. Every trial was scored on every
// sequence, so the setting that would be chosen without a group is the best of all trials on the others.
//
// The trials themselves come from one search, in which the group took part, and so the figure is still a little kind.
#pragma once

#include <optional>
#include <vector>

#include "tune/objective.h"

namespace zeltrack {

constexpr std::size_t least_groups = 3;

struct held_out_group {
    const trial* chosen;  // without the group
    double before;        // the objective on the group, with the defaults
    double after;         // with what was chosen without it
};

struct held_out_gain {
    std::vector<held_out_group> groups;
    double gain = 0;  // mean over the groups
    int better = 0;   // groups with a gain
};

// Candidates are in the order that decides among equals. Nothing with fewer than least_groups.
std::optional<held_out_gain> hold_out(const std::vector<const trial*>& candidates, const trial& initial,
                                      const judge& by);

}  // namespace zeltrack
