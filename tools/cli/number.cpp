// SPDX-License-Identifier: MIT
//
// Rounded numbers, for people.
#include "cli/number.h"

#include <limits>

namespace zeltrack {

std::string to_text(double value, int digits)
{
    char buffer[std::numeric_limits<double>::max_exponent10 + 8];  // the largest number, in full
    const bool whole = std::fabs(value) >= 1000;
    const std::chars_format format = whole ? std::chars_format::fixed : std::chars_format::general;
    return {buffer, std::to_chars(buffer, buffer + sizeof(buffer), value, format, whole ? 0 : digits).ptr};
}

}  // namespace zeltrack
