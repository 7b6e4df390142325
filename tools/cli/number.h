// SPDX-License-Identifier: MIT
//
// Numbers to text and text to numbers, whatever the locale; and the ranges within which numbers are accepted.
#pragma once

#include <charconv>
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

// With that many decimals. What rounds to zero has no sign.
std::string to_fixed(double value, int decimals);

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

// True if the text, which is that of a number, begins a number below 1, however small: 1e-400 is one.
bool below_one(std::string_view text);

// The whole text as a decimal number within the range; a NaN is within none. What is too small for the type is 0.
template <typename T>
bool parse_number(std::string_view text, const range<T>& allowed, T& value)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool too_small = error == std::errc::result_out_of_range && below_one(text);
    if (too_small)
        value = 0;
    return (too_small || error == std::errc()) && end == text.data() + text.size() && value >= allowed.low &&
           value <= allowed.high;
}

// WIDTHxHEIGHT, both within the range.
bool parse_size(std::string_view text, const range<int>& allowed, int& width, int& height);

}  // namespace zeltrack
