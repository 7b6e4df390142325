// SPDX-License-Identifier: MIT
//
// The frames of a track before its confirmation, which the tracker does not report.
#pragma once

#include <unordered_map>
#include <vector>

#include "host/_host.h"
#include "mot/mot.h"

struct _trk_obj_t;

namespace zeltrack {

class tentative_watch {
public:
    // zel_tracker_process() with a tentative_watch for its context.
    static void process(void* context, void* handle, float (*input)[6], float (*output)[8]);

    // To be called after every frame. Appends what tracks that are confirmed in it were before.
    void take(int frame, const zel_host_frame_t& given, std::vector<mot_row>& rows);

private:
    // A track that is tentative, or was in the frame before.
    struct sighting {
        const _trk_obj_t* record;
        int id;  // -1: still tentative
        bool matched;
        bool forgotten;  // its earlier matches no longer count
        mot_row box;     // in the tracker's units, centre in place of the corner
    };

    std::vector<sighting> seen_;
    std::unordered_map<const _trk_obj_t*, std::vector<mot_row>> pending_;
};

}  // namespace zeltrack
