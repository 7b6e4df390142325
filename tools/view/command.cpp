// SPDX-License-Identifier: MIT
//
// The subcommand `view`.
#include <algorithm>
#include <iostream>

#include "cli/command_line.h"
#include "cli/output_file.h"
#include "eval/pairing.h"
#include "eval/rows.h"
#include "mot/seqinfo.h"
#include "track/settle.h"
#include "view/view.h"

namespace zeltrack {

static mot_row to_mot(const score_row& row)
{
    mot_row out;
    out.frame = row.frame;
    out.id = row.id;
    out.left = static_cast<float>(row.left);
    out.top = static_cast<float>(row.top);
    out.width = static_cast<float>(row.width);
    out.height = static_cast<float>(row.height);
    out.cls = static_cast<float>(row.cls);
    return out;
}

// Rows that the command eval would refuse are refused here, too.
static true_boxes load_truth(const std::string& path, int frame_base)
{
    score_file file = load_truth_rows(path, frame_base);
    const score_rules rules = rules_of(file, sequence_name(path));
    scorer check;
    if (const auto fault = check.set_truth(file.rows.data(), file.rows.size(), rules, file.last_frame))
        throw failure(text_of(*fault, file, file.last_frame));
    std::stable_sort(file.rows.begin(), file.rows.end(),
                     [](const score_row& a, const score_row& b) { return a.frame < b.frame; });
    true_boxes truth;
    for (score_row& row : file.rows) {
        const score_role role = role_of(row, rules);
        if (role == score_role::counted)
            truth.counted.push_back(to_mot(row));
        else if (rules != score_rules::mot15)
            truth.others.push_back(to_mot(row));
        if (role == score_role::distractor)
            truth.others.back().cls = distractor_class;
    }
    return truth;
}

// By frame; the rows that eval would read.
static std::vector<mot_row> load_tracks(const std::string& path, int frame_base)
{
    std::vector<mot_row> tracks;
    const score_file file = load_track_rows(path, frame_base);
    tracks.reserve(file.rows.size());
    for (const score_row& row : file.rows)
        tracks.push_back(to_mot(row));
    std::stable_sort(tracks.begin(), tracks.end(),
                     [](const mot_row& a, const mot_row& b) { return a.frame < b.frame; });
    return tracks;
}

static std::string read_size(const std::string& text, view_options& options)
{
    constexpr range<int> side = {1, 1000000};
    return parse_size(text, side, options.width, options.height) ? ""
                                                                 : expected("WxH, each from " + to_text(side), text);
}

static void run(command_line& line)
{
    view_options options;
    std::string output;
    std::string truth;
    std::string compared;
    std::string images;
    bool no_sync = false;
    declare_options(line, options.track);
    line.text("--gt", "FILE", truth, "ground truth with identifiers, to be shown beside the tracks");
    line.text("--compare", "FILE", compared, "tracks of any tracker, to be shown beside these");
    line.text("--images", "DIR", images,
              "pictures, by name or in a folder img1, to be shown beneath; the page refers to where they lie");
    line.custom(
        "--size", "WxH", [&options](const std::string& text) { return read_size(text, options); },
        "image size in pixels; without it that of a seqinfo.ini or of\nthe pictures");
    line.text("-o,--output", "PAGE", output, "where to write the page; - is standard output").required();
    line.flag("--no-sync", no_sync, no_sync_help);
    if (!line.parse())
        return;

    options.command = line.typed();
    refuse_shared_files({options.track.detections, truth, compared}, {output});
    if (truth == "-" && options.track.detections == "-")
        throw failure("--gt: expected a file other than that of the detections", exit_usage);
    if (compared == "-" && (truth == "-" || options.track.detections == "-"))
        throw failure("--compare: expected a file of its own", exit_usage);
    const sequence file = load_sequence(options.track);
    settle(options.track, file);
    if (!truth.empty())
        options.truth = load_truth(truth, options.track.layout.frame_base);
    if (!compared.empty()) {
        options.compared = load_tracks(compared, options.track.layout.frame_base);
        options.compared_name = compared;
    }
    if (!images.empty())
        options.pictures = find_pictures(images, output);
    if (!file.info.empty() && options.width == 0) {
        const sequence_info info = load_sequence_info(file.info);
        options.width = info.width;
        options.height = info.height;
    }
    output_file page(output, !no_sync);
    const track_summary summary = view_sequence(file, options, page.buffer());
    refuse_missing_memory(summary);
    page.commit();
    if (!options.track.quiet)
        print_summary(std::cerr, summary, options.track);
}

const subcommand view_command = {
    "view",
    "track, and write a page that shows what the tracker did and why",
    "Track the detections of a MOTChallenge file and write one HTML page that shows every frame, every track and the "
    "reason for every match. It opens from disk and needs no network.",
    "",
    run,
};

}  // namespace zeltrack
