// SPDX-License-Identifier: MIT
//
// Reading what is wanted, and means in a fixed order, so that the last digit never depends on who was first.
#include "tune/objective.h"

#include <fnmatch.h>

#include <algorithm>

#include "cli/failure.h"
#include "cli/number.h"
#include "eval/report.h"

namespace zeltrack {

static std::string read_term(std::string text, objective& result)
{
    double weight = 1;
    if (text[0] == '+' || text[0] == '-') {
        weight = text[0] == '-' ? -1 : 1;
        text.erase(0, 1);
    }
    const std::size_t times = text.find('*');
    if (times != std::string::npos) {
        double factor = 0;
        if (!parse_number(text.substr(0, times), range<double>{1e-9, 1e9}, factor))
            return expected("a weight above 0", text.substr(0, times));
        weight *= factor;
        text.erase(0, times + 1);
    }
    const figure* const found = find_figure(text);
    if (!found)
        return no_figure("the name of a figure", text);
    if (weight * found->better < 0)
        return expected(std::string(found->name) + (found->better < 0 ? " with a minus, since less is better"
                                                                      : " without a minus, since more is better"),
                        result.text);
    result.terms.push_back({weight, found});
    return "";
}

std::string read_objective(const std::string& text, objective& result)
{
    result = {text, {}};
    for (std::size_t at = 0;;) {
        const std::size_t end = std::min(text.find_first_of("+-", at + 1), text.size());
        std::string wrong = read_term(text.substr(at, end - at), result);
        if (!wrong.empty() || end == text.size())
            return wrong;
        at = end;
    }
}

// --- groups ----------------------------------------------------------------------------------------------------------

static bool matches(const std::string& name, const std::string& patterns)
{
    for (std::size_t at = 0; at <= patterns.size();) {
        const std::size_t comma = std::min(patterns.find(',', at), patterns.size());
        if (fnmatch(patterns.substr(at, comma - at).c_str(), name.c_str(), 0) == 0)
            return true;
        at = comma + 1;
    }
    return false;
}

std::vector<sequence_group> group_sequences(const std::vector<std::string>& names,
                                            const std::vector<std::string>& patterns)
{
    std::vector<sequence_group> groups;
    std::vector<bool> taken(patterns.size());
    for (std::size_t s = 0; s < names.size(); ++s) {
        const auto its = std::find_if(patterns.begin(), patterns.end(),
                                      [&](const std::string& pattern) { return matches(names[s], pattern); });
        const std::string& name = its == patterns.end() ? names[s] : *its;
        if (its != patterns.end())
            taken[static_cast<std::size_t>(its - patterns.begin())] = true;
        const auto same = [&](const sequence_group& it) { return its != patterns.end() && it.name == name; };
        const auto known = std::find_if(groups.begin(), groups.end(), same);
        if (known == groups.end())
            groups.push_back({name, {s}});
        else
            known->sequences.push_back(s);
    }
    const auto unused = std::find(taken.begin(), taken.end(), false);
    if (unused != taken.end())
        throw failure("--group: expected a pattern that matches a sequence, found " +
                          excerpt(patterns[static_cast<std::size_t>(unused - taken.begin())]),
                      exit_usage);
    return groups;
}

// --- the judge -------------------------------------------------------------------------------------------------------

judge::judge(const trial_set& trials, const objective& wanted, std::vector<sequence_group> groups)
    : groups_(std::move(groups))
{
    for (const objective::term& it : wanted.terms) {
        const auto column = std::find(trials.figures.begin(), trials.figures.end(), it.of->name);
        if (column == trials.figures.end())
            throw failure(std::string("the trials do not have ") + it.of->name);
        const double unit = it.of->shown == figure::kind::ratio ? 100 : 1;
        terms_.push_back({it.weight * unit, static_cast<std::size_t>(column - trials.figures.begin())});
    }
}

double judge::of_sequence(const trial& tried, std::size_t sequence) const
{
    double sum = 0;
    for (const term& it : terms_)
        sum += it.weight * tried.figures[sequence][it.column];
    return sum;
}

double judge::of_group(const trial& tried, std::size_t group) const
{
    double sum = 0;
    for (const std::size_t s : groups_[group].sequences)
        sum += of_sequence(tried, s);
    return sum / static_cast<double>(groups_[group].sequences.size());
}

double judge::of_all(const trial& tried) const
{
    double sum = 0;
    for (std::size_t g = 0; g < groups_.size(); ++g)
        sum += of_group(tried, g);
    return sum / static_cast<double>(groups_.size());
}

}  // namespace zeltrack
