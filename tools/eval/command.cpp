// SPDX-License-Identifier: MIT
//
// The subcommand `eval`: one sequence at a time, so that memory is that of the longest.
#include <algorithm>
#include <memory>

#include "cli/command_line.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "eval/eval.h"
#include "eval/pairing.h"
#include "eval/report.h"
#include "eval/rows.h"
#include "eval/score.h"
#include "eval/truth.h"

namespace zeltrack {

namespace {

struct eval_options {
    std::string truth;
    std::vector<std::string> tracks;
    rules_choice rules = rules_choice::automatic;
    report_format format = report_format::table;
    std::vector<report_column> columns;
    std::string switches;
    std::string curve;
    int frame_base = 1;
    bool skip_missing = false;
    bool no_sync = false;
    bool quiet = false;
};

}  // namespace

static void declare_options(command_line& line, eval_options& options)
{
    line.text("GT", "", options.truth,
              "file of true boxes, frame,id,left,top,width,height,counts[,class,...], "
              "or a folder of SEQ.txt, SEQ/gt.txt or SEQ/gt/gt.txt")
        .required();
    line.texts("TRACKS", "", options.tracks,
               "file of tracks, or a folder of SEQ.txt; several are compared, and the best value of each is marked")
        .required();
    declare_rules(line, options.rules);
    read_columns(default_columns, options.columns);
    line.custom(
        "--columns", "NAMES", [&options](const std::string& text) { return read_columns(text, options.columns); },
        "figures to show, divided by commas: those of --format json, and TP, FP, FN, ids (default " +
            std::string(default_columns) + ")");
    line.choice("--format", options.format,
                {{"table", report_format::table},
                 {"csv", report_format::csv},
                 {"json", report_format::json},
                 {"markdown", report_format::markdown}},
                "of the report; csv and json have ratios from 0 to 1 with all digits, json has every figure");
    line.text("--switches", "FILE", options.switches, "write a row of CSV for each identity switch");
    line.text("--curve", "FILE", options.curve, "write HOTA at each threshold as CSV");
    line.number("--frame-base", "N", options.frame_base, {0, 1}, "number of the first frame, in all files");
    line.flag("--skip-missing", options.skip_missing, "leave out sequences that are not everywhere");
    line.flag("--no-sync", options.no_sync, no_sync_help);
    line.flag("-q,--quiet", options.quiet, "no warnings, no progress bar");
}

static scored_sequence score_files(const eval_options& options, const sequence_files& files, scorer& subject)
{
    const sequence_truth truth = load_sequence_truth(files, options.rules, options.frame_base);

    scored_sequence result{files.name, {}, {}};
    int length = -1;
    for (const std::string& path : files.tracks) {
        const score_file tracks = load_track_rows(path, options.frame_base);
        const int wanted = truth.length_with(tracks.last_frame);
        if (wanted != length)
            truth.give_to(subject, wanted);
        length = wanted;
        sequence_score score;
        refuse_fault(subject.score(tracks.rows.data(), tracks.rows.size(), score), tracks, length);
        result.scores.push_back(score);
        result.switches.push_back(subject.switches());
        for (identity_switch& it : result.switches.back())
            it.frame += options.frame_base - 1;
    }
    return result;
}

static report score_all(const eval_options& options, const pairing& pairs)
{
    report result{pairs.trackers, {}, {}};
    scorer subject;
    progress bar(!options.quiet, "sequence", static_cast<int>(pairs.sequences.size()));
    for (const sequence_files& files : pairs.sequences) {
        result.sequences.push_back(score_files(options, files, subject));
        bar.update(static_cast<int>(result.sequences.size()));
    }
    for (std::size_t s = 0; s < pairs.trackers.size(); ++s) {
        std::vector<sequence_score> scores;
        scores.reserve(result.sequences.size());
        for (const scored_sequence& sequence : result.sequences)
            scores.push_back(sequence.scores[s]);
        result.total.scores.push_back(combined(scores.data(), scores.size()));
    }
    return result;
}

static void check_pairs(const eval_options& options, const pairing& pairs)
{
    refuse_missing(pairs, options.skip_missing, options.quiet, "tracks");
    for (const sequence_files& files : pairs.sequences)
        if (files.name == "combined" && options.format == report_format::json)
            throw failure(printable(files.truth) + ": expected another name, \"combined\" is that of the sum");
}

// All are opened before the first is committed, so that a wrong name leaves nothing half done.
static void write_report(const eval_options& options, const report& result)
{
    const std::pair<std::string, std::string> texts[] = {{"-", to_text(result, options.format, options.columns)},
                                                         {options.switches, switches_of(result)},
                                                         {options.curve, curves_of(result)}};
    std::vector<std::unique_ptr<output_file>> files;
    for (const auto& [path, text] : texts) {
        if (path.empty())
            continue;
        files.push_back(std::make_unique<output_file>(path, !options.no_sync));
        files.back()->buffer() = text;
    }
    for (const auto& file : files)
        file->commit();
}

static void run(command_line& line)
{
    eval_options options;
    declare_options(line, options);
    if (!line.parse())
        return;
    std::vector<std::string> inputs = options.tracks;
    inputs.push_back(options.truth);
    if (std::count(inputs.begin(), inputs.end(), "-") > 1)
        throw failure("expected standard input for one file only", exit_usage);
    const pairing pairs = pair_files(options.truth, options.tracks);
    for (const sequence_files& files : pairs.sequences) {
        inputs.push_back(files.truth);
        inputs.insert(inputs.end(), files.tracks.begin(), files.tracks.end());
    }
    refuse_shared_files(inputs, {"-", options.switches, options.curve});
    check_pairs(options, pairs);

    write_report(options, score_all(options, pairs));
}

const subcommand eval_command = {
    "eval",
    "say how good tracks are: HOTA, MOTA, IDF1 and all that belongs to them",
    "Compare tracks with ground truth, a file or a folder of sequences at a time, and print HOTA, CLEAR and Identity "
    "figures for each sequence and for all. Ratios are in percent.",
    "The length of a sequence is that in its seqinfo.ini, else its last frame.\n",
    run,
};

}  // namespace zeltrack
