// SPDX-License-Identifier: MIT
//
// Rows of MOTChallenge files, which have left, top, width and height, as the host kit's boxes, which have corners.
#pragma once

#include <zel/host.h>

#include "mot/mot.h"

namespace zelgst {

zel_host_detection_t detection_of(const zeltrack::mot_row& row);
zeltrack::mot_row row_of(int frame, const zel_host_track_t& track);

}  // namespace zelgst
