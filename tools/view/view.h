// SPDX-License-Identifier: MIT
//
// The page that shows what the tracker did: one HTML file with its script, its style and all data.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "track/track.h"

namespace zeltrack {

struct view_options {
    track_options track;
    std::optional<std::vector<mot_row>> truth;  // by frame, with identifiers
    std::string command;                        // that makes the page again
};

// Tracks the detections and appends the page that tells all about it.
track_summary view_sequence(const sequence& input, const view_options& options, std::string& page);

// The words of a command in the form that a shell reads them.
std::string shell_line(int count, const char* const* words);

}  // namespace zeltrack
