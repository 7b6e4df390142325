// SPDX-License-Identifier: MIT
//
// The scorer, and how figures are formed of counts, be they of one sequence or of many.
#include "eval/score.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "eval/figures.h"
#include "eval/scene.h"

namespace zeltrack {

static constexpr threshold_curve every_twentieth()
{
    threshold_curve thresholds{};
    for (std::size_t t = 0; t < threshold_count; ++t)
        thresholds[t] = 0.05 + 0.05 * static_cast<double>(t);
    return thresholds;
}

const threshold_curve score_thresholds = every_twentieth();

double mean(const threshold_curve& curve)
{
    return std::accumulate(curve.begin(), curve.end(), 0.0) / static_cast<double>(curve.size());
}

// --- ratios ----------------------------------------------------------------------------------------------------------

// Of counts; 0 where there is nothing to count.
static double ratio(double part, double whole)
{
    return part / std::max(1.0, whole);
}

void form_ratios(hota_score& f)
{
    for (std::size_t t = 0; t < threshold_count; ++t) {
        f.det_re[t] = ratio(f.tp[t], f.tp[t] + f.fn[t]);
        f.det_pr[t] = ratio(f.tp[t], f.tp[t] + f.fp[t]);
        f.det_a[t] = ratio(f.tp[t], f.tp[t] + f.fn[t] + f.fp[t]);
        f.hota[t] = std::sqrt(f.det_a[t] * f.ass_a[t]);
        f.owta[t] = std::sqrt(f.det_re[t] * f.ass_a[t]);
    }
    f.hota_0 = f.hota[0];
    f.loc_a_0 = f.loc_a[0];
    f.hota_loc_a_0 = f.hota_0 * f.loc_a_0;
}

void form_ratios(clear_score& f)
{
    const double boxes = f.tp + f.fn;
    const double objects = f.mt + f.pt + f.ml;
    f.mtr = ratio(f.mt, objects);
    f.ptr = ratio(f.pt, objects);
    f.mlr = ratio(f.ml, objects);
    f.re = ratio(f.tp, boxes);
    f.pr = ratio(f.tp, f.tp + f.fp);
    f.f1 = ratio(f.tp, f.tp + (f.fn + f.fp) / 2);
    f.moda = ratio(f.tp - f.fp, boxes);
    f.mota = ratio(f.tp - f.fp - f.idsw, boxes);
    f.motal = ratio(f.tp - f.fp - (f.idsw > 0 ? std::log10(f.idsw) : 0), boxes);
    f.smota = ratio(f.motp_sum - f.fp - f.idsw, boxes);
    f.motp = ratio(f.motp_sum, f.tp);
    f.fp_per_frame = ratio(f.fp, f.frames);
}

void form_ratios(identity_score& f)
{
    f.idr = ratio(f.idtp, f.idtp + f.idfn);
    f.idp = ratio(f.idtp, f.idtp + f.idfp);
    f.idf1 = ratio(f.idtp, f.idtp + (f.idfn + f.idfp) / 2);
}

// --- sums over sequences ---------------------------------------------------------------------------------------------

// Association is a mean over matches, so that the matches are its weight; and so is the place of the boxes.
static hota_score sum(const hota_score& a, const hota_score& b)
{
    hota_score both;
    for (std::size_t t = 0; t < threshold_count; ++t) {
        both.tp[t] = a.tp[t] + b.tp[t];
        both.fn[t] = a.fn[t] + b.fn[t];
        both.fp[t] = a.fp[t] + b.fp[t];
        for (const auto figure : {&hota_score::ass_a, &hota_score::ass_re, &hota_score::ass_pr, &hota_score::loc_a})
            (both.*figure)[t] = ratio((a.*figure)[t] * a.tp[t] + (b.*figure)[t] * b.tp[t], both.tp[t]);
        if (both.tp[t] == 0)
            both.loc_a[t] = 1;
    }
    return both;
}

template <typename Score, std::size_t N>
static void add(Score& total, const Score& part, double Score::*const (&members)[N])
{
    for (const auto member : members)
        total.*member += part.*member;
}

sequence_score combined(const sequence_score* scores, std::size_t count)
{
    using clear = clear_score;
    using counts = count_score;
    sequence_score total;
    total.hota.loc_a.fill(1);
    for (const sequence_score* it = scores; it != scores + count; ++it) {
        total.hota = sum(total.hota, it->hota);
        add(total.clear, it->clear,
            {&clear::tp, &clear::fn, &clear::fp, &clear::idsw, &clear::frag, &clear::mt, &clear::pt, &clear::ml,
             &clear::motp_sum, &clear::frames});
        add(total.identity, it->identity, {&identity_score::idtp, &identity_score::idfn, &identity_score::idfp});
        add(total.count, it->count, {&counts::dets, &counts::gt_dets, &counts::ids, &counts::gt_ids, &counts::frames});
    }
    form_ratios(total.hota);
    form_ratios(total.clear);
    form_ratios(total.identity);
    return total;
}

// --- the scorer ------------------------------------------------------------------------------------------------------

struct scorer::parts {
    prepared_truth truth;
    scene both;
    hota_figures hota;
    clear_figures clear;
    identity_figures identity;
};

scorer::scorer() : parts_(std::make_unique<parts>()) {}
scorer::~scorer() = default;
scorer::scorer(const scorer& other) : parts_(std::make_unique<parts>(*other.parts_)) {}
scorer::scorer(scorer&&) noexcept = default;
scorer& scorer::operator=(scorer&&) noexcept = default;

scorer& scorer::operator=(const scorer& other)
{
    if (this != &other)
        *this = scorer(other);
    return *this;
}

std::optional<row_fault> scorer::set_truth(const score_row* rows, std::size_t count, score_rules rules, int frames)
{
    const auto fault = parts_->truth.assign(rows, count, rules, frames);
    if (fault)
        parts_->truth = {};
    return fault;
}

std::optional<row_fault> scorer::score(const score_row* tracks, std::size_t count, sequence_score& result)
{
    parts& p = *parts_;
    if (const auto fault = p.both.assign(p.truth, tracks, count))
        return fault;
    p.hota.score(p.both, result.hota);
    p.clear.score(p.both, result.clear);
    p.identity.score(p.both, result.identity);
    result.count = {p.both.boxes, p.truth.boxes, p.both.tracks_left, p.truth.objects,
                    static_cast<double>(p.truth.length)};
    return std::nullopt;
}

const std::vector<object_match>& scorer::matches() const
{
    return parts_->clear.matches;
}

const std::vector<identity_switch>& scorer::switches() const
{
    return parts_->clear.switches;
}

}  // namespace zeltrack
