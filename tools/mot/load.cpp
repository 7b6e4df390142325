// SPDX-License-Identifier: MIT
//
// Opening, reading and sorting of a named file.
#include "mot/load.h"

#include <algorithm>

#include "cli/failure.h"
#include "cli/input_file.h"

namespace zeltrack {

std::vector<mot_row> load_detections(const std::string& name, const mot_layout& layout)
{
    std::vector<mot_row> rows;
    input_file file(name);
    if (const auto error = read_detections(file.stream(), layout, rows))
        throw failure(file.name() + ":" + std::to_string(error->line) + ": " + error->text);
    const auto earlier = [](const mot_row& a, const mot_row& b) { return a.frame < b.frame; };
    if (!std::is_sorted(rows.begin(), rows.end(), earlier))
        std::stable_sort(rows.begin(), rows.end(), earlier);
    return rows;
}

}  // namespace zeltrack
