// SPDX-License-Identifier: MIT
//
// A reader for the few lines of an INI file that matter here.
#include "mot/seqinfo.h"

#include <algorithm>
#include <istream>
#include <string_view>

#include "cli/failure.h"
#include "cli/input_file.h"
#include "cli/number.h"
#include "mot/fields.h"

namespace zeltrack {

static constexpr std::size_t max_line = 4095;
static constexpr range<double> rates = {0.001, 100000};
static constexpr range<int> lengths = {1, max_frame};
static constexpr range<int> sides = {1, 1000000};

static char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

static bool same_word(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

template <typename T>
static std::optional<std::string> take(std::string_view key, std::string_view value, const range<T>& allowed, T& number)
{
    if (parse_number(value, allowed, number))
        return std::nullopt;
    return expected(std::string(key) + " from " + to_text(allowed), value);
}

static std::optional<std::string> take_value(std::string_view key, std::string_view value, sequence_info& info)
{
    if (same_word(key, "frameRate"))
        return take(key, value, rates, info.frame_rate);
    if (same_word(key, "seqLength"))
        return take(key, value, lengths, info.frames);
    if (same_word(key, "imWidth"))
        return take(key, value, sides, info.width);
    if (same_word(key, "imHeight"))
        return take(key, value, sides, info.height);
    if (same_word(key, "imDir"))
        info.image_folder = value;
    return std::nullopt;
}

static std::optional<std::string> take_line(std::string_view line, bool& ours, sequence_info& info)
{
    if (line.empty() || line[0] == ';' || line[0] == '#')
        return std::nullopt;
    if (line[0] == '[') {
        ours = same_word(line, "[Sequence]");
        return std::nullopt;
    }
    if (!ours)
        return std::nullopt;
    const std::size_t sign = line.find('=');
    if (sign == std::string_view::npos)
        return expected("a line KEY=VALUE", line);
    return take_value(trimmed(line.substr(0, sign)), trimmed(line.substr(sign + 1)), info);
}

std::optional<mot_error> read_sequence_info(std::istream& in, sequence_info& info)
{
    char buffer[max_line + 1];
    bool ours = true;  // there may be no section at all
    std::size_t number = 1;
    for (; in.getline(buffer, sizeof(buffer)); ++number)
        if (auto wrong = take_line(trimmed(buffer), ours, info))
            return mot_error{number, *wrong};
    if (!in.eof())
        return mot_error{number,
                         expected("a line of at most " + to_text(max_line) + " characters", {buffer, max_line})};
    return std::nullopt;
}

sequence_info load_sequence_info(const std::string& path)
{
    sequence_info info;
    input_file file(path);
    if (const auto error = read_sequence_info(file.stream(), info))
        throw failure(file.name() + ":" + to_text(error->line) + ": " + error->text);
    return info;
}

}  // namespace zeltrack
