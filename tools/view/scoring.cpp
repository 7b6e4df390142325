// SPDX-License-Identifier: MIT
//
// Boxes that count are of class 1, so that the rules with classes suit ground truth without them, too.
#include "view/scoring.h"

#include <algorithm>
#include <climits>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "eval/as_written.h"
#include "eval/figure_list.h"

namespace zeltrack {

static std::vector<score_row> rows_of(const true_boxes& truth)
{
    std::vector<score_row> rows;
    rows.reserve(truth.counted.size() + truth.others.size());
    for (const mot_row& row : truth.counted)
        rows.push_back(to_score(row));
    int id = INT_MIN;  // far from those in files, and never shown
    for (const mot_row& row : truth.others) {
        rows.push_back(to_score(row));
        rows.back().id = id++;
        rows.back().cls = static_cast<int>(row.cls);
        rows.back().counts = false;
    }
    return rows;
}

static int last_frame(const std::vector<score_row>& rows, int frames)
{
    for (const score_row& row : rows)
        frames = std::max(frames, row.frame);
    return frames;
}

void run_scorer::observe(const std::vector<track_row>& rows)
{
    if (truth_)
        for (const track_row& row : rows)
            tracks_.push_back(to_score(row.box));
}

void run_scorer::score(int frames)
{
    const std::vector<score_row> truth = truth_ ? rows_of(*truth_) : std::vector<score_row>();
    scored_ = truth_ && !scorer_.set_truth(truth.data(), truth.size(), score_rules::mot17, last_frame(truth, frames)) &&
              !scorer_.score(tracks_.data(), tracks_.size(), result_);
}

void run_scorer::pack_figures(package& out, const std::string& prefix) const
{
    static constexpr std::string_view shown[] = {"HOTA", "DetA", "AssA",   "MOTA",   "IDF1", "IDSW",
                                                 "Frag", "MT",   "CLR_FP", "CLR_FN", "ML",   "IDs"};
    for (const figure& it : figures())
        if (scored_ && std::find(std::begin(shown), std::end(shown), it.name) != std::end(shown))
            out.number(prefix + it.name, it.value(result_));
}

// --- what became of the objects --------------------------------------------------------------------------------------

static double shared_length(double a, double a_length, double b, double b_length)
{
    return std::min(a + a_length, b + b_length) - std::max(a, b);
}

static double overlap_of(const mot_row& a, const mot_row& b)
{
    const double w = shared_length(a.left, a.width, b.left, b.width);
    const double h = shared_length(a.top, a.height, b.top, b.height);
    if (!(w > 0 && h > 0))
        return 0;
    return w * h / (static_cast<double>(a.width) * a.height + static_cast<double>(b.width) * b.height - w * h);
}

static std::uint64_t detection_of(const mot_row& object, const mot_row* first, const mot_row* last)
{
    double most = 0;
    std::uint64_t place = 0;
    for (const mot_row* row = first; row != last; ++row) {
        const double overlap = overlap_of(object, *row);
        if (overlap < 0.5 || overlap <= most)
            continue;
        most = overlap;
        place = static_cast<std::uint64_t>(row - first) + 1;
    }
    return place;
}

void run_scorer::pack_followers(package& out, const std::string& name) const
{
    std::map<std::pair<int, int>, int> tracks;
    for (const object_match& it : scorer_.matches())
        tracks[{it.frame, it.object}] = it.track;
    column followed;
    for (const mot_row& object : truth_->counted) {
        const auto track = tracks.find({object.frame, object.id});
        followed.put(track == tracks.end() ? 0 : static_cast<std::uint64_t>(track->second));
    }
    out.data(name, followed);
}

void run_scorer::pack_objects(package& out, const std::vector<mot_row>& detections) const
{
    if (!scored_)
        return;
    column detected;
    const mot_row* first = detections.data();
    const mot_row* const end = first + detections.size();
    for (const mot_row& object : truth_->counted) {
        while (first != end && first->frame < object.frame)
            ++first;
        const mot_row* last = first;
        while (last != end && last->frame == object.frame)
            ++last;
        detected.put(detection_of(object, first, last));
    }
    out.data("truthDetection", detected);
    pack_followers(out, "truthTrack");
    column changes;
    for (const identity_switch& it : scorer_.switches())
        for (const int value : {it.frame, it.object, it.from, it.to, it.since})
            changes.put_signed(value);
    out.data("changes", changes);
}

}  // namespace zeltrack
