// SPDX-License-Identifier: MIT
//
// The subcommand `synth`.
#include <algorithm>
#include <limits>
#include <optional>

#include "cli/command_line.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "synth/synth.h"

namespace zeltrack {

static std::string read_size(const std::string& text, synth_options& options)
{
    if (parse_size(text, image_side, options.width, options.height))
        return "";
    return expected("WxH, each from " + to_text(image_side), text);
}

static void declare_options(command_line& line, synth_options& options)
{
    line.number("--objects", "N", options.objects, {1, 100000},
                "objects in view at any time; as one leaves, another enters. "
                "The more, the smaller and slower");
    line.number("--frames", "N", options.frames, {1, max_frame}, "frames of the sequence");
    line.custom(
        "--size", "WxH", [&options](const std::string& text) { return read_size(text, options); },
        "image size in pixels; each " + to_text(image_side) + " (default " + to_text(options.width) + 'x' +
            to_text(options.height) + ')');
    line.number("--pan", "PX", options.pan, {-1000, 1000},
                "how far the camera moves to the right in a frame, in pixels");
    line.number("--miss", "P", options.miss, {0, 1}, "share of the objects that is not detected in a frame");
    line.number("--noise", "PX", options.noise, {0, 1000},
                "error of a detection's centre and height in pixels, as a standard deviation");
    line.number("--seed", "N", options.seed, {0, std::numeric_limits<std::uint64_t>::max()},
                "start of the random numbers: the same options give the same rows on every machine");
}

static void append_rows(output_file& file, const std::vector<mot_row>& rows)
{
    for (const mot_row& row : rows)
        append_row(file.buffer(), row);
    file.flush_if_full();
}

static void write_sequence(const synth_options& options, output_file& detections, std::optional<output_file>& truth)
{
    synth_scene scene(options);
    std::vector<mot_row> detected;
    std::vector<mot_row> true_rows;
    progress bar(true, "frame", options.frames);
    for (int frame = 1; frame <= options.frames; ++frame) {
        scene.next_frame(detected, true_rows);
        append_rows(detections, detected);
        if (truth)
            append_rows(*truth, true_rows);
        bar.update(frame);
    }
}

static void run(command_line& line)
{
    synth_options options;
    std::string output = "-";
    std::string truth_output;
    bool no_sync = false;
    declare_options(line, options);
    line.text("--gt", "FILE", truth_output, "write the ground truth, with identifiers, to this file");
    line.text("-o,--output", "OUT", output, "where to write the detections; - is standard output, the default");
    line.flag("--no-sync", no_sync, no_sync_help);
    if (!line.parse())
        return;
    refuse_shared_files({}, {output, truth_output});

    output_file detections(output, !no_sync);
    std::optional<output_file> truth;
    if (!truth_output.empty())
        truth.emplace(truth_output, !no_sync);
    write_sequence(options, detections, truth);
    detections.commit();
    if (truth)
        truth->commit();
}

const subcommand synth_command = {
    "synth",
    "invent a sequence of detections, with ground truth if wanted",
    "Write the detections of an invented sequence of boxes that cross, enter and leave an image, as lines "
    "frame,-1,left,top,width,height,conf,-1,-1,-1.",
    "",
    run,
};

}  // namespace zeltrack
