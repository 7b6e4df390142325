// SPDX-License-Identifier: MIT
//
// Streams of rows. Conversions go through <charconv>, so the locale cannot matter.
#include "mot/mot.h"

#include <istream>
#include <string_view>

#include "cli/failure.h"
#include "cli/number.h"
#include "mot/fields.h"

namespace zeltrack {

static constexpr std::size_t max_line = 4095;

std::optional<mot_error> read_lines(std::istream& in, const line_taker& take)
{
    char buffer[max_line + 1];
    field_list fields;
    std::size_t number = 1;
    for (; in.getline(buffer, sizeof(buffer)); ++number) {
        // the count includes the newline, which only the last line may lack
        const std::size_t length = static_cast<std::size_t>(in.gcount()) - (in.eof() ? 0 : 1);
        const std::string_view line = trimmed({buffer, length});
        if (line.empty())
            continue;
        split(line, fields);
        if (auto wrong = take(number, fields))
            return mot_error{number, *wrong};
    }
    if (!in.eof())
        return mot_error{number,
                         expected("a line of at most " + to_text(max_line) + " characters", {buffer, max_line})};
    return std::nullopt;
}

std::optional<mot_error> read_detections(std::istream& in, const mot_layout& layout, std::vector<mot_row>& rows)
{
    return read_lines(in, [&](std::size_t, const field_list& fields) {
        mot_row row;
        auto wrong = parse_detection(fields, layout, row);
        if (!wrong)
            rows.push_back(row);
        return wrong;
    });
}

void append_row(std::string& text, const mot_row& row, int frame_base)
{
    text.append(to_text(row.frame - 1 + frame_base)).append(",").append(to_text(row.id));
    for (const float value : {row.left, row.top, row.width, row.height, row.conf})
        text.append(",").append(to_text(value));
    text += ",-1,-1,-1\n";
}

}  // namespace zeltrack
