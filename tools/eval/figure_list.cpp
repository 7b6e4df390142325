// SPDX-License-Identifier: MIT
//
// The list of all figures, in the order of the JSON report.
#include "eval/figure_list.h"

namespace zeltrack {

using kind = figure::kind;

template <auto Group, auto Member>
static double one(const sequence_score& score)
{
    return score.*Group.*Member;
}

template <auto Member>
static const threshold_curve& curve(const sequence_score& score)
{
    return score.hota.*Member;
}

template <auto Member>
static double curve_mean(const sequence_score& score)
{
    return mean(score.hota.*Member);
}

template <auto Member>
static constexpr figure of_hota(const char* name, kind shown, int better)
{
    return {"HOTA", name, shown, better, curve_mean<Member>, curve<Member>};
}

template <auto Group, auto Member>
static constexpr figure single(const char* group, const char* name, kind shown, int better)
{
    return {group, name, shown, better, one<Group, Member>, nullptr};
}

template <auto Member>
static constexpr figure lowest(const char* name)
{
    return single<&sequence_score::hota, Member>("HOTA", name, kind::ratio, 1);
}

template <auto Member>
static constexpr figure of_clear(const char* name, kind shown, int better)
{
    return single<&sequence_score::clear, Member>("CLEAR", name, shown, better);
}

template <auto Member>
static constexpr figure of_identity(const char* name, kind shown, int better)
{
    return single<&sequence_score::identity, Member>("Identity", name, shown, better);
}

template <auto Member>
static constexpr figure of_count(const char* name)
{
    return single<&sequence_score::count, Member>("Count", name, kind::count, 0);
}

const std::vector<figure>& figures()
{
    using h = hota_score;
    using c = clear_score;
    using i = identity_score;
    static const std::vector<figure> list = {
        of_hota<&h::hota>("HOTA", kind::ratio, 1),
        of_hota<&h::det_a>("DetA", kind::ratio, 1),
        of_hota<&h::ass_a>("AssA", kind::ratio, 1),
        of_hota<&h::det_re>("DetRe", kind::ratio, 1),
        of_hota<&h::det_pr>("DetPr", kind::ratio, 1),
        of_hota<&h::ass_re>("AssRe", kind::ratio, 1),
        of_hota<&h::ass_pr>("AssPr", kind::ratio, 1),
        of_hota<&h::loc_a>("LocA", kind::ratio, 1),
        of_hota<&h::owta>("OWTA", kind::ratio, 1),
        of_hota<&h::tp>("HOTA_TP", kind::sum, 1),
        of_hota<&h::fn>("HOTA_FN", kind::sum, -1),
        of_hota<&h::fp>("HOTA_FP", kind::sum, -1),
        lowest<&h::hota_0>("HOTA(0)"),
        lowest<&h::loc_a_0>("LocA(0)"),
        lowest<&h::hota_loc_a_0>("HOTALocA(0)"),
        of_clear<&c::mota>("MOTA", kind::ratio, 1),
        of_clear<&c::motp>("MOTP", kind::ratio, 1),
        of_clear<&c::moda>("MODA", kind::ratio, 1),
        of_clear<&c::motal>("MOTAL", kind::ratio, 1),
        of_clear<&c::smota>("sMOTA", kind::ratio, 1),
        of_clear<&c::re>("CLR_Re", kind::ratio, 1),
        of_clear<&c::pr>("CLR_Pr", kind::ratio, 1),
        of_clear<&c::f1>("CLR_F1", kind::ratio, 1),
        of_clear<&c::tp>("CLR_TP", kind::count, 1),
        of_clear<&c::fn>("CLR_FN", kind::count, -1),
        of_clear<&c::fp>("CLR_FP", kind::count, -1),
        of_clear<&c::idsw>("IDSW", kind::count, -1),
        of_clear<&c::frag>("Frag", kind::count, -1),
        of_clear<&c::mt>("MT", kind::count, 1),
        of_clear<&c::pt>("PT", kind::count, 0),
        of_clear<&c::ml>("ML", kind::count, -1),
        of_clear<&c::mtr>("MTR", kind::ratio, 1),
        of_clear<&c::ptr>("PTR", kind::ratio, 0),
        of_clear<&c::mlr>("MLR", kind::ratio, -1),
        of_clear<&c::motp_sum>("MOTP_sum", kind::sum, 1),
        of_clear<&c::frames>("CLR_Frames", kind::count, 0),
        of_clear<&c::fp_per_frame>("FP_per_frame", kind::sum, -1),
        of_identity<&i::idf1>("IDF1", kind::ratio, 1),
        of_identity<&i::idr>("IDR", kind::ratio, 1),
        of_identity<&i::idp>("IDP", kind::ratio, 1),
        of_identity<&i::idtp>("IDTP", kind::count, 1),
        of_identity<&i::idfn>("IDFN", kind::count, -1),
        of_identity<&i::idfp>("IDFP", kind::count, -1),
        of_count<&count_score::dets>("Dets"),
        of_count<&count_score::gt_dets>("GT_Dets"),
        of_count<&count_score::ids>("IDs"),
        of_count<&count_score::gt_ids>("GT_IDs"),
        of_count<&count_score::frames>("Frames"),
    };
    return list;
}

}  // namespace zeltrack
