// SPDX-License-Identifier: MIT
//
// One line of a file: its fields, and the checked numbers of a row. The functions return what is wrong, if anything is.
#pragma once

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

std::optional<std::string> parse_detection(const field_list& fields, const mot_layout& layout, mot_row& row);
std::optional<std::string> parse_truth(const field_list& fields, int frame_base, mot_row& row);

}  // namespace zeltrack
