// SPDX-License-Identifier: MIT
//
// The pictures of a sequence, which the page loads from where they lie.
#pragma once

#include <string>
#include <vector>

namespace zeltrack {

struct picture_files {
    std::string folder;              // as the page at its place refers to it, with slashes
    std::vector<std::string> names;  // in the order of frames
};

// Those in the folder or, if it has one, in its folder img1, by name. None at all is a failure.
picture_files find_pictures(const std::string& folder, const std::string& page);

}  // namespace zeltrack
