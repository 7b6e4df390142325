// SPDX-License-Identifier: MIT
//
// What is searched: options of track, each with a range. A setting holds their values as a user would type them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zeltrack {

// By the option's long name. What is not in it has its default, so that equal settings are equal maps.
using setting = std::map<std::string, std::string>;

struct parameter {
    std::string name;
    double low = 0;
    double high = 1;
    bool log = false;  // spread over orders of magnitude
    bool whole = false;
    std::string unit;   // that stands after the number
    std::string usual;  // the default; a word if it is no number
};

// The number of a value, without its unit. Words have none.
std::optional<double> number_of(const parameter& of, const std::string& value);

// A default that is a word, such as "auto", takes this share of all places; the range has the rest.
constexpr double word_share = 0.25;

// The value at a place from 0 to 1, rounded to three digits; "" is the default.
std::string value_at(const parameter& of, double place);

// The inverse. What lies outside the range has the place of the nearest end.
double place_of(const parameter& of, const std::string& value);

// What is known of an option of track: how its range is spread, its unit and its default. The range itself depends on
// the sequences. An option that nobody knows is linear, and its default is called "default".
parameter known_parameter(const std::string& name);

// Reads "NAME=LOW:HIGH[:log]"; returns "" or what is wrong.
std::string read_parameter(const std::string& text, parameter& result);

// "--iou=0.2 --scale=1.3x", or "(defaults)".
std::string to_text(const setting& of);

}  // namespace zeltrack
