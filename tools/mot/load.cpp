// SPDX-License-Identifier: MIT
//
// Opening, reading and sorting of a named file.
#include "mot/load.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>

#include "cli/failure.h"

namespace zeltrack {

using row_reader = std::function<std::optional<mot_error>(std::istream& in, std::vector<mot_row>& rows)>;

static std::optional<mot_error> read_named(const std::string& name, const row_reader& read, std::vector<mot_row>& rows)
{
    if (name == "-")
        return read(std::cin, rows);
    std::error_code ignored;  // opening says what is wrong
    if (std::filesystem::is_directory(name, ignored))
        throw system_failure(name, EISDIR);
    errno = 0;
    std::ifstream file(name, std::ios::binary);
    if (!file)
        throw system_failure(name, errno);
    return read(file, rows);
}

static std::vector<mot_row> load_rows(const std::string& name, const row_reader& read)
{
    std::vector<mot_row> rows;
    if (const auto error = read_named(name, read, rows)) {
        const std::string line = error->line == 0 ? "" : ":" + std::to_string(error->line);
        throw failure((name == "-" ? "standard input" : printable(name)) + line + ": " + error->text);
    }
    const auto earlier = [](const mot_row& a, const mot_row& b) { return a.frame < b.frame; };
    if (!std::is_sorted(rows.begin(), rows.end(), earlier))
        std::stable_sort(rows.begin(), rows.end(), earlier);
    return rows;
}

std::vector<mot_row> load_detections(const std::string& name, const mot_classes& classes)
{
    return load_rows(
        name, [&classes](std::istream& in, std::vector<mot_row>& rows) { return read_detections(in, classes, rows); });
}

std::vector<mot_row> load_truth(const std::string& name)
{
    std::vector<mot_row> rows = load_rows(name, read_truth);
    const auto uncounted = [](const mot_row& row) { return row.conf == 0; };
    rows.erase(std::remove_if(rows.begin(), rows.end(), uncounted), rows.end());
    return rows;
}

}  // namespace zeltrack
