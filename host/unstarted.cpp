// SPDX-License-Identifier: MIT
#include "unstarted.h"

#include <string.h>
#include <zel/libzel.h>

#include "zel_tracker.h"

namespace zelhost {

bool records_known()
{
    return strcmp(zel_version(), ZEL_VERSION_STRING) == 0;
}

int live_tracks(const void* tracker)
{
    return static_cast<const tracker_t*>(tracker)->track_count;
}

int unstarted(const void* tracker, int live)
{
    const auto* it = static_cast<const tracker_t*>(tracker);
    int without = 0;
    int unconfirmed = 0;
    for (int n = 0; n < it->ncurobjs; ++n) {
        const trk_obj_t* track = it->match_obj[n];
        without += !track;
        unconfirmed += track && track->id < 0 && track->match_count >= it->fcnt_stable;
    }
    const int room = it->nmaxobjs - live - (it->ncurobjs - without);
    return unconfirmed + (without < room ? without : (room > 0 ? room : 0));
}

}  // namespace zelhost
