// SPDX-License-Identifier: MIT
//
// The ground truth of a sequence, ready to be scored against, as every command that scores files takes it.
#pragma once

#include <algorithm>
#include <optional>

#include "eval/pairing.h"
#include "eval/rows.h"
#include "eval/score.h"

namespace zeltrack {

class command_line;

enum class rules_choice { automatic, mot15, mot17, mot20 };

// The option --rules.
void declare_rules(command_line& line, rules_choice& rules);

struct sequence_truth {
    score_file file;
    score_rules rules = score_rules::mot15;
    int told = 0;  // the length that the sequence's seqinfo.ini tells; 0: none

    // The length of the sequence where the other file's last frame is that.
    int length_with(int last_frame) const { return told > 0 ? told : std::max(file.last_frame, last_frame); }

    // Rows that cannot be scored are a failure.
    void give_to(scorer& subject, int length) const;
};

sequence_truth load_sequence_truth(const sequence_files& files, rules_choice rules, int frame_base);

// A fault as a failure that names file and line.
void refuse_fault(const std::optional<row_fault>& fault, const score_file& file, int length);

}  // namespace zeltrack
