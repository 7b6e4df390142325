// SPDX-License-Identifier: MIT
//
// What is left of a file after --min-conf, and the capacity that it needs.
#include "track/sequence.h"

#include <algorithm>
#include <limits>

#include "mot/load.h"

namespace zeltrack {

sequence load_sequence(const track_options& options)
{
    sequence loaded;
    std::vector<mot_row>& rows = loaded.rows;
    rows = load_detections(options.detections, options.layout);
    if (!rows.empty())
        loaded.frames = rows.back().frame;
    const auto weak = [&options](const mot_row& row) { return row.conf < options.min_conf; };
    const auto kept_end = std::remove_if(rows.begin(), rows.end(), weak);
    loaded.dropped = static_cast<std::size_t>(rows.end() - kept_end);
    rows.erase(kept_end, rows.end());
    return loaded;
}

// Every live track took a detection, which no other track took, in this frame or in the removal + 1 before it.
int ample_capacity(const std::vector<mot_row>& rows, int removal)
{
    std::ptrdiff_t most = 1;
    auto first = rows.begin();
    for (auto at = rows.begin(); at != rows.end(); ++at) {
        while (first->frame < at->frame - removal - 1)
            ++first;
        most = std::max(most, at - first + 1);
    }
    return static_cast<int>(std::min<std::ptrdiff_t>(most, std::numeric_limits<int>::max()));
}

}  // namespace zeltrack
