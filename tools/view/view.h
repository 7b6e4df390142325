// SPDX-License-Identifier: MIT
//
// This room writes the page that shows what the tracker did: one HTML file with its script, its style and all data. The
// recorder runs the tracker and notes what happened (recorder.h, recording.h), columns.h packs that, page.cpp joins it with
// the page.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "track/track.h"

namespace zeltrack {

extern const subcommand view_command;

struct view_options {
    track_options track;
    std::optional<std::vector<mot_row>> truth;  // by frame, with identifiers
    std::string command;                        // that makes the page again
};

// The rows of a file that the tracker is given, and where each of them stands in the file.
struct selected_rows {
    sequence rows;
    std::vector<std::size_t> places;
};

selected_rows select_rows(const sequence& file, float min_conf);

// Tracks the selected rows and appends the page that tells all about it. The page holds the others as well.
track_summary view_sequence(const sequence& file, const selected_rows& selected, const view_options& options,
                            std::string& page);

}  // namespace zeltrack
