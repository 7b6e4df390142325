// SPDX-License-Identifier: MIT
//
// Which settings to try next, given how good the earlier ones were. Pure: it runs nothing, and the same answers lead to
// the same questions, however many processes work on them.
//
// First the defaults and points that fill the space evenly: multiples of the generalised golden ratio, modulo 1 (M.
// Roberts, "The Unreasonable Effectiveness of Quasirandom Sequences", 2018), moved by an offset that depends on the
// seed (R. Cranley and T. Patterson, "Randomization of Number Theoretic Methods for Multiple Integration", 1976). Then
// the best few are improved along one parameter after another, by steps that become smaller. At last the best loses
// every option that it is not better with.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "tune/parameter.h"

namespace zeltrack {

class search {
public:
    search(std::vector<parameter> space, int trials, std::uint64_t seed);

    // The next settings, the first of all being the defaults; none if the search is over. They may be tried in any
    // order.
    std::vector<setting> next();

    // How good those were, in their order; nothing for one that was lost.
    void tell(const std::vector<std::optional<double>>& objectives);

    // The best of all; of equal ones that with the fewest options, and of these the first by name and value, as
    // findings has it. Null if every trial was lost.
    const setting* best() const;

private:
    enum class phase { spread, refine, simplify, over };
    using objectives_of = std::map<setting, std::optional<double>>;
    using entry = objectives_of::value_type;

    static bool better(const entry& a, const entry& b);
    bool full() const { return asked_.size() >= trials_; }
    bool propose(const setting& chosen);
    setting point();
    void spread();
    void choose_centres();
    void move_centres();
    void refine();
    void simplify();

    std::vector<parameter> space_;
    std::size_t trials_;
    std::vector<double> offset_;  // of the points, by parameter
    std::vector<double> ratio_;
    double points_ = 0;

    phase phase_ = phase::spread;
    std::set<setting> asked_;  // all that was proposed
    objectives_of tried_;
    std::size_t spread_end_ = 0;
    std::vector<setting> batch_;
    std::vector<setting> centres_;
    std::vector<std::vector<setting>> moves_;  // by centre
    std::size_t coordinate_ = 0;
    double step_ = 0;
};

}  // namespace zeltrack
