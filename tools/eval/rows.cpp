// SPDX-License-Identifier: MIT
//
// Reading for scoring: boxes in double precision, and the line of each row for messages.
#include "eval/rows.h"

#include <algorithm>
#include <istream>

#include "cli/failure.h"
#include "cli/input_file.h"
#include "cli/number.h"
#include "mot/fields.h"

namespace zeltrack {

static std::optional<std::string> parse_row(const field_list& fields, int frame_base, score_row& row, float& mark)
{
    precise_box box;
    if (auto wrong = parse_box(fields, frame_base, box))
        return wrong;
    row = {box.frame, 0, box.left, box.top, box.width, box.height};
    mark = box.conf;
    return parse_identifier(fields[1], row.id);
}

static void append(score_file& file, std::size_t line, const score_row& row)
{
    file.rows.push_back(row);
    file.lines.push_back(static_cast<std::uint32_t>(line));
    file.last_frame = std::max(file.last_frame, row.frame);
}

static void take_class(score_file& file, std::size_t line, std::string_view text, score_row& row)
{
    constexpr range<double> classes = {1, score_classes};
    double value = 0;
    if (parse_number(text, classes, value) && static_cast<int>(value) == value) {
        row.cls = static_cast<int>(value);
        file.several_classes = file.several_classes || row.cls != 1;
    } else if (!file.no_class) {
        file.no_class = mot_error{line, expected("a class from " + to_text(range<int>{1, score_classes}), text)};
    }
}

std::optional<mot_error> read_truth_rows(std::istream& in, int frame_base, score_file& file)
{
    return read_lines(in, [&](std::size_t line, const field_list& fields) {
        score_row row;
        float mark = 0;
        if (auto wrong = parse_row(fields, frame_base, row, mark))
            return wrong;
        row.counts = mark != 0;
        if (fields.size() > 7)
            take_class(file, line, fields[7], row);
        append(file, line, row);
        return std::optional<std::string>();
    });
}

std::optional<mot_error> read_track_rows(std::istream& in, int frame_base, score_file& file)
{
    return read_lines(in, [&](std::size_t line, const field_list& fields) {
        score_row row;
        float conf = 0;
        auto wrong = parse_row(fields, frame_base, row, conf);
        if (!wrong)
            append(file, line, row);
        return wrong;
    });
}

template <typename Read>
static score_file load(const std::string& path, int frame_base, const Read& read)
{
    score_file file;
    input_file in(path);
    file.name = in.name();
    file.frame_base = frame_base;
    if (const auto error = read(in.stream(), frame_base, file))
        throw failure(file.name + ":" + to_text(error->line) + ": " + error->text);
    return file;
}

score_file load_truth_rows(const std::string& path, int frame_base)
{
    return load(path, frame_base, read_truth_rows);
}

score_file load_track_rows(const std::string& path, int frame_base)
{
    return load(path, frame_base, read_track_rows);
}

score_rules rules_of(const score_file& truth, const std::string& sequence)
{
    if (!truth.several_classes || truth.no_class)
        return score_rules::mot15;
    return sequence.rfind("MOT20", 0) == 0 ? score_rules::mot20 : score_rules::mot17;
}

std::string text_of(const row_fault& fault, const score_file& file, int length)
{
    const score_row& row = file.rows[fault.row];
    const int frame = row.frame - 1 + file.frame_base;
    const std::string text = file.name + ":" + to_text(file.lines[fault.row]) + ": ";
    switch (fault.why) {
    case row_fault::reason::frame_outside:
        return text + "expected a frame within the sequence, which has " + to_text(length) + ", found " +
               to_text(frame);
    case row_fault::reason::class_unknown:
        return text + "expected a class from 1 to " + to_text(score_classes) + ", found " + to_text(row.cls);
    case row_fault::reason::too_crowded:
        return text + "expected boxes that lie apart, found more than a hundred overlaps for each in frame " +
               to_text(frame);
    case row_fault::reason::identifier_twice:
        break;
    }
    return text + "identifier " + to_text(row.id) + " twice in frame " + to_text(frame) + ", first in line " +
           to_text(file.lines[fault.earlier]);
}

}  // namespace zeltrack
