// SPDX-License-Identifier: MIT
//
// The subcommand `tune`.
#include <algorithm>
#include <iostream>
#include <memory>

#include "cli/command_line.h"
#include "cli/input_file.h"
#include "cli/output_file.h"
#include "cli/stop.h"
#include "tune/options.h"
#include "tune/report.h"
#include "tune/table.h"
#include "tune/trials_file.h"
#include "tune/tune.h"

namespace zeltrack {

namespace {

// All are opened before any work is done, so that a wrong name costs nothing.
struct outputs {
    std::unique_ptr<output_file> best;
    std::unique_ptr<output_file> trials;
    std::unique_ptr<output_file> report;

    explicit outputs(const tune_options& options)
    {
        const auto open = [&options](const std::string& path, std::unique_ptr<output_file>& file) {
            if (!path.empty())
                file = std::make_unique<output_file>(path, !options.no_sync);
        };
        open(options.output, best);
        open(options.trials_out, trials);
        open(options.report, report);
    }

    void commit() const
    {
        for (const auto* file : {&trials, &best, &report})
            if (*file)
                (*file)->commit();
    }
};

}  // namespace

// --- the files -------------------------------------------------------------------------------------------------------

static void check_input(const tune_options& options)
{
    if (!options.from.empty() && options.detections.size() + options.truths.size() > 0)
        throw failure("expected either DETECTIONS or --from", exit_usage);
    if (options.from.empty() && (options.detections.empty() || options.truths.size() != options.detections.size()))
        throw failure("expected as many files or folders after --gt as DETECTIONS (see zeltrack tune --help)",
                      exit_usage);
    for (const std::string& path : options.detections)
        if (path == "-")
            throw failure("expected files of detections, found standard input", exit_usage);
}

// Files of different folders may have the same name; then they are called by their path.
static void tell_apart(std::vector<sequence_files>& sequences)
{
    for (sequence_files& it : sequences) {
        const auto same = [&it](const sequence_files& other) { return other.name == it.name; };
        if (std::count_if(sequences.begin(), sequences.end(), same) > 1)
            for (sequence_files& other : sequences)
                if (&other != &it && other.name == it.name)
                    other.name = other.tracks[0];
    }
}

static pairing pair_all(const tune_options& options)
{
    pairing all;
    for (std::size_t n = 0; n < options.detections.size(); ++n) {
        const pairing one = pair_files(options.truths[n], {options.detections[n]}, paired_kind::detections);
        all.sequences.insert(all.sequences.end(), one.sequences.begin(), one.sequences.end());
        all.missing.insert(all.missing.end(), one.missing.begin(), one.missing.end());
    }
    tell_apart(all.sequences);
    refuse_missing(all, options.skip_missing, options.run.quiet, "detections");
    return all;
}

// --- a search --------------------------------------------------------------------------------------------------------

static std::vector<std::string> kept_figures(const objective& wanted)
{
    static constexpr const char* always[] = {"HOTA", "DetA", "AssA",   "MOTA",  "IDF1",
                                             "IDSW", "Frag", "CLR_FP", "CLR_FN"};
    std::vector<std::string> names;
    for (const figure& it : figures()) {
        const auto same = [&it](const char* name) { return std::string(name) == it.name; };
        const auto asked = [&it](const objective::term& term) { return term.of == &it; };
        if (std::any_of(std::begin(always), std::end(always), same) ||
            std::any_of(wanted.terms.begin(), wanted.terms.end(), asked))
            names.emplace_back(it.name);
    }
    return names;
}

static std::vector<parameter> space_of(const std::vector<subject>& subjects, const tune_options& options)
{
    std::vector<parameter> space = usual_space(subjects, options.fixed);
    for (const parameter& wanted : options.parameters) {
        if (options.fixed.count(wanted.name) > 0)
            throw failure("--param: " + printable(wanted.name) + " is fixed", exit_usage);
        // both ends, so that a name or a range that track would refuse is known before the first trial
        for (const double end : {0.0, 1.0})
            if (const std::string value = value_at(wanted, end); !value.empty())
                options_of(options.fixed, {{wanted.name, value}}, subjects[0].detections);
        const auto same = [&wanted](const parameter& it) { return it.name == wanted.name; };
        const auto at = std::find_if(space.begin(), space.end(), same);
        if (at != space.end())
            *at = wanted;
        else
            space.push_back(wanted);
    }
    if (space.empty())
        throw failure("expected an option to search, found all fixed", exit_usage);
    return space;
}

// --- the result ------------------------------------------------------------------------------------------------------

// The best options by their file, or one by one if there is none.
static std::vector<std::string> view_commands(const std::vector<subject>& subjects, const tuning& of,
                                              const std::string& config)
{
    std::vector<std::string> shared;
    for (const setting* options : {&of.trials.fixed, &of.found.ranking[0].of->chosen})
        for (const auto& [name, value] : *options)
            shared.push_back(std::string("--").append(name).append("=").append(value));
    if (!config.empty() && config != "-")
        shared = {"--config", config};
    std::vector<std::string> commands;
    for (const subject& it : subjects) {
        std::vector<std::string> words = {"zeltrack", "view", it.detections, "--gt", it.truth, "-o", it.name + ".html"};
        words.insert(words.end(), shared.begin(), shared.end());
        std::vector<const char*> pointers;
        pointers.reserve(words.size());
        for (const std::string& word : words)
            pointers.push_back(word.c_str());
        commands.push_back(shell_line(static_cast<int>(pointers.size()), pointers.data()));
    }
    return commands;
}

static void write_results(const tune_options& options, const outputs& files, const trial_set& trials, const judge& by,
                          const std::string& command, const std::vector<subject>& subjects)
{
    if (files.trials)
        for (const trial& it : trials.trials) {
            files.trials->buffer() += trial_line(it, trials, by);
            files.trials->flush_if_full();
        }
    const findings found = find(trials, by);
    const tuning all = {trials, by, options.maximize, found};
    if (files.best)
        files.best->buffer() = config_text(all, command);
    if (files.report)
        append_report(files.report->buffer(), all, command, view_commands(subjects, all, options.output));
    const std::string table = result_table(all);
    files.commit();
    print(table);
}

static void rank(const tune_options& options, const std::string& command)
{
    const outputs files(options);
    trial_set trials;
    for (const std::string& path : options.from) {
        input_file file(path);
        read_trials(file.stream(), file.name(), trials);
    }
    const judge by(trials, options.maximize, group_sequences(trials.sequences, options.groups));
    write_results(options, files, trials, by, command, {});
}

static void search_and_rank(const tune_options& options, const std::string& command)
{
    const pairing pairs = pair_all(options);
    std::vector<std::string> inputs;
    for (const sequence_files& it : pairs.sequences)
        inputs.insert(inputs.end(), {it.truth, it.tracks[0]});
    refuse_shared_files(inputs, {options.output, options.trials_out, options.report});
    const outputs files(options);
    const std::vector<subject> subjects = load_subjects(pairs, options.fixed, options.rules, options.run.quiet);

    trial_set trials;
    for (const subject& it : subjects)
        trials.sequences.push_back(it.name);
    trials.figures = kept_figures(options.maximize);
    trials.fixed = options.fixed;
    trials.space = space_of(subjects, options);
    const judge by(trials, options.maximize, group_sequences(trials.sequences, options.groups));
    const stop_watch stop;
    if (!run_trials(subjects, by, options.run, trials) && !options.run.quiet)
        std::cerr << "zeltrack: ended early, with " << trials.trials.size() << " trials\n";
    write_results(options, files, trials, by, command, subjects);
}

static void run(command_line& line)
{
    tune_options options;
    declare_options(line, options);
    if (!line.parse())
        return;
    check_input(options);
    refuse_shared_files(options.from, {options.output, options.trials_out, options.report});
    if (options.from.empty())
        search_and_rank(options, line.typed());
    else
        rank(options, line.typed());
}

const subcommand tune_command = {
    "tune",
    "find the options of track that make the best tracks of your sequences",
    "Search the options of track on sequences whose ground truth is known, and tell what was found, what is left of "
    "the gain on sequences that had no part in the choice, and how much of it is chance.",
    "Ctrl-C ends the search with what it has found.\n",
    run,
};

}  // namespace zeltrack
