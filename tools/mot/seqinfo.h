// SPDX-License-Identifier: MIT
//
// The file seqinfo.ini that lies beside a sequence of the MOTChallenge layout: lines KEY=VALUE under [Sequence].
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "mot/mot.h"

namespace zeltrack {

// What the file does not say is 0 or empty.
struct sequence_info {
    std::string image_folder;  // imDir
    double frame_rate = 0;     // frameRate, per second
    int frames = 0;            // seqLength
    int width = 0;             // imWidth, in pixels
    int height = 0;            // imHeight
};

// Keys are those above, whatever their case; others are ignored, as are other sections, comments (; and #) and blank
// lines. A line that is none of these, or a value that is no such number, is an error.
std::optional<mot_error> read_sequence_info(std::istream& in, sequence_info& info);

// Of a file that must exist. What is wrong is a failure that names the file and the line.
sequence_info load_sequence_info(const std::string& path);

}  // namespace zeltrack
