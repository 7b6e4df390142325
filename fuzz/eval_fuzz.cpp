// SPDX-License-Identifier: MIT
//
// Scoring of a file of truth and one of tracks, as they are read. The first byte chooses the rules and the number of
// the first frame; the next byte of 0 divides the files, after which comes a seqinfo.ini if there is another.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>

#include "eval/rows.h"
#include "eval/score.h"
#include "mot/seqinfo.h"
#include "require.h"

namespace {

using namespace zeltrack;

std::string next_file(std::string& text)
{
    const std::size_t end = std::min(text.find('\0'), text.size());
    std::string file = text.substr(0, end);
    text.erase(0, end + 1);
    return file;
}

void require_share(double value, const char* what)
{
    require(value >= 0 && value <= 1 + 1e-9, what);  // no NaN is
}

void require_sound(const sequence_score& s)
{
    for (std::size_t t = 0; t < threshold_count; ++t) {
        for (const auto curve : {&hota_score::hota, &hota_score::det_a, &hota_score::ass_a, &hota_score::ass_re,
                                 &hota_score::ass_pr, &hota_score::loc_a, &hota_score::owta})
            require_share((s.hota.*curve)[t], "HOTA's figures are shares");
        require(s.hota.tp[t] + s.hota.fn[t] == s.count.gt_dets && s.hota.tp[t] + s.hota.fp[t] == s.count.dets,
                "HOTA counts every box");
    }
    require(s.clear.tp + s.clear.fn == s.count.gt_dets && s.clear.tp + s.clear.fp == s.count.dets,
            "CLEAR counts every box");
    require(s.clear.mt + s.clear.pt + s.clear.ml == s.count.gt_ids, "every object is tracked mostly, partly or not");
    require(s.clear.mota <= s.clear.motal && s.clear.motal <= s.clear.moda && s.clear.moda <= 1, "switches cost");
    require_share(s.clear.motp, "MOTP is a share");
    require_share(s.identity.idf1, "IDF1 is a share");
    require(s.identity.idtp <= std::min(s.count.dets, s.count.gt_dets) && s.identity.idtp >= 0,
            "IDTP within the boxes");
}

void require_named(const row_fault& fault, const score_file& file, int length)
{
    require(fault.row < file.rows.size() && fault.earlier <= fault.row, "a fault names a row");
    require(!text_of(fault, file, length).empty(), "and has a text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const auto rules = static_cast<score_rules>(data[0] % 3);
    std::string text(data + 1, data + size);
    std::istringstream truth_text(next_file(text)), track_text(next_file(text)), info_text(text);
    score_file truth, tracks;
    sequence_info info;
    if (read_truth_rows(truth_text, data[0] / 3 % 2, truth) || read_track_rows(track_text, data[0] / 3 % 2, tracks) ||
        read_sequence_info(info_text, info))
        return 0;
    const int length = info.frames > 0 ? info.frames : std::max(truth.last_frame, tracks.last_frame);

    scorer subject;
    sequence_score score;
    if (const auto fault = subject.set_truth(truth.rows.data(), truth.rows.size(), rules, length)) {
        require_named(*fault, truth, length);
    } else if (const auto wrong = subject.score(tracks.rows.data(), tracks.rows.size(), score)) {
        require_named(*wrong, tracks, length);
    } else {
        require_sound(score);
        require_sound(combined(&score, 1));
        require(subject.switches().size() == static_cast<std::size_t>(score.clear.idsw), "every switch is listed");
    }
    return 0;
}
