// SPDX-License-Identifier: MIT
//
// The stages of zel_tracker_process(), called one by one. Within a frame the address of a record means one track:
// records are freed only in the last stage, after the new tracks were made.
#include "view/recorder.h"

#include <unordered_map>

#include "track/scale.h"
#include "zel_tracker.cpp"

namespace zeltrack {

static_assert(gate == gate_units * gate_units, "the command and the tracker have the same gate");

static centre_box box_of(const trk_obj_t& obj)
{
    return {obj.x, obj.y, obj.w, obj.h};
}

static centre_box prediction_of(const trk_obj_t& obj)
{
    return {obj.pr_x, obj.pr_y, obj.pr_w, obj.pr_h};
}

// --- association -----------------------------------------------------------------------------------------------------

// Of a detection of the current frame.
association& recorder::association_of(int n)
{
    const auto first = recording_.detections.end() - current_;
    return first[n].why;
}

// The same search without the gate, whose results are then thrown away.
void recorder::note_nearest(const tracker_t& tracker)
{
    std::unordered_map<const trk_obj_t*, int> place;
    for (const live_track& track : live_)
        place.emplace(track.record, static_cast<int>(place.size()));
    for (int n = 0; n < tracker.ncurobjs; ++n) {
        const det_obj_t& det = tracker.cur_obj[n];
        recorded_detection noted{det.c, {det.x, det.y, det.w, det.h}, det.s, {}};
        if (const trk_obj_t* nearest = tracker.match_obj[n])
            noted.why = {outcome::far, place[nearest], tracker.match_score[n], predicted_iou(nearest, &det)};
        recording_.detections.push_back(noted);
    }
}

void recorder::claim(tracker_t& tracker, int n)
{
    association& mine = association_of(n);
    const trk_obj_t* track = tracker.match_obj[n];
    const int holder = track->match_idx;
    claim_track(&tracker, n);
    if (track->match_idx == n) {
        mine.result = outcome::took;
        if (holder >= 0) {
            association_of(holder).result = outcome::displaced;
            association_of(holder).rival = n;
        }
    } else if (overlaps_enough(&tracker, track, &tracker.cur_obj[n], mine.distance)) {
        mine.result = outcome::lost;
        mine.rival = holder;
    } else {
        mine.result = outcome::refused;
    }
}

void recorder::associate(tracker_t& tracker)
{
    ++recording_.frames;
    current_ = tracker.ncurobjs;
    find_nearest(&tracker, HUGE_VALF);
    note_nearest(tracker);
    find_nearest(&tracker, gate);
    for (int n = 0; n < tracker.ncurobjs; ++n)
        if (tracker.match_obj[n])
            claim(tracker, n);
}

// --- lives -----------------------------------------------------------------------------------------------------------

// A new track stands at the end of the list, with the detection that started it.
void recorder::note_births(const tracker_t& tracker)
{
    const auto first = recording_.detections.end() - tracker.ncurobjs;
    for (int n = 0; n < tracker.ncurobjs; ++n) {
        const trk_obj_t* obj = tracker.match_obj[n];
        if (!obj || first[n].why.result == outcome::took)
            continue;
        first[n].started = true;
        live_.push_back({obj, static_cast<int>(recording_.lives.size()), 0});
        recording_.lives.emplace_back();
        recording_.lives.back().birth = recording_.frames;
        recording_.lives.back().rows.push_back({n, false, box_of(*obj), box_of(*obj)});
    }
}

// Before the update, which may free a record: what becomes of it is known once it is missing.
void recorder::note_rows(const tracker_t& tracker)
{
    for (const live_track& track : live_) {
        trk_obj_t obj = *track.record;
        life_of(track).rows.push_back({obj.match_idx, false, prediction_of(obj), box_of(obj)});
        obj.miss_count = next_count(obj.miss_count);
        life_of(track).end = outlived(&tracker, &obj) ? ending::missed_too_long : ending::tentative_too_long;
    }
}

// Confirmation, and the matches that a tentative track forgets after a long gap.
void recorder::note_changes(live_track& track)
{
    life& l = life_of(track);
    const int row = static_cast<int>(l.rows.size()) - 1;
    l.rows.back().box = box_of(*track.record);
    l.rows.back().reported = track.record->id >= 0 && track.record->miss_count < reported_misses;
    l.end = ending::end_of_file;
    if (track.record->id >= 0 && l.id < 0) {
        l.id = track.record->id;
        l.confirmed = row;
    }
    if (track.record->match_count < track.match_count)
        l.forgotten.push_back(row);
    track.match_count = track.record->match_count;
}

void recorder::note_update(const tracker_t& tracker)
{
    std::vector<live_track> left;
    const list_head* node = tracker.track_list.next;
    for (live_track& track : live_) {
        if (node != &track.record->list)
            continue;
        note_changes(track);
        left.push_back(track);
        node = node->next;
    }
    live_.swap(left);
}

void recorder::process(void* context, void* handle, float (*input)[6], float (*output)[8])
{
    recorder& self = *static_cast<recorder*>(context);
    tracker_t& tracker = *static_cast<tracker_t*>(handle);
    tracker_extract(&tracker, input);
    predict_tracks(&tracker);
    self.associate(tracker);
    self.note_rows(tracker);
    tracker_add_objects(&tracker);
    self.note_births(tracker);
    tracker_update(&tracker);
    self.note_update(tracker);
    if (output)
        tracker_get_tracks(&tracker, output);
}

}  // namespace zeltrack
