// SPDX-License-Identifier: MIT
//
// The tracker, its unit included for its records. Coordinates are mostly small whole numbers, so that distances and
// overlaps are exact and ties are real.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <tuple>

static void require(bool holds, const char* what)
{
    EXPECT_TRUE(holds) << what;
}

#include "tracked.h"

namespace {

constexpr float nan_f = std::numeric_limits<float>::quiet_NaN();
constexpr float inf_f = std::numeric_limits<float>::infinity();

// Centre box, as the tracker has it inside.
struct box {
    float x, y = 0, w = 9, h = 9, c = 1;

    input_row row() const { return {c, x - w / 2, y - h / 2, x + w / 2, y + h / 2, 0.5F}; }
};

std::vector<input_row> rows_of(const std::vector<box>& boxes)
{
    std::vector<input_row> input(boxes.size());
    std::transform(boxes.begin(), boxes.end(), input.begin(), [](const box& b) { return b.row(); });
    return input;
}

// --- the handle ------------------------------------------------------------------------------------------------------

struct params_case {
    const char* name;
    float euc, iou;
    int stable, removal;
    float euc_stored, iou_stored;
    int stable_stored, removal_stored;
};

const params_case params[] = {
    {"inside the limits", 0.25F, 0.75F, 3, 10, 0.25F, 0.75F, 3, 10},
    {"at the limits", 0, 1, 1, 1, 0, 1, 1, 1},
    {"beyond the limits", 2.5F, -0.2F, 0, -3, 1, 0, 1, 1},
    {"not numbers", nan_f, nan_f, INT_MIN, INT_MAX, 1, 1, 1, INT_MAX},
};

TEST(Handle, StartsEmptyWithItsParametersClamped)
{
    for (const params_case& p : params) {
        SCOPED_TRACE(p.name);
        tracked t(4, p.stable, p.removal, p.euc, p.iou, 7);
        EXPECT_EQ(std::tie(t->euc_thresh, t->iou_thresh, t->fcnt_stable, t->fcnt_removal, t->ignore_class),
                  std::tuple(p.euc_stored, p.iou_stored, p.stable_stored, p.removal_stored, 7));
        EXPECT_EQ(std::tie(t->im_w, t->im_h, t->nmaxobjs, t->tid, t->track_count), std::tuple(640, 480, 4, 1, 0));
        zel_tracker_set_params(t.handle, 2.5F, -0.2F, 6, -3, 2);  // stored as they are
        EXPECT_EQ(std::tie(t->euc_thresh, t->iou_thresh, t->fcnt_stable, t->fcnt_removal, t->ignore_class),
                  std::tuple(2.5F, -0.2F, 6, -3, 2));
    }
}

TEST(Handle, OfNoCapacityWorksAndOfNegativeIsRefused)
{
    EXPECT_EQ(zel_tracker_create(1, 1, -1, 0, 0, 1, 1, 0), nullptr);
    zel_tracker_release(nullptr);
    tracked t(0, 1, 1);
    float input[1][6] = {{1}};
    float output[1][8] = {{7}};
    zel_tracker_process(t.handle, input, output);
    EXPECT_EQ(output[0][0], 7);
}

// --- intake ----------------------------------------------------------------------------------------------------------

TEST(Intake, CutsClassesAsTheTargetDoes)
{
    const std::pair<float, int> classes[] = {{2.7F, 2},
                                             {-1.5F, -1},
                                             {0.4F, 0},
                                             {-0.4F, 0},
                                             {nan_f, 0},
                                             {inf_f, INT_MAX},
                                             {-inf_f, INT_MIN},
                                             {2147483648.0F, INT_MAX},
                                             {-3e9F, INT_MIN},
                                             {2147483520.0F, 2147483520},
                                             {-2147483648.0F, INT_MIN},
                                             {-2147483904.0F, INT_MIN}};  // the next below
    for (const auto& [value, cut] : classes) {
        tracked t(1, 1, 1);
        t.associate({{value}});
        EXPECT_EQ(std::pair(t->ncurobjs, t->cur_obj[0].c), std::pair(1, cut)) << value;
    }
}

TEST(Intake, TurnsCornersIntoCentresUpToTheFirstRowOfClassZero)
{
    tracked t(4, 1, 1);
    t.associate({{1, 10, 20, 30, 60, 0.9F}, {2, 30, 60, 10, 20, -1}, {-0.0F, 1, 1, 2, 2, 1}, {1, 1, 1, 2, 2, 1}});
    ASSERT_EQ(t->ncurobjs, 2);
    const det_obj_t& a = t->cur_obj[0];
    EXPECT_EQ(std::tie(a.c, a.x, a.y, a.w, a.h, a.s), std::tuple(1, 20, 40, 20, 40, 0.9F));
    const det_obj_t& b = t->cur_obj[1];  // corners the other way round are carried
    EXPECT_EQ(std::tie(b.c, b.x, b.y, b.w, b.h, b.s), std::tuple(2, 20, 40, -20, -40, -1));
    t.associate({{1}, {1}, {1}, {1}});
    EXPECT_EQ(t->ncurobjs, 4);
}

// --- association -----------------------------------------------------------------------------------------------------

struct match_case {
    const char* name;
    float euc, iou;
    int ignore_class;
    std::vector<box> tracks, detections;
    std::vector<int> matched;  // by each detection: the track, -1 for none
    std::vector<float> scores;
};

const float third = 2.0F / 6;

const match_case matches[] = {
    {"nearest centre", 0, 0, 0, {{-3}, {2}}, {{0}}, {1}, {4}},
    {"equal distances: the older track", 0, 0, 0, {{-3}, {3}}, {{0}}, {0}, {9}},
    {"just inside the gate", 0, 0, 0, {{0, 0, 40, 40}}, {{7, 7, 40, 40}}, {0}, {98}},
    {"on the gate", 0, 0, 0, {{0, 0, 40, 40}}, {{6, 8, 40, 40}}, {-1}, {100}},
    {"another class is nearer", 0, 0, 0, {{0, 0, 9, 9, 2}, {5}}, {{1}}, {1}, {16}},
    {"classes ignored", 0, 0, -1, {{0, 0, 9, 9, 2}, {5}}, {{1}}, {0}, {1}},
    {"displaced by a nearer one, no second try", 0, 0, 0, {{0}, {5}}, {{2}, {1}}, {-1, 0}, {0, 1}},
    {"equal distances: the earlier detection", 0, 0, 0, {{0}}, {{2}, {-2}}, {0, -1}, {4, 0}},
    {"no overlap, no displacing", 0, 0.1F, 0, {{0}}, {{3}, {1, 0, 1, 1}, {2}}, {-1, -1, 0}, {0, 0, 4}},
    {"at the near distance none is needed", 0.25F, 0.9F, 0, {{0, 0, 0, 0}}, {{0.5F, 0, 0, 0}}, {0}, {0.25F}},
    {"beyond it it is", 0.125F, 0, 0, {{0, 0, 0.25F}}, {{0.5F, 0, 0.25F}}, {-1}, {0}},
    {"overlap must exceed the threshold", 0, third, 0, {{0, 0, 2, 2}}, {{1, 0, 2, 2}}, {-1}, {0}},
    {"overlap just above it", 0, third - 1e-7F, 0, {{0, 0, 2, 2}}, {{1, 0, 2, 2}}, {0}, {1}},
    {"an edge is no overlap", 0, 0, 0, {{0, 0, 2, 2}}, {{2, 0, 2, 2}}, {-1}, {0}},
    {"threshold one refuses full overlap", 1, 1, 0, {{0}}, {{0}}, {-1}, {0}},
    {"not finite, no candidate", 1, 0, 0, {{0}}, {{nan_f}, {1, inf_f}}, {-1, -1}, {100, 100}},
};

// Which track each detection has, -1 for none, seen from both sides.
void expect_matches(tracked& t, const std::vector<int>& matched, const std::vector<float>& scores)
{
    const auto tracks = t.tracks();
    std::vector<int> match_idx(tracks.size(), -1);
    ASSERT_EQ(static_cast<size_t>(t->ncurobjs), matched.size());
    for (size_t n = 0; n < matched.size(); ++n) {
        const size_t track = static_cast<size_t>(matched[n]);
        ASSERT_EQ(t->match_obj[n], matched[n] < 0 ? nullptr : tracks[track]) << n;
        ASSERT_EQ(t->match_score[n], scores[n]) << n;
        if (matched[n] >= 0)
            match_idx[track] = static_cast<int>(n);
    }
    for (size_t i = 0; i < tracks.size(); ++i)
        ASSERT_EQ(tracks[i]->match_idx, match_idx[i]) << i;
}

TEST(Association, FollowsItsRules)
{
    for (const match_case& c : matches) {
        SCOPED_TRACE(c.name);
        tracked t(8, 9, 9, c.euc, c.iou, c.ignore_class);
        t.frame(rows_of(c.tracks));
        t.associate(rows_of(c.detections));
        EXPECT_EQ(t.tracks().size(), c.tracks.size());
        expect_matches(t, c.matched, c.scores);
    }
}

// By their borders: left, top, right, bottom.
float plain_iou(const std::array<float, 4>& a, const std::array<float, 4>& b)
{
    const float w = std::min(a[2], b[2]) - std::max(a[0], b[0]), h = std::min(a[3], b[3]) - std::max(a[1], b[1]);
    const float shared = std::max(w, 0.0F) * std::max(h, 0.0F);
    return shared / ((a[2] - a[0]) * (a[3] - a[1]) + (b[2] - b[0]) * (b[3] - b[1]) - shared);
}

// The same rule as one plain loop over all pairs. Returns the number of matches.
long expect_plain_rule(tracked& t)
{
    const auto tracks = t.tracks();
    std::vector<int> holder(tracks.size(), -1), matched;
    std::vector<float> scores;
    for (int n = 0; n < t->ncurobjs; ++n) {
        const det_obj_t& det = t->cur_obj[n];
        float mind = 100;
        int nearest = -1;
        for (size_t i = 0; i < tracks.size(); ++i) {
            const float dx = tracks[i]->pr_x - det.x, dy = tracks[i]->pr_y - det.y;
            if ((t->ignore_class || tracks[i]->c == det.c) && dx * dx + dy * dy < mind) {
                mind = dx * dx + dy * dy;
                nearest = static_cast<int>(i);
            }
        }
        matched.push_back(nearest);
        scores.push_back(mind);
        if (nearest < 0)
            continue;
        const trk_obj_t& obj = *tracks[static_cast<size_t>(nearest)];
        const auto borders = [](float x, float y, float w, float h) {
            return std::array<float, 4>{x - w / 2, y - h / 2, x + w / 2, y + h / 2};
        };
        const float iou =
            plain_iou(borders(obj.pr_x, obj.pr_y, obj.pr_w, obj.pr_h), borders(det.x, det.y, det.w, det.h));
        int& holds = holder[static_cast<size_t>(nearest)];
        int loser = n;
        if ((mind <= t->euc_thresh ? 1 : iou) > t->iou_thresh &&
            (holds < 0 || scores[static_cast<size_t>(holds)] > mind))
            std::swap(holds, loser);
        if (loser >= 0) {
            matched[static_cast<size_t>(loser)] = -1;
            scores[static_cast<size_t>(loser)] = 0;
        }
    }
    expect_matches(t, matched, scores);
    return std::count_if(matched.begin(), matched.end(), [](int m) { return m >= 0; });
}

std::vector<input_row> random_frame(std::mt19937& bits, size_t count, unsigned spread)
{
    const auto pick = [&](unsigned n) { return static_cast<float>(bits() % n); };
    std::vector<input_row> frame;
    while (frame.size() < count) {
        box b = {pick(spread), pick(spread), 2 * pick(8), 2 * pick(8), 1 + pick(3)};
        if (bits() % 50 == 0)
            (bits() % 2 ? b.x : b.y) = bits() % 2 ? nan_f : 3e37F;
        frame.push_back(b.row());
    }
    return frame;
}

// Whole numbers in a crowded square: most detections have ties, rivals or a track of another class nearer.
TEST(Association, EqualsThePlainRuleOnCrowdedFrames)
{
    const size_t counts[] = {0, 1, 2, 3, 15, 16, 17, 31, 32, 33, 48, 63, 64, 65, 127, 128, 129, 191, 192, 193, 200};
    std::mt19937 bits(1);
    long matched = 0;
    for (const size_t count : counts) {
        for (unsigned trial = 0; trial < 12; ++trial) {
            SCOPED_TRACE(testing::Message() << count << " tracks, trial " << trial);
            const unsigned spread = trial % 3 == 0 ? 12 : trial % 3 == 1 ? 40 : 120;
            tracked t(200, trial % 4 ? 1 : 9, 9, trial % 2 ? 1.0F : 0.0F, 0.1F * static_cast<float>(trial % 3),
                      trial % 5 == 0);
            t.frame(random_frame(bits, count, spread));
            for (trk_obj_t* obj : t.tracks())
                for (const int previous : {2, 3, 6, 7})  // a confirmed track moves and grows
                    if (obj->kalman)
                        obj->kalman->x_post->data.f[previous] -= static_cast<float>(bits() % 5) - 2;
            t.associate(random_frame(bits, 1 + bits() % 200, spread));
            EXPECT_EQ(t.tracks().size(), count);
            matched += expect_plain_rule(t);
        }
    }
    EXPECT_GT(matched, 4000);
}

// --- life cycle ------------------------------------------------------------------------------------------------------

// One object standing still: d is a frame with its detection, . a frame without, a digit sets fcnt_stable between two
// frames. After each frame: the identifier reported and the number of tracks alive.
struct life_case {
    const char* name;
    int stable, removal;
    const char *frames, *reported, *alive;
};

const life_case lives[] = {
    {"reported on the third match", 3, 10, "ddd", "--1", "111"},
    {"unseen for two frames is shown", 3, 10, "ddd...d", "--111-1", "1111111"},
    {"unseen for ten frames keeps its identifier", 1, 10, "d..........d", "111--------1", "111111111111"},
    {"unseen for eleven starts from zero", 1, 10, "d...........d", "111---------2", "1111111111101"},
    {"second miss with removal one", 3, 1, "ddd..ddd", "--11---2", "11110111"},
    {"misses must be consecutive", 1, 2, "d..d..d...d", "111111111-2", "11111111101"},
    {"tentative: three misses keep its matches", 4, 10, "dd...dd", "------1", "1111111"},
    {"tentative: four misses forget its matches", 5, 10, "dd....ddddd", "----------1", "11111111111"},
    {"tentative: gone at the sixth miss", 5, 10, "dd......d", "---------", "111111101"},
    {"tentative: gone sooner with a small removal", 5, 2, "d...", "----", "1110"},
    {"a lower threshold confirms at the next match", 9, 10, "ddd2d", "---1", "1111"},
    {"a lower threshold waits for a match", 9, 10, "ddd2.d", "----1", "11111"},
    {"a higher threshold takes no identifier back", 2, 10, "dd5ddddd", "-111111", "1111111"},
    {"a higher threshold leaves it the longer patience", 2, 10, "dd9......d", "-111----1", "111111111"},
};

TEST(Life, OfOneObject)
{
    for (const life_case& life : lives) {
        SCOPED_TRACE(life.name);
        tracked t(4, life.stable, life.removal);
        std::string reported, alive;
        for (const char* frame = life.frames; *frame; ++frame) {
            if (*frame >= '0' && *frame <= '9') {
                zel_tracker_set_params(t.handle, 0.5F, 0.3F, *frame - '0', life.removal, 0);
                continue;
            }
            const bool seen = *frame == 'd';
            const auto rows = seen ? t.frame(rows_of({box{20}})) : t.frame({});
            reported += rows.empty() ? '-' : static_cast<char>('0' + static_cast<int>(rows[0][0]));
            alive += static_cast<char>('0' + t->track_count);
            for (const output_row& row : rows)
                EXPECT_EQ(row[7], seen ? 0 : -1);
        }
        EXPECT_EQ(reported, life.reported);
        EXPECT_EQ(alive, life.alive);
    }
}

TEST(Life, OfAWorkedSequence)
{
    tracked t(4, 2, 10);
    EXPECT_TRUE(t.frame({{1, 10, 10, 30, 50, 0.9F}}).empty());
    EXPECT_EQ(t.frame({{1, 12, 10, 32, 50, 0.8F}}), (std::vector<output_row>{{1, 1, 12, 10, 32, 50, 0.8F, 0}}));
    const trk_obj_t* obj = t.tracks()[0];
    const float* x_post = obj->kalman->x_post->data.f;
    EXPECT_EQ(std::vector<float>(x_post, x_post + 8), (std::vector<float>{22, 30, 20, 30, 20, 40, 20, 40}));
    const auto rows = t.frame({{1, 14, 10, 34, 50, 0.85F}});
    EXPECT_EQ(std::tie(obj->pr_x, obj->pr_y, obj->pr_w, obj->pr_h), std::tuple(24, 30, 20, 40));
    ASSERT_EQ(rows.size(), 1U);
    const output_row expected = {1, 1, 14, 10, 34, 50, 0.85F, 0};
    for (size_t i = 0; i < 8; ++i)
        EXPECT_NEAR(rows[0][i], expected[i], 1e-4F) << i;
}

// One coordinate of the motion model in double precision: its value and the one of the frame before, A = [2 -1; 1 0].
struct coordinate {
    double now, before, p = 1, pq = 0, q = 1;  // their covariances

    double predicted() const { return 2 * now - before; }
    void correct(double z)
    {
        const double a = 4 * p - 4 * pq + q + 0.1, b = 2 * p - pq, d = p + 0.1;  // A P A' + Q
        const double innovation = z - predicted();
        *this = {predicted() + a / (a + 1) * innovation, now + b / (a + 1) * innovation, a / (a + 1), b / (a + 1),
                 d - b * b / (a + 1)};
    }
};

TEST(Life, OfAConfirmedTrackFollowsTheMotionModel)
{
    std::mt19937 bits(2);
    const auto shake = [&] { return static_cast<float>(bits() % 100) / 25 - 2; };
    tracked t(1, 2, 10);
    t.frame(rows_of({box{100, 200, 50, 80}}));
    t.frame(rows_of({box{102, 201, 49, 82}}));
    coordinate model[4] = {{102, 100}, {201, 200}, {49, 50}, {82, 80}};
    const trk_obj_t* obj = t.tracks()[0];
    for (int n = 0; n < 30; ++n) {
        const bool seen = n % 7 != 3;  // unseen, the prediction stands still
        const box b = {104 + 3 * static_cast<float>(n) + shake(), 202 + shake(), 49 + shake(), 82 + shake()};
        seen ? t.frame({b.row()}) : t.frame({});
        const float pr[] = {obj->pr_x, obj->pr_y, obj->pr_w, obj->pr_h};
        const float now[] = {obj->x, obj->y, obj->w, obj->h};
        const float z[] = {b.x, b.y, b.w, b.h};
        for (int i = 0; i < 4; ++i) {
            ASSERT_NEAR(pr[i], model[i].predicted(), 1e-2) << n << ", " << i;
            if (seen)
                model[i].correct(static_cast<double>(z[i]));
            ASSERT_NEAR(now[i], model[i].now, 1e-2) << n << ", " << i;
        }
        ASSERT_EQ(obj->id, 1);
    }
}

TEST(Life, BornConfirmedStartsWithoutMotionAndTakesTheLatestDetection)
{
    tracked t(2, 1, 10, 0.5F, 0.3F, 1);
    EXPECT_EQ(t.frame(rows_of({box{10, 20, 8, 6, 3}})), (std::vector<output_row>{{1, 3, 6, 17, 14, 23, 0.5F, 0}}));
    t.frame({});
    const trk_obj_t* obj = t.tracks()[0];
    EXPECT_EQ(std::tie(obj->pr_x, obj->pr_y, obj->pr_w, obj->pr_h), std::tuple(10, 20, 8, 6));
    const auto rows = t.frame({{7, 96, 17, 104, 23, 0.1F}, {5, 6, 17, 14, 23, 0.25F}});
    EXPECT_EQ(rows, (std::vector<output_row>{{1, 5, 6, 17, 14, 23, 0.25F, 1}, {2, 7, 96, 17, 104, 23, 0.1F, 0}}));
}

TEST(Life, StopsAtCapacity)
{
    tracked t(2, 1, 1);
    EXPECT_EQ(t.frame(rows_of({box{0}})).size(), 1U);
    const auto two = rows_of({{100}, {200}});
    const auto rows = t.frame(two);  // room for one of them
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(std::tuple(rows[0][7], rows[1][7], rows[1][0]), std::tuple(-1, 0, 2));
    EXPECT_EQ(t->match_obj[1], nullptr);
    EXPECT_EQ(t.frame(two).size(), 1U);  // the oldest goes, its place is free in the next frame
    EXPECT_EQ(t.frame(two)[1][0], 3);
    t->nmaxobjs = 1;
    output_row output[2] = {{}, {7}};
    tracker_get_tracks(t.handle, reinterpret_cast<float(*)[8]>(output));
    EXPECT_EQ(output[1][0], 7);  // not even if there were more tracks
}

TEST(Life, IssuesIdentifiersInOrderOfConfirmationAndWraps)
{
    tracked t(8, 2, 1);
    t.frame(rows_of({box{0}, {100}}));
    EXPECT_EQ(t.frame(rows_of({box{100}}))[0][0], 1);  // the other one uses up none
    t->tid = 1048574;
    const auto three = rows_of({{200}, {300}, {400}});
    t.frame(three);
    const auto rows = t.frame(three);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(std::tuple(rows[0][0], rows[1][0], rows[2][0]), std::tuple(1048574, 1, 2));
}

TEST(Life, IsTheSameWithoutOutputAndAtTheEndOfCounting)
{
    tracked t(1, 2, INT_MAX);
    t.frame({{1, 0, 0, 8, 8, 1}}, false);
    t.frame({{1, 0, 0, 8, 8, 1}}, false);
    trk_obj_t* obj = t.tracks()[0];
    EXPECT_EQ(obj->id, 1);
    obj->match_count = obj->miss_count = INT_MAX;
    t.frame({});
    EXPECT_EQ(obj->miss_count, INT_MAX);
    t.frame(rows_of({{4, 4}}));
    EXPECT_EQ(obj->match_count, INT_MAX);
}

TEST(Life, OfTheNextBeginsWhenARecordCannotBeMade)
{
    tracked t(4, 2, 9);
    allocations::granted = 0;
    t.frame(rows_of({{0}, {100}}));
    ASSERT_EQ(t->track_count, 1);
    EXPECT_EQ(t.tracks()[0]->x, 100);
}

}  // namespace
