// SPDX-License-Identifier: MIT
//
// Decimal numbers of floats.
#include "eval/as_written.h"

#include <cmath>

namespace zeltrack {

double as_written(float value)
{
    constexpr int most_digits = 9;
    double unit = 1;
    for (int digits = 0; digits <= most_digits; ++digits) {
        const double decimal = std::nearbyint(value * unit) / unit;
        if (static_cast<float>(decimal) == value)
            return decimal;
        unit *= 10;
    }
    return value;
}

score_row to_score(const mot_row& row)
{
    return {
        row.frame, row.id, as_written(row.left), as_written(row.top), as_written(row.width), as_written(row.height)};
}

}  // namespace zeltrack
