// SPDX-License-Identifier: MIT
//
// The options of the command tune.
#include "tune/options.h"

#include <limits>
#include <thread>

#include "cli/command_line.h"
#include "cli/output_file.h"

namespace zeltrack {

static std::string read_seeds(const std::string& text, run_options& run)
{
    constexpr range<std::uint64_t> seeds = {0, std::numeric_limits<std::uint32_t>::max()};
    const std::size_t colon = text.find(':');
    const std::string last = colon == std::string::npos ? text : text.substr(colon + 1);
    if (parse_number(text.substr(0, colon), seeds, run.first_seed) && parse_number(last, seeds, run.last_seed) &&
        run.first_seed <= run.last_seed)
        return "";
    return expected("a number from " + to_text(seeds) + " or two that ascend, as in 1:8", text);
}

static std::string read_fixed(const std::string& text, setting& fixed)
{
    const std::size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    for (const char* other : {"", "help", "config", "quiet"})
        if (equals == std::string::npos || name == other)
            return expected("NAME=VALUE with an option of track", text);
    fixed[name] = text.substr(equals + 1);
    return "";
}

// It is an option of track, too, and of what its tracks are compared with.
static std::string read_frame_base(const std::string& text, setting& fixed)
{
    if (text != "0" && text != "1")
        return expected("0 or 1", text);
    fixed["frame-base"] = text;
    return "";
}

static std::string add_parameter(const std::string& text, std::vector<parameter>& parameters)
{
    parameter added;
    std::string wrong = read_parameter(text, added);
    if (!wrong.empty())
        return wrong;
    for (const parameter& it : parameters)
        if (it.name == added.name)
            return expected("each name once", added.name);
    parameters.push_back(added);
    return "";
}

static void declare_input(command_line& line, tune_options& options)
{
    line.texts("DETECTIONS", "", options.detections,
               "files of detections, or a folder of SEQ.txt, SEQ/det.txt or SEQ/det/det.txt");
    line.texts("--gt", "GT", options.truths,
               "their ground truth, in the same order, or a folder of SEQ.txt, SEQ/gt.txt or SEQ/gt/gt.txt", true);
    line.texts("--from", "FILE", options.from, "rank trials made elsewhere by --trials-out, without running any", true);
    declare_rules(line, options.rules);
    line.custom(
        "--frame-base", "N", [&options](const std::string& text) { return read_frame_base(text, options.fixed); },
        "number of the first frame, in all files; 0 to 1 (default 1)");
    line.flag("--skip-missing", options.skip_missing, "leave out sequences without detections or ground truth");
}

static void declare_search(command_line& line, tune_options& options)
{
    read_objective("HOTA", options.maximize);
    line.custom(
        "--maximize", "SUM", [&options](const std::string& text) { return read_objective(text, options.maximize); },
        "figure or weighted sum of figures to maximize, such as HOTA+IDF1 or MOTA-0.01*IDSW; ratios are in percent "
        "(default HOTA)");
    line.several(
        "--param", "NAME=LOW:HIGH[:log]",
        [&options](const std::string& text) { return add_parameter(text, options.parameters); },
        "search an option of track within this range");
    line.several(
        "--fix", "NAME=VALUE", [&options](const std::string& text) { return read_fixed(text, options.fixed); },
        "give an option of track this value, in all trials");
    line.texts("--group", "PATTERN", options.groups,
               "sequences that count as one, and are held out together: those whose names match, as in a shell");
    line.number("--trials", "N", options.run.trials, {1, 10000000},
                "settings to try, before those that show the noise");
    line.custom(
        "--seed", "N|N:M", [&options](const std::string& text) { return read_seeds(text, options.run); },
        "where the search begins; with two, one search from each after the other (default 1)");
    options.run.jobs = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    line.number("-j,--jobs", "N", options.run.jobs, {1, 4096}, "processes; they do not change the result",
                "that of the processors");
}

void declare_options(command_line& line, tune_options& options)
{
    declare_input(line, options);
    declare_search(line, options);
    line.text("-o,--output", "FILE", options.output, "write the best options, for --config of track and view");
    line.text("--report", "PAGE", options.report, "write a page that shows all trials");
    line.text("--trials-out", "FILE", options.trials_out, "write every trial as a line of JSON");
    line.flag("--no-sync", options.no_sync, no_sync_help);
    line.flag("-q,--quiet", options.run.quiet, "no progress bar, no notes");
}

}  // namespace zeltrack
