// SPDX-License-Identifier: MIT
//
// Every number is small because it is told from the one before.
#include "view/columns.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace zeltrack {

// --- boxes, scores and classes ---------------------------------------------------------------------------------------

static constexpr double grid_limit = 1 << 29;  // the difference of two still fits, and its double

grid::grid(const recording& recorded, double detail)
{
    if (!recorded.detections.empty())
        x_ = y_ = std::numeric_limits<float>::max();
    double reach = 0;
    for (const recorded_detection& d : recorded.detections) {
        x_ = std::min(x_, d.box.x);
        y_ = std::min(y_, d.box.y);
        reach = std::max({reach, std::fabs(double{d.box.x}), std::fabs(double{d.box.y})});
    }
    step_ = std::max(detail / 512, 4 * reach / grid_limit);
}

std::int32_t grid::whole(double value) const
{
    return static_cast<std::int32_t>(std::lround(std::clamp(value / step_, -grid_limit, grid_limit)));
}

grid_box grid::of(double x, double y, double w, double h) const
{
    return {whole(x - x_), whole(y - y_), whole(w), whole(h)};
}

// A NaN is as good as 0.
static std::uint32_t thousandths(double value)
{
    return value > 0 ? static_cast<std::uint32_t>(std::lround(std::min(value, 1e6) * 1000)) : 0;
}

labels::labels(const recording& recorded)
{
    if (!recorded.detections.empty()) {
        low = std::numeric_limits<float>::max();
        high = std::numeric_limits<float>::lowest();
    }
    for (const recorded_detection& d : recorded.detections) {
        low = std::min(low, d.score);
        high = std::max(high, d.score);
        classes.push_back(d.c);
    }
    std::sort(classes.begin(), classes.end());
    classes.erase(std::unique(classes.begin(), classes.end()), classes.end());
}

void labels::put(column& out, const recorded_detection& detection) const
{
    out.put(high > low ? thousandths((double{detection.score} - low) / (double{high} - low)) : 0);
    const auto place = std::lower_bound(classes.begin(), classes.end(), detection.c) - classes.begin();
    if (classes.size() > 1)
        out.put(static_cast<std::uint32_t>(place));
}

// --- the columns -----------------------------------------------------------------------------------------------------

static void put_difference(column& out, const grid_box& a, const grid_box& b)
{
    out.put_signed(a.x - b.x);
    out.put_signed(a.y - b.y);
    out.put_signed(a.w - b.w);
    out.put_signed(a.h - b.h);
}

column pack_lives(const recording& recorded)
{
    column out;
    int birth = 0;
    int id = 0;
    for (const life& l : recorded.lives) {
        out.put(static_cast<std::uint32_t>(l.birth - birth));
        birth = l.birth;
        out.put(static_cast<std::uint32_t>(l.rows.size()));
        out.put(static_cast<std::uint32_t>(l.end));
        out.put(static_cast<std::uint32_t>(l.confirmed + 1));
        if (l.confirmed >= 0)
            out.put_signed(l.id - id);
        id = std::max(id, l.id);
        out.put(static_cast<std::uint32_t>(l.forgotten.size()));
        for (const int row : l.forgotten)
            out.put(static_cast<std::uint32_t>(row));
    }
    return out;
}

static void put_association(column& out, const recorded_detection& d)
{
    constexpr unsigned started_bit = 8;
    const association& why = d.why;
    out.put(static_cast<unsigned>(why.result) | (d.started ? started_bit : 0));
    out.put(static_cast<std::uint32_t>(why.nearest + 1));
    if (why.nearest < 0)
        return;
    out.put(thousandths(std::sqrt(why.distance)));  // of a unit, of which the gate has 10
    out.put(thousandths(why.overlap));
    if (why.rival >= 0)
        out.put(static_cast<std::uint32_t>(why.rival));
}

column pack_detections(const recording& recorded, const grid& steps, const labels& named)
{
    column out;
    auto d = recorded.detections.begin();
    for (const int count : recorded.detections_of_frame) {
        out.put(static_cast<std::uint32_t>(count));
        for (const auto last = d + count; d != last; ++d) {
            const grid_box box = steps.of(d->box);
            out.put(static_cast<std::uint32_t>(box.x));  // the origin is the least of all
            out.put(static_cast<std::uint32_t>(box.y));
            out.put_signed(box.w);
            out.put_signed(box.h);
            named.put(out, *d);
            put_association(out, *d);
        }
    }
    return out;
}

static bool same(const centre_box& a, const centre_box& b)
{
    return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h;
}

column pack_rows(const recording& recorded, const grid& steps)
{
    std::vector<std::size_t> first_of_frame(1);
    for (const int count : recorded.detections_of_frame)
        first_of_frame.push_back(first_of_frame.back() + static_cast<std::size_t>(count));

    column out;
    for (const life& l : recorded.lives) {
        const life_row* before = nullptr;
        for (const life_row& row : l.rows) {
            const auto frame = static_cast<std::size_t>(l.birth - 1 + (&row - l.rows.data()));
            if (row.detection >= 0) {
                const auto n = static_cast<std::size_t>(row.detection);
                const grid_box det = steps.of(recorded.detections[first_of_frame[frame] + n].box);
                out.put(static_cast<std::uint32_t>(row.detection) + 2);
                if (before) {
                    put_difference(out, steps.of(row.predicted), det);
                    put_difference(out, steps.of(row.box), det);
                }
            } else if (same(row.predicted, before->predicted)) {
                out.put(0);
            } else {
                out.put(1);
                put_difference(out, steps.of(row.predicted), steps.of(row.box));
            }
            before = &row;
        }
    }
    return out;
}

column pack_truth(std::vector<mot_row> rows, const grid& steps, double scale)
{
    std::stable_sort(rows.begin(), rows.end(), [](const mot_row& a, const mot_row& b) { return a.id < b.id; });
    column out;
    int id = 0;
    int frame = 0;
    grid_box before{};
    for (const mot_row& row : rows) {
        const grid_box box = steps.of((row.left + row.width / 2.0) * scale, (row.top + row.height / 2.0) * scale,
                                      row.width * scale, row.height * scale);
        out.put_signed(row.id - id);
        out.put_signed(row.frame - frame);
        put_difference(out, box, before);
        id = row.id;
        frame = row.frame;
        before = box;
    }
    return out;
}

column pack_changes(const std::vector<identity_change>& changes)
{
    column out;
    for (const identity_change& change : changes)
        for (const int value : {change.frame, change.object, change.before, change.after})
            out.put_signed(value);
    return out;
}

}  // namespace zeltrack
