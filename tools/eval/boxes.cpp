// SPDX-License-Identifier: MIT
//
// The arrangement costs one sort. Overlaps need the horizontal order: for each true box, only a run of the tracks can
// overlap it.
#include "eval/boxes.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace zeltrack {

void box_set::arrange(const score_row* rows, std::size_t count)
{
    source.resize(count);
    std::iota(source.begin(), source.end(), 0U);
    const auto earlier = [rows](std::uint32_t a, std::uint32_t b) { return rows[a].frame < rows[b].frame; };
    if (!std::is_sorted(source.begin(), source.end(), earlier))
        std::stable_sort(source.begin(), source.end(), earlier);
    // the identifier makes the order, and so all that follows, independent of that of the rows
    const auto before = [rows](std::uint32_t a, std::uint32_t b) {
        return rows[a].left != rows[b].left ? rows[a].left < rows[b].left : rows[a].id < rows[b].id;
    };
    frames.clear();
    for (std::uint32_t first = 0, last = 0; first < count; first = last) {
        const int frame = rows[source[first]].frame;
        while (last < count && rows[source[last]].frame == frame)
            ++last;
        std::sort(source.begin() + first, source.begin() + last, before);
        frames.push_back({frame, first, last - first});
    }
    boxes.clear();
    boxes.reserve(count);
    for (const std::uint32_t row : source) {
        const score_row& r = rows[row];
        boxes.push_back({r.left, r.top, r.left + r.width, r.top + r.height});
    }
}

// Identifiers mostly lie close together: then a table over their range spares both the sort and the searches.
bool box_set::number_by_table(const score_row* rows, std::size_t count)
{
    const auto [lowest, highest] =
        std::minmax_element(rows, rows + count, [](const score_row& a, const score_row& b) { return a.id < b.id; });
    const std::int64_t low = lowest->id;
    const auto span = static_cast<std::size_t>(highest->id - low + 1);
    if (span > 2 * count)
        return false;
    table_.assign(span, 0);
    for (std::size_t i = 0; i < count; ++i)
        table_[static_cast<std::size_t>(rows[i].id - low)] = 1;
    for (std::size_t i = 0; i < span; ++i)
        if (std::exchange(table_[i], static_cast<std::uint32_t>(ids.size())) != 0)
            ids.push_back(static_cast<int>(low + static_cast<std::int64_t>(i)));
    for (const std::uint32_t row : source)
        who.push_back(table_[static_cast<std::size_t>(rows[row].id - low)]);
    return true;
}

void box_set::number_identifiers(const score_row* rows, std::size_t count)
{
    ids.clear();
    who.clear();
    who.reserve(count);
    if (count == 0 || number_by_table(rows, count))
        return;
    for (std::size_t i = 0; i < count; ++i)
        ids.push_back(rows[i].id);
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    for (const std::uint32_t row : source) {
        const auto place = std::lower_bound(ids.begin(), ids.end(), rows[row].id) - ids.begin();
        who.push_back(static_cast<std::uint32_t>(place));
    }
}

std::optional<row_fault> box_set::find_twice()
{
    seen_.assign(ids.size(), 0);
    for (const frame_span& span : frames)
        for (std::uint32_t box = span.first; box < span.first + span.count; ++box) {
            std::uint32_t& latest = seen_[who[box]];
            if (latest > span.first) {
                const auto [earlier, later] = std::minmax(source[latest - 1], source[box]);
                return row_fault{row_fault::reason::identifier_twice, later, earlier};
            }
            latest = box + 1;
        }
    return std::nullopt;
}

std::optional<row_fault> box_set::assign(const score_row* rows, std::size_t count, int last_frame)
{
    for (std::size_t i = 0; i < count; ++i)
        if (rows[i].frame < 1 || rows[i].frame > last_frame)
            return row_fault{row_fault::reason::frame_outside, i, i};
    arrange(rows, count);
    number_identifiers(rows, count);
    return find_twice();
}

static double overlap_of(const edges& a, const edges& b)
{
    const double width = std::min(a.right, b.right) - std::max(a.left, b.left);
    const double height = std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
    if (!(width > 0 && height > 0))
        return 0;
    // sides are formed from edges throughout, so that boxes that coincide overlap by exactly 1
    const double shared = width * height;
    return shared / ((a.right - a.left) * (a.bottom - a.top) + (b.right - b.left) * (b.bottom - b.top) - shared);
}

bool overlap_finder::find(const box_set& truth, const frame_span& objects, const box_set& tracks,
                          const frame_span& found, std::size_t most, std::vector<overlap_pair>& pairs)
{
    const edges* const track = tracks.boxes.data() + found.first;
    reach_.clear();
    for (std::uint32_t t = 0; t < found.count; ++t)
        reach_.push_back(t > 0 ? std::max(reach_[t - 1], track[t].right) : track[t].right);

    std::uint32_t start = 0;
    for (std::uint32_t o = 0; o < objects.count; ++o) {
        const edges& object = truth.boxes[objects.first + o];
        while (start < found.count && reach_[start] <= object.left)
            ++start;
        for (std::uint32_t t = start; t < found.count && track[t].left < object.right; ++t) {
            const double overlap = overlap_of(object, track[t]);
            if (overlap > 0)
                pairs.push_back({o, t, overlap});
        }
        if (pairs.size() > most)
            return false;
    }
    return true;
}

}  // namespace zeltrack
