// SPDX-License-Identifier: MIT
//
// Numbers are rounded alike everywhere: two decimals of what a table of figures shows.
#include "tune/table.h"

#include <algorithm>

#include "cli/failure.h"
#include "cli/grid.h"
#include "cli/number.h"

namespace zeltrack {

static constexpr std::size_t most_ranks = 10;

static std::string shown(double value)
{
    return to_fixed(value, 2);
}

static std::string signed_number(double value)
{
    const std::string text = shown(value);
    return text[0] == '-' || text == "0.00" ? text : '+' + text;
}

static std::string value_of(const setting& chosen, const parameter& it)
{
    const auto at = chosen.find(it.name);
    return at == chosen.end() ? it.usual : at->second;
}

// --- the gain --------------------------------------------------------------------------------------------------------

static std::string averaged_over(const tuning& of)
{
    const std::size_t sequences = of.trials.sequences.size();
    const std::size_t groups = of.by.groups().size();
    std::string text = to_text(sequences) + (sequences == 1 ? " sequence" : " sequences");
    if (groups != sequences)
        text += " in " + to_text(groups) + (groups == 1 ? " group" : " groups");
    return (sequences == 1 ? "on " : "mean over ") + text;
}

static std::string held_out_line(const tuning& of)
{
    if (!of.found.held_out)
        return "held out  nothing: that takes three sequences or groups, so nobody knows what is left of the gain "
               "elsewhere\n";
    const held_out_gain& held = *of.found.held_out;
    return "held out  " + shown(of.found.initial.objective + held.gain) + "  " + signed_number(held.gain) +
           "  chosen without the sequences that it is scored on; better on " + to_text(held.better) + " of " +
           to_text(held.groups.size()) + '\n';
}

static std::string gain_lines(const tuning& of)
{
    const findings& found = of.found;
    std::string text = printable(of.wanted.text) + ", " + averaged_over(of) + "\n\n" + "defaults  " +
                       shown(found.initial.objective) + "\nbest      " + shown(found.ranking[0].objective) + "  " +
                       signed_number(found.gain);
    if (found.noise)
        text +=
            "  noise up to " + shown(found.noise->limit) + ", by boxes moved by " + to_text(jitter_pixels) + " pixels";
    text += '\n' + held_out_line(of);
    const std::string words = verdict(found);
    return words.empty() ? text : text + words + '\n';
}

// --- tables ----------------------------------------------------------------------------------------------------------

static std::string effect_of(const findings& found, const std::string& name)
{
    for (const option_effect& it : found.effects)
        if (it.name == name)
            return it.loss ? signed_number(-*it.loss) : "not tried";
    return "";
}

static std::string option_table(const tuning& of)
{
    std::vector<grid_row> grid = {{{"option"}, {"default"}, {"best"}, {"back to default"}}};
    for (const parameter& it : of.trials.space)
        grid.push_back(
            {{it.name}, {it.usual}, {value_of(of.found.ranking[0].of->chosen, it)}, {effect_of(of.found, it.name)}});
    return to_table(grid, 1);
}

static std::string ranking_table(const tuning& of)
{
    grid_row head = {{"rank"}, {printable(of.wanted.text)}};
    for (const parameter& it : of.trials.space)
        head.push_back({it.name});
    std::vector<grid_row> grid = {head};
    const auto add = [&](const std::string& rank, const ranked_trial& it) {
        grid_row row = {{rank}, {shown(it.objective)}};
        for (const parameter& column : of.trials.space)
            row.push_back({value_of(it.of->chosen, column)});
        grid.push_back(row);
    };
    for (std::size_t n = 0; n < std::min(most_ranks, of.found.ranking.size()); ++n)
        add(to_text(n + 1), of.found.ranking[n]);
    add("defaults", of.found.initial);
    return to_table(grid, 1);
}

static std::string sequence_table(const tuning& of)
{
    std::vector<grid_row> grid = {{{"sequence"}, {"defaults"}, {"best"}, {"gain"}, {"held out"}}};
    const findings& found = of.found;
    for (std::size_t g = 0; g < of.by.groups().size(); ++g)
        for (const std::size_t s : of.by.groups()[g].sequences) {
            const double before = of.by.of_sequence(*found.initial.of, s);
            const double after = of.by.of_sequence(*found.ranking[0].of, s);
            std::string held;
            if (found.held_out)
                held = signed_number(of.by.of_sequence(*found.held_out->groups[g].chosen, s) - before);
            grid.push_back({{printable(of.trials.sequences[s])},
                            {shown(before)},
                            {shown(after)},
                            {signed_number(after - before)},
                            {held}});
        }
    return to_table(grid, 1);
}

std::string result_table(const tuning& of)
{
    return gain_lines(of) + '\n' + option_table(of) + '\n' + ranking_table(of) + '\n' + sequence_table(of);
}

// --- options ---------------------------------------------------------------------------------------------------------

static std::string as_comments(const std::string& text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        out += end > at ? "# " + text.substr(at, end - at) + '\n' : "#\n";
        at = end + 1;
    }
    return out;
}

std::string config_text(const tuning& of, const std::string& command)
{
    std::string text = as_comments(printable(command) + "\n\n" + gain_lines(of) + '\n' + sequence_table(of)) + '\n';
    for (const setting* options : {&of.trials.fixed, &of.found.ranking[0].of->chosen})
        for (const auto& [name, value] : *options)
            text.append(name).append(" = ").append(value).append("\n");
    return text;
}

}  // namespace zeltrack
