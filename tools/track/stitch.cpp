// SPDX-License-Identifier: MIT
#include "track/stitch.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>

namespace zeltrack {

namespace {

constexpr double least_overlap = 0.3;
constexpr std::size_t last_steps = 5;

struct track {
    std::vector<const mot_row*> rows;
    std::size_t follows;  // the track whose identifier it takes; itself: none
    bool followed = false;

    const mot_row& first() const { return *rows.front(); }
    const mot_row& last() const { return *rows.back(); }
};

struct joint {
    double overlap;
    std::size_t earlier, later;
};

double shared(double a, double a_size, double b, double b_size)
{
    return std::max(0.0, std::min(a + a_size, b + b_size) - std::max(a, b));
}

double overlap_of(const mot_row& a, const mot_row& b)
{
    const double both = shared(a.left, a.width, b.left, b.width) * shared(a.top, a.height, b.top, b.height);
    const double all = static_cast<double>(a.width) * a.height + static_cast<double>(b.width) * b.height - both;
    return both > 0 ? both / all : 0;
}

// Where the track would be in a later frame, had it gone on as in its last steps.
mot_row continued(const track& it, int frame)
{
    const mot_row& before = *it.rows[it.rows.size() - std::min(it.rows.size(), last_steps + 1)];
    mot_row box = it.last();
    if (before.frame == box.frame)
        return box;
    const float steps = static_cast<float>(frame - box.frame) / static_cast<float>(box.frame - before.frame);
    box.left += steps * (box.left + box.width / 2 - before.left - before.width / 2);
    box.top += steps * (box.top + box.height / 2 - before.top - before.height / 2);
    return box;
}

std::vector<track> tracks_of(const std::vector<mot_row>& rows)
{
    std::vector<track> tracks;  // in the order of their first frames, as the rows are
    std::unordered_map<int, std::size_t> place;
    for (const mot_row& row : rows) {
        const auto at = place.emplace(row.id, tracks.size());
        if (at.second)
            tracks.push_back({{}, tracks.size()});
        tracks[at.first->second].rows.push_back(&row);
    }
    return tracks;
}

std::vector<joint> joints_of(const std::vector<track>& tracks, int gap)
{
    std::vector<joint> joints;
    const auto begins_later = [](int frame, const track& it) { return frame < it.first().frame; };
    for (std::size_t n = 0; n < tracks.size(); ++n) {
        const int end = tracks[n].last().frame;
        auto it = std::upper_bound(tracks.begin(), tracks.end(), end, begins_later);
        for (; it != tracks.end() && it->first().frame - end <= gap; ++it) {
            const double overlap = overlap_of(continued(tracks[n], it->first().frame), it->first());
            if (overlap > least_overlap && it->first().cls == tracks[n].last().cls)
                joints.push_back({overlap, n, static_cast<std::size_t>(it - tracks.begin())});
        }
    }
    std::stable_sort(joints.begin(), joints.end(),
                     [](const joint& a, const joint& b) { return a.overlap > b.overlap; });
    return joints;
}

}  // namespace

void stitch(std::vector<mot_row>& rows, int gap)
{
    std::vector<track> tracks = tracks_of(rows);
    for (const joint& it : joints_of(tracks, gap)) {
        if (tracks[it.earlier].followed || tracks[it.later].follows != it.later)
            continue;
        tracks[it.earlier].followed = true;
        tracks[it.later].follows = it.earlier;
    }
    std::unordered_map<int, int> names;
    for (const track& it : tracks) {  // earlier ones have theirs already
        const int before = tracks[it.follows].first().id;
        const auto named = names.find(before);
        names[it.first().id] = named == names.end() ? before : named->second;
    }
    for (mot_row& row : rows)
        row.id = names[row.id];
}

}  // namespace zeltrack
