// SPDX-License-Identifier: MIT
//
// Encoding of single numbers, of lists of them, and of packages as text.
#include "view/column.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace zeltrack {

// --- numbers ---------------------------------------------------------------------------------------------------------

void column::put(std::uint64_t value)
{
    for (; value >= 0x80; value >>= 7)
        bytes_ += static_cast<char>(0x80 | (value & 0x7f));
    bytes_ += static_cast<char>(value);
}

void column::put_signed(std::int64_t value)
{
    const std::uint64_t doubled = static_cast<std::uint64_t>(value) << 1;
    put(value < 0 ? ~doubled : doubled);
}

static std::string little_endian(std::uint64_t bits, unsigned size)
{
    std::string bytes;
    for (unsigned n = 0; n < size; ++n)
        bytes += static_cast<char>(bits >> (8 * n) & 0xff);
    return bytes;
}

void column::put_float(float value)
{
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    bytes_ += little_endian(bits, sizeof(bits));
}

// --- lists -----------------------------------------------------------------------------------------------------------

// The forms of a list of exact numbers; smaller codes are the number of decimals.
static constexpr unsigned max_decimals = 9;
static constexpr unsigned raw_code = 10;
static constexpr unsigned constant_code = 11;

static bool same_bits(float a, float b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

// Whether the value is that of a decimal number with so few digits, which a double of the page holds as a whole number.
static bool is_decimal(float value, double unit)
{
    const double number = std::round(value * unit) + 0.0;  // never -0
    return std::fabs(number) < 9e15 && same_bits(static_cast<float>(number / unit), value);
}

column exact_column(const std::vector<float>& values)
{
    column out;
    if (values.empty())
        return out;
    const auto all = [&values](const auto& test) { return std::all_of(values.begin(), values.end(), test); };
    if (all([&values](float value) { return same_bits(value, values[0]); })) {
        out.put(constant_code);
        out.put_float(values[0]);
        return out;
    }
    double unit = 1;
    for (unsigned decimals = 0; decimals <= max_decimals; ++decimals) {
        if (!all([unit](float value) { return is_decimal(value, unit); })) {
            unit *= 10;
            continue;
        }
        out.put(decimals);
        for (const float value : values)
            out.put_signed(std::llround(value * unit));
        return out;
    }
    out.put(raw_code);
    for (const float value : values)
        out.put_float(value);
    return out;
}

// --- packages --------------------------------------------------------------------------------------------------------

void package::number(std::string_view name, double value)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    text(name, little_endian(bits, sizeof(bits)));
}

void package::text(std::string_view name, std::string_view value)
{
    bytes_ += static_cast<char>(name.size());
    bytes_ += name;
    bytes_ += little_endian(value.size(), 4);
    bytes_ += value;
}

void append_base64(std::string& text, std::string_view bytes)
{
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    text.reserve(text.size() + (bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (unsigned shift = 24; shift > 0; shift -= 6)
            text += digits[group >> (shift - 6) & 63];
    }
    const std::size_t padding = (3 - bytes.size() % 3) % 3;
    text.replace(text.size() - padding, padding, padding, '=');
}

}  // namespace zeltrack
