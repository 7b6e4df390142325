// SPDX-License-Identifier: MIT
//
// A report is first a grid of cells; table and Markdown differ in how they draw it. CSV and JSON have every digit.
#include "eval/report.h"

#include <algorithm>

#include "cli/failure.h"
#include "cli/grid.h"
#include "cli/nearest.h"
#include "cli/number.h"

namespace zeltrack {

using columns_of_report = std::vector<report_column>;

static bool compared(const report& of)
{
    return of.trackers.size() > 1;
}

// --- columns ---------------------------------------------------------------------------------------------------------

const char default_columns[] = "HOTA,DetA,AssA,MOTA,IDF1,IDSW,Frag,FP,FN,MT,ML,ids";

const figure* find_figure(const std::string& name)
{
    static constexpr struct {
        std::string_view name, meant;
    } short_names[] = {{"TP", "CLR_TP"}, {"FP", "CLR_FP"}, {"FN", "CLR_FN"}, {"ids", "IDs"}};
    std::string_view meant = name;
    for (const auto& it : short_names)
        if (name == it.name)
            meant = it.meant;
    for (const figure& it : figures())
        if (meant == it.name)
            return &it;
    return nullptr;
}

static std::vector<std::string> names()
{
    std::vector<std::string> all;
    for (const figure& it : figures())
        all.emplace_back(it.name);
    return all;
}

std::string no_figure(const std::string& wanted, const std::string& name)
{
    return expected(wanted, name) + suggestion(name, names());
}

std::string read_columns(const std::string& text, std::vector<report_column>& columns)
{
    columns.clear();
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t comma = std::min(text.find(',', at), text.size());
        const std::string name = text.substr(at, comma - at);
        const figure* const found = find_figure(name);
        if (!found)
            return no_figure("names of figures, divided by commas", name);
        columns.push_back({name, found});
        at = comma + 1;
    }
    return "";
}

// --- numbers ---------------------------------------------------------------------------------------------------------

static std::string shown(const figure& it, const sequence_score& score)
{
    const double value = it.value(score);
    switch (it.shown) {
    case figure::kind::ratio:
        return to_fixed(100 * value, 2);
    case figure::kind::count:
        return to_fixed(value, 0);
    case figure::kind::sum:
        break;
    }
    return to_fixed(value, 2);
}

// Among sets of tracks that are not all alike in it.
static bool is_best(const figure& it, const std::vector<sequence_score>& scores, const sequence_score& score)
{
    if (it.better == 0)
        return false;
    bool differs = false;
    for (const sequence_score& other : scores) {
        const double lead = it.better * (it.value(other) - it.value(score));
        if (lead > 0)
            return false;
        differs = differs || lead < 0;
    }
    return differs;
}

// --- table and Markdown ----------------------------------------------------------------------------------------------

static void add_block(const report& of, const scored_sequence& sequence, const columns_of_report& columns,
                      std::vector<grid_row>& grid)
{
    if (compared(of) && grid.size() > 1)
        grid.emplace_back();
    for (std::size_t s = 0; s < sequence.scores.size(); ++s) {
        grid_row row = {{printable(sequence.name)}};
        if (compared(of))
            row.push_back({printable(of.trackers[s])});
        for (const report_column& column : columns)
            row.push_back({shown(*column.shown, sequence.scores[s]),
                           compared(of) && is_best(*column.shown, sequence.scores, sequence.scores[s])});
        grid.push_back(row);
    }
}

static std::vector<grid_row> grid_of(const report& of, const columns_of_report& columns)
{
    grid_row head = {{"sequence"}};
    if (compared(of))
        head.push_back({"tracks"});
    for (const report_column& column : columns)
        head.push_back({column.title});
    std::vector<grid_row> grid = {head};
    for (const scored_sequence& sequence : of.sequences)
        add_block(of, sequence, columns, grid);
    scored_sequence total = of.total;
    total.name = "COMBINED";
    add_block(of, total, columns, grid);
    return grid;
}

static std::string markdown(const std::vector<grid_row>& grid, std::size_t names)
{
    std::string out;
    for (const grid_row& row : grid) {
        if (row.empty())
            continue;
        for (const grid_cell& it : row) {
            std::string text;
            for (const char c : it.text)
                text.append(c == '|' ? "\\" : "").append(1, c);
            out += (&it == row.data() ? "| " : " | ") + (it.best ? "**" + text + "**" : text);
        }
        out += " |\n";
        if (&row != grid.data())
            continue;
        for (std::size_t c = 0; c < row.size(); ++c)
            out += c < names ? "|---" : "|---:";
        out += "|\n";
    }
    return out;
}

// --- CSV -------------------------------------------------------------------------------------------------------------

static std::string csv_field(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string out = "\"";
    for (const char c : text)
        out.append(c == '"' ? 2 : 1, c);
    return out + '"';
}

// The names that every row begins with.
static std::string csv_names(const report& of, const std::string& sequence, std::size_t tracker)
{
    return csv_field(sequence) + (compared(of) ? ',' + csv_field(of.trackers[tracker]) : "");
}

static std::string csv_head(const report& of)
{
    return compared(of) ? "sequence,tracks" : "sequence";
}

template <typename Each>
static void for_all(const report& of, const Each& each)
{
    for (const scored_sequence& sequence : of.sequences)
        for (std::size_t s = 0; s < sequence.scores.size(); ++s)
            each(sequence.name, s, sequence.scores[s]);
    for (std::size_t s = 0; s < of.total.scores.size(); ++s)
        each("COMBINED", s, of.total.scores[s]);
}

static std::string csv(const report& of, const columns_of_report& columns)
{
    std::string out = csv_head(of);
    for (const report_column& column : columns)
        out += ',' + column.title;
    out += '\n';
    for_all(of, [&](const std::string& name, std::size_t tracker, const sequence_score& score) {
        out += csv_names(of, name, tracker);
        for (const report_column& column : columns)
            out += ',' + to_text(column.shown->value(score));
        out += '\n';
    });
    return out;
}

std::string curves_of(const report& of)
{
    std::string out = csv_head(of) + ",threshold";
    for (const figure& it : figures())
        if (it.curve)
            out.append(",").append(it.name);
    out += '\n';
    for_all(of, [&](const std::string& name, std::size_t tracker, const sequence_score& score) {
        for (std::size_t t = 0; t < threshold_count; ++t) {
            out += csv_names(of, name, tracker) + ',' + to_fixed(score_thresholds[t], 2);
            for (const figure& it : figures())
                if (it.curve)
                    out += ',' + to_text(it.curve(score)[t]);
            out += '\n';
        }
    });
    return out;
}

std::string switches_of(const report& of)
{
    std::string out = csv_head(of) + ",frame,object,from,to,since\n";
    for (const scored_sequence& sequence : of.sequences)
        for (std::size_t s = 0; s < sequence.switches.size(); ++s)
            for (const identity_switch& it : sequence.switches[s]) {
                out += csv_names(of, sequence.name, s);
                for (const int value : {it.frame, it.object, it.from, it.to, it.since})
                    out += ',' + to_text(value);
                out += '\n';
            }
    return out;
}

// --- JSON ------------------------------------------------------------------------------------------------------------

static std::string json_string(const std::string& text)
{
    std::string out = "\"";
    for (const char c : printable(text))
        out.append(c == '"' || c == '\\' ? "\\" : "").append(1, c);
    return out + '"';
}

static std::string json_value(const figure& it, const sequence_score& score)
{
    if (!it.curve)
        return to_text(it.value(score));
    std::string out;
    for (const double value : it.curve(score))
        out += (out.empty() ? "[" : ", ") + to_text(value);
    return out + ']';
}

static std::string json_of(const sequence_score& score, bool total, const std::string& indent)
{
    std::string out = "{";
    const char* group = "";
    for (const figure& it : figures()) {
        // sequences may run at different rates: a sum of their frames says nothing
        if (total && std::string_view(it.name) == "Frames")
            continue;
        if (std::string_view(group) == it.group) {
            out += ",\n";
        } else {
            if (*group)
                out.append("\n").append(indent).append("  },");
            out.append("\n").append(indent).append("  \"").append(it.group).append("\": {\n");
        }
        group = it.group;
        out.append(indent).append("    \"").append(it.name).append("\": ").append(json_value(it, score));
    }
    return out + "\n" + indent + "  }\n" + indent + '}';
}

static std::string json_of_tracker(const report& of, std::size_t tracker, const std::string& indent)
{
    std::string out = "{\n";
    for (const scored_sequence& sequence : of.sequences)
        out += indent + "  " + json_string(sequence.name) + ": " +
               json_of(sequence.scores[tracker], false, indent + "  ") + ",\n";
    return out + indent + "  \"combined\": " + json_of(of.total.scores[tracker], true, indent + "  ") + "\n" + indent +
           '}';
}

static std::string json(const report& of)
{
    if (!compared(of))
        return json_of_tracker(of, 0, "") + '\n';
    std::string out;
    for (std::size_t s = 0; s < of.trackers.size(); ++s)
        out += (out.empty() ? "{\n  " : ",\n  ") + json_string(of.trackers[s]) + ": " + json_of_tracker(of, s, "  ");
    return out + "\n}\n";
}

std::string to_text(const report& of, report_format format, const columns_of_report& columns)
{
    const std::size_t names = compared(of) ? 2 : 1;
    switch (format) {
    case report_format::table:
        return to_table(grid_of(of, columns), names);
    case report_format::markdown:
        return markdown(grid_of(of, columns), names);
    case report_format::csv:
        return csv(of, columns);
    case report_format::json:
        break;
    }
    return json(of);
}

}  // namespace zeltrack
