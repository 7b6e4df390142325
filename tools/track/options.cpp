// SPDX-License-Identifier: MIT
//
// The options of every command that tracks, as they stand in the help text and in a configuration file.
#include "track/options.h"

#include <limits>

#include "cli/command_line.h"
#include "track/scale.h"
#include "track/sequence.h"

namespace zeltrack {

static constexpr range<double> scale_factors = {0.001, 1000};
static constexpr range<double> removal_range = {0.001, 1e6};

// A number of the option's own unit, or with a letter after it of another one; or auto.
template <typename T>
static command_line::reader reader_of(T& value, const range<T>& allowed, double& other,
                                      const range<double>& other_range, char letter)
{
    return [&value, allowed, &other, other_range, letter, automatic = value, none = other](const std::string& found) {
        value = automatic;
        other = none;
        if (found == "auto")
            return std::string();
        const bool lettered = !found.empty() && found.back() == letter;
        if (lettered ? parse_number(std::string_view(found).substr(0, found.size() - 1), other_range, other)
                     : parse_number(found, allowed, value))
            return std::string();
        return expected("a number from " + to_text(allowed) + ", one with " + letter + " from " + to_text(other_range) +
                            ", or auto",
                        found);
    };
}

static void declare_association(command_line& line, track_options& options)
{
    const std::string gate = to_text(gate_units);
    const range<double> scales = {min_scale, max_scale};
    line.custom("--scale", "N|Nx|auto", reader_of(options.scale, scales, options.scale_factor, scale_factors, 'x'),
                "units of the tracker per pixel: from one frame to the next an "
                "object may step less than " +
                    gate + " units, which are " + gate +
                    " / N pixels. "
                    "auto makes that the size, sqrt(width * height), of the median "
                    "box in the first frame; 1.5x is 1.5 times auto; " +
                    to_text(scales) + " (default auto)");
    line.number("--euc", "D", options.euc, {0, 1},
                "squared centre distance, in squared units, up to which a "
                "detection matches a track however little the boxes overlap");
    line.number("-i,--iou", "T", options.iou, {0, 1},
                "intersection over union that other matches must exceed; at 1 nothing ever matches");
    line.choice("--steady", options.steady, {{"auto", ZEL_HOST_AUTO}, {"on", 1}, {"off", 0}},
                "take the camera's own motion out before tracking; auto does while it moves");
}

static void declare_life(command_line& line, track_options& options)
{
    line.number("-s,--stable", "N", options.stable, {1, max_frame},
                "matched frames, the first included, after which a track gets its identifier and is reported");
    const range<int> frames = {1, max_frame};
    line.custom("-r,--removal", "N|Ns|auto",
                reader_of(options.removal, frames, options.removal_seconds, removal_range, 's'),
                "frames in a row that a track may go unmatched, or seconds, as "
                "in 0.8s; auto is half a second where the frame rate is known, 10 frames otherwise; " +
                    to_text(frames) + " (default auto)");
    line.number("--fps", "N", options.fps, {0.001, 1e6}, "frames per second", "that of a seqinfo.ini");
    line.number("--max-objects", "N", options.max_objects, {1, 1000000},
                "capacity: detections per frame, live tracks, rows per frame",
                "what the file needs, up to " + to_text(max_chosen_capacity));
    line.flag("--coasted", options.coasted,
              "also write tracks without a detection in a frame, at their last place, for up to two frames");
}

static void declare_input(command_line& line, track_options& options)
{
    using confidence = std::numeric_limits<float>;
    line.number_or("auto", "--min-conf", "C", options.min_conf, {confidence::lowest(), confidence::max()},
                   "ignore detections of a lower confidence. auto ignores weak ones "
                   "that are not seen again in the next frame as strong ones are");
    line.number("--frame-base", "N", options.layout.frame_base, {0, 1},
                "number of the first frame, here and in results");
    line.number("--class-column", "N", options.layout.class_column, {8, 1000},
                "column of the class, a whole number. A detection then matches only tracks of its class", "all alike");
    line.number("--class-base", "N", options.layout.class_base, {0, 1}, "number of the first class");
    line.flag("--ignore-class", options.ignore_class, "read classes, but match across them");
}

void declare_options(command_line& line, track_options& options)
{
    line.text("DETECTIONS", "", options.detections,
              "file of lines frame,id,left,top,width,height,conf[,...], with "
              "the frames in any order; - is standard input")
        .required();
    declare_association(line, options);
    declare_life(line, options);
    declare_input(line, options);
    line.flag("-q,--quiet", options.quiet, "no summary, no warnings, no progress bar");
    line.config_file();
}

}  // namespace zeltrack
