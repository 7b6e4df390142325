// SPDX-License-Identifier: MIT
//
// What somebody may have meant who mistyped a name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zeltrack {

// "; did you mean NAME?" with the name that differs least from `typed`, or that alone begins with it; "" if none is near.
std::string suggestion(std::string_view typed, const std::vector<std::string>& names);

}  // namespace zeltrack
