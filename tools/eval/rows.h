// SPDX-License-Identifier: MIT
//
// Files of true boxes and of tracks, as rows to be scored.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "eval/score.h"
#include "mot/mot.h"

namespace zeltrack {

struct score_file {
    std::string name;    // for messages
    int frame_base = 1;  // number of the file's first frame; the rows count from 1
    std::vector<score_row> rows;
    std::vector<std::uint32_t> lines;  // by row
    int last_frame = 0;
    // of the truth, whose eighth column is the class where it is one; without such a column every row is of class 1
    bool several_classes = false;
    std::optional<mot_error> no_class;  // the first row whose eighth column is no class
};

// The file must be empty before. The seventh column of the truth tells which rows count.
std::optional<mot_error> read_truth_rows(std::istream& in, int frame_base, score_file& file);
std::optional<mot_error> read_track_rows(std::istream& in, int frame_base, score_file& file);

// The same for files by name; what is wrong is a failure that names file and line.
score_file load_truth_rows(const std::string& path, int frame_base);
score_file load_track_rows(const std::string& path, int frame_base);

// What the rules are if nobody says so: those of classes where the truth has several, of mot20 if the sequence's name
// begins like that.
score_rules rules_of(const score_file& truth, const std::string& sequence);

// A fault of the file's rows as the text of a failure. `length` is that of the sequence.
std::string text_of(const row_fault& fault, const score_file& file, int length);

}  // namespace zeltrack
