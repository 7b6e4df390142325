// SPDX-License-Identifier: MIT
//
// The lines of a file: their fields, and the checked numbers of a row. The functions return what is wrong, if anything.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mot/mot.h"

namespace zeltrack {

using field_list = std::vector<std::string_view>;

// Without blanks at both ends, which includes the carriage return of a file from elsewhere.
std::string_view trimmed(std::string_view text);

void split(std::string_view line, field_list& fields);

// Gives the fields of each line that is not empty, with its number, until one is wrong. Memory is bounded, however long
// a line is.
using line_taker = std::function<std::optional<std::string>(std::size_t line, const field_list& fields)>;
std::optional<mot_error> read_lines(std::istream& in, const line_taker& take);

// A box to the last digit of its text, for what compares overlaps with thresholds.
struct precise_box {
    int frame = 0;
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    float conf = 1;
};

std::optional<std::string> parse_box(const field_list& fields, int frame_base, precise_box& box);
std::optional<std::string> parse_identifier(std::string_view text, int& id);

std::optional<std::string> parse_detection(const field_list& fields, const mot_layout& layout, mot_row& row);

}  // namespace zeltrack
