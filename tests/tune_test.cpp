// SPDX-License-Identifier: MIT
//
// Searching for options: what is tried, in which processes, and what is said of it.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cmath>
#include <sstream>

#include "cli/failure.h"
#include "tune/findings.h"
#include "tune/search.h"
#include "tune/trials_file.h"
#include "tune/workers.h"

using namespace zeltrack;

namespace {

constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();

parameter ranged(const std::string& text)
{
    parameter result;
    EXPECT_EQ(read_parameter(text, result), "");
    return result;
}

// --- parameters ------------------------------------------------------------------------------------------------------

struct value_case {
    const char* name;
    const char* range;
    double place;
    const char* value;
};

const value_case values[] = {
    {"the middle, to three digits", "iou=0.1:0.73", 0.5, "0.415"},
    {"logarithmic", "scale=0.25:4:log", 0.75, "2x"},
    {"its default", "scale=0.25:4:log", 0.5, ""},
    {"an end with more digits than three", "euc=0.12345:0.5", 0, "0.12345"},
    {"whole, the lower end as often as others", "stable=3:5", 0.32, "3"},
    {"whole", "stable=3:5", 0.34, "4"},
    {"a word first", "min-conf=0.2:0.8", 0.24, ""},
    {"numbers after it", "min-conf=0.2:0.8", 0.625, "0.5"},
    {"seconds", "removal=0.1:10s:log", 0.5, "1s"},
    {"an option that nobody knows", "fps=10:30", 0.25, "10"},
    {"beyond the end", "iou=0.1:0.7", 1.5, "0.7"},
};

TEST(Parameter, GivesValuesAndTheirPlaces)
{
    for (const value_case& it : values) {
        SCOPED_TRACE(it.name);
        const parameter of = ranged(it.range);
        const std::string value = value_at(of, it.place);
        EXPECT_EQ(value, it.value);
        EXPECT_EQ(value_at(of, place_of(of, value)), value);
    }
}

TEST(Parameter, RefusesWhatIsNoRange)
{
    parameter result;
    for (const char* text : {"iou", "iou=0.1", "=1:2", "iou=a:1", "iou=0.2:0.1", "scale=0:1:log", "stable=1.5:3"})
        EXPECT_NE(read_parameter(text, result), "") << text;
}

// --- the search ------------------------------------------------------------------------------------------------------

double number(const setting& chosen, const parameter& of, double usual)
{
    const auto at = chosen.find(of.name);
    return at == chosen.end() ? usual : number_of(of, at->second).value_or(nan_value);
}

// Best at iou 0.42, scale 1.5x, stable 4, removal 30 and with min-conf at its default, a word; euc does not matter.
class made_up_task {
public:
    const std::vector<parameter> space = {ranged("scale=0.4:2:log"),  ranged("iou=0.05:0.7"),
                                          ranged("euc=0:1"),          ranged("stable=1:5"),
                                          ranged("removal=2:90:log"), ranged("min-conf=0:1")};

    double operator()(const setting& chosen) const
    {
        const double scale = std::log(number(chosen, space[0], 1) / 1.5);
        const double iou = number(chosen, space[1], 0.3) - 0.42;
        const double stable = number(chosen, space[3], 2) - 4;
        const double removal = std::log(number(chosen, space[4], 10) / 30);
        const double word = chosen.count("min-conf") > 0 ? 0.2 : 0;
        return -scale * scale - iou * iou - 0.1 * stable * stable - 0.3 * removal * removal - word;
    }

    // How many settings were tried.
    std::size_t solve(search& subject, int lose_every = 0) const
    {
        std::size_t count = 0;
        for (std::vector<setting> batch; !(batch = subject.next()).empty();) {
            std::vector<std::optional<double>> objectives;
            for (const setting& chosen : batch) {
                ++count;
                const bool lost = lose_every > 0 && count % static_cast<std::size_t>(lose_every) == 0;
                objectives.push_back(lost ? std::nullopt : std::optional((*this)(chosen)));
            }
            subject.tell(objectives);
        }
        return count;
    }
};

TEST(Search, FindsTheBestOfATaskThatIsKnown)
{
    const made_up_task task;
    for (const std::uint64_t seed : {1U, 2U, 3U}) {
        search subject(task.space, 300, seed);
        const std::size_t tried = task.solve(subject);
        EXPECT_GE(tried, 300U);
        EXPECT_LE(tried, 320U);
        ASSERT_TRUE(subject.best());
        const setting& best = *subject.best();
        EXPECT_GT(task(best), -0.01) << to_text(best);
        EXPECT_EQ(best.count("min-conf") + best.count("euc"), 0U) << "what does not matter is left: " << to_text(best);
        EXPECT_EQ(best.at("stable"), "4");
    }
}

TEST(Search, GoesOnWithoutWhatIsLost)
{
    const made_up_task task;
    search subject(task.space, 200, 1);
    task.solve(subject, 7);
    ASSERT_TRUE(subject.best());
    EXPECT_GT(task(*subject.best()), -0.05);
}

TEST(Search, EndsWhereLittleIsToBeTried)
{
    search subject({ranged("stable=1:3")}, 1000, 1);
    std::size_t count = 0;
    for (std::vector<setting> batch; !(batch = subject.next()).empty(); count += batch.size())
        subject.tell(std::vector<std::optional<double>>(batch.size()));
    EXPECT_EQ(count, 3U);
    EXPECT_FALSE(subject.best()) << "all were lost";
}

// --- processes -------------------------------------------------------------------------------------------------------

std::string do_work(const std::string& request)
{
    if (request == "killed")
        raise(SIGKILL);
    if (request == "ends")
        _exit(3);
    if (request == "fails")
        throw failure("no luck");
    return "done " + request;
}

TEST(Workers, LoseOneAnswerWithEachChild)
{
    const std::vector<std::string> requests = {"1", "killed", "2", "fails", "ends", "3", std::string(100000, 'x')};
    for (const int jobs : {1, 3}) {
        worker_pool pool(jobs, do_work);
        std::vector<work_result> results(requests.size());
        pool.run(
            requests, [&](std::size_t index, const work_result& result) { results[index] = result; },
            [] { return false; });
        EXPECT_EQ(results[0].text, "done 1");
        EXPECT_EQ(results[1].text, "its process was killed by signal 9 (Killed)");
        EXPECT_EQ(results[2].text, "done 2");
        EXPECT_EQ(results[3].text, "no luck");
        EXPECT_EQ(results[4].text, "its process ended with status 3");
        EXPECT_EQ(results[5].text, "done 3");
        EXPECT_EQ(results[6].text, "done " + requests[6]);
        for (const std::size_t lost : {1U, 3U, 4U})
            EXPECT_TRUE(results[lost].lost);
    }
}

TEST(Workers, StopWhenAsked)
{
    worker_pool pool(2, [](const std::string&) {
        pause();
        return std::string();
    });
    int asked = 0;
    pool.run(
        {"1", "2", "3"}, [](std::size_t, const work_result&) { FAIL(); }, [&asked] { return ++asked > 2; });
}

// --- what is maximized -----------------------------------------------------------------------------------------------

trial tried(const setting& chosen, const std::vector<double>& hota, int jitter = 0)
{
    trial it;
    it.chosen = chosen;
    it.jitter = jitter;
    for (const double value : hota)
        it.figures.push_back({value, 10});
    return it;
}

trial_set four_sequences()
{
    trial_set set;
    set.sequences = {"A1", "A2", "B", "C"};
    set.figures = {"HOTA", "IDSW"};
    set.space = {ranged("iou=0.1:0.7"), ranged("stable=1:5")};
    set.trials = {
        tried({}, {0.5, 0.5, 0.5, 0.5}),
        // the best of all, thanks to C alone
        tried({{"iou", "0.2"}, {"stable", "3"}}, {0.5, 0.5, 0.4, 0.9}),
        tried({{"iou", "0.2"}}, {0.52, 0.52, 0.52, 0.52}),
    };
    return set;
}

TEST(Objective, IsAWeightedSumOverGroups)
{
    objective wanted;
    ASSERT_EQ(read_objective("2*HOTA-0.1*IDSW", wanted), "");
    const trial_set set = four_sequences();
    const judge by(set, wanted, group_sequences(set.sequences, {"A*"}));
    ASSERT_EQ(by.groups().size(), 3U);
    EXPECT_DOUBLE_EQ(by.of_all(set.trials[1]), 2 * 100 * (0.5 + 0.4 + 0.9) / 3 - 1);
    for (const char* text : {"", "HOTTA", "HOTA+", "IDSW", "-HOTA", "0*HOTA", "HOTA*2"})
        EXPECT_NE(read_objective(text, wanted), "") << text;
    EXPECT_THROW(group_sequences(set.sequences, {"A*", "D"}), failure);
}

findings find_by_hota(const trial_set& set, const std::vector<std::string>& groups = {})
{
    objective wanted;
    read_objective("HOTA", wanted);
    return find(set, judge(set, wanted, group_sequences(set.sequences, groups)));
}

TEST(Findings, TellWhatIsLeftOnSequencesHeldOut)
{
    trial_set set = four_sequences();
    const findings found = find_by_hota(set);
    EXPECT_DOUBLE_EQ(found.gain, 7.5);
    ASSERT_EQ(found.effects.size(), 2U);
    EXPECT_FALSE(found.effects[0].loss) << "stable alone was not tried";
    EXPECT_NEAR(*found.effects[1].loss, 57.5 - 52, 1e-9);
    // without C, the modest setting would have been chosen; without the others, the one that is best on C
    ASSERT_TRUE(found.held_out);
    EXPECT_NEAR(found.held_out->gain, (0 + 0 - 10 + 2) / 4.0, 1e-9);
    EXPECT_EQ(found.held_out->better, 1);
    EXPECT_NE(verdict(found), "");
    EXPECT_FALSE(find_by_hota(set, {"A*,B"}).held_out) << "of two groups, none can be held out";
}

// Two settings that differ on the sequence held out alone: no one could have known which is better there.
TEST(Findings, DoNotPeekAtWhatIsHeldOut)
{
    trial_set set = four_sequences();
    set.trials = {tried({}, {0.5, 0.5, 0.5, 0.5}), tried({{"iou", "0.1"}, {"stable", "3"}}, {0.6, 0.6, 0.6, 0.6}),
                  tried({{"iou", "0.1"}}, {0.6, 0.6, 0.6, 0.1})};
    const findings found = find_by_hota(set);
    EXPECT_NEAR(found.held_out->groups[3].after, 10, 1e-9);
}

TEST(Findings, CallAGainNoiseThatIs)
{
    trial_set set = four_sequences();
    set.trials.pop_back();
    for (int jitter = 1; jitter <= jitter_count; ++jitter) {
        set.trials.push_back(tried({}, {0.5, 0.5, 0.5, 0.5}, jitter));
        set.trials.push_back(tried(set.trials[1].chosen, {0.5, 0.5, 0.4, jitter % 2 ? 0.5 : 0.9}, jitter));
    }
    const findings found = find_by_hota(set);
    // gains of -2.5 and, twice in five, 7.5
    ASSERT_TRUE(found.noise);
    EXPECT_NEAR(found.noise->mean, 1.5, 1e-9);
    EXPECT_NEAR(found.noise->limit, 2 * std::sqrt(30), 1e-9);
    EXPECT_NE(verdict(found).find("within the noise"), std::string::npos);
}

TEST(Jitter, MovesEdgesByLittleAndAlwaysAlike)
{
    const std::vector<mot_row> still(100, mot_row{1, -1, 10, 20, 30, 40});
    std::vector<mot_row> moved = still;
    std::vector<mot_row> again = still;
    jitter_boxes(moved, 1);
    jitter_boxes(again, 1);
    double most = 0;
    for (std::size_t n = 0; n < still.size(); ++n) {
        EXPECT_EQ(moved[n].left, again[n].left);
        const double right = moved[n].left + moved[n].width - 40;
        EXPECT_LE(std::fabs(right), jitter_pixels + 1e-5);
        most = std::max(most, std::fabs(static_cast<double>(moved[n].left) - 10));
    }
    EXPECT_LE(most, jitter_pixels + 1e-5);
    EXPECT_GT(most, jitter_pixels / 2);
}

// --- files of trials -------------------------------------------------------------------------------------------------

TEST(TrialsFile, ReadsWhatItWrites)
{
    trial_set set = four_sequences();
    set.fixed = {{"steady", "off"}};
    set.trials[1].chosen = {{"iou", "0.2"}, {"removal", "0.8s"}, {"stable", "3"}};
    set.trials.push_back({1, 4, 0, {{"iou", "0.7"}}, {}, "A1: killed"});
    objective wanted;
    read_objective("HOTA", wanted);
    const judge by(set, wanted, group_sequences(set.sequences, {}));
    trial_set read;
    for (const trial& it : set.trials) {
        std::istringstream line(trial_line(it, set, by) + "\n");
        read_trials(line, "file", read);
    }
    ASSERT_EQ(read.trials.size(), set.trials.size());
    EXPECT_EQ(read.sequences, set.sequences);
    EXPECT_EQ(read.fixed, set.fixed);
    for (std::size_t n = 0; n < set.trials.size(); ++n) {
        EXPECT_EQ(read.trials[n].chosen, set.trials[n].chosen);
        EXPECT_EQ(read.trials[n].figures, set.trials[n].figures);
    }
    EXPECT_EQ(read.trials[3].lost, "A1: killed");
    EXPECT_EQ(read.space[0].low, 0.2);
    EXPECT_EQ(read.space[0].high, 0.7);
}

TEST(TrialsFile, RefusesWhatDoesNotBelongTogether)
{
    const std::string first =
        R"({"seed":1,"trial":0,"jitter":0,"setting":{},"fixed":{},"sequences":{"A":{"HOTA":0.5}}})";
    const std::string head = R"({"seed":1,"trial":1,"jitter":0,"setting":)";
    for (const std::string& second :
         {std::string("{"), std::string("[]"), head + R"({},"fixed":{}})",
          head + R"({},"fixed":{"steady":"on"},"sequences":{"A":{"HOTA":0.5}}})",
          head + R"({},"fixed":{},"sequences":{"B":{"HOTA":0.5}}})", head + R"({},"fixed":{},"sequences":{"A":{}}})",
          head + R"({"iou":[]},"fixed":{},"sequences":{"A":{"HOTA":0.5}}})"}) {
        trial_set read;
        std::istringstream lines(first + "\n\n" + second);
        try {
            read_trials(lines, "file", read);
            ADD_FAILURE() << second;
        } catch (const failure& wrong) {
            EXPECT_EQ(std::string(wrong.what()).substr(0, 8), "file:3: ") << wrong.what();
        }
    }
}

}  // namespace
