// SPDX-License-Identifier: MIT
//
// The subcommand `eval`; the figures themselves are in score.h.
#pragma once

#include "cli/command_line.h"

namespace zeltrack {

extern const subcommand eval_command;

}  // namespace zeltrack
