// SPDX-License-Identifier: MIT
//
// This room reads and writes the MOTChallenge text format: one line per box, "frame,id,left,top,width,height,conf" and
// columns that vary from file to file. Frames count from 1, or from 0 in the file, and need not be sorted. Streams are
// read and rows written here, files by name in load.h, one line and its checked numbers in fields.h.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace zeltrack {

constexpr int max_frame = 10000000;
constexpr float max_coordinate = 1e9F;
constexpr float max_class = 16777215;  // every whole number up to here is a float

struct mot_row {
    int frame = 0;
    int id = -1;
    float left = 0;
    float top = 0;
    float width = 0;
    float height = 0;
    float conf = 1;
    float cls = 1;  // never 0, which would end the tracker's list
};

// What a file may do its own way.
struct mot_layout {
    int class_column = 0;  // counted from 1; 0: nowhere, every row is of class 1
    int class_base = 1;    // number of the first class
    int frame_base = 1;    // number of the first frame; a mot_row counts from 1 in any case
};

struct mot_error {
    std::size_t line;  // from 1
    std::string text;
};

// Append all rows of a detection file, in the order of the file. The identifier column is not read. Stops at the first
// line that is wrong; memory is bounded by the rows, however long a line is. The stream must throw what goes wrong with
// reading: here the end of a stream is the end of the file.
std::optional<mot_error> read_detections(std::istream& in, const mot_layout& layout, std::vector<mot_row>& rows);

// Append "frame,id,left,top,width,height,conf,-1,-1,-1" and a newline: each number as the shortest text that reads back
// to the same float.
void append_row(std::string& text, const mot_row& row, int frame_base = 1);

}  // namespace zeltrack
