// SPDX-License-Identifier: MIT
//
// One run of the tracker for the page, from the rows of a file to the package of columns. The command calls it for the
// page that it writes, and the page's own module for every other setting. Nothing here throws, prints or opens a file.
#pragma once

#include <functional>

#include "track/track.h"
#include "view/column.h"
#include "view/columns.h"
#include "view/scoring.h"

namespace zeltrack {

struct run_input {
    const sequence& file;
    const true_boxes* truth;  // null: none
};

// `each` is called after every frame.
track_summary pack_tracked(package& out, const run_input& input, const track_options& options,
                           const std::function<void(int frame)>& each);

// Its figures alone, in less time.
void pack_figures_only(package& out, const run_input& input, const track_options& options);

}  // namespace zeltrack
