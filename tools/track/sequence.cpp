// SPDX-License-Identifier: MIT
#include "track/sequence.h"

#include <algorithm>
#include <limits>

namespace zeltrack {

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
