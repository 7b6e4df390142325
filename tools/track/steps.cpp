// SPDX-License-Identifier: MIT
//
// The points of the frame before, sorted by x.
#include "track/steps.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace zeltrack {

template <typename Point>
static double distance(const Point& a, const Point& b)
{
    return std::hypot(static_cast<double>(a.x) - b.x, static_cast<double>(a.y) - b.y);
}

// Outwards from the place of x in the sorted points, until x alone is too far.
double step_watch::nearest(const point& at) const
{
    const auto middle = std::lower_bound(before_.begin(), before_.end(), at, by_x);
    double best = std::numeric_limits<double>::infinity();
    for (auto it = middle; it != before_.end() && it->x - at.x < best; ++it)
        best = std::min(best, distance(*it, at));
    for (auto it = middle; it != before_.begin() && at.x - std::prev(it)->x < best; --it)
        best = std::min(best, distance(*std::prev(it), at));
    return best;
}

void step_watch::observe(const std::vector<const mot_row*>& given, const std::vector<track_row>& rows, double offset_x,
                         double offset_y)
{
    const auto centre = [offset_x, offset_y](const mot_row& row) {
        return point{static_cast<float>(row.left + row.width / 2 - offset_x),
                     static_cast<float>(row.top + row.height / 2 - offset_y)};
    };
    if (!before_.empty())
        for (const mot_row* row : given)
            distances_.push_back(nearest(centre(*row)));
    before_.clear();
    for (const mot_row* row : given)
        before_.push_back(centre(*row));
    for (const track_row& row : rows)
        before_.push_back(centre(row.box));
    std::sort(before_.begin(), before_.end(), by_x);
}

double step_watch::share_beyond(double gate) const
{
    if (distances_.empty())
        return 0;
    const auto beyond = std::count_if(distances_.begin(), distances_.end(), [gate](double d) { return d >= gate; });
    return static_cast<double>(beyond) / static_cast<double>(distances_.size());
}

double step_watch::reach(double share)
{
    if (distances_.empty())
        return 0;
    const auto at =
        distances_.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(distances_.size() - 1));
    std::nth_element(distances_.begin(), at, distances_.end());
    return *at;
}

}  // namespace zeltrack
