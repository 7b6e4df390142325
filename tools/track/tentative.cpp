// SPDX-License-Identifier: MIT
//
// Read off the tracker's records after each frame. The address of a record may be used again, but not by a track that
// begins in the frame in which the old one ends.
#include "track/tentative.h"

#include <utility>

#include "zel_tracker.h"

namespace zeltrack {

void tentative_watch::process(void* context, void* handle, float (*input)[6], float (*output)[8])
{
    auto& self = *static_cast<tentative_watch*>(context);
    const auto& tracker = *static_cast<const tracker_t*>(handle);
    zel_tracker_process(handle, input, output);
    self.seen_.clear();
    for (const list_head* node = tracker.track_list.next; node != &tracker.track_list; node = node->next) {
        const auto* obj = reinterpret_cast<const trk_obj_t*>(node);
        if (obj->id >= 0 && self.pending_.count(obj) == 0)
            continue;
        mot_row box;
        box.left = obj->x;
        box.top = obj->y;
        box.width = obj->w;
        box.height = obj->h;
        box.conf = obj->s;
        self.seen_.push_back({obj, obj->id, obj->match_idx >= 0, obj->match_count == 0, box});
    }
}

static mot_row in_pixels(mot_row box, int frame, const zel_host_frame_t& given)
{
    const double width = box.width / given.scale;
    const double height = box.height / given.scale;
    box.frame = frame;
    box.left = static_cast<float>(box.left / given.scale + given.offset_x - width / 2);
    box.top = static_cast<float>(box.top / given.scale + given.offset_y - height / 2);
    box.width = static_cast<float>(width);
    box.height = static_cast<float>(height);
    return box;
}

void tentative_watch::take(int frame, const zel_host_frame_t& given, std::vector<mot_row>& rows)
{
    std::unordered_map<const _trk_obj_t*, std::vector<mot_row>> next;
    for (const sighting& it : seen_) {
        std::vector<mot_row> before = std::move(pending_[it.record]);
        if (it.id >= 0) {
            for (mot_row& row : before) {
                row.id = it.id;
                rows.push_back(row);
            }
            continue;
        }
        if (it.forgotten)
            before.clear();
        if (it.matched)
            before.push_back(in_pixels(it.box, frame, given));
        next[it.record] = std::move(before);
    }
    pending_.swap(next);
}

}  // namespace zeltrack
