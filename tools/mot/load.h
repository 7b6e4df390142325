// SPDX-License-Identifier: MIT
//
// Whole files by name, "-" being standard input, with their rows sorted by frame. What cannot be opened, read or
// understood is a failure, whose text names the file and the line.
#pragma once

#include <string>
#include <vector>

#include "mot/mot.h"

namespace zeltrack {

// Within a frame the rows stay in the order of the file.
std::vector<mot_row> load_detections(const std::string& name, const mot_layout& layout);

}  // namespace zeltrack
