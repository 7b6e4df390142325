// SPDX-License-Identifier: MIT
//
// The points of the frame before, sorted along one axis.
#include "track/steps.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace zeltrack {

static double squared_distance(float dx, float dy)
{
    return static_cast<double>(dx) * dx + static_cast<double>(dy) * dy;
}

// Outwards from the place of the point in the sorted ones, until their distance along the order alone is too far.
double step_watch::nearest(const point& at) const
{
    const auto middle = std::lower_bound(before_.begin(), before_.end(), at, earlier);
    double best = std::numeric_limits<double>::infinity();
    const auto closer = [&at, &best](const point& it) {
        const float along = it.along - at.along;
        if (!(squared_distance(along, 0) < best))
            return false;
        best = std::min(best, squared_distance(along, it.across - at.across));
        return true;
    };
    for (auto it = middle; it != before_.end() && closer(*it); ++it) {
    }
    for (auto it = middle; it != before_.begin() && closer(*std::prev(it)); --it) {
    }
    return std::sqrt(best);
}

// In the direction in which the points lie farther apart: sorted by x, a column of boxes would be one place.
void step_watch::sort_before()
{
    const auto spread = [this](float point::*axis) {
        const auto [low, high] = std::minmax_element(
            before_.begin(), before_.end(), [axis](const point& a, const point& b) { return a.*axis < b.*axis; });
        return before_.empty() ? 0 : (*high).*axis - (*low).*axis;
    };
    if (spread(&point::across) > spread(&point::along)) {
        turned_ = !turned_;
        for (point& it : before_)
            std::swap(it.along, it.across);
    }
    std::sort(before_.begin(), before_.end(), earlier);
}

void step_watch::observe(const std::vector<const mot_row*>& given, const std::vector<track_row>& rows, double offset_x,
                         double offset_y)
{
    const auto centre = [this, offset_x, offset_y](const mot_row& row) {
        const auto x = static_cast<float>(row.left + row.width / 2 - offset_x);
        const auto y = static_cast<float>(row.top + row.height / 2 - offset_y);
        return turned_ ? point{y, x} : point{x, y};
    };
    if (!before_.empty())
        for (const mot_row* row : given)
            distances_.push_back(nearest(centre(*row)));
    before_.clear();
    for (const mot_row* row : given)
        before_.push_back(centre(*row));
    for (const track_row& row : rows)
        before_.push_back(centre(row.box));
    sort_before();
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
