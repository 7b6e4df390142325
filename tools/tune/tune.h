// SPDX-License-Identifier: MIT
//
// This room searches the options of track that make the best tracks of sequences whose ground truth is known. What is
// searched is in parameter.h, how in search.h; a setting is tried on a sequence by subject.h, in processes of
// workers.h. What the trials say is in objective.h, findings.h, held_out.h and noise.h, and told by table.h and
// report.h. trials_file.h keeps trials between runs and machines.
#pragma once

#include "cli/command_line.h"

namespace zeltrack {

extern const subcommand tune_command;

}  // namespace zeltrack
