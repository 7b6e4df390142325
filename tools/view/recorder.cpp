// SPDX-License-Identifier: MIT
//
// The tracker's list, compared with itself from frame to frame. The list stays in the order of birth, and a record is
// freed only after the new tracks of its frame were made: within one frame an address means one track.
#include "view/recorder.h"

namespace zeltrack {

static const trk_obj_t* track_of(const list_head* node)
{
    return reinterpret_cast<const trk_obj_t*>(node);
}

// Confirmation, and the matches that a tentative track forgets after a long gap.
void recorder::note_changes(const trk_obj_t& obj, const live_track& before)
{
    life& l = life_of(before);
    const int row = static_cast<int>(l.rows.size()) - 1;
    if (obj.id >= 0 && l.id < 0) {
        l.id = obj.id;
        l.confirmed = row;
    }
    if (obj.match_count < before.match_count)
        l.forgotten.push_back(row);
}

void recorder::start(const trk_obj_t& obj)
{
    const live_track track{&obj, static_cast<int>(recording_.lives.size()), obj.c, obj.match_count, 0};
    const centre_box box{obj.x, obj.y, obj.w, obj.h};
    recording_.lives.emplace_back();
    life_of(track).birth = static_cast<int>(recording_.detections_of_frame.size());
    life_of(track).rows.push_back({obj.match_idx, box, box});
    note_changes(obj, track);
    live_.push_back(track);
}

predicted_track recorder::carry_on(const trk_obj_t& obj, live_track track)
{
    life_of(track).rows.push_back(
        {obj.match_idx, {obj.pr_x, obj.pr_y, obj.pr_w, obj.pr_h}, {obj.x, obj.y, obj.w, obj.h}});
    note_changes(obj, track);
    // a match may change the class only where classes are ignored, so that the new one serves the fates as well
    track = {&obj, track.number, obj.c, obj.match_count, obj.miss_count};
    live_.push_back(track);
    return {obj.pr_x, obj.pr_y, obj.pr_w, obj.pr_h, obj.c, obj.match_idx};
}

// The record is gone, but nothing is lost with it. No track is removed at its first miss, so it was missed in the frame
// before, too, and from one miss to the next the prediction stands still.
predicted_track recorder::end(const tracker_t& tracker, const live_track& track)
{
    life& l = life_of(track);
    const life_row last = l.rows.back();
    l.rows.push_back(last);
    l.end = track.miss_count + 1 > tracker.fcnt_removal ? ending::missed_too_long : ending::tentative_too_long;
    const centre_box& p = last.predicted;
    return {p.x, p.y, p.w, p.h, track.c, -1};
}

void recorder::observe(const tracker_t& tracker)
{
    recording_.detections_of_frame.push_back(tracker.ncurobjs);
    std::vector<live_track> before;
    before.swap(live_);
    std::vector<predicted_track> tracks;
    const list_head* node = tracker.track_list.next;
    for (const live_track& track : before) {
        const bool alive = node != &tracker.track_list && track_of(node) == track.record;
        tracks.push_back(alive ? carry_on(*track_of(node), track) : end(tracker, track));
        if (alive)
            node = node->next;
    }
    const std::vector<fate> fates = find_fates(tracker, tracks);
    const std::size_t first = recording_.detections.size();
    for (std::size_t n = 0; n < fates.size(); ++n)
        recording_.detections.push_back({tracker.cur_obj[n], fates[n], false});
    for (; node != &tracker.track_list; node = node->next) {
        start(*track_of(node));
        recording_.detections[first + static_cast<std::size_t>(track_of(node)->match_idx)].started = true;
    }
}

}  // namespace zeltrack
