// SPDX-License-Identifier: MIT
//
// Opening, reading and sorting of a named file.
#include "mot/load.h"

#include <algorithm>
#include <functional>
#include <istream>

#include "cli/failure.h"
#include "cli/input_file.h"

namespace zeltrack {

using row_reader = std::function<std::optional<mot_error>(std::istream& in, std::vector<mot_row>& rows)>;

static std::vector<mot_row> load_rows(const std::string& path, const row_reader& read)
{
    std::vector<mot_row> rows;
    input_file file(path);
    if (const auto error = read(file.stream(), rows))
        throw failure(file.name() + ":" + std::to_string(error->line) + ": " + error->text);
    const auto earlier = [](const mot_row& a, const mot_row& b) { return a.frame < b.frame; };
    if (!std::is_sorted(rows.begin(), rows.end(), earlier))
        std::stable_sort(rows.begin(), rows.end(), earlier);
    return rows;
}

std::vector<mot_row> load_detections(const std::string& name, const mot_layout& layout)
{
    return load_rows(
        name, [&layout](std::istream& in, std::vector<mot_row>& rows) { return read_detections(in, layout, rows); });
}

std::vector<mot_row> load_truth(const std::string& name, int frame_base)
{
    std::vector<mot_row> rows = load_rows(
        name, [frame_base](std::istream& in, std::vector<mot_row>& read) { return read_truth(in, read, frame_base); });
    const auto uncounted = [](const mot_row& row) { return row.conf == 0; };
    rows.erase(std::remove_if(rows.begin(), rows.end(), uncounted), rows.end());
    return rows;
}

}  // namespace zeltrack
