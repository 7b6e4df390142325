// SPDX-License-Identifier: MIT
//
// Numbers as text, in both directions and whatever the locale; and the ranges within which they are taken.
#pragma once

#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

namespace zeltrack {

// The shortest text that reads back to the same number.
template <typename T>
std::string to_text(T value)
{
    char buffer[32];
    return {buffer, std::to_chars(buffer, buffer + sizeof(buffer), value).ptr};
}

// Rounded to that many significant digits; from 1000 on to a whole number, without an exponent.
std::string to_text(double value, int digits);

// Both ends belong to it.
template <typename T>
struct range {
    T low;
    T high;
};

template <typename T>
std::string to_text(const range<T>& allowed)
{
    return to_text(allowed.low) + " to " + to_text(allowed.high);
}

// The whole text as a decimal number within the range; a NaN is within none.
template <typename T>
bool parse_number(std::string_view text, const range<T>& allowed, T& value)
{
    const auto convert = [&text](auto& number) {
        return std::from_chars(text.data(), text.data() + text.size(), number);
    };
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    std::from_chars_result result = convert(value);
    if (result.ec == std::errc::result_out_of_range) {
        // also said of what is too small for a float, like 1e-50; that is as good as 0
        double wide = 1;
        result = convert(wide);
        value = 0;
        if (!(std::fabs(wide) < 1))
            return false;
    }
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && value >= allowed.low &&
           value <= allowed.high;
}

}  // namespace zeltrack
