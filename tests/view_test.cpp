// SPDX-License-Identifier: MIT
//
// What the recorder says of a frame, against the tracker itself with fewer detections: what would take a track alone,
// but not after others, lost; what takes it until others follow, was displaced.
#include "view/view.h"

#include <gtest/gtest.h>
#include <zel/libzel.h>

#include <algorithm>
#include <array>
#include <climits>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include "cli/failure.h"
#include "mot/mot.h"
#include "view/column.h"
#include "view/recorder.h"
#include "zel_tracker.h"

namespace zeltrack {

// --- a tracker and its input -----------------------------------------------------------------------------------------

using row = std::array<float, 6>;
using frame = std::vector<row>;

struct setting {
    int capacity;
    float euc, iou;
    int stable, removal, ignore_class;
};

class tracker {
public:
    explicit tracker(const setting& s)
        : handle_(zel_tracker_create(0, 0, s.capacity, s.euc, s.iou, s.stable, s.removal, s.ignore_class)),
          rows_(static_cast<std::size_t>(s.capacity) + 1)
    {
    }
    ~tracker() { zel_tracker_release(handle_); }
    tracker(const tracker&) = delete;
    tracker& operator=(const tracker&) = delete;

    void process(frame rows)
    {
        rows.push_back({});
        recorder::process(&recorder_, handle_, input_of(rows), output());
    }
    void process_unrecorded(frame rows)
    {
        rows.push_back({});
        zel_tracker_process(handle_, input_of(rows), output());
    }
    const recording& recorded() const { return recorder_.result(); }
    const tracker_t& records() const { return *static_cast<const tracker_t*>(handle_); }
    const std::vector<std::array<float, 8>>& rows() const { return rows_; }

private:
    static float (*input_of(frame& rows))[6] { return reinterpret_cast<float(*)[6]>(rows.data()); }
    float (*output())[8] { return reinterpret_cast<float(*)[8]>(rows_.data()); }

    void* handle_;
    recorder recorder_;
    std::vector<std::array<float, 8>> rows_;
};

// Boxes so close together that every track is contested. Halves, so that equal distances occur.
static frame crowd(std::mt19937& random, int count, unsigned widest = 24)
{
    const auto pick = [&](unsigned n) { return static_cast<float>(random() % n); };
    frame rows;
    for (int n = 0; n < count; ++n) {
        const float x = pick(widest + 1) / 2, y = pick(widest + 1) / 2;
        rows.push_back({1 + pick(2), x, y, x + 1 + pick(14), y + 1 + pick(14), 1});
    }
    return rows;
}

// --- reasons ---------------------------------------------------------------------------------------------------------

// Replays everything and gives, for each track there was before the last frame, the detection of that frame it took.
static std::vector<int> holders(const setting& s, const std::vector<frame>& before, const frame& last)
{
    tracker replay(s);
    for (const frame& f : before)
        replay.process_unrecorded(f);
    std::vector<const trk_obj_t*> tracks;
    const tracker_t& records = replay.records();
    for (const list_head* node = records.track_list.next; node != &records.track_list; node = node->next)
        tracks.push_back(reinterpret_cast<const trk_obj_t*>(node));
    replay.process_unrecorded(last);
    std::vector<int> taken(tracks.size(), -1);
    for (int n = 0; n < records.ncurobjs; ++n) {
        const auto at = std::find(tracks.begin(), tracks.end(), records.match_obj[n]);
        if (at != tracks.end())
            taken[static_cast<std::size_t>(at - tracks.begin())] = n;
    }
    return taken;
}

static bool takes(const std::vector<int>& taken, int n)
{
    return std::find(taken.begin(), taken.end(), n) != taken.end();
}

static outcome true_outcome(const setting& s, const std::vector<frame>& before, const frame& last, int n, bool far)
{
    const frame so_far(last.begin(), last.begin() + n + 1);
    if (far)
        return outcome::far;
    if (takes(holders(s, before, last), n))
        return outcome::took;
    if (!takes(holders(s, before, {last[static_cast<std::size_t>(n)]}), 0))
        return outcome::refused;
    return takes(holders(s, before, so_far), n) ? outcome::displaced : outcome::lost;
}

static void check_rival(const setting& s, const std::vector<frame>& before, const frame& last, int n,
                        const association& f)
{
    const auto holder_after = [&](int m) {
        const frame so_far(last.begin(), last.begin() + m + 1);
        return holders(s, before, so_far)[static_cast<std::size_t>(f.nearest)];
    };
    if (f.result == outcome::lost) {
        EXPECT_EQ(holder_after(n), f.rival);
    } else if (f.result == outcome::displaced) {
        EXPECT_EQ(holder_after(f.rival - 1), n);
        EXPECT_EQ(holder_after(f.rival), f.rival);
    }
}

TEST(Reasons, AgreeWithTheTrackerOnRandomFrames)
{
    std::mt19937 random(7);
    std::map<outcome, int> seen;
    for (int round = 0; round < 300; ++round) {
        const float euc = round % 3 ? 1 : 0, iou = 0.1F * static_cast<float>(round % 5);
        const setting s = {8, euc, iou, 1 + round % 3, 1 + round % 4, round % 7 == 0};
        const unsigned widest = round % 2 ? 24 : 6;
        std::vector<frame> before(4);
        for (frame& f : before)
            f = crowd(random, static_cast<int>(random() % 6), widest);
        const frame last = crowd(random, 8, widest);
        tracker subject(s);
        for (const frame& f : before)
            subject.process(f);
        const std::size_t first = subject.recorded().detections.size();
        subject.process(last);
        for (int n = 0; n < 8; ++n) {
            SCOPED_TRACE(testing::Message() << "round " << round << ", detection " << n);
            const recorded_detection& d = subject.recorded().detections[first + static_cast<std::size_t>(n)];
            const bool far = subject.records().match_score[n] == 100;
            ASSERT_EQ(d.why.result, true_outcome(s, before, last, n, far));
            EXPECT_EQ(d.started, d.why.result != outcome::took && subject.records().match_obj[n]);
            check_rival(s, before, last, n, d.why);
            ++seen[d.why.result];
        }
    }
    for (const outcome v : {outcome::took, outcome::far, outcome::refused, outcome::lost, outcome::displaced})
        EXPECT_GT(seen[v], 20) << "of outcome " << static_cast<int>(v);
}

// --- lives -----------------------------------------------------------------------------------------------------------

struct life_case {
    const char* name;
    int stable, removal;
    const char* frames;       // one object: d a frame with its detection, . a frame without
    std::size_t lives, rows;  // rows of the first life
    int confirmed;
    ending end;
    std::vector<int> forgotten;
};

static const life_case life_cases[] = {
    {"confirmed at the third match", 3, 10, "ddd", 1, 3, 2, ending::end_of_file, {}},
    {"confirmed at birth", 1, 10, "d", 1, 1, 0, ending::end_of_file, {}},
    {"removed after the last miss survived", 1, 2, "d....", 1, 4, 0, ending::missed_too_long, {}},
    {"tentative at its sixth miss", 3, 10, "d.......", 1, 7, -1, ending::tentative_too_long, {4}},
    {"tentative, but past what any survives", 3, 2, "d.....", 1, 4, -1, ending::missed_too_long, {}},
    {"forgets once and is confirmed later", 3, 10, "dd....ddd", 1, 9, 8, ending::end_of_file, {5}},
    {"a record used again is another life", 1, 1, "d..d..d", 3, 3, 0, ending::missed_too_long, {}},
};

TEST(Lives, AreRecorded)
{
    for (const life_case& c : life_cases) {
        SCOPED_TRACE(c.name);
        tracker subject({4, 1, 0.3F, c.stable, c.removal, 0});
        for (const char* f = c.frames; *f != '\0'; ++f)
            subject.process(*f == 'd' ? frame{{1, 0, 0, 20, 20, 1}} : frame{});
        ASSERT_EQ(subject.recorded().lives.size(), c.lives);
        const life& l = subject.recorded().lives[0];
        EXPECT_EQ(l.birth, 1);
        EXPECT_EQ(l.rows.size(), c.rows);
        EXPECT_EQ(l.confirmed, c.confirmed);
        EXPECT_EQ(l.id, c.confirmed < 0 ? -1 : 1);
        EXPECT_EQ(l.end, c.end);
        EXPECT_EQ(l.rows.back().detection < 0, c.end != ending::end_of_file);
        EXPECT_EQ(l.forgotten, c.forgotten);
    }
}

TEST(Recorder, HasTheRowsOfTheTracker)
{
    std::mt19937 random(3);
    const setting s = {12, 1, 0.1F, 2, 3, 0};
    tracker subject(s);
    tracker plain(s);
    int compared = 0;
    for (int f = 1; f <= 60; ++f) {
        const frame input = crowd(random, static_cast<int>(random() % 7));
        subject.process(input);
        plain.process_unrecorded(input);
        ASSERT_EQ(subject.rows(), plain.rows());
        for (auto out = subject.rows().begin(); (*out)[0] > 0; ++out, ++compared) {
            const auto& lives = subject.recorded().lives;
            const auto l = std::find_if(lives.begin(), lives.end(),
                                        [&](const life& it) { return static_cast<float>(it.id) == (*out)[0]; });
            ASSERT_NE(l, lives.end());
            const life_row& r = l->rows.at(static_cast<std::size_t>(f - l->birth));
            EXPECT_EQ(static_cast<float>(r.detection), (*out)[7]);
            EXPECT_EQ(r.box.x - r.box.w * 0.5F, (*out)[2]);
            EXPECT_EQ(r.box.y + r.box.h * 0.5F, (*out)[5]);
        }
    }
    EXPECT_GT(compared, 50);
}

TEST(Recorder, KeepsWhoFoundNoRoom)
{
    tracker subject({2, 1, 0.3F, 1, 5, 0});
    subject.process({{1, 0, 0, 9, 9, 1}, {1, 50, 0, 59, 9, 1}});
    subject.process({{1, 0, 0, 9, 9, 1}, {1, 0, 90, 9, 99, 1}});
    const recorded_detection& last = subject.recorded().detections.back();
    EXPECT_EQ(last.why.result, outcome::far);
    EXPECT_FALSE(last.started);
    EXPECT_EQ(last.why.nearest, 0);
    EXPECT_FLOAT_EQ(last.why.distance, 90 * 90);
}

// --- coding ----------------------------------------------------------------------------------------------------------

static std::string base64(const column& c)
{
    std::string text;
    append_base64(text, c.bytes());
    return text;
}

TEST(Column, CodesWholeNumbers)
{
    const std::pair<std::uint64_t, const char*> numbers[] = {
        {0, "AA=="}, {127, "fw=="}, {128, "gAE="}, {300, "rAI="}, {UINT_MAX, "/////w8="}};
    for (const auto& [value, text] : numbers) {
        column c;
        c.put(value);
        EXPECT_EQ(base64(c), text) << value;
    }
    const std::pair<std::int64_t, const char*> signed_numbers[] = {{0, "AA=="},   {-1, "AQ=="}, {1, "Ag=="},
                                                                   {-64, "fw=="}, {64, "gAE="}, {INT_MIN, "/////w8="}};
    for (const auto& [value, text] : signed_numbers) {
        column c;
        c.put_signed(value);
        EXPECT_EQ(base64(c), text) << value;
    }
    EXPECT_EQ(base64(column()), "");
}

// The first byte is the form: decimals, 10 for bits, 11 for a single value.
TEST(Column, KeepsListsExactInTheShortestForm)
{
    struct list_case {
        std::vector<float> values;
        std::string form;
        std::size_t size;
    };
    const list_case cases[] = {
        {{}, "", 0},
        {{1, 1, 1}, "\x0b", 5},
        {{3, -4}, std::string(1, '\0'), 3},
        {{1.5F, 0.25F}, "\x02", 4},
        {{0.1F, 1e-12F}, "\x0a", 9},
        {{0, -0.0F}, "\x0a", 9},
        {{1, 3e38F}, "\x0a", 9},
    };
    for (const list_case& c : cases) {
        const std::string bytes = exact_column(c.values).bytes();
        EXPECT_EQ(bytes.substr(0, 1), c.form) << testing::PrintToString(c.values);
        EXPECT_EQ(bytes.size(), c.size) << testing::PrintToString(c.values);
    }
}

// --- the page --------------------------------------------------------------------------------------------------------

TEST(Page, HoldsAnySequenceAndNothingForEmptyFrames)
{
    const auto page_of = [](const std::vector<int>& frames) {
        sequence file;
        file.frames = frames.empty() ? 0 : frames.back();
        for (const int at : frames) {
            file.rows.emplace_back();
            file.rows.back().frame = at;
            file.rows.back().left = -max_coordinate;
            file.rows.back().width = 1e-30F;
        }
        view_options options;
        options.track.detections = "</script><script>alert(1)</script>";
        options.track.quiet = true;
        options.truth = true_boxes{file.rows, {}};
        std::string page;
        view_sequence(file, options, page);
        EXPECT_EQ(page.find("<script>alert"), std::string::npos);
        return page.size();
    };
    const std::size_t empty = page_of({});
    EXPECT_GT(page_of({1}), empty);
    EXPECT_LT(page_of({1, 100000}), page_of({1, 3}) + 20);
}

TEST(Pictures, AreListedByNameAndSeenFromThePage)
{
    const std::string root = testing::TempDir() + "zel-pictures";
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root + "/seq/img1");
    for (const char* name : {"000002.JPG", "000001.jpg", "Thumbs.db", "000003.png"})
        std::ofstream(root + "/seq/img1/" + name) << name;
    const picture_files found = find_pictures(root + "/seq", root + "/pages/page.html");
    EXPECT_EQ(found.folder, "../seq/img1");
    EXPECT_EQ(found.names, (std::vector<std::string>{"000001.jpg", "000002.JPG", "000003.png"}));
    EXPECT_THROW(find_pictures(root, "page.html"), failure);
    EXPECT_THROW(find_pictures(root + "/none", "page.html"), failure);
}

}  // namespace zeltrack
