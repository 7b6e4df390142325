// SPDX-License-Identifier: MIT
//
// The report: one page of HTML that needs nothing else.
#pragma once

#include <string>
#include <vector>

#include "tune/table.h"

namespace zeltrack {

// `views` are commands that show a sequence, in the order of the sequences; none where its files are not known.
void append_report(std::string& page, const tuning& of, const std::string& command,
                   const std::vector<std::string>& views);

}  // namespace zeltrack
