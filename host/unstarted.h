// SPDX-License-Identifier: MIT
//
// Reads off the tracker's private record what no output row says: detections for which memory ran out.
#pragma once

namespace zelhost {

// False if the library that runs has other records than those that this was compiled with.
bool records_known();

// To be called before the frame.
int live_tracks(const void* tracker);

// To be called after the frame: detections that have no track although there was room, live tracks having been alive
// before; and those whose track has matches enough but no identifier. Near full capacity some are not counted, because
// the room that was left then is no longer known.
int unstarted(const void* tracker, int live);

}  // namespace zelhost
