// SPDX-License-Identifier: MIT
//
// The phases of the search, each of which proposes a batch.
#include "tune/search.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

namespace zeltrack {

static constexpr std::size_t centre_count = 3;
static constexpr double first_step = 0.16;
static constexpr double least_step = 0.01;

// The positive root of x^(d + 1) = x + 1, by fixed-point iteration.
static double generalised_golden_ratio(std::size_t dimensions)
{
    double x = 2;
    for (int n = 0; n < 64; ++n)
        x = std::pow(1 + x, 1 / (static_cast<double>(dimensions) + 1));
    return x;
}

search::search(std::vector<parameter> space, int trials, std::uint64_t seed)
    : space_(std::move(space)), trials_(static_cast<std::size_t>(trials))
{
    std::mt19937_64 random(seed);
    const double golden = generalised_golden_ratio(space_.size());
    double ratio = 1;
    for (std::size_t d = 0; d < space_.size(); ++d) {
        offset_.push_back(std::ldexp(static_cast<double>(random() >> 11), -53));
        ratio_.push_back(ratio /= golden);
    }
}

std::vector<setting> search::next()
{
    while (batch_.empty() && phase_ != phase::over) {
        switch (phase_) {
        case phase::spread:
            spread();
            break;
        case phase::refine:
            refine();
            break;
        case phase::simplify:
            simplify();
            break;
        case phase::over:
            break;
        }
    }
    return batch_;
}

void search::tell(const std::vector<std::optional<double>>& objectives)
{
    for (std::size_t n = 0; n < batch_.size(); ++n)
        tried_.emplace(batch_[n], objectives[n]);
    batch_.clear();
}

bool search::better(const entry& a, const entry& b)
{
    if (a.second != b.second)
        return a.second > b.second;  // nothing is less than any number
    if (a.first.size() != b.first.size())
        return a.first.size() < b.first.size();
    return a.first < b.first;
}

const setting* search::best() const
{
    const auto at = std::min_element(tried_.begin(), tried_.end(), better);
    return at == tried_.end() || !at->second ? nullptr : &at->first;
}

// False if it is known already.
bool search::propose(const setting& chosen)
{
    if (!asked_.insert(chosen).second)
        return false;
    batch_.push_back(chosen);
    return true;
}

static void put(setting& chosen, const std::string& name, const std::string& value)
{
    if (value.empty())
        chosen.erase(name);
    else
        chosen[name] = value;
}

// --- points that fill the space --------------------------------------------------------------------------------------

setting search::point()
{
    setting chosen;
    ++points_;
    for (std::size_t d = 0; d < space_.size(); ++d) {
        const double place = offset_[d] + points_ * ratio_[d];
        put(chosen, space_[d].name, value_at(space_[d], place - std::floor(place)));
    }
    return chosen;
}

// Half of what is left of the trials, in batches that bound the memory of a long search. A small space may be exhausted
// before.
void search::spread()
{
    constexpr int most_repeats = 1000;
    constexpr std::size_t most_points = 1024;
    if (spread_end_ == 0)
        spread_end_ = asked_.size() + (trials_ - std::min(trials_, asked_.size()) + 1) / 2;
    const std::size_t wanted = std::min(spread_end_, asked_.size() + most_points);
    propose({});
    int repeats = 0;
    while (asked_.size() < wanted && repeats < most_repeats)
        repeats = propose(point()) ? 0 : repeats + 1;
    if (asked_.size() < spread_end_ && repeats < most_repeats)
        return;
    spread_end_ = 0;
    centres_.clear();
    phase_ = batch_.empty() ? phase::simplify : phase::refine;
}

// --- the best few, along one parameter after another -----------------------------------------------------------------

void search::choose_centres()
{
    std::vector<const entry*> all;
    for (const entry& it : tried_)
        if (it.second)
            all.push_back(&it);
    const std::size_t count = std::min(centre_count, all.size());
    std::partial_sort(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count), all.end(),
                      [](const entry* a, const entry* b) { return better(*a, *b); });
    for (std::size_t c = 0; c < count; ++c)
        centres_.push_back(all[c]->first);
    moves_.assign(count, {});
    coordinate_ = 0;
    step_ = first_step;
}

// To the best of what was tried along the latest parameter. Centres that meet become one.
void search::move_centres()
{
    std::vector<setting> moved;
    for (std::size_t c = 0; c < centres_.size(); ++c) {
        auto best = tried_.find(centres_[c]);
        for (const setting& move : moves_[c]) {
            const auto at = tried_.find(move);
            if (at != tried_.end() && better(*at, *best))
                best = at;
        }
        if (std::find(moved.begin(), moved.end(), best->first) == moved.end())
            moved.push_back(best->first);
    }
    centres_ = moved;
    moves_.assign(centres_.size(), {});
}

void search::refine()
{
    if (centres_.empty())
        choose_centres();
    move_centres();
    if (coordinate_ == space_.size()) {
        coordinate_ = 0;
        step_ /= 2;
    }
    if (full() || centres_.empty() || step_ < least_step) {
        phase_ = full() || centres_.empty() ? phase::simplify : phase::spread;
        return;
    }
    const parameter& along = space_[coordinate_++];
    for (std::size_t c = 0; c < centres_.size(); ++c) {
        const auto now = centres_[c].find(along.name);
        const double place = place_of(along, now == centres_[c].end() ? "" : now->second);
        for (const std::string& value :
             {value_at(along, place - step_), value_at(along, place + step_), std::string()}) {
            setting move = centres_[c];
            put(move, along.name, value);
            moves_[c].push_back(move);
            if (!full())
                propose(move);
        }
    }
}

// --- what the best does not need -------------------------------------------------------------------------------------

// Also beyond the number of trials: it tells what each option is good for.
void search::simplify()
{
    const setting* const from = best();
    if (from) {
        for (const auto& [name, value] : setting(*from)) {
            setting without = *from;
            without.erase(name);
            propose(without);
        }
    }
    if (batch_.empty())
        phase_ = phase::over;
}

}  // namespace zeltrack
