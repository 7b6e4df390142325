// SPDX-License-Identifier: MIT
//
// CLEAR (Bernardin and Stiefelhagen 2008): frame by frame, an object keeps its track as long as their boxes match.
#include <algorithm>

#include "eval/figures.h"

namespace zeltrack {

// More than any sum of overlaps in a frame, so that first as many objects as possible keep their tracks.
static constexpr double kept_bonus = 1000;

void clear_figures::follow(const scene& of, int frame, std::uint32_t shared, std::uint32_t object, std::uint32_t track)
{
    memory& known = memories_[object];
    if (known.track != assignment::none && known.track != track)
        switches.push_back(
            {frame, of.truth->set.ids[object], of.tracks.ids[known.track], of.tracks.ids[track], frame - known.frame});
    matches.push_back({frame, of.truth->set.ids[object], of.tracks.ids[track]});
    // what matters is the frame before that holds both, be the object in it or not
    if (known.shared == 0 || known.shared + 1 != shared)
        ++known.starts;
    ++known.assigned;
    known.track = track;
    known.shared = shared;
    known.frame = frame;
}

void clear_figures::match(const scene& of, const shared_frame& in, std::uint32_t shared)
{
    edges_.clear();
    for (std::size_t p = in.first_pair; p < in.first_pair + in.pairs; ++p) {
        const overlap_pair& pair = of.pairs[p];
        if (pair.overlap < match_overlap - overlap_rounding)
            continue;
        const memory& known = memories_[of.object_of(in, pair)];
        const bool kept = known.shared != 0 && known.shared + 1 == shared && known.track == of.track_of(in, pair);
        edges_.push_back({pair.truth, pair.track, pair.overlap + (kept ? kept_bonus : 0)});
    }
    const auto& taken = assignment_.solve(in.objects.count, in.tracks.count, edges_.data(), edges_.size());
    for (std::uint32_t o = 0; o < in.objects.count; ++o) {
        if (taken[o] == assignment::none)
            continue;
        const auto [truth, track, weight] = edges_[taken[o]];
        ++matched_;
        overlaps_ += weight < kept_bonus ? weight : weight - kept_bonus;
        follow(of, in.frame, shared, of.truth->set.who[in.objects.first + truth],
               of.tracks.who[in.tracks.first + track]);
    }
}

void clear_figures::score(const scene& of, clear_score& result)
{
    memories_.assign(of.truth->set.ids.size(), memory{});
    switches.clear();
    matches.clear();
    matched_ = overlaps_ = 0;
    std::uint32_t shared = 0;
    for (const shared_frame& in : of.frames)
        if (in.counted)
            match(of, in, ++shared);
    std::sort(switches.begin(), switches.end(), [](const identity_switch& a, const identity_switch& b) {
        return a.frame != b.frame ? a.frame < b.frame : a.object < b.object;
    });

    result = {};
    result.tp = matched_;
    result.fn = of.truth->boxes - matched_;
    result.fp = of.boxes - matched_;
    result.idsw = static_cast<double>(switches.size());
    result.motp_sum = overlaps_;
    for (std::size_t o = 0; o < memories_.size(); ++o) {
        result.frag += std::max(0.0, memories_[o].starts - 1);
        const double share = memories_[o].assigned / std::max(1.0, of.truth->frames_of[o]);
        if (of.truth->frames_of[o] > 0)
            ++(share > 0.8 ? result.mt : share >= 0.2 ? result.pt : result.ml);
    }
    if (of.truth->boxes > 0 && of.boxes > 0) {
        result.frames = of.truth->length;
        form_ratios(result);
    } else {
        result.mlr = 1;
    }
}

}  // namespace zeltrack
