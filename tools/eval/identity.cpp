// SPDX-License-Identifier: MIT
//
// Identity (Ristani et al. 2016): one assignment of objects to tracks for the whole sequence.
#include "eval/figures.h"

namespace zeltrack {

void identity_figures::score(const scene& of, identity_score& result)
{
    edges_.clear();
    for (const link& l : of.links)
        edges_.push_back({l.object, l.track, 0});
    for (std::size_t p = 0; p < of.pairs.size(); ++p)
        if (of.pairs[p].overlap >= match_overlap)
            ++edges_[of.link_of[p]].weight;

    result = {};
    for (const std::uint32_t e :
         assignment_.solve(of.truth->set.ids.size(), of.tracks.ids.size(), edges_.data(), edges_.size()))
        result.idtp += e == assignment::none ? 0 : edges_[e].weight;
    result.idfn = of.truth->boxes - result.idtp;
    result.idfp = of.boxes - result.idtp;
    form_ratios(result);
}

}  // namespace zeltrack
