// SPDX-License-Identifier: MIT
//
// The options of every command that tracks, as they stand in the help text and in a configuration file.
#include "track/options.h"

#include "cli/command_line.h"
#include "track/scale.h"

namespace zeltrack {

static void set_scale(const std::string& text, track_options& options)
{
    options.scale = 0;
    if (text == "auto")
        return;
    const std::string wrong = within(min_scale, max_scale)(text);
    if (!wrong.empty())
        throw CLI::ValidationError("--scale", wrong + "; or auto");
    options.scale = std::stod(text);
}

static void add_scale_options(CLI::App& app, track_options& options)
{
    app.add_option_function<std::string>(
           "--scale", [&options](const std::string& text) { set_scale(text, options); },
           "factor between pixels and the tracker's unit. It matters more\n"
           "than all else: from one frame to the next an object may step\n"
           "less than 10 units, which are 10 / N pixels. auto makes that\n"
           "half the size of the median box, the size being sqrt(width *\n"
           "height); 1 is plain pixels; 1e-06 to 1e+06 (default auto)")
        ->type_name("N|auto");
    add_number(app, "--euc", "D", options.euc, 0.0F, 1.0F,
               "squared centre distance, in squared units, up to which a\n"
               "detection matches a track however little the boxes overlap;\n");
    add_number(app, "-i,--iou", "T", options.iou, 0.0F, 1.0F,
               "intersection over union that other matches must exceed; at 1\nnothing ever matches");
}

static void add_life_options(CLI::App& app, track_options& options)
{
    add_number(app, "-s,--stable", "N", options.stable, 1, max_frame,
               "matched frames, the first included, after which a track gets\nits identifier and is reported");
    add_number(app, "-r,--removal", "N", options.removal, 1, max_frame,
               "frames in a row that a track may go unmatched;\n");
    app.add_option("--max-objects", options.max_objects,
                   "capacity: detections per frame, live tracks, rows per frame;\n"
                   "1 to 1000000 (default: what the file needs, up to 16384)")
        ->type_name("N")
        ->check(within(1, 1000000));
    app.add_flag("--coasted", options.coasted,
                 "also write tracks without a detection in a frame, at their\nlast place, for up to two frames");
}

static void add_input_options(CLI::App& app, track_options& options)
{
    app.add_option("--min-conf", options.min_conf, "ignore detections of a lower confidence (default: none)")
        ->type_name("C")
        ->check(within(std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max()));
    app.add_option("--class-column", options.classes.column,
                   "column of the class, a whole number; 8 to 1000. A detection\n"
                   "then matches only tracks of its class (default: all alike)")
        ->type_name("N")
        ->check(within(8, 1000));
    add_number(app, "--class-base", "N", options.classes.base, 0, 1, "number of the first class");
    app.add_flag("--ignore-class", options.ignore_class, "read classes, but match across them");
}

void add_track_options(CLI::App& app, track_options& options)
{
    app.add_option("DETECTIONS", options.detections,
                   "file of lines frame,id,left,top,width,height,conf[,...]; frames\n"
                   "count from 1, in any order; - is standard input")
        ->required()
        ->type_name("");
    add_scale_options(app, options);
    add_life_options(app, options);
    add_input_options(app, options);
    app.add_flag("-q,--quiet", options.quiet, "no summary, no warnings, no progress bar");
    app.set_config("--config", "", "read options from a file, a line NAME = VALUE for each")->type_name("FILE");
    app.allow_config_extras(false);
}

}  // namespace zeltrack
