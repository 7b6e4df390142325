// SPDX-License-Identifier: MIT
//
// Places and values. Values are rounded before they are tried, so that what is written is what was tried.
#include "tune/parameter.h"

#include <algorithm>
#include <cmath>

#include "cli/failure.h"
#include "cli/number.h"
#include "track/options.h"

namespace zeltrack {

std::optional<double> number_of(const parameter& of, const std::string& value)
{
    std::string_view text = value;
    const std::size_t unit = of.unit.size();
    if (unit > 0 && text.size() > unit && text.substr(text.size() - unit) == of.unit)
        text.remove_suffix(unit);
    double number = 0;
    if (!parse_number(text, range<double>{-1e30, 1e30}, number))
        return std::nullopt;
    return number;
}

static bool has_word(const parameter& of)
{
    return !number_of(of, of.usual);
}

static double within_range(const parameter& of, double share)
{
    // whole numbers get equal shares, those at the ends as well
    const double margin = of.whole ? 0.5 : 0;
    const double low = of.low - margin;
    const double high = of.high + margin;
    const double value = of.log ? low * std::pow(high / low, share) : low + share * (high - low);
    return std::clamp(of.whole ? std::round(value) : value, of.low, of.high);
}

std::string value_at(const parameter& of, double place)
{
    double share = std::clamp(place, 0.0, 1.0);
    if (has_word(of)) {
        if (share < word_share)
            return "";
        share = (share - word_share) / (1 - word_share);
    }
    const double exact = within_range(of, share);
    std::string text = of.whole ? to_text(exact) : to_text(exact, 3);
    // rounding may leave the range
    const double rounded = number_of(of, text).value_or(exact);
    if (rounded < of.low || rounded > of.high)
        text = to_text(rounded < of.low ? of.low : of.high);
    text += of.unit;
    return text == of.usual ? "" : text;
}

double place_of(const parameter& of, const std::string& value)
{
    const bool word = has_word(of);
    const auto number = number_of(of, value.empty() ? of.usual : value);
    if (!number)
        return word_share / 2;
    const double margin = of.whole ? 0.5 : 0;
    const double low = of.low - margin;
    const double high = of.high + margin;
    const double at = std::clamp(*number, of.low, of.high);
    const double share =
        high > low ? (of.log ? std::log(at / low) / std::log(high / low) : (at - low) / (high - low)) : 0;
    return word ? word_share + share * (1 - word_share) : share;
}

parameter known_parameter(const std::string& name)
{
    const track_options usual;
    const parameter known[] = {
        {"scale", 0.4, 2, true, false, "x", "1x"},           {"iou", 0.05, 0.7, false, false, "", to_text(usual.iou)},
        {"euc", 0, 1, false, false, "", to_text(usual.euc)}, {"stable", 1, 5, false, true, "", to_text(usual.stable)},
        {"removal", 2, 90, true, true, "", "auto"},          {"min-conf", 0, 1, false, false, "", "auto"},
    };
    for (const parameter& it : known)
        if (it.name == name)
            return it;
    return {name, 0, 1, false, false, "", "default"};
}

std::string read_parameter(const std::string& text, parameter& result)
{
    const std::string wanted = "NAME=LOW:HIGH or NAME=LOW:HIGH:log";
    const std::size_t equals = text.find('=');
    const std::size_t colon = text.find(':', equals);
    if (equals == 0 || equals == std::string::npos || colon == std::string::npos)
        return expected(wanted, text);
    result = known_parameter(text.substr(0, equals));
    std::string high = text.substr(colon + 1);
    result.log = high.size() > 4 && high.substr(high.size() - 4) == ":log";
    if (result.log)
        high.resize(high.size() - 4);
    const std::string low = text.substr(equals + 1, colon - equals - 1);
    // seconds instead of frames, or the other way round
    if (result.name == "removal" && !high.empty() && high.back() == 's')
        result.unit = "s", result.whole = false, result.usual = "0.5s";
    const auto first = number_of(result, low);
    const auto last = number_of(result, high);
    if (!first || !last || *first > *last)
        return expected(wanted + " with numbers that ascend", text);
    if (result.log && *first <= 0)
        return expected("numbers above 0 for a logarithmic range", text);
    if (result.whole && (std::floor(*first) != *first || std::floor(*last) != *last))
        return expected("whole numbers for " + result.name, text);
    result.low = *first;
    result.high = *last;
    return "";
}

std::string to_text(const setting& of)
{
    std::string text;
    for (const auto& [name, value] : of)
        text.append(text.empty() ? "--" : " --").append(name).append("=").append(value);
    return text.empty() ? "(defaults)" : text;
}

}  // namespace zeltrack
