// SPDX-License-Identifier: MIT
//
// This room writes the page that shows what the tracker did: one HTML file with its script, its style and all data. The
// recorder runs the tracker and notes what happened (recorder.h, recording.h), columns.h packs that, page.cpp joins it
// with the page.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "track/track.h"
#include "view/columns.h"
#include "view/pictures.h"

namespace zeltrack {

extern const subcommand view_command;

struct view_options {
    track_options track;
    std::optional<true_boxes> truth;
    std::vector<mot_row> compared;  // tracks of another tracker, by frame
    std::string compared_name;      // empty: there are none
    int width = 0;                  // of the image; 0: not known
    int height = 0;
    picture_files pictures;  // without names: there are none
    std::string command;     // that makes the page again
};

// Tracks the sequence and appends the page that tells all about it. The page holds the dropped rows as well.
track_summary view_sequence(const sequence& file, const view_options& options, std::string& page);

}  // namespace zeltrack
