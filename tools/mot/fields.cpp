// SPDX-License-Identifier: MIT
//
// The columns of a row and their limits.
#include "mot/fields.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "cli/failure.h"
#include "cli/number.h"

namespace zeltrack {

static constexpr std::size_t needed_fields = 7;
static constexpr range<float> coordinates = {-max_coordinate, max_coordinate};
static constexpr range<float> whole_numbers = {-max_class, max_class};
static constexpr range<float> finite = {std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max()};

struct number_column {
    std::size_t index;
    float mot_row::*member;
    const char* name;
};

static constexpr number_column box_columns[] = {
    {2, &mot_row::left, "a left edge"},
    {3, &mot_row::top, "a top edge"},
    {4, &mot_row::width, "a width"},
    {5, &mot_row::height, "a height"},
};

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

void split(std::string_view line, field_list& fields)
{
    fields.clear();
    for (std::size_t comma; (comma = line.find(',')) != std::string_view::npos; line.remove_prefix(comma + 1))
        fields.push_back(trimmed(line.substr(0, comma)));
    fields.push_back(trimmed(line));
}

static bool parse_whole(std::string_view text, float& value)
{
    return parse_number(text, whole_numbers, value) && value == std::floor(value);
}

static std::optional<std::string> parse_frame(std::string_view text, int base, int& frame)
{
    const range<double> frames = {static_cast<double>(base), static_cast<double>(max_frame - 1 + base)};
    // some writers print every column as a float: 1.0, 1e+00
    double value = 0;
    if (!parse_number(text, frames, value) || value != std::floor(value)) {
        const char* hint = base == 1 && text == "0" ? " (if frames count from 0: --frame-base 0)" : "";
        return expected("a frame number from " + to_text(range<int>{base, max_frame - 1 + base}) + hint, text);
    }
    frame = static_cast<int>(value) + 1 - base;
    return std::nullopt;
}

static std::optional<std::string> parse_class(std::string_view text, int base, float& cls)
{
    if (!parse_whole(text, cls) || cls == whole_numbers.high)
        return expected("a class as a whole number", text);
    cls += static_cast<float>(1 - base);
    if (cls != 0)
        return std::nullopt;
    return expected(base == 1 ? "a class other than 0 (if classes count from 0: --class-base 0)"
                              : "a class other than -1 (if classes count from 1: --class-base 1)",
                    text);
}

std::optional<std::string> parse_detection(const field_list& fields, const mot_layout& layout, mot_row& row)
{
    const auto class_column = static_cast<std::size_t>(layout.class_column);
    const std::size_t needed = std::max(needed_fields, class_column);
    if (fields.size() < needed)
        return "expected " + to_text(needed) + " fields or more, found " + to_text(fields.size());
    if (auto wrong = parse_frame(fields[0], layout.frame_base, row.frame))
        return wrong;
    for (const number_column& column : box_columns)
        if (!parse_number(fields[column.index], coordinates, row.*column.member))
            return expected(std::string(column.name) + " from " + to_text(coordinates), fields[column.index]);
    if (!parse_number(fields[6], finite, row.conf))
        return expected("a finite number as confidence", fields[6]);
    if (class_column == 0)
        return std::nullopt;
    return parse_class(fields[class_column - 1], layout.class_base, row.cls);
}

std::optional<std::string> parse_truth(const field_list& fields, int frame_base, mot_row& row)
{
    mot_layout layout;
    layout.frame_base = frame_base;
    if (auto wrong = parse_detection(fields, layout, row))
        return wrong;
    float id = 0;
    if (!parse_whole(fields[1], id))
        return expected("an identifier as a whole number", fields[1]);
    row.id = static_cast<int>(id);
    return std::nullopt;
}

}  // namespace zeltrack
