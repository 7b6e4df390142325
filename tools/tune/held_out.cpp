// SPDX-License-Identifier: MIT
//
// One pass over the trials for all groups.
#include "tune/held_out.h"

namespace zeltrack {

static constexpr double rounding = 1e-9;  // of a difference of sums

std::optional<held_out_gain> hold_out(const std::vector<const trial*>& candidates, const trial& initial,
                                      const judge& by)
{
    const std::size_t count = by.groups().size();
    if (count < least_groups)
        return std::nullopt;
    held_out_gain result;
    std::vector<double> best(count);
    std::vector<double> objectives(count);
    for (const trial* candidate : candidates) {
        double sum = 0;
        for (std::size_t g = 0; g < count; ++g)
            sum += objectives[g] = by.of_group(*candidate, g);
        if (candidate == candidates.front())
            for (std::size_t g = 0; g < count; ++g)
                result.groups.push_back({nullptr, by.of_group(initial, g), 0});
        for (std::size_t g = 0; g < count; ++g) {
            held_out_group& group = result.groups[g];
            const double others = sum - objectives[g];
            if (group.chosen && others <= best[g] + rounding)
                continue;
            best[g] = others;
            group.chosen = candidate;
            group.after = objectives[g];
        }
    }
    for (const held_out_group& group : result.groups) {
        result.gain += (group.after - group.before) / static_cast<double>(count);
        result.better += group.after > group.before;
    }
    return result;
}

}  // namespace zeltrack
