// SPDX-License-Identifier: MIT
//
// The subcommand `track`.
#include <iostream>

#include "cli/command_line.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "track/track.h"

namespace zeltrack {

static void run(command_line& line)
{
    track_options options;
    std::string output = "-";
    bool no_sync = false;
    declare_options(line, options);
    line.text("-o,--output", "OUT", output,
              "where to write the tracks; - is standard output, the default.\n"
              "A file appears when all of it is there");
    line.flag("--no-sync", no_sync, no_sync_help);
    if (!line.parse())
        return;

    refuse_shared_files({options.detections}, {output});
    const sequence input = load_sequence(options);
    output_file results(output, !no_sync);
    progress bar(!options.quiet, "frame", input.frames);
    const auto write = [&](int frame, const std::vector<track_row>& rows, const zel_host_frame_t&) {
        for (const track_row& row : rows)
            append_row(results.buffer(), row.box, options.layout.frame_base);
        results.flush_if_full();
        bar.update(frame);
    };
    const track_summary summary = track_sequence(input, options, write);
    refuse_missing_memory(summary);
    results.commit();
    if (!options.quiet)
        print_summary(std::cerr, summary, options);
}

const subcommand track_command = {
    "track",
    "track a file of detections: numbered tracks come out",
    "Track the detections of a MOTChallenge file and write the tracks, in the same layout, as lines\n"
    "frame,id,left,top,width,height,conf,-1,-1,-1 by frame. A summary goes to standard error.",
    "A track is reported from its --stable-th frame on, where a detection took part in it.\n",
    run,
};

}  // namespace zeltrack
