// SPDX-License-Identifier: MIT
//
// The scoring of tracks: small scenes whose figures are worked by hand, and what must hold of any scene.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "eval/assignment.h"
#include "eval/score.h"
#include "mot/seqinfo.h"

namespace zeltrack {

// --- assignment ------------------------------------------------------------------------------------------------------

// The best of all ways to give each row from `row` on one of the columns not in `used`, or none.
static double best_sum(const std::vector<edge>& edges, std::uint32_t row, std::uint32_t rows, unsigned used)
{
    if (row == rows)
        return 0;
    double best = best_sum(edges, row + 1, rows, used);
    for (const edge& e : edges)
        if (e.row == row && !(used >> e.column & 1))
            best = std::max(best, e.weight + best_sum(edges, row + 1, rows, used | 1U << e.column));
    return best;
}

static double sum_taken(const std::vector<edge>& edges, const std::vector<std::uint32_t>& taken, std::size_t columns)
{
    std::vector<bool> used(columns);
    double sum = 0;
    for (std::uint32_t row = 0; row < taken.size(); ++row) {
        if (taken[row] == assignment::none)
            continue;
        const edge& e = edges.at(taken[row]);
        EXPECT_TRUE(e.row == row && e.weight > 0 && !used[e.column]);
        used[e.column] = true;
        sum += e.weight;
    }
    return sum;
}

TEST(Assignment, FindsTheBestOfAll)
{
    std::mt19937 random(1);
    assignment subject;
    for (int round = 0; round < 3000; ++round) {
        const auto below = [&](unsigned n) { return static_cast<std::uint32_t>(random() % n); };
        const std::uint32_t rows = below(7), columns = below(7), sparse = 1 + below(3);
        std::vector<edge> edges;
        for (std::uint32_t row = 0; row < rows; ++row)
            for (std::uint32_t column = 0; column < columns; ++column)
                if (random() % sparse == 0)  // few different weights, so that ties occur, and some of no use
                    edges.push_back({row, column, static_cast<double>(random() % 9) / 4 - 0.25});
        const auto& taken = subject.solve(rows, columns, edges.data(), edges.size());
        ASSERT_EQ(taken.size(), rows);
        ASSERT_NEAR(sum_taken(edges, taken, columns), best_sum(edges, 0, rows, 0), 1e-12) << "round " << round;
    }
}

TEST(Assignment, MovesALongChainForOneMoreRow)
{
    constexpr std::uint32_t rows = 5000;
    std::vector<edge> edges;
    for (std::uint32_t row = 0; row < rows; ++row) {
        edges.push_back({row, row, 10});
        edges.push_back({row, row + 1, 9.999});
    }
    edges.push_back({rows, 0, 10});
    assignment subject;
    const auto& taken = subject.solve(rows + 1, rows + 1, edges.data(), edges.size());
    EXPECT_NEAR(sum_taken(edges, taken, rows + 1), 10 + 9.999 * rows, 1e-6);
}

// --- scenes ----------------------------------------------------------------------------------------------------------

// Boxes of 10 x 10 in a row. The n-th character of a frame is the place of object or track n, in steps of 3: boxes at the
// same place overlap by 1, one step apart by 7/13, two by 4/16, three by 1/19, further not at all; - is no box.
using scene_frames = std::vector<std::pair<std::string, std::string>>;  // objects, tracks

static std::vector<score_row> rows_at(const scene_frames& frames, std::string scene_frames::value_type::*which)
{
    std::vector<score_row> rows;
    for (std::size_t f = 0; f < frames.size(); ++f) {
        const std::string& places = frames[f].*which;
        for (std::size_t n = 0; n < places.size(); ++n)
            if (places[n] != '-')
                rows.push_back({static_cast<int>(f) + 1, static_cast<int>(n) + 1, 3.0 * (places[n] - '0'), 5, 10, 10});
    }
    return rows;
}

static sequence_score score_of(const std::vector<score_row>& truth, const std::vector<score_row>& tracks, int frames,
                               score_rules rules = score_rules::mot15, std::vector<identity_switch>* switches = nullptr)
{
    scorer subject;
    sequence_score result;
    EXPECT_FALSE(subject.set_truth(truth.data(), truth.size(), rules, frames));
    EXPECT_FALSE(subject.score(tracks.data(), tracks.size(), result));
    if (switches)
        *switches = subject.switches();
    return result;
}

static sequence_score score_of(const scene_frames& frames, std::vector<identity_switch>* switches = nullptr)
{
    using sides = scene_frames::value_type;
    return score_of(rows_at(frames, &sides::first), rows_at(frames, &sides::second), static_cast<int>(frames.size()),
                    score_rules::mot15, switches);
}

struct clear_case {
    const char* name;
    scene_frames frames;
    double tp, fp, fn, idsw, frag, mt, pt, ml, idtp;
};

static const clear_case clear_cases[] = {
    {"followed throughout", {{"05", "05"}, {"16", "16"}}, 4, 0, 0, 0, 0, 2, 0, 0, 4},
    {"another track", {{"0", "0"}, {"0", "-0"}, {"0", "-0"}}, 3, 0, 0, 1, 0, 1, 0, 0, 2},
    {"there and back", {{"0", "0"}, {"0", "-0"}, {"0", "0"}}, 3, 0, 0, 2, 0, 1, 0, 0, 2},
    {"two exchange their tracks", {{"05", "05"}, {"05", "50"}}, 4, 0, 0, 2, 0, 2, 0, 0, 2},
    {"missed among others", {{"0", "0"}, {"0", "9"}, {"0", "0"}}, 2, 1, 1, 0, 1, 0, 1, 0, 2},
    {"missed where no track is at all", {{"0", "0"}, {"0", ""}, {"0", "0"}}, 2, 0, 1, 0, 0, 0, 1, 0, 2},
    {"kept, although another is nearer", {{"0", "0"}, {"0", "10"}}, 2, 1, 0, 0, 0, 1, 0, 0, 2},
    {"kept over a frame without tracks", {{"0", "0"}, {"0", ""}, {"0", "10"}}, 2, 1, 1, 0, 0, 0, 1, 0, 2},
    {"not kept over one with others", {{"0", "0"}, {"0", "--9"}, {"0", "10"}}, 2, 2, 1, 1, 1, 0, 1, 0, 2},
    {"two overlaps rather than one larger", {{"01", "12"}}, 2, 0, 0, 0, 0, 2, 0, 0, 2},
    {"too far", {{"0", "2"}}, 0, 1, 1, 0, 0, 0, 0, 1, 0},
    {"4 of 5 are not mostly tracked",
     {{"0", "0"}, {"0", "0"}, {"0", "0"}, {"0", "0"}, {"0", ""}},
     4,
     0,
     1,
     0,
     0,
     0,
     1,
     0,
     4},
    {"1 of 5 is not mostly lost", {{"0", "0"}, {"0", ""}, {"0", ""}, {"0", ""}, {"0", ""}}, 1, 0, 4, 0, 0, 0, 1, 0, 1},
    {"one identity through the sequence",
     {{"0", "0"}, {"0", "1-"}, {"0", "10"}, {"0", "-0"}},
     4,
     1,
     0,
     1,
     0,
     1,
     0,
     0,
     3},
    {"no tracks", {{"0", ""}, {"0", ""}}, 0, 0, 2, 0, 0, 0, 0, 1, 0},
    {"no truth", {{"", "0"}, {"", "00"}}, 0, 3, 0, 0, 0, 0, 0, 0, 0},
};

TEST(Clear, CountsByHand)
{
    for (const clear_case& c : clear_cases) {
        SCOPED_TRACE(c.name);
        const sequence_score s = score_of(c.frames);
        EXPECT_EQ(s.clear.tp, c.tp);
        EXPECT_EQ(s.clear.fp, c.fp);
        EXPECT_EQ(s.clear.fn, c.fn);
        EXPECT_EQ(s.clear.idsw, c.idsw);
        EXPECT_EQ(s.clear.frag, c.frag);
        EXPECT_EQ(s.clear.mt, c.mt);
        EXPECT_EQ(s.clear.pt, c.pt);
        EXPECT_EQ(s.clear.ml, c.ml);
        EXPECT_EQ(s.identity.idtp, c.idtp);
    }
}

TEST(Clear, NamesTheSwitches)
{
    std::vector<identity_switch> switches;
    score_of({{"05", "05"}, {"05", "-5"}, {"05", "--5"}, {"05", "-50"}}, &switches);
    ASSERT_EQ(switches.size(), 3U);
    const auto is = [](const identity_switch& s, int frame, int object, int from, int to, int since) {
        return s.frame == frame && s.object == object && s.from == from && s.to == to && s.since == since;
    };
    EXPECT_TRUE(is(switches[0], 3, 2, 2, 3, 1));
    EXPECT_TRUE(is(switches[1], 4, 1, 1, 3, 3));
    EXPECT_TRUE(is(switches[2], 4, 2, 3, 2, 1));
}

// 3 objects for 4 frames. One is followed well, one has another track in the last frame, one is never found.
TEST(Figures, WorkedByHand)
{
    const sequence_score s = score_of({{"0-49", "0-4"}, {"0-49", "0-4"}, {"0-49", "0-4"}, {"0-49", "0--4-7"}});
    // tp 8, fn 4, fp 1 (track 6), one switch from track 3 to 4 after 3 frames
    EXPECT_DOUBLE_EQ(s.clear.mota, (8 - 1 - 1) / 12.0);
    EXPECT_DOUBLE_EQ(s.clear.moda, (8 - 1) / 12.0);
    EXPECT_DOUBLE_EQ(s.clear.motal, (8 - 1 - 0) / 12.0);
    EXPECT_DOUBLE_EQ(s.clear.motp, 1);
    EXPECT_DOUBLE_EQ(s.clear.fp_per_frame, 0.25);
    EXPECT_DOUBLE_EQ(s.identity.idf1, 7 / (7 + (5 + 2) / 2.0));
    EXPECT_DOUBLE_EQ(s.hota.det_a[9], 8 / 13.0);
    // pairs: 4 frames of 4 and 4; 3 of 4 and 3; 1 of 4 and 1
    EXPECT_DOUBLE_EQ(s.hota.ass_a[9], (4 * 1 + 3 * 0.75 + 1 * 0.25) / 8);
    EXPECT_DOUBLE_EQ(s.hota.ass_pr[9], 1);
    EXPECT_DOUBLE_EQ(s.hota.hota[9], std::sqrt(8 / 13.0 * 6.5 / 8));
    EXPECT_TRUE(s.count.dets == 9 && s.count.gt_dets == 12 && s.count.ids == 4 && s.count.gt_ids == 3);
}

TEST(Hota, CountsAtEachThreshold)
{
    // 7/13 reaches 0.05 to 0.5, 1/19 only 0.05
    const sequence_score near = score_of({{"0", "1"}});
    EXPECT_DOUBLE_EQ(mean(near.hota.hota), 10 / 19.0);
    EXPECT_DOUBLE_EQ(near.hota.loc_a[9], 7 / 13.0);
    EXPECT_EQ(near.hota.loc_a[10], 1);
    EXPECT_DOUBLE_EQ(mean(score_of({{"0", "3"}}).hota.hota), 1 / 19.0);
    // the track that belongs to the object is preferred to a nearer one
    EXPECT_EQ(score_of({{"0", "1"}, {"0", "1"}, {"0", "10"}}).hota.tp[18], 0);
}

TEST(Hota, ForgivesARoundingAtTheThreshold)
{
    // half of the object, but in doubles a little less
    const sequence_score s = score_of({{1, 1, 0.2, 0.2, 1, 1}}, {{1, 1, 0.2, 0.2, 0.5, 1}}, 1);
    EXPECT_TRUE(s.hota.tp[9] == 1 && s.clear.tp == 1 && s.identity.idtp == 0);
}

// --- rules -----------------------------------------------------------------------------------------------------------

struct rules_case {
    const char* name;
    std::vector<score_row> truth;  // and one track at the first place
    score_rules rules;
    double gt_dets, dets;
};

static score_row box(int id, double left, int cls, bool counts = true)
{
    return {1, id, left, 0, 10, 10, cls, counts};
}

TEST(Rules, SayWhichRowsCount)
{
    constexpr auto mot15 = score_rules::mot15, mot17 = score_rules::mot17, mot20 = score_rules::mot20;
    const rules_case cases[] = {
        {"mot15 knows no classes", {box(1, 0, 8)}, mot15, 1, 1},
        {"what is marked does not count", {box(1, 0, 1, false)}, mot15, 0, 1},
        {"a track on a distractor", {box(1, 0, 8)}, mot17, 0, 0},
        {"even if that is marked", {box(1, 0, 8, false)}, mot17, 0, 0},
        {"on a box that just does not count", {box(1, 0, 1, false)}, mot17, 0, 1},
        {"on another class", {box(1, 0, 3)}, mot17, 0, 1},
        {"vehicles without a motor in mot17", {box(1, 0, 6)}, mot17, 0, 1},
        {"and in mot20", {box(1, 0, 6)}, mot20, 0, 0},
        {"too far from the distractor", {box(1, 4, 8)}, mot17, 0, 1},
        {"nearer to an object", {box(1, 3, 8), box(2, 1, 1)}, mot17, 1, 1},
        {"nearer to a box that does not count", {box(1, 3, 8), box(2, 1, 1, false)}, mot17, 0, 1},
    };
    for (const rules_case& c : cases) {
        const sequence_score s = score_of(c.truth, {box(1, 0, 1)}, 1, c.rules);
        EXPECT_EQ(s.count.gt_dets, c.gt_dets) << c.name;
        EXPECT_EQ(s.count.dets, c.dets) << c.name;
    }
}

TEST(Rules, RefuseRows)
{
    using reason = row_fault::reason;
    const std::vector<score_row> good = {{2, 1, 0, 0, 1, 1}, {1, 1, 0, 0, 1, 1}};
    const auto with = [&](int frame, int id, int cls) {
        std::vector<score_row> rows = good;
        rows.push_back({frame, id, 0, 0, 1, 1, cls});
        return rows;
    };
    const auto is = [](const std::optional<row_fault>& fault, reason why, std::size_t earlier) {
        return fault && fault->why == why && fault->row == 2 && fault->earlier == earlier;
    };
    scorer subject;
    sequence_score result;
    const auto truth = [&](const std::vector<score_row>& rows, score_rules rules) {
        return subject.set_truth(rows.data(), rows.size(), rules, 2);
    };
    EXPECT_TRUE(is(truth(with(3, 1, 1), score_rules::mot15), reason::frame_outside, 2));
    EXPECT_TRUE(is(truth(with(0, 1, 1), score_rules::mot15), reason::frame_outside, 2));
    EXPECT_TRUE(is(truth(with(1, 1, 1), score_rules::mot15), reason::identifier_twice, 1));
    EXPECT_TRUE(is(truth(with(1, 2, 14), score_rules::mot20), reason::class_unknown, 2));
    EXPECT_FALSE(truth(with(1, 2, 14), score_rules::mot15));
    const auto rows = with(2, 1, 1);
    EXPECT_TRUE(is(subject.score(rows.data(), rows.size(), result), reason::identifier_twice, 0));

    std::vector<score_row> heap;  // each of a frame's boxes overlaps all others
    for (int id = 1; id <= 1200; ++id)
        heap.push_back({1, id, 0, 0, 9, 9});
    EXPECT_FALSE(truth(heap, score_rules::mot15));
    const auto crowded = subject.score(heap.data(), heap.size(), result);
    ASSERT_TRUE(crowded);
    EXPECT_EQ(crowded->why, reason::too_crowded);
}

// --- seqinfo.ini -----------------------------------------------------------------------------------------------------

TEST(SequenceInfo, TakesWhatItKnows)
{
    sequence_info info;
    std::istringstream text(
        "; a comment\r\n[Sequence]\r\nname=x\r\n imdir = img 1 \nframeRate=14.5\nseqLength=525\nIMWIDTH=640\n"
        "imHeight=480\n\n[Other]\nseqLength=none\n");
    EXPECT_FALSE(read_sequence_info(text, info));
    EXPECT_TRUE(info.frame_rate == 14.5 && info.frames == 525 && info.width == 640 && info.height == 480);
    EXPECT_EQ(info.image_folder, "img 1");
    for (const char* wrong :
         {"seqLength=0", "seqLength=1e3", "frameRate=nan", "imWidth=-1", "imHeight=", "[Sequence]\nx"}) {
        std::istringstream line(std::string("\n") + wrong);
        const auto error = read_sequence_info(line, info);
        ASSERT_TRUE(error) << wrong;
        EXPECT_EQ(error->line, wrong[0] == '[' ? 3U : 2U);
    }
}

// --- what holds of any scene -----------------------------------------------------------------------------------------

static std::vector<score_row> crowd(std::mt19937& random, int frames, int ids, bool classes)
{
    const auto below = [&](unsigned n) { return static_cast<int>(random() % n); };
    std::vector<score_row> rows;
    for (int f = 1; f <= frames; ++f)
        for (int id = 1; id <= ids; ++id)
            if (below(4) > 0)
                rows.push_back(
                    {f, id, 5.0 * id + below(4), 1.0 * below(5), 12, 14, classes ? 1 + below(8) : 1, below(5) > 0});
    return rows;
}

static std::vector<double> digest(const sequence_score& s)
{
    return {mean(s.hota.hota), mean(s.hota.loc_a), mean(s.hota.ass_re), s.clear.mota, s.clear.motp,
            s.clear.idsw,      s.clear.frag,       s.identity.idf1,     s.count.dets, s.count.gt_ids};
}

TEST(Scorer, DependsOnTheRowsAlone)
{
    std::mt19937 random(3);
    scorer reused;
    for (int round = 0; round < 40; ++round) {
        const score_rules rules = round % 2 ? score_rules::mot17 : score_rules::mot15;
        std::vector<score_row> truth = crowd(random, 12, 6, true), tracks = crowd(random, 12, 7, false);
        const auto expected = digest(score_of(truth, tracks, 12, rules));
        for (score_row& row : tracks)
            row.id = round % 4 < 2 ? row.id : 300000000 * (row.id - 4);  // in the same order, but far apart
        std::shuffle(truth.begin(), truth.end(), random);
        std::shuffle(tracks.begin(), tracks.end(), random);
        sequence_score result;
        ASSERT_FALSE(reused.set_truth(truth.data(), truth.size(), rules, 12));
        ASSERT_FALSE(reused.score(tracks.data(), tracks.size() / 2, result));
        ASSERT_FALSE(reused.score(tracks.data(), tracks.size(), result));
        EXPECT_EQ(digest(result), expected);
        scorer copy(reused);
        reused = scorer();
        ASSERT_FALSE(copy.score(tracks.data(), tracks.size(), result));
        EXPECT_EQ(digest(result), expected);
        for (const double figure : expected)
            EXPECT_TRUE(std::isfinite(figure));
    }
}

TEST(Combined, WeighsByMatches)
{
    const sequence_score one = score_of({{"0", "0"}, {"0", "-0"}});                // AssA 1/2 of 2 matches
    const sequence_score two = score_of({{"04", "04"}, {"04", "04"}, {"", "9"}});  // AssA (2*1 + 2*2/3) / 4 of 4
    const sequence_score both[] = {one, two, score_of({{"0", ""}}), score_of({{"", "0"}})};
    const sequence_score all = combined(both, 4);
    EXPECT_DOUBLE_EQ(all.hota.ass_a[0], (2 * 0.5 + 4 * (10 / 12.0)) / 6);
    EXPECT_DOUBLE_EQ(all.hota.det_a[0], 6 / 9.0);
    EXPECT_DOUBLE_EQ(all.clear.mota, (6 - 2 - 1) / 7.0);
    EXPECT_DOUBLE_EQ(all.clear.mlr, 1 / 4.0);
    EXPECT_DOUBLE_EQ(all.identity.idf1, 5 / (5 + (2 + 3) / 2.0));
    EXPECT_EQ(all.count.frames, 7);
    EXPECT_EQ(digest(combined(&one, 1)), digest(one));
    EXPECT_EQ(combined(nullptr, 0).hota.loc_a[0], 1);
}

}  // namespace zeltrack
