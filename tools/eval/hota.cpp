// SPDX-License-Identifier: MIT
//
// HOTA (Luiten et al. 2021): one assignment a frame serves all thresholds, and prefers pairs whose object and track
// belong together over the whole sequence.
#include <algorithm>
#include <cmath>

#include "eval/figures.h"

namespace zeltrack {

// The alignment of an object and a track: the frames they share, softly, among those of either.
void hota_figures::align(const scene& of)
{
    alignments_.assign(of.links.size(), 0);
    for (const shared_frame& in : of.frames) {
        object_sums_.assign(in.objects.count, 0);
        track_sums_.assign(in.tracks.count, 0);
        for (std::size_t p = in.first_pair; p < in.first_pair + in.pairs; ++p) {
            object_sums_[of.pairs[p].truth] += of.pairs[p].overlap;
            track_sums_[of.pairs[p].track] += of.pairs[p].overlap;
        }
        for (std::size_t p = in.first_pair; p < in.first_pair + in.pairs; ++p) {
            const auto [object, track, overlap] = of.pairs[p];
            alignments_[of.link_of[p]] += overlap / (object_sums_[object] + track_sums_[track] - overlap);
        }
    }
    for (std::size_t l = 0; l < alignments_.size(); ++l) {
        const double frames = of.truth->frames_of[of.links[l].object] + of.frames_of_track[of.links[l].track];
        alignments_[l] /= frames - alignments_[l];
    }
}

// How many of the thresholds an overlap reaches.
static std::size_t level_of(double overlap)
{
    const auto reached = [](double threshold, double value) { return value >= threshold - overlap_rounding; };
    const auto end = std::partition_point(score_thresholds.begin(), score_thresholds.end(),
                                          [&](double threshold) { return reached(threshold, overlap); });
    return static_cast<std::size_t>(end - score_thresholds.begin());
}

// What was gathered at the highest threshold reached also holds at those below.
template <typename Array>
static void spread_down(Array& values)
{
    for (std::size_t t = values.size() - 1; t > 0; --t)
        values[t - 1] += values[t];
}

// Leaves the sums of overlaps in loc_a.
void hota_figures::match(const scene& of, hota_score& result)
{
    matches_.clear();
    for (const shared_frame& in : of.frames) {
        edges_.clear();
        for (std::size_t p = in.first_pair; p < in.first_pair + in.pairs; ++p) {
            const auto [object, track, overlap] = of.pairs[p];
            edges_.push_back({object, track, alignments_[of.link_of[p]] * overlap});
        }
        for (const std::uint32_t e :
             assignment_.solve(in.objects.count, in.tracks.count, edges_.data(), edges_.size())) {
            const std::size_t level = e == assignment::none ? 0 : level_of(of.pairs[in.first_pair + e].overlap);
            if (level == 0)
                continue;
            matches_.push_back({of.link_of[in.first_pair + e], static_cast<std::uint32_t>(level)});
            ++result.tp[level - 1];
            result.loc_a[level - 1] += of.pairs[in.first_pair + e].overlap;
        }
    }
    spread_down(result.tp);
    spread_down(result.loc_a);
}

void hota_figures::associate(const scene& of, hota_score& result)
{
    std::sort(matches_.begin(), matches_.end(), [](const reached& a, const reached& b) { return a.link < b.link; });
    for (auto first = matches_.begin(), last = first; first != matches_.end(); first = last) {
        std::array<std::uint32_t, threshold_count> counts{};
        for (; last != matches_.end() && last->link == first->link; ++last)
            ++counts[last->level - 1];
        spread_down(counts);
        const double object_frames = of.truth->frames_of[of.links[first->link].object];
        const double track_frames = of.frames_of_track[of.links[first->link].track];
        for (std::size_t t = 0; t < threshold_count && counts[t] > 0; ++t) {
            const double m = counts[t];
            result.ass_a[t] += m * m / (object_frames + track_frames - m);
            result.ass_re[t] += m * m / object_frames;
            result.ass_pr[t] += m * m / track_frames;
        }
    }
}

void hota_figures::score(const scene& of, hota_score& result)
{
    result = {};
    align(of);
    match(of, result);
    associate(of, result);
    for (std::size_t t = 0; t < threshold_count; ++t) {
        result.fn[t] = of.truth->boxes - result.tp[t];
        result.fp[t] = of.boxes - result.tp[t];
        const double matches = std::max(1.0, result.tp[t]);
        result.ass_a[t] /= matches;
        result.ass_re[t] /= matches;
        result.ass_pr[t] /= matches;
        result.loc_a[t] = result.tp[t] > 0 ? result.loc_a[t] / result.tp[t] : 1;
    }
    if (of.truth->boxes > 0 && of.boxes > 0)
        form_ratios(result);
    else
        result.loc_a_0 = result.loc_a[0];
}

}  // namespace zeltrack
