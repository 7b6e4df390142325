// SPDX-License-Identifier: MIT
//
// Options that depend on the sequence, as plain numbers.
#pragma once

#include "track/options.h"
#include "track/sequence.h"

namespace zeltrack {

// A factor of the automatic scale becomes a scale, and seconds become frames. Seconds without a frame rate are a
// failure.
void settle(track_options& options, const sequence& input);

}  // namespace zeltrack
