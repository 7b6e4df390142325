// SPDX-License-Identifier: MIT
//
// The zeltrack command: one function per subcommand, and the mapping of what goes wrong to a line and an exit status.
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>

#include "cli/command_line.h"
#include "cli/failure.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "mot/load.h"
#include "synth/synth.h"
#include "track/track.h"
#include "view/view.h"

namespace zeltrack {

static const char statuses[] =
    "Exit status: 0 done, 1 input that cannot be read or output that cannot be written, 2 wrong usage.";

static const char main_help[] =
    "Usage: zeltrack COMMAND [OPTIONS]\n"
    "Multi-object tracking by detection.\n"
    "\n"
    "Commands:\n"
    "  track   track a file of detections: numbered tracks come out\n"
    "  view    track, and write a page that shows what the tracker did and why\n"
    "  synth   invent a sequence of detections, with the truth if wanted\n"
    "\n"
    "zeltrack COMMAND --help says more; zeltrack --version prints the version.\n";

// --- track -----------------------------------------------------------------------------------------------------------

// The whole input is read before a result is written; still, nobody wants the one replaced by the other.
static void refuse_same_file(const std::string& input, const std::string& output)
{
    std::error_code ignored;
    if (input != "-" && std::filesystem::is_regular_file(output, ignored) &&
        std::filesystem::equivalent(input, output, ignored))
        throw failure(printable(output) + ": expected an output other than the input", exit_usage);
}

static void track(CLI::App& app, int argc, char** argv)
{
    track_options options;
    std::string output = "-";
    add_track_options(app, options);
    app.add_option("-o,--output", output,
                   "where to write the tracks; - is standard output, the default.\n"
                   "A file appears when all of it is there")
        ->type_name("OUT");
    app.parse(argc, argv);

    refuse_same_file(options.detections, output);
    const sequence input = load_sequence(options);
    output_file results(output);
    const auto write = [&results](int, const std::vector<track_row>& rows, const void*) {
        for (const track_row& row : rows)
            append_row(results.buffer(), row.box);
        results.flush_if_full();
    };
    const track_summary summary = track_sequence(input, options, write);
    results.commit();
    if (!options.quiet)
        print_summary(std::cerr, summary, options);
}

// --- view ------------------------------------------------------------------------------------------------------------

static void view(CLI::App& app, int argc, char** argv)
{
    view_options options;
    std::string output;
    std::string truth;
    add_track_options(app, options.track);
    app.add_option("--gt", truth, "the truth, with identifiers, to be shown beside the tracks")->type_name("FILE");
    app.add_option("-o,--output", output, "where to write the page; - is standard output")
        ->required()
        ->type_name("PAGE");
    app.parse(argc, argv);
    options.command = "zeltrack " + shell_line(argc, argv);

    refuse_same_file(options.track.detections, output);
    refuse_same_file(truth, output);
    if (truth == "-" && options.track.detections == "-")
        throw failure("--gt: expected a file other than that of the detections", exit_usage);
    const sequence input = load_sequence(options.track);
    if (!truth.empty())
        options.truth = load_truth(truth);
    output_file page(output);
    const track_summary summary = view_sequence(input, options, page.buffer());
    page.commit();
    if (!options.track.quiet)
        print_summary(std::cerr, summary, options.track);
}

// --- synth -----------------------------------------------------------------------------------------------------------

static void append_rows(output_file& file, const std::vector<mot_row>& rows)
{
    for (const mot_row& row : rows)
        append_row(file.buffer(), row);
    file.flush_if_full();
}

static std::filesystem::path place(const std::string& path)
{
    std::error_code ignored;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, ignored), ignored);
}

static void synth(CLI::App& app, int argc, char** argv)
{
    synth_options options;
    std::string output = "-";
    std::string truth_output;
    add_synth_options(app, options);
    app.add_option("--gt", truth_output, "write the truth, with identifiers, to this file")->type_name("FILE");
    app.add_option("-o,--output", output, "where to write the detections; - is standard output, the default")
        ->type_name("OUT");
    app.parse(argc, argv);
    if (!truth_output.empty() && place(output) == place(truth_output))
        throw failure("--gt: expected a file other than that of the detections", exit_usage);

    output_file detections(output);
    std::optional<output_file> truth;
    if (!truth_output.empty())
        truth.emplace(truth_output);
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
    detections.commit();
    if (truth)
        truth->commit();
}

// --- the command -----------------------------------------------------------------------------------------------------

struct command {
    const char* name;
    const char* description;
    const char* notes;
    void (*run)(CLI::App& app, int argc, char** argv);
};

static const command commands[] = {
    {"track",
     "Track the detections of a MOTChallenge file and write the tracks, in the same layout, as lines\n"
     "frame,id,left,top,width,height,conf,-1,-1,-1 by frame. A summary goes to standard error.",
     "A track is reported from its --stable-th frame on, where a detection took part in it.\n", track},
    {"view",
     "Track the detections of a MOTChallenge file and write one HTML page that shows every frame, every track and the\n"
     "reason for every match. It opens from disk and needs no network.",
     "", view},
    {"synth",
     "Write the detections of an invented sequence of boxes that cross, enter and leave an image, as lines\n"
     "frame,-1,left,top,width,height,conf,-1,-1,-1.",
     "", synth},
};

static void print(const std::string& text)
{
    std::cout << text << std::flush;
    if (!std::cout)
        throw failure("standard output cannot be written");
}

static exit_status run(const command& chosen, int argc, char** argv)
{
    CLI::App app(chosen.description, std::string("zeltrack ") + chosen.name);
    app.get_formatter()->column_width(24);
    app.footer(std::string(chosen.notes) + statuses);
    try {
        chosen.run(app, argc, argv);
    } catch (const CLI::CallForHelp&) {
        print(app.help());
    } catch (const CLI::Error& error) {
        constexpr std::size_t longest = 200;  // a wrong --config file can have lines of any length
        throw failure(
            printable(std::string_view(error.what()).substr(0, longest)) + " (see zeltrack " + chosen.name + " --help)",
            exit_usage);
    }
    return exit_done;
}

static exit_status dispatch(int argc, char** argv)
{
    const std::string name = argc > 1 ? argv[1] : "";
    for (const command& it : commands)
        if (name == it.name)
            return run(it, argc - 1, argv + 1);
    if (name == "-h" || name == "--help")
        print(std::string(main_help) + statuses + "\n");
    else if (name == "--version")
        print("zeltrack " ZELTRACK_VERSION "\n");
    else
        throw failure("expected a command, found " + excerpt(name) + " (see zeltrack --help)", exit_usage);
    return exit_done;
}

}  // namespace zeltrack

int main(int argc, char** argv)
{
    zeltrack::prepare_standard_streams();
    try {
        return zeltrack::dispatch(argc, argv);
    } catch (const zeltrack::failure& error) {
        std::cerr << "zeltrack: " << error.what() << '\n';
        return error.status;
    } catch (const std::bad_alloc&) {
        std::cerr << "zeltrack: out of memory\n";
    } catch (const std::exception& error) {
        std::cerr << "zeltrack: " << zeltrack::printable(error.what()) << '\n';
    }
    return zeltrack::exit_data;
}
