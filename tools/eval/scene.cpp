// SPDX-License-Identifier: MIT
//
// First all true boxes take part, as the distractors must; then the pairs are cut down to those that count.
#include "eval/scene.h"

#include <algorithm>
#include <utility>

namespace zeltrack {

// --- the truth -------------------------------------------------------------------------------------------------------

score_role role_of(const score_row& row, score_rules rules)
{
    using role = score_role;
    const role marked = row.counts ? role::counted : role::ignored;
    if (rules == score_rules::mot15)
        return marked;
    switch (row.cls) {
    case 1:
        return marked;
    case 2:   // person on a vehicle
    case 7:   // static person
    case 8:   // distractor
    case 12:  // reflection
        return role::distractor;
    case 6:  // vehicle without a motor
        return rules == score_rules::mot20 ? role::distractor : role::ignored;
    default:
        return role::ignored;
    }
}

std::optional<row_fault> prepared_truth::assign(const score_row* rows, std::size_t count, score_rules rules, int frames)
{
    if (rules != score_rules::mot15)
        for (std::size_t i = 0; i < count; ++i)
            if (rows[i].cls < 1 || rows[i].cls > score_classes)
                return row_fault{row_fault::reason::class_unknown, i, i};
    if (const auto fault = set.assign(rows, count, frames))
        return fault;
    length = frames;
    roles.clear();
    frames_of.assign(set.ids.size(), 0);
    for (std::size_t box = 0; box < count; ++box) {
        roles.push_back(role_of(rows[set.source[box]], rules));
        if (roles.back() == score_role::counted)
            ++frames_of[set.who[box]];
    }
    boxes = static_cast<double>(std::count(roles.begin(), roles.end(), score_role::counted));
    objects = static_cast<double>(frames_of.size()) -
              static_cast<double>(std::count(frames_of.begin(), frames_of.end(), 0.0));
    distractors = std::find(roles.begin(), roles.end(), score_role::distractor) != roles.end();
    return std::nullopt;
}

// --- frames and pairs ------------------------------------------------------------------------------------------------

// An exact assignment of boxes that all overlap each other takes the square of their number in memory and the cube of
// it in time. Crowds that can be told apart by eye have far fewer pairs.
std::optional<row_fault> scene::find_pairs()
{
    constexpr std::size_t always = 1000000;
    constexpr std::size_t per_box = 100;
    const std::size_t most = always + per_box * (truth->set.boxes.size() + tracks.boxes.size());
    frames.clear();
    pairs.clear();
    auto found = tracks.frames.begin();
    for (const frame_span& objects : truth->set.frames) {
        while (found != tracks.frames.end() && found->frame < objects.frame)
            ++found;
        if (found == tracks.frames.end())
            break;
        if (found->frame != objects.frame)
            continue;
        const std::size_t first = pairs.size();
        if (!finder_.find(truth->set, objects, tracks, *found, most, pairs)) {
            const std::size_t row = tracks.source[found->first];
            return row_fault{row_fault::reason::too_crowded, row, row};
        }
        frames.push_back(
            {objects.frame, objects, *found, first, static_cast<std::uint32_t>(pairs.size() - first), true});
    }
    return std::nullopt;
}

// A track on a distractor is neither right nor wrong, unless an object that is not one claims it.
void scene::drop_distracted(const shared_frame& in)
{
    using role = score_role;
    const role* const roles = truth->roles.data() + in.objects.first;
    const overlap_pair* const pair = pairs.data() + in.first_pair;
    edges_.clear();
    bool distracted = false;
    for (std::uint32_t p = 0; p < in.pairs; ++p) {
        if (pair[p].overlap < match_overlap - overlap_rounding)
            continue;
        edges_.push_back({pair[p].truth, pair[p].track, pair[p].overlap});
        distracted = distracted || roles[pair[p].truth] == role::distractor;
    }
    if (!distracted)
        return;
    const auto& taken = assignment_.solve(in.objects.count, in.tracks.count, edges_.data(), edges_.size());
    for (std::uint32_t o = 0; o < in.objects.count; ++o)
        if (taken[o] != assignment::none && roles[o] == role::distractor)
            dropped_[in.tracks.first + edges_[taken[o]].column] = true;
}

void scene::keep_counted()
{
    std::size_t kept = 0;
    for (shared_frame& in : frames) {
        const std::size_t first = kept;
        for (std::size_t p = in.first_pair; p < in.first_pair + in.pairs; ++p)
            if (truth->roles[in.objects.first + pairs[p].truth] == score_role::counted &&
                !dropped_[in.tracks.first + pairs[p].track])
                pairs[kept++] = pairs[p];
        in.first_pair = first;
        in.pairs = static_cast<std::uint32_t>(kept - first);

        const auto roles = truth->roles.begin() + in.objects.first;
        const auto dropped = dropped_.begin() + in.tracks.first;
        in.counted = std::find(roles, roles + in.objects.count, score_role::counted) != roles + in.objects.count &&
                     std::find(dropped, dropped + in.tracks.count, false) != dropped + in.tracks.count;
    }
    pairs.resize(kept);
}

void scene::apply_rules()
{
    dropped_.assign(tracks.boxes.size(), false);
    if (truth->distractors)
        for (const shared_frame& in : frames)
            drop_distracted(in);
    keep_counted();
}

void scene::count_tracks()
{
    frames_of_track.assign(tracks.ids.size(), 0);
    boxes = 0;
    for (std::size_t box = 0; box < tracks.boxes.size(); ++box)
        if (!dropped_[box]) {
            ++frames_of_track[tracks.who[box]];
            ++boxes;
        }
    tracks_left = static_cast<double>(frames_of_track.size()) -
                  static_cast<double>(std::count(frames_of_track.begin(), frames_of_track.end(), 0.0));
}

// Sorts the pairs by object, so that a table of the tracks is enough to find each pair's link.
void scene::join_links()
{
    first_of_object_.assign(truth->set.ids.size() + 1, 0);
    pair_object_.clear();
    pair_track_.clear();
    for (const shared_frame& in : frames)
        for (std::size_t p = in.first_pair; p < in.first_pair + in.pairs; ++p) {
            pair_object_.push_back(object_of(in, pairs[p]));
            pair_track_.push_back(track_of(in, pairs[p]));
            ++first_of_object_[pair_object_.back() + 1];
        }
    for (std::size_t o = 1; o < first_of_object_.size(); ++o)
        first_of_object_[o] += first_of_object_[o - 1];
    by_object_.resize(pairs.size());
    for (std::size_t p = 0; p < pairs.size(); ++p)
        by_object_[first_of_object_[pair_object_[p]]++] = p;

    links.clear();
    link_of.resize(pairs.size());
    latest_link_.assign(tracks.ids.size(), 0);
    for (const std::size_t p : by_object_) {
        std::uint32_t& latest = latest_link_[pair_track_[p]];
        if (latest == 0 || links[latest - 1].object != pair_object_[p]) {
            links.push_back({pair_object_[p], pair_track_[p]});
            latest = static_cast<std::uint32_t>(links.size());
        }
        link_of[p] = latest - 1;
    }
}

std::optional<row_fault> scene::assign(const prepared_truth& objects, const score_row* rows, std::size_t count)
{
    truth = &objects;
    if (const auto fault = tracks.assign(rows, count, objects.length))
        return fault;
    if (const auto fault = find_pairs())
        return fault;
    apply_rules();
    count_tracks();
    join_links();
    return std::nullopt;
}

}  // namespace zeltrack
