// SPDX-License-Identifier: MIT
//
// The work of a trial is divided by sequence, so that processes are busy to the end of a batch.
#include "tune/runner.h"

#include <algorithm>
#include <cstring>
#include <iostream>

#include "cli/failure.h"
#include "cli/number.h"
#include "cli/progress.h"
#include "cli/stop.h"
#include "tune/noise.h"
#include "tune/search.h"
#include "tune/workers.h"

namespace zeltrack {

namespace {

// A request is the number of a sequence and that of the jitter, then names and values, each in a line.
std::string request_for(const trial& it, std::size_t sequence)
{
    std::string text = std::to_string(sequence) + '\n' + std::to_string(it.jitter) + '\n';
    for (const auto& [name, value] : it.chosen)
        text.append(name).append("\n").append(value).append("\n");
    return text;
}

std::string take_line(std::string& text)
{
    const std::size_t end = text.find('\n');
    std::string line = text.substr(0, end);
    text.erase(0, end + 1);
    return line;
}

class runner {
public:
    runner(const std::vector<subject>& subjects, const judge& by, const run_options& options, trial_set& trials)
        : subjects_(subjects),
          by_(by),
          options_(options),
          trials_(trials),
          wanted_(figures_named(trials.figures)),
          pool_(options.jobs, [this](const std::string& request) { return work(request); }),
          per_search_(options.trials + static_cast<int>(trials.space.size()) + 2 * jitter_count),
          bar_(!options.quiet, "trial", total())
    {
    }

    bool run()
    {
        for (std::uint64_t seed = options_.first_seed;; ++seed) {
            search one(trials_.space, options_.trials, seed);
            seed_ = seed;
            number_ = 0;
            if (!run_search(one) || !run_noise(one))
                return false;
            if (seed == options_.last_seed)
                return true;
        }
    }

private:
    static std::vector<const figure*> figures_named(const std::vector<std::string>& names)
    {
        std::vector<const figure*> wanted;
        for (const figure& it : figures())
            if (std::find(names.begin(), names.end(), it.name) != names.end())
                wanted.push_back(&it);
        return wanted;
    }

    int total() const
    {
        constexpr double most = 1e9;
        const auto searches = static_cast<double>(options_.last_seed - options_.first_seed) + 1;
        return static_cast<int>(std::min(most, searches * per_search_));
    }

    // In a child.
    std::string work(std::string request) const
    {
        const subject& on = subjects_[std::stoul(take_line(request))];
        const int jitter = std::stoi(take_line(request));
        setting chosen;
        while (!request.empty()) {
            const std::string name = take_line(request);
            chosen[name] = take_line(request);
        }
        const std::vector<double> found = try_setting(on, trials_.fixed, chosen, jitter, wanted_);
        return {reinterpret_cast<const char*>(found.data()), found.size() * sizeof(double)};
    }

    trial next_trial(const setting& chosen, int jitter)
    {
        trial it;
        it.seed = seed_;
        it.number = number_++;
        it.jitter = jitter;
        it.chosen = chosen;
        return it;
    }

    bool run_search(search& one)
    {
        for (std::vector<setting> batch; !(batch = one.next()).empty();) {
            std::vector<trial> asked;
            asked.reserve(batch.size());
            for (const setting& chosen : batch)
                asked.push_back(next_trial(chosen, 0));
            if (!run_batch(asked))
                return false;
            std::vector<std::optional<double>> objectives;
            objectives.reserve(asked.size());
            for (const trial& it : asked)
                objectives.push_back(it.figures.empty() ? std::nullopt : std::optional(by_.of_all(it)));
            one.tell(objectives);
        }
        return true;
    }

    bool run_noise(const search& one)
    {
        const setting* const best = one.best();
        if (!best)
            return true;
        std::vector<trial> asked;
        for (int jitter = 1; jitter <= jitter_count; ++jitter) {
            asked.push_back(next_trial({}, jitter));
            if (!best->empty())
                asked.push_back(next_trial(*best, jitter));
        }
        return run_batch(asked);
    }

    // Keeps the trials that were completed, also if it is ended.
    bool run_batch(std::vector<trial>& asked)
    {
        const std::size_t sequences = subjects_.size();
        std::vector<std::string> requests;
        for (const trial& it : asked)
            for (std::size_t s = 0; s < sequences; ++s)
                requests.push_back(request_for(it, s));
        std::vector<std::size_t> missing(asked.size(), sequences);
        for (trial& it : asked)
            it.figures.resize(sequences);
        const auto take = [&](std::size_t index, const work_result& result) {
            trial& it = asked[index / sequences];
            take_result(it, index % sequences, result);
            if (--missing[index / sequences] == 0)
                finish(it);
        };
        pool_.run(requests, take, stop_watch::asked);
        for (std::size_t n = 0; n < asked.size(); ++n)
            if (missing[n] == 0)
                trials_.trials.push_back(asked[n]);
        report_lost(asked);
        return !stop_watch::asked();
    }

    void take_result(trial& it, std::size_t sequence, const work_result& result) const
    {
        if (result.lost) {
            // of the first sequence, whichever was lost first
            const std::string why = subjects_[sequence].name + ": " + result.text;
            it.lost = it.lost.empty() ? why : std::min(it.lost, why);
            return;
        }
        it.figures[sequence].resize(wanted_.size());
        std::memcpy(it.figures[sequence].data(), result.text.data(), wanted_.size() * sizeof(double));
    }

    void finish(trial& it)
    {
        if (!it.lost.empty())
            it.figures.clear();
        else if (it.jitter == 0)
            best_ = std::max(best_, std::optional(by_.of_all(it)));
        ++done_;
        bar_.update(std::min(done_, total()), best_ ? ", best " + to_fixed(*best_, 2) : "");
    }

    void report_lost(const std::vector<trial>& asked) const
    {
        for (const trial& it : asked)
            if (!it.lost.empty())
                std::cerr << "zeltrack: warning: trial " << it.number << " is lost: " << printable(it.lost) << " ("
                          << printable(to_text(it.chosen)) << ")\n";
    }

    const std::vector<subject>& subjects_;
    const judge& by_;
    const run_options& options_;
    trial_set& trials_;
    std::vector<const figure*> wanted_;
    worker_pool pool_;
    double per_search_;
    progress bar_;
    std::uint64_t seed_ = 0;
    int number_ = 0;
    int done_ = 0;
    std::optional<double> best_;
};

}  // namespace

bool run_trials(const std::vector<subject>& subjects, const judge& by, const run_options& options, trial_set& trials)
{
    return runner(subjects, by, options, trials).run();
}

}  // namespace zeltrack
