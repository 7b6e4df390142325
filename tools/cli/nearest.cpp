// SPDX-License-Identifier: MIT
//
// Names are compared by the number of letters that are missing, added, replaced or swapped with their neighbour.
#include "cli/nearest.h"

#include <algorithm>
#include <numeric>

namespace zeltrack {

// Optimal string alignment distance, one row of the table for each letter of a.
static std::size_t distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> before(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(last.begin(), last.end(), 0U);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before.swap(last);
        last.swap(row);
    }
    return last[b.size()];
}

std::string suggestion(std::string_view typed, const std::vector<std::string>& names)
{
    constexpr std::size_t longest = 40;  // no name is, and the comparison takes the product of the lengths
    if (typed.size() > longest)
        return "";
    const std::string* best = nullptr;
    std::size_t least = typed.size() / 3 + 1;
    for (const std::string& name : names) {
        const bool begun = typed.size() > 3 && name.compare(0, typed.size(), typed) == 0;
        const std::size_t wrong = begun ? 1 : distance(typed, name);
        if (wrong < least || (wrong == least && !best)) {
            best = &name;
            least = wrong;
        }
    }
    return best ? "; did you mean " + *best + '?' : "";
}

}  // namespace zeltrack
