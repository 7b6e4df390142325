// SPDX-License-Identifier: MIT
//
// Gains are compared pairwise, since both settings see the same boxes.
#include "tune/noise.h"

#include <cmath>
#include <map>
#include <random>

namespace zeltrack {

void jitter_boxes(std::vector<mot_row>& rows, int number)
{
    std::mt19937 random(static_cast<std::uint32_t>(number));
    // not std::uniform_real_distribution, which may differ from one library to the next
    const auto shift = [&random] {
        return static_cast<float>((std::ldexp(static_cast<double>(random()), -31) - 1) * jitter_pixels);
    };
    for (mot_row& row : rows) {
        const float left = shift();
        const float top = shift();
        const float right = shift();
        const float bottom = shift();
        row.left += left;
        row.top += top;
        // a box that had an area keeps one
        row.width = row.width > 1 ? row.width + right - left : row.width;
        row.height = row.height > 1 ? row.height + bottom - top : row.height;
    }
}

std::optional<gain_noise> noise_of(const trial_set& trials, const setting& best, const judge& by)
{
    std::map<int, double> before;
    std::map<int, double> after;
    for (const trial& it : trials.trials) {
        if (it.jitter == 0 || it.figures.empty())
            continue;
        if (it.chosen.empty())
            before.emplace(it.jitter, by.of_all(it));
        if (it.chosen == best)
            after.emplace(it.jitter, by.of_all(it));
    }
    std::vector<double> gains;
    for (const auto& [jitter, objective] : after)
        if (const auto at = before.find(jitter); at != before.end())
            gains.push_back(objective - at->second);
    if (gains.size() < 2)
        return std::nullopt;
    const auto count = static_cast<double>(gains.size());
    gain_noise result;
    for (const double gain : gains)
        result.mean += gain / count;
    double squares = 0;
    for (const double gain : gains)
        squares += (gain - result.mean) * (gain - result.mean);
    result.limit = 2 * std::sqrt(squares / (count - 1));
    return result;
}

}  // namespace zeltrack
