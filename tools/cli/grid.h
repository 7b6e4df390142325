// SPDX-License-Identifier: MIT
//
// Tables of text, aligned.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zeltrack {

struct grid_cell {
    std::string text;
    bool best = false;  // marked
};

using grid_row = std::vector<grid_cell>;  // empty between two blocks

// The first row is the widest. The first `names` columns stand at the left, the others at the right.
std::string to_table(const std::vector<grid_row>& grid, std::size_t names);

}  // namespace zeltrack
