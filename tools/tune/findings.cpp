// SPDX-License-Identifier: MIT
//
// Ranking and the effects of single options.
#include "tune/findings.h"

#include <algorithm>
#include <map>

#include "cli/failure.h"

namespace zeltrack {

using trials_by_setting = std::map<setting, ranked_trial>;

static bool better(const ranked_trial& a, const ranked_trial& b)
{
    if (a.objective != b.objective)
        return a.objective > b.objective;
    if (a.of->chosen.size() != b.of->chosen.size())
        return a.of->chosen.size() < b.of->chosen.size();
    return a.of->chosen < b.of->chosen;  // as in the search, and not the order of the files that they came from
}

static std::vector<option_effect> effects_of(const ranked_trial& best, const trials_by_setting& known)
{
    std::vector<option_effect> effects;
    for (const auto& [name, value] : best.of->chosen) {
        setting without = best.of->chosen;
        without.erase(name);
        const auto at = known.find(without);
        effects.push_back({name, {}});
        if (at != known.end())
            effects.back().loss = best.objective - at->second.objective;
    }
    return effects;
}

// Those with the fewest options first. Not by rank: between equals, that would ask the group that is held out.
static std::vector<const trial*> candidates_of(const trials_by_setting& known)
{
    std::vector<const trial*> candidates;
    for (const auto& [chosen, it] : known)
        candidates.push_back(it.of);
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const trial* a, const trial* b) { return a->chosen.size() < b->chosen.size(); });
    return candidates;
}

findings find(const trial_set& trials, const judge& by)
{
    findings found;
    trials_by_setting known;
    for (const trial& it : trials.trials) {
        found.lost += it.figures.empty();
        if (it.jitter == 0 && !it.figures.empty())
            known.emplace(it.chosen, ranked_trial{&it, by.of_all(it)});
    }
    const auto initial = known.find({});
    if (initial == known.end())
        throw failure("expected a trial of the defaults, found none");
    found.initial = initial->second;
    for (const auto& [chosen, it] : known)
        found.ranking.push_back(it);
    std::sort(found.ranking.begin(), found.ranking.end(), better);
    const ranked_trial& best = found.ranking.front();
    found.gain = best.objective - found.initial.objective;
    found.effects = effects_of(best, known);

    found.held_out = hold_out(candidates_of(known), *found.initial.of, by);
    found.noise = noise_of(trials, best.of->chosen, by);
    return found;
}

std::string verdict(const findings& of)
{
    if (of.ranking.front().of->chosen.empty())
        return "No setting was better than the defaults.";
    if (of.noise && of.gain <= of.noise->limit)
        return "The gain is within the noise: the defaults are as good.";
    if (!of.held_out)
        return "";
    if (of.held_out->gain <= 0)
        return "No gain is left on what was held out: elsewhere the defaults are as good.";
    if (of.noise && of.held_out->gain <= of.noise->limit)
        return "What is left of the gain on what was held out is within the noise: elsewhere the defaults are as good.";
    return "";
}

}  // namespace zeltrack
