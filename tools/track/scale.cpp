// SPDX-License-Identifier: MIT
//
// Choosing the scale from the boxes.
#include "track/scale.h"

#include <algorithm>
#include <cmath>

namespace zeltrack {

static double median(std::vector<double>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

double automatic_scale(const std::vector<mot_row>& rows)
{
    std::vector<double> sizes;
    for (const mot_row& row : rows)
        if (row.width > 0 && row.height > 0)
            sizes.push_back(std::sqrt(static_cast<double>(row.width) * row.height));
    if (sizes.empty())
        return 1;
    return std::clamp(gate_units / (0.5 * median(sizes)), min_scale, max_scale);
}

}  // namespace zeltrack
