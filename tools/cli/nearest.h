// SPDX-License-Identifier: MIT
//
// The name that a mistyped one was probably meant to be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zeltrack {

// "; did you mean NAME?" with the name that differs least from `typed`, or that alone begins with it; "" if none is
// near.
std::string suggestion(std::string_view typed, const std::vector<std::string>& names);

}  // namespace zeltrack
