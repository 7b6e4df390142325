// SPDX-License-Identifier: MIT
//
// Options that are numbers. Range and default stand in the help text and come from the same values as the check, which
// takes plain decimal text only and no NaN.
#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <string>

#include "cli/failure.h"
#include "cli/shortest.h"

namespace zeltrack {

template <typename T>
CLI::Validator within(T low, T high)
{
    const auto check = [low, high](const std::string& text) -> std::string {
        T value{};
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error == std::errc() && end == text.data() + text.size() && value >= low && value <= high)
            return {};
        return "expected a number from " + shortest(low) + " to " + shortest(high) + ", found " + excerpt(text);
    };
    return {check, ""};
}

template <typename T>
CLI::Option* add_number(CLI::App& app, const std::string& names, const std::string& unit, T& value, T low, T high,
                        const std::string& text)
{
    const std::string range = shortest(low) + " to " + shortest(high);
    const std::string join = text.back() == '\n' ? "" : "; ";
    return app.add_option(names, value, text + join + range + " (default " + shortest(value) + ")")
        ->type_name(unit)
        ->check(within(low, high));
}

}  // namespace zeltrack
