// SPDX-License-Identifier: MIT
//
// Objects and tracks are paired greedily: first the pairs of the frame before, then by overlap.
#include "view/identity.h"

#include <algorithm>
#include <cstddef>

namespace zeltrack {

static constexpr double least_overlap = 0.5;

struct pairing {
    bool goes_on;
    double overlap;
    std::size_t object;
    std::size_t track;
};

static double shared_length(double a, double a_length, double b, double b_length)
{
    return std::max(0.0, std::min(a + a_length, b + b_length) - std::max(a, b));
}

static double overlap_of(const mot_row& a, const mot_row& b)
{
    const double shared =
        shared_length(a.left, a.width, b.left, b.width) * shared_length(a.top, a.height, b.top, b.height);
    return shared / (static_cast<double>(a.width) * a.height + static_cast<double>(b.width) * b.height - shared);
}

void identity_watch::follow(int frame, int object, int id)
{
    const auto [entry, fresh] = followers_.emplace(object, id);
    if (fresh || entry->second == id)
        return;
    changes_.push_back({frame, object, entry->second, id});
    entry->second = id;
}

void identity_watch::observe(int frame, const mot_row* first, const mot_row* last, const std::vector<track_row>& tracks)
{
    const auto objects = static_cast<std::size_t>(last - first);
    std::vector<pairing> pairs;
    for (std::size_t o = 0; o < objects; ++o) {
        const auto follower = followers_.find(first[o].id);
        for (std::size_t t = 0; t < tracks.size(); ++t) {
            const double overlap = overlap_of(first[o], tracks[t].box);
            if (overlap >= least_overlap)
                pairs.push_back({follower != followers_.end() && follower->second == tracks[t].box.id, overlap, o, t});
        }
    }
    std::sort(pairs.begin(), pairs.end(), [](const pairing& a, const pairing& b) {
        return a.goes_on != b.goes_on ? a.goes_on : a.overlap > b.overlap;
    });
    std::vector<bool> object_done(objects);
    std::vector<bool> track_done(tracks.size());
    for (const pairing& pair : pairs) {
        if (object_done[pair.object] || track_done[pair.track])
            continue;
        object_done[pair.object] = track_done[pair.track] = true;
        follow(frame, first[pair.object].id, tracks[pair.track].box.id);
    }
}

}  // namespace zeltrack
