// SPDX-License-Identifier: MIT
//
// Columns as wide as their widest cell.
#include "cli/grid.h"

#include <algorithm>

namespace zeltrack {

// In characters, not bytes.
static std::size_t width_of(const std::string& text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

std::string to_table(const std::vector<grid_row>& grid, std::size_t names)
{
    std::vector<std::size_t> widths(grid[0].size());
    for (const grid_row& row : grid)
        for (std::size_t c = 0; c < row.size(); ++c)
            widths[c] = std::max(widths[c], width_of(row[c].text));
    std::string out;
    for (const grid_row& row : grid) {
        std::string line;
        for (std::size_t c = 0; c < row.size(); ++c) {
            const std::string padding(widths[c] - width_of(row[c].text), ' ');
            // the mark stands in the gap, so that the digits stay aligned
            line += c == 0 ? "" : row[c - 1].best ? "* " : "  ";
            line += c < names ? row[c].text + padding : padding + row[c].text;
        }
        line += !row.empty() && row.back().best ? "*" : "";
        out += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    return out;
}

}  // namespace zeltrack
