// SPDX-License-Identifier: MIT
//
// What the page shows, as JSON within it.
#include "tune/report.h"

#include <nlohmann/json.hpp>
#include <string_view>

#include "cli/failure.h"

namespace zeltrack {

using json = nlohmann::ordered_json;

extern const char report_template[];  // made by the build

// Words, such as auto, have no number and stand apart.
static json number_or_null(const parameter& of, const std::string& value)
{
    const auto number = number_of(of, value.empty() ? of.usual : value);
    return number ? json(*number) : json(nullptr);
}

static json parameters_of(const tuning& of)
{
    json list = json::array();
    for (const parameter& it : of.trials.space)
        list.push_back({{"name", it.name},
                        {"low", it.low},
                        {"high", it.high},
                        {"log", it.log},
                        {"unit", it.unit},
                        {"usual", it.usual}});
    return list;
}

// By rank, so that the best is the first; the values in the order of the parameters.
static json trials_of(const tuning& of)
{
    json list = json::array();
    for (const ranked_trial& it : of.found.ranking) {
        json numbers = json::array();
        for (const parameter& column : of.trials.space) {
            const auto at = it.of->chosen.find(column.name);
            numbers.push_back(number_or_null(column, at == it.of->chosen.end() ? "" : at->second));
        }
        list.push_back({{"objective", it.objective},
                        {"seed", it.of->seed},
                        {"trial", it.of->number},
                        {"setting", it.of->chosen},
                        {"values", numbers}});
    }
    return list;
}

static json sequences_of(const tuning& of, const std::vector<std::string>& views)
{
    json list = json::array();
    const findings& found = of.found;
    for (std::size_t g = 0; g < of.by.groups().size(); ++g)
        for (const std::size_t s : of.by.groups()[g].sequences) {
            json it = {{"name", printable(of.trials.sequences[s])},
                       {"group", printable(of.by.groups()[g].name)},
                       {"before", of.by.of_sequence(*found.initial.of, s)},
                       {"after", of.by.of_sequence(*found.ranking[0].of, s)},
                       {"heldOut", nullptr},
                       {"view", s < views.size() ? views[s] : ""}};
            if (found.held_out)
                it["heldOut"] = of.by.of_sequence(*found.held_out->groups[g].chosen, s);
            list.push_back(it);
        }
    return list;
}

static json report_data(const tuning& of, const std::string& command, const std::vector<std::string>& views)
{
    const findings& found = of.found;
    json data = {{"command", printable(command)},
                 {"objective", of.wanted.text},
                 {"groups", of.by.groups().size()},
                 {"before", found.initial.objective},
                 {"after", found.ranking[0].objective},
                 {"gain", found.gain},
                 {"heldOut", nullptr},
                 {"noise", nullptr},
                 {"lost", found.lost},
                 {"verdict", verdict(found)},
                 {"fixed", of.trials.fixed}};
    if (found.held_out)
        data["heldOut"] = {{"gain", found.held_out->gain}, {"better", found.held_out->better}};
    if (found.noise)
        data["noise"] = found.noise->limit;
    for (const option_effect& it : found.effects)
        data["losses"][it.name] = it.loss ? json(*it.loss) : json(nullptr);
    data["parameters"] = parameters_of(of);
    data["trials"] = trials_of(of);
    data["sequences"] = sequences_of(of, views);
    return data;
}

void append_report(std::string& page, const tuning& of, const std::string& command,
                   const std::vector<std::string>& views)
{
    const std::string_view whole = report_template;
    constexpr std::string_view mark = "{{data}}";
    const std::size_t at = whole.find(mark);
    page.append(whole.substr(0, at));
    // no text of the data can end the element that it is in
    for (const char c : report_data(of, command, views).dump(-1, ' ', true, json::error_handler_t::replace))
        page.append(c == '<' ? "\\u003c" : std::string(1, c));
    page.append(whole.substr(at + mark.size()));
}

}  // namespace zeltrack
