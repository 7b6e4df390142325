// SPDX-License-Identifier: MIT
//
// Numbers as text, whatever the locale.
#pragma once

#include <charconv>
#include <string>

namespace zeltrack {

// The shortest text that reads back to the same number.
template <typename T>
std::string shortest(T value)
{
    char buffer[32];
    return {buffer, std::to_chars(buffer, buffer + sizeof(buffer), value).ptr};
}

}  // namespace zeltrack
