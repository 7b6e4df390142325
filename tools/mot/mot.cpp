// SPDX-License-Identifier: MIT
//
// Reading and writing of the MOTChallenge format. Conversions go through <charconv>, so the locale cannot matter.
#include "mot/mot.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <istream>
#include <limits>
#include <string_view>

#include "cli/failure.h"
#include "cli/shortest.h"

namespace zeltrack {

static constexpr std::size_t max_line = 4096;
static constexpr std::size_t needed_fields = 7;

using field_list = std::vector<std::string_view>;

struct number_column {
    std::size_t index;
    float mot_row::*member;
    float limit;
    const char* expected;
};

static constexpr number_column number_columns[] = {
    {2, &mot_row::left, max_coordinate, "a left edge from -1e9 to 1e9"},
    {3, &mot_row::top, max_coordinate, "a top edge from -1e9 to 1e9"},
    {4, &mot_row::width, max_coordinate, "a width from -1e9 to 1e9"},
    {5, &mot_row::height, max_coordinate, "a height from -1e9 to 1e9"},
    {6, &mot_row::conf, std::numeric_limits<float>::max(), "a finite number as confidence"},
};

static std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

static void split(std::string_view line, field_list& fields)
{
    fields.clear();
    for (std::size_t comma; (comma = line.find(',')) != std::string_view::npos; line.remove_prefix(comma + 1))
        fields.push_back(trimmed(line.substr(0, comma)));
    fields.push_back(trimmed(line));
}

template <typename T>
static std::from_chars_result convert(std::string_view text, T& value)
{
    return std::from_chars(text.data(), text.data() + text.size(), value);
}

// The whole text as a number within [-limit, limit]; a NaN is within nothing.
template <typename T>
static bool parse(std::string_view text, T limit, T& value)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    std::from_chars_result result = convert(text, value);
    if (result.ec == std::errc::result_out_of_range) {
        // also said of what is too small for a float, like 1e-50; that is as good as 0
        double wide = 1;
        result = convert(text, wide);
        value = 0;
        if (!(std::fabs(wide) < 1))
            return false;
    }
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && std::fabs(value) <= limit;
}

static std::string found(const char* expected, std::string_view text)
{
    return std::string("expected ") + expected + ", found " + excerpt(text);
}

static std::optional<std::string> parse_frame(std::string_view text, int& frame)
{
    // some writers print every column as a float: 1.0, 1e+00
    double value = 0;
    if (!parse(text, static_cast<double>(max_frame), value) || value < 1 || value != std::floor(value))
        return found("a frame number from 1 to 10000000", text);
    frame = static_cast<int>(value);
    return std::nullopt;
}

static std::optional<std::string> parse_class(std::string_view text, int base, float& cls)
{
    float value = 0;
    if (!parse(text, max_class - 1, value) || value != std::floor(value))
        return found("a class as a whole number", text);
    cls = value + static_cast<float>(1 - base);
    if (cls != 0)
        return std::nullopt;
    return base == 1 ? found("a class other than 0 (if classes count from 0: --class-base 0)", text)
                     : found("a class other than -1 (if classes count from 1: --class-base 1)", text);
}

static std::optional<std::string> parse_row(const field_list& fields, const mot_classes& classes, mot_row& row)
{
    const std::size_t class_column = static_cast<std::size_t>(classes.column);
    const std::size_t needed = std::max(needed_fields, class_column);
    if (fields.size() < needed)
        return "expected " + std::to_string(needed) + " fields or more, found " + std::to_string(fields.size());
    if (auto wrong = parse_frame(fields[0], row.frame))
        return wrong;
    for (const number_column& column : number_columns)
        if (!parse(fields[column.index], column.limit, row.*column.member))
            return found(column.expected, fields[column.index]);
    if (class_column == 0)
        return std::nullopt;
    return parse_class(fields[class_column - 1], classes.base, row.cls);
}

template <typename Parse>
static std::optional<mot_error> read_rows(std::istream& in, const Parse& parse_fields, std::vector<mot_row>& rows)
{
    char buffer[max_line];
    field_list fields;
    std::size_t number = 1;
    for (; in.getline(buffer, sizeof(buffer)); ++number) {
        // the count includes the newline, which only the last line may lack
        const std::size_t length = static_cast<std::size_t>(in.gcount()) - (in.eof() ? 0 : 1);
        const std::string_view line = trimmed({buffer, length});
        if (line.empty())
            continue;
        split(line, fields);
        mot_row row;
        if (auto wrong = parse_fields(fields, row))
            return mot_error{number, *wrong};
        rows.push_back(row);
    }
    if (in.bad())
        return mot_error{0, "reading failed"};
    if (!in.eof())
        return mot_error{number, found("a line of at most 4095 characters", {buffer, max_line - 1})};
    return std::nullopt;
}

std::optional<mot_error> read_detections(std::istream& in, const mot_classes& classes, std::vector<mot_row>& rows)
{
    const auto parse_fields = [&](const field_list& fields, mot_row& row) { return parse_row(fields, classes, row); };
    return read_rows(in, parse_fields, rows);
}

static std::optional<std::string> parse_true_row(const field_list& fields, mot_row& row)
{
    if (auto wrong = parse_row(fields, mot_classes(), row))
        return wrong;
    float id = 0;
    if (!parse(fields[1], max_class, id) || id != std::floor(id))
        return found("an identifier as a whole number", fields[1]);
    row.id = static_cast<int>(id);
    return std::nullopt;
}

std::optional<mot_error> read_truth(std::istream& in, std::vector<mot_row>& rows)
{
    return read_rows(in, parse_true_row, rows);
}

void append_row(std::string& text, const mot_row& row)
{
    text.append(shortest(row.frame)).append(",").append(shortest(row.id));
    for (const float value : {row.left, row.top, row.width, row.height, row.conf})
        text.append(",").append(shortest(value));
    text += ",-1,-1,-1\n";
}

}  // namespace zeltrack
