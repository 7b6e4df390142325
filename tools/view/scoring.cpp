// SPDX-License-Identifier: MIT
//
// Boxes that count are of class 1, so that the rules with classes suit ground truth without them, too.
#include "view/scoring.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <string>
#include <string_view>

#include "eval/figure_list.h"

namespace zeltrack {

// The number that a file has for it, as long as it has no more digits than a float. The difference is a rounding, but
// boxes whose overlap is exactly a threshold are not rare.
static double as_written(float value)
{
    constexpr int most_digits = 9;
    double unit = 1;
    for (int digits = 0; digits <= most_digits; ++digits, unit *= 10) {
        const double decimal = std::nearbyint(value * unit) / unit;
        if (static_cast<float>(decimal) == value)
            return decimal;
    }
    return value;
}

static score_row to_score(const mot_row& row)
{
    return {
        row.frame, row.id, as_written(row.left), as_written(row.top), as_written(row.width), as_written(row.height)};
}

static std::vector<score_row> rows_of(const true_boxes& truth)
{
    std::vector<score_row> rows;
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

void run_scorer::pack(package& out, int frames) const
{
    static constexpr std::string_view shown[] = {"HOTA", "DetA", "AssA",   "MOTA",   "IDF1", "IDSW",
                                                 "Frag", "MT",   "CLR_FP", "CLR_FN", "ML",   "IDs"};
    scorer subject;
    sequence_score score;
    const std::vector<score_row> truth = truth_ ? rows_of(*truth_) : std::vector<score_row>();
    const bool scored = truth_ &&
                        !subject.set_truth(truth.data(), truth.size(), score_rules::mot17, last_frame(truth, frames)) &&
                        !subject.score(tracks_.data(), tracks_.size(), score);
    column changes;
    if (scored)
        for (const identity_switch& it : subject.switches())
            for (const int value : {it.frame, it.object, it.from, it.to})
                changes.put_signed(value);
    out.data("changes", changes);
    for (const figure& it : figures())
        if (scored && std::find(std::begin(shown), std::end(shown), it.name) != std::end(shown))
            out.number(std::string("figure.") + it.name, it.value(score));
}

}  // namespace zeltrack
