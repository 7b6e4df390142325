// SPDX-License-Identifier: MIT
//
// The contest of a frame's detections for the tracks, told again. The outcome is taken from the records, since sums
// rounded here need not be the tracker's to the last bit.
#include "view/fate.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "track/scale.h"

namespace zeltrack {

static float shared_length(float x1, float w1, float x2, float w2)
{
    return std::min(x1 + w1 / 2, x2 + w2 / 2) - std::max(x1 - w1 / 2, x2 - w2 / 2);
}

// Of boxes without an area: NaN, which exceeds no threshold.
static float overlap_of(const predicted_track& track, const det_obj_t& det)
{
    const float w = shared_length(track.x, track.w, det.x, det.w);
    const float h = shared_length(track.y, track.h, det.y, det.h);
    const float shared = w > 0 && h > 0 ? w * h : 0;
    return shared / (track.w * track.h + det.w * det.h - shared);
}

static float distance_of(const predicted_track& track, const det_obj_t& det)
{
    const float dx = track.x - det.x;
    const float dy = track.y - det.y;
    return dx * dx + dy * dy;
}

// The nearest track of the detection's class, the older one of two.
static int nearest_of(const tracker_t& tracker, const std::vector<predicted_track>& tracks, const det_obj_t& det)
{
    int nearest = -1;
    float least = std::numeric_limits<float>::infinity();
    for (std::size_t t = 0; t < tracks.size(); ++t) {
        const float d = distance_of(tracks[t], det);
        if ((tracker.ignore_class != 0 || tracks[t].c == det.c) && d < least) {
            nearest = static_cast<int>(t);
            least = d;
        }
    }
    return nearest;
}

static bool overlaps_enough(const tracker_t& tracker, const fate& f)
{
    return (f.distance <= tracker.euc_thresh ? 1.0F : f.overlap) > tracker.iou_thresh;
}

// Detection n, whose nearest track is within the gate, claims that track. `claimant` is the detection that holds it so
// far; every one but the last turns out to be displaced.
static void claim(const tracker_t& tracker, const predicted_track& track, int n, std::vector<fate>& fates,
                  int& claimant)
{
    fate& mine = fates[static_cast<std::size_t>(n)];
    fate* holder = claimant < 0 ? nullptr : &fates[static_cast<std::size_t>(claimant)];
    if (track.match_idx != n) {
        if (track.match_idx < 0 || !overlaps_enough(tracker, mine)) {
            mine.what = verdict::refused;
            return;
        }
        if (holder && (claimant == track.match_idx || holder->distance <= mine.distance)) {
            mine.what = verdict::lost;
            mine.rival = claimant;
            return;
        }
    }
    if (holder) {
        holder->what = verdict::displaced;
        holder->rival = n;
    }
    mine.what = verdict::took;
    claimant = n;
}

std::vector<fate> find_fates(const tracker_t& tracker, const std::vector<predicted_track>& tracks)
{
    constexpr auto gate = static_cast<float>(gate_units * gate_units);
    std::vector<fate> fates(static_cast<std::size_t>(tracker.ncurobjs));
    for (std::size_t t = 0; t < tracks.size(); ++t)
        if (tracks[t].match_idx >= 0)
            fates[static_cast<std::size_t>(tracks[t].match_idx)].nearest = static_cast<int>(t);

    std::vector<int> claimants(tracks.size(), -1);
    for (int n = 0; n < tracker.ncurobjs; ++n) {
        const det_obj_t& det = tracker.cur_obj[n];
        fate& mine = fates[static_cast<std::size_t>(n)];
        if (mine.nearest < 0)
            mine.nearest = nearest_of(tracker, tracks, det);
        if (mine.nearest < 0)
            continue;
        const auto t = static_cast<std::size_t>(mine.nearest);
        mine.distance = distance_of(tracks[t], det);
        mine.overlap = overlap_of(tracks[t], det);
        if (tracker.match_score[n] < gate)
            claim(tracker, tracks[t], n, fates, claimants[t]);
    }
    return fates;
}

}  // namespace zeltrack
