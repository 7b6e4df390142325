// SPDX-License-Identifier: MIT
//
// The parameters of a stream: defaults, ranges, and the structures of callers built with an older header.
#pragma once

#include "host.h"

namespace zelhost {

zel_host_params_t default_params();

// Fills params from the caller's structure. The name of the first wrong field, or null.
const char* read_params(const zel_host_params_t* given, zel_host_params_t* params);

// Frames that a track may be missed, and why so many.
int removal_of(const zel_host_params_t* params, int* reason);

}  // namespace zelhost
