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
template <typename T>
static constexpr range<T> coordinates = {-max_coordinate, max_coordinate};
static constexpr range<float> whole_numbers = {-max_class, max_class};
static constexpr range<float> finite = {std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max()};

// Of mot_row or precise_box.
template <typename Row>
struct box_column {
    std::size_t index;
    decltype(Row::left) Row::*member;
    const char* name;
};

template <typename Row>
static constexpr box_column<Row> box_columns[] = {
    {2, &Row::left, "a left edge"},
    {3, &Row::top, "a top edge"},
    {4, &Row::width, "a width"},
    {5, &Row::height, "a height"},
};

std::string_view trimmed(std::string_view text)
{
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    return text;
}

void split(std::string_view line, field_list& fields)
{
    fields.clear();
    // fields are too short for a call of memchr() to pay
    std::size_t first = 0;
    for (std::size_t i = 0; i < line.size(); ++i)
        if (line[i] == ',') {
            fields.push_back(trimmed(line.substr(first, i - first)));
            first = i + 1;
        }
    fields.push_back(trimmed(line.substr(first)));
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

template <typename Row>
static std::optional<std::string> parse_first_columns(const field_list& fields, std::size_t needed, int frame_base,
                                                      Row& row)
{
    if (fields.size() < needed)
        return "expected " + to_text(needed) + " fields or more, found " + to_text(fields.size());
    if (auto wrong = parse_frame(fields[0], frame_base, row.frame))
        return wrong;
    constexpr auto allowed = coordinates<decltype(Row::left)>;
    for (const auto& column : box_columns<Row>)
        if (!parse_number(fields[column.index], allowed, row.*column.member))
            return expected(std::string(column.name) + " from " + to_text(allowed), fields[column.index]);
    if (!parse_number(fields[6], finite, row.conf))
        return expected("a finite number as confidence", fields[6]);
    return std::nullopt;
}

std::optional<std::string> parse_detection(const field_list& fields, const mot_layout& layout, mot_row& row)
{
    const auto class_column = static_cast<std::size_t>(layout.class_column);
    if (auto wrong = parse_first_columns(fields, std::max(needed_fields, class_column), layout.frame_base, row))
        return wrong;
    if (class_column == 0)
        return std::nullopt;
    return parse_class(fields[class_column - 1], layout.class_base, row.cls);
}

std::optional<std::string> parse_box(const field_list& fields, int frame_base, precise_box& box)
{
    return parse_first_columns(fields, needed_fields, frame_base, box);
}

std::optional<std::string> parse_identifier(std::string_view text, int& id)
{
    float value = 0;
    if (!parse_whole(text, value))
        return expected("an identifier as a whole number", text);
    id = static_cast<int>(value);
    return std::nullopt;
}

}  // namespace zeltrack
