// SPDX-License-Identifier: MIT
//
// A run of the tracker as the package of columns that the page draws.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "track/options.h"
#include "track/sequence.h"
#include "track/summary.h"
#include "view/column.h"
#include "view/recording.h"
#include "view/scoring.h"

namespace zeltrack {

// The rows of a file that the tracker was given, where each of them stands in the file, and how far each frame was
// steadied.
struct selected_rows {
    sequence rows;
    std::vector<std::size_t> places;
    struct offset {
        double x, y;
    };
    struct move {
        int frame;  // from here on
        offset by;
    };
    std::vector<move> moves;  // ascending; before the first one there is none
};

// All boxes of the file, weak ones too, exactly: who changes the least confidence needs them again.
void pack_input(package& out, const sequence& file, const track_options& options);

// Boxes of a file, exactly, under names that begin with the given one; with identifiers.
void pack_tracks(package& out, const std::string& name, const std::vector<mot_row>& rows);

// Boxes that count as "truth...", with identifiers; "others..." if there are any.
void pack_truth(package& out, const true_boxes& truth);

// What the tracker made of it. Boxes are rounded to a decimal part of a pixel far below what the eye can tell apart;
// what decided a match is exact.
void pack_run(package& out, const recording& recorded, const selected_rows& selected, const track_summary& summary,
              const track_options& options);

}  // namespace zeltrack
