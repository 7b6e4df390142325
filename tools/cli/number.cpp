// SPDX-License-Identifier: MIT
//
// Rounded numbers, for people; and the numbers that are too small to be read.
#include "cli/number.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zeltrack {

std::string to_text(double value, int digits)
{
    char buffer[std::numeric_limits<double>::max_exponent10 + 8];  // the largest number, in full
    const bool whole = std::fabs(value) >= 1000;
    const std::chars_format format = whole ? std::chars_format::fixed : std::chars_format::general;
    return {buffer, std::to_chars(buffer, buffer + sizeof(buffer), value, format, whole ? 0 : digits).ptr};
}

std::string to_fixed(double value, int decimals)
{
    char buffer[std::numeric_limits<double>::max_exponent10 + 32];
    const auto end = std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::fixed, decimals).ptr;
    const std::string text(buffer, end);
    return text.find_first_not_of("-0.") == std::string::npos && text[0] == '-' ? text.substr(1) : text;
}

bool below_one(std::string_view text)
{
    const std::size_t mark = std::min(text.find_first_of("eE"), text.size());
    const std::string_view digits = text.substr(0, mark);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t first = digits.find_first_of("123456789");
    if (first == std::string_view::npos)
        return true;
    text.remove_prefix(std::min(mark + 1, text.size()));
    if (!text.empty() && text[0] == '+')
        text.remove_prefix(1);
    long long exponent = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (error == std::errc::result_out_of_range)
        return text[0] == '-';
    // digits before the point that the leading one has after it, itself included; below 0 right of the point
    const long long places = static_cast<long long>(point) - static_cast<long long>(first) + (first > point ? 1 : 0);
    return exponent <= -places;
}

bool parse_size(std::string_view text, const range<int>& allowed, int& width, int& height)
{
    const std::size_t cross = std::min(text.find('x'), text.size());
    const std::string_view second = text.substr(std::min(cross + 1, text.size()));
    return parse_number(text.substr(0, cross), allowed, width) && parse_number(second, allowed, height);
}

}  // namespace zeltrack
