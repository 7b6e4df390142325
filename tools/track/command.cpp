// SPDX-License-Identifier: MIT
//
// The subcommand `track`.
#include <algorithm>
#include <iostream>
#include <set>
#include <vector>

#include "cli/command_line.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "track/settle.h"
#include "track/stitch.h"
#include "track/tentative.h"
#include "track/track.h"

namespace zeltrack {

// What is only known when the whole of a recording is.
struct recording_options {
    int stitch = 0;
    bool backfill = false;
    bool any() const { return stitch > 0 || backfill; }
};

static void declare_recording(command_line& line, recording_options& options)
{
    line.number("--stitch", "N", options.stitch, {0, max_frame},
                "for recordings: let a track that begins up to N frames after "
                "another one ended go on with its identifier, where it lies on "
                "the other's way; 0 is none");
    line.flag("--backfill", options.backfill,
              "for recordings: also write the frames of a track before it was confirmed");
}

static void append_rows(output_file& results, const std::vector<mot_row>& rows, int frame_base)
{
    for (const mot_row& row : rows) {
        append_row(results.buffer(), row, frame_base);
        results.flush_if_full();
    }
}

// Keeps all rows, and writes them at the end.
static track_summary track_recording(const sequence& input, const track_options& options,
                                     const recording_options& recorded, output_file& results, progress& bar)
{
    tentative_watch tentative;
    std::vector<mot_row> rows;
    const auto keep = [&](int frame, const std::vector<track_row>& found, const zel_host_frame_t& given) {
        if (recorded.backfill)
            tentative.take(frame, given, rows);
        for (const track_row& row : found)
            rows.push_back(row.box);
        bar.update(frame);
    };
    track_summary summary = track_sequence(
        input, options, keep, recorded.backfill ? frame_process{tentative_watch::process, &tentative} : plain_process);
    std::stable_sort(rows.begin(), rows.end(), [](const mot_row& a, const mot_row& b) { return a.frame < b.frame; });
    if (recorded.stitch > 0)
        stitch(rows, recorded.stitch);
    append_rows(results, rows, options.layout.frame_base);
    std::set<int> identifiers;
    for (const mot_row& row : rows)
        identifiers.insert(row.id);
    summary.rows = rows.size();
    summary.identifiers = identifiers.size();
    return summary;
}

static track_summary track_live(const sequence& input, const track_options& options, output_file& results,
                                progress& bar)
{
    const auto write = [&](int frame, const std::vector<track_row>& rows, const zel_host_frame_t&) {
        for (const track_row& row : rows)
            append_row(results.buffer(), row.box, options.layout.frame_base);
        results.flush_if_full();
        bar.update(frame);
    };
    return track_sequence(input, options, write);
}

static void run(command_line& line)
{
    track_options options;
    std::string output = "-";
    bool no_sync = false;
    recording_options recorded;
    declare_options(line, options);
    declare_recording(line, recorded);
    line.text("-o,--output", "OUT", output,
              "where to write the tracks; - is standard output, the default. "
              "A file appears when all of it is there");
    line.flag("--no-sync", no_sync, no_sync_help);
    if (!line.parse())
        return;

    refuse_shared_files({options.detections}, {output});
    const sequence input = load_sequence(options);
    settle(options, input);
    output_file results(output, !no_sync);
    progress bar(!options.quiet, "frame", input.frames);
    const track_summary summary = recorded.any() ? track_recording(input, options, recorded, results, bar)
                                                 : track_live(input, options, results, bar);
    refuse_missing_memory(summary);
    results.commit();
    if (!options.quiet)
        print_summary(std::cerr, summary, options);
}

const subcommand track_command = {
    "track",
    "track a file of detections: numbered tracks come out",
    "Track the detections of a MOTChallenge file and write the tracks, in the same layout, as lines "
    "frame,id,left,top,width,height,conf,-1,-1,-1 by frame. A summary goes to standard error.",
    "A track is reported from its --stable-th frame on, where a detection took part in it.\n",
    run,
};

}  // namespace zeltrack
