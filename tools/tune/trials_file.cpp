// SPDX-License-Identifier: MIT
//
// Only this file and the report know JSON.
#include "tune/trials_file.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <istream>
#include <nlohmann/json.hpp>

#include "cli/failure.h"
#include "cli/number.h"

namespace zeltrack {

using json = nlohmann::ordered_json;

// A number where it is one, so that others need not parse it.
static json json_value(const std::string& value)
{
    double number = 0;
    if (!parse_number(value, range<double>{-1e15, 1e15}, number) || to_text(number) != value)
        return value;
    if (std::floor(number) == number)
        return static_cast<std::int64_t>(number);
    return number;
}

static json json_setting(const setting& of, const std::vector<parameter>& space)
{
    json result = json::object();
    for (const parameter& it : space)
        result[it.name] = nullptr;
    for (const auto& [name, value] : of)
        result[name] = json_value(value);
    return result;
}

std::string trial_line(const trial& of, const trial_set& set, const judge& by)
{
    json line = {{"seed", of.seed}, {"trial", of.number}, {"jitter", of.jitter}};
    line["setting"] = json_setting(of.chosen, set.space);
    line["fixed"] = json_setting(set.fixed, {});
    if (of.figures.empty()) {
        line["lost"] = printable(of.lost);
        return line.dump() + '\n';
    }
    line["objective"] = by.of_all(of);
    for (std::size_t s = 0; s < set.sequences.size(); ++s)
        for (std::size_t f = 0; f < set.figures.size(); ++f)
            line["sequences"][printable(set.sequences[s])][set.figures[f]] = of.figures[s][f];
    return line.dump(-1, ' ', false, json::error_handler_t::replace) + '\n';
}

// --- reading ---------------------------------------------------------------------------------------------------------

static setting read_setting(const json& from)
{
    setting result;
    for (const auto& [name, value] : from.items()) {
        if (value.is_null())
            continue;
        if (!value.is_string() && !value.is_number())
            throw failure("expected a number or a text for " + printable(name));
        result[name] = value.is_string() ? value.get<std::string>() : to_text(value.get<double>());
    }
    return result;
}

static parameter& parameter_of(trial_set& set, const std::string& name)
{
    const auto same = [&name](const parameter& it) { return it.name == name; };
    const auto known = std::find_if(set.space.begin(), set.space.end(), same);
    if (known != set.space.end())
        return *known;
    set.space.push_back(known_parameter(name));
    set.space.back().low = 1;
    set.space.back().high = 0;  // no value yet
    return set.space.back();
}

static void widen(parameter& range, const std::string& value)
{
    if (range.name == "removal" && !value.empty() && value.back() == 's' && range.unit.empty()) {
        const parameter frames = range;
        read_parameter("removal=0.1:3s:log", range);
        range.low = frames.low;
        range.high = frames.high;
    }
    const auto number = number_of(range, value);
    if (!number)
        return;
    const bool first = range.low > range.high;
    range.low = first ? *number : std::min(range.low, *number);
    range.high = first ? *number : std::max(range.high, *number);
}

static void read_figures(const json& from, trial_set& set, trial& it)
{
    if (set.sequences.empty()) {
        for (const auto& [name, figures] : from.items())
            set.sequences.push_back(name);
        if (!set.sequences.empty())
            for (const auto& [name, value] : from.begin()->items())
                set.figures.push_back(name);
    }
    if (from.size() != set.sequences.size())
        throw failure("expected " + to_text(set.sequences.size()) + " sequences as in the trials before, found " +
                      to_text(from.size()));
    for (const std::string& name : set.sequences) {
        if (!from.contains(name))
            throw failure("expected the sequence " + printable(name) + " as in the trials before");
        std::vector<double> figures;
        figures.reserve(set.figures.size());
        for (const std::string& figure : set.figures)
            figures.push_back(from.at(name).at(figure).get<double>());
        it.figures.push_back(figures);
    }
}

static void read_line(const std::string& text, bool first, trial_set& set)
{
    const json line = json::parse(text);
    trial it;
    it.seed = line.at("seed").get<std::uint64_t>();
    it.number = line.at("trial").get<int>();
    it.jitter = line.at("jitter").get<int>();
    it.chosen = read_setting(line.at("setting"));
    const setting fixed = read_setting(line.at("fixed"));
    if (first)
        set.fixed = fixed;
    else if (fixed != set.fixed)
        throw failure("expected the fixed options " + printable(to_text(set.fixed)) +
                      " as in the trials before, found " + printable(to_text(fixed)));
    for (const auto& [name, value] : line.at("setting").items())
        parameter_of(set, name);
    for (const auto& [name, value] : it.chosen)
        widen(parameter_of(set, name), value);
    if (line.contains("lost"))
        it.lost = line["lost"].get<std::string>();
    else
        read_figures(line.at("sequences"), set, it);
    set.trials.push_back(it);
}

void read_trials(std::istream& in, const std::string& name, trial_set& set)
{
    std::string text;
    for (std::size_t number = 1; std::getline(in, text); ++number) {
        if (text.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        const std::string place = name + ':' + to_text(number) + ": ";
        try {
            read_line(text, set.trials.empty(), set);
        } catch (const json::exception&) {
            throw failure(place + expected("a trial as --trials-out writes it", text));
        } catch (const failure& wrong) {
            throw failure(place + wrong.what());
        }
    }
}

}  // namespace zeltrack
