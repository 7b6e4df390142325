// SPDX-License-Identifier: MIT
//
// Options go through the command line of track, so that every option and every value means here what it means there.
#include "tune/subject.h"

#include <algorithm>
#include <array>

#include "cli/progress.h"
#include "eval/as_written.h"
#include "track/settle.h"
#include "track/track.h"
#include "tune/noise.h"

namespace zeltrack {

static void add_words(std::vector<std::string>& words, const setting& options)
{
    for (const auto& [name, value] : options)
        words.emplace_back("--").append(name).append("=").append(value);
}

track_options options_of(const setting& fixed, const setting& chosen, const std::string& detections)
{
    std::vector<std::string> words = {"track"};
    add_words(words, fixed);
    add_words(words, chosen);
    words.emplace_back("DETECTIONS");  // no path, which may look like an option
    std::vector<const char*> arguments;
    arguments.reserve(words.size());
    for (const std::string& word : words)
        arguments.push_back(word.c_str());
    command_line line(track_command, static_cast<int>(arguments.size()), arguments.data());
    track_options options;
    declare_options(line, options);
    if (!line.parse())
        throw failure("expected an option of track, found help", exit_usage);
    options.detections = detections;
    return options;
}

static subject load_subject(const sequence_files& files, const setting& fixed, rules_choice rules)
{
    subject loaded;
    loaded.name = files.name;
    loaded.detections = files.tracks[0];
    loaded.truth = files.truth;
    const track_options options = options_of(fixed, {}, loaded.detections);
    loaded.input = load_sequence(options);
    const sequence_truth truth = load_sequence_truth(files, rules, options.layout.frame_base);
    const int last = loaded.input.rows.empty() ? 0 : loaded.input.rows.back().frame;
    loaded.length = truth.length_with(last);
    truth.give_to(loaded.scoring, loaded.length);
    if (last > loaded.length)
        throw failure(printable(loaded.detections) + ": expected frames within the sequence, which has " +
                      to_text(loaded.length) + ", found " + to_text(last));
    return loaded;
}

std::vector<subject> load_subjects(const pairing& pairs, const setting& fixed, rules_choice rules, bool quiet)
{
    std::vector<subject> subjects;
    progress bar(!quiet, "sequence", static_cast<int>(pairs.sequences.size()));
    for (const sequence_files& files : pairs.sequences) {
        subjects.push_back(load_subject(files, fixed, rules));
        bar.update(static_cast<int>(subjects.size()));
    }
    return subjects;
}

// --- ranges ----------------------------------------------------------------------------------------------------------

// From the least to that which one detection in ten exceeds; nothing if all are alike.
static bool range_of_confidences(const std::vector<subject>& subjects, parameter& result)
{
    std::vector<float> all;
    for (const subject& it : subjects)
        for (const mot_row& row : it.input.rows)
            all.push_back(row.conf);
    if (all.empty())
        return false;
    const auto high = all.begin() + static_cast<std::ptrdiff_t>(all.size() * 9 / 10);
    std::nth_element(all.begin(), high, all.end());
    result.high = *high;
    result.low = *std::min_element(all.begin(), all.end());
    return result.low < result.high;
}

// In seconds where all frame rates are known.
static void range_of_removal(const std::vector<subject>& subjects, parameter& result)
{
    const auto known = [](const subject& it) { return it.input.fps > 0; };
    if (!std::all_of(subjects.begin(), subjects.end(), known))
        return;
    read_parameter("removal=0.1:3s:log", result);
}

std::vector<parameter> usual_space(const std::vector<subject>& subjects, const setting& fixed)
{
    std::vector<parameter> space;
    for (const char* name : {"scale", "iou", "euc", "stable", "removal", "min-conf"}) {
        parameter it = known_parameter(name);
        if (it.name == "removal")
            range_of_removal(subjects, it);
        if (it.name == "min-conf" && !range_of_confidences(subjects, it))
            continue;
        if (fixed.count(it.name) == 0)
            space.push_back(it);
    }
    return space;
}

// --- a trial ---------------------------------------------------------------------------------------------------------

static std::vector<score_row> rows_of(const subject& on, const sequence& input, const track_options& options)
{
    std::vector<score_row> rows;
    const auto keep = [&](int frame, const std::vector<track_row>& tracked, const zel_host_frame_t&) {
        if (frame <= on.length)
            for (const track_row& row : tracked)
                rows.push_back(to_score(row.box));
    };
    refuse_missing_memory(track_sequence(input, options, keep));
    return rows;
}

std::vector<double> try_setting(const subject& on, const setting& fixed, const setting& chosen, int jitter,
                                const std::vector<const figure*>& wanted)
{
    sequence moved;
    if (jitter != 0) {
        moved = on.input;
        jitter_boxes(moved.rows, jitter);
    }
    const sequence& input = jitter != 0 ? moved : on.input;
    track_options options = options_of(fixed, chosen, on.detections);
    settle(options, input);
    const std::vector<score_row> rows = rows_of(on, input, options);
    scorer scoring = on.scoring;
    sequence_score score;
    if (scoring.score(rows.data(), rows.size(), score))
        throw failure("tracks that cannot be scored");
    std::vector<double> figures;
    figures.reserve(wanted.size());
    for (const figure* it : wanted)
        figures.push_back(it->value(score));
    return figures;
}

}  // namespace zeltrack
