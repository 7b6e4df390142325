// SPDX-License-Identifier: MIT
//
// Figures as text, in the four formats of a report.
#pragma once

#include <string>
#include <vector>

#include "eval/figure_list.h"
#include "eval/score.h"

namespace zeltrack {

struct report_column {
    std::string title;
    const figure* shown;
};

// By a figure's name, or TP, FP, FN and ids for those of CLEAR and the number of tracks. Null if there is none, of
// which no_figure() is the message.
const figure* find_figure(const std::string& name);
std::string no_figure(const std::string& wanted, const std::string& name);

// From "A,B,C", which are names of figures, or TP, FP, FN and ids for those of CLEAR and the number of tracks. Returns
// "" or what is wrong.
std::string read_columns(const std::string& text, std::vector<report_column>& columns);
extern const char default_columns[];

struct scored_sequence {
    std::string name;
    std::vector<sequence_score> scores;                  // by set of tracks
    std::vector<std::vector<identity_switch>> switches;  // likewise; none for the sum
};

// One sequence after another, and the sum over all last.
struct report {
    std::vector<std::string> trackers;
    std::vector<scored_sequence> sequences;
    scored_sequence total;
};

enum class report_format { table, csv, json, markdown };

std::string to_text(const report& of, report_format format, const std::vector<report_column>& columns);

// As CSV: a row for each identity switch; and one for each threshold of HOTA.
std::string switches_of(const report& of);
std::string curves_of(const report& of);

}  // namespace zeltrack
