// SPDX-License-Identifier: MIT
//
// Coding of a recording for the page. Boxes go as whole numbers of a step far below what the eye or the tracker can tell
// apart; what a track adds to a detection goes as the difference to it, which is small.
#include "view/view.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "cli/number.h"
#include "track/scale.h"
#include "view/column.h"
#include "view/recorder.h"
#include "view/truth.h"

namespace zeltrack {

extern const char viewer_template[];  // made of viewer.html by the build

// --- whole numbers for boxes -----------------------------------------------------------------------------------------

namespace {

struct grid_box {
    std::int32_t x, y, w, h;
};

// Whole steps from an origin, both in the tracker's units.
class grid {
public:
    grid(const recording& recorded, double median_size)
    {
        double reach = 0;
        for (const recorded_detection& d : recorded.detections) {
            x_ = std::min(x_, d.det.x);
            y_ = std::min(y_, d.det.y);
            reach = std::max({reach, std::fabs(double{d.det.x}), std::fabs(double{d.det.y})});
        }
        if (recorded.detections.empty())
            x_ = y_ = 0;
        step_ = std::max(std::min(gate_units, median_size) / 512, 4 * reach / limit);
    }

    double x() const { return x_; }
    double y() const { return y_; }
    double step() const { return step_; }

    grid_box of(double x, double y, double w, double h) const
    {
        return {whole(x - x_), whole(y - y_), whole(w), whole(h)};
    }
    grid_box of(const centre_box& b) const { return of(b.x, b.y, b.w, b.h); }
    grid_box of(const det_obj_t& d) const { return of(d.x, d.y, d.w, d.h); }

private:
    static constexpr double limit = 1 << 29;  // the difference of two still fits, and its double

    std::int32_t whole(double value) const
    {
        return static_cast<std::int32_t>(std::lround(std::clamp(value / step_, -limit, limit)));
    }

    float x_ = std::numeric_limits<float>::max();
    float y_ = std::numeric_limits<float>::max();
    double step_;
};

}  // namespace

static void put_difference(column& out, const grid_box& a, const grid_box& b)
{
    out.put_signed(a.x - b.x);
    out.put_signed(a.y - b.y);
    out.put_signed(a.w - b.w);
    out.put_signed(a.h - b.h);
}

// A NaN is as good as 0.
static std::uint32_t thousandths(double value)
{
    return value > 0 ? static_cast<std::uint32_t>(std::lround(std::min(value, 1e6) * 1000)) : 0;
}

// --- JSON ------------------------------------------------------------------------------------------------------------

namespace {

class json {
public:
    void text(std::string_view name, std::string_view value) { raw(name, json_string(value)); }

    template <typename T>
    void number(std::string_view name, T value)
    {
        raw(name, to_text(value));
    }

    void data(std::string_view name, const column& value) { raw(name, '"' + value.base64() + '"'); }

    void raw(std::string_view name, std::string_view value)
    {
        out_.append(out_.empty() ? "{" : ",\n").append(json_string(name)).append(":").append(value);
    }

    std::string finish() { return out_ + "}"; }

private:
    std::string out_;
};

}  // namespace

// --- the parts of a recording ----------------------------------------------------------------------------------------

static column coded_lives(const recording& recorded)
{
    column out;
    int birth = 0;
    int id = 0;
    for (const life& l : recorded.lives) {
        out.put(static_cast<std::uint32_t>(l.birth - birth));
        birth = l.birth;
        out.put(static_cast<std::uint32_t>(l.rows.size()));
        out.put(static_cast<std::uint32_t>(l.end));
        out.put(static_cast<std::uint32_t>(l.confirmed + 1));
        if (l.confirmed >= 0)
            out.put_signed(l.id - id);
        id = std::max(id, l.id);
        out.put(static_cast<std::uint32_t>(l.forgotten.size()));
        for (const int row : l.forgotten)
            out.put(static_cast<std::uint32_t>(row));
    }
    return out;
}

namespace {

// Scores as thousandths of their range, classes as their place among all.
struct labels {
    explicit labels(const recording& recorded)
    {
        for (const recorded_detection& d : recorded.detections) {
            low = std::min(low, d.det.s);
            high = std::max(high, d.det.s);
            classes.push_back(d.det.c);
        }
        std::sort(classes.begin(), classes.end());
        classes.erase(std::unique(classes.begin(), classes.end()), classes.end());
        if (classes.empty())
            low = high = 0;
    }

    void put(column& out, const det_obj_t& det) const
    {
        out.put(high > low ? thousandths((double{det.s} - low) / (double{high} - low)) : 0);
        const auto place = std::lower_bound(classes.begin(), classes.end(), det.c) - classes.begin();
        if (classes.size() > 1)
            out.put(static_cast<std::uint32_t>(place));
    }

    float low = std::numeric_limits<float>::max();
    float high = std::numeric_limits<float>::lowest();
    std::vector<int> classes;
};

}  // namespace

static void put_fate(column& out, const recorded_detection& d)
{
    constexpr unsigned started_bit = 8;
    const fate& why = d.why;
    out.put(static_cast<unsigned>(why.what) | (d.started ? started_bit : 0));
    out.put(static_cast<std::uint32_t>(why.nearest + 1));
    if (why.nearest < 0)
        return;
    out.put(thousandths(std::sqrt(why.distance)));  // of a unit, of which the gate has 10
    out.put(thousandths(why.overlap));
    if (why.rival >= 0)
        out.put(static_cast<std::uint32_t>(why.rival));
}

static column coded_detections(const recording& recorded, const grid& steps, const labels& named)
{
    column out;
    auto d = recorded.detections.begin();
    for (const int count : recorded.detections_of_frame) {
        out.put(static_cast<std::uint32_t>(count));
        for (const auto last = d + count; d != last; ++d) {
            const grid_box box = steps.of(d->det);
            out.put(static_cast<std::uint32_t>(box.x));  // the origin is the least of all
            out.put(static_cast<std::uint32_t>(box.y));
            out.put_signed(box.w);
            out.put_signed(box.h);
            named.put(out, d->det);
            put_fate(out, *d);
        }
    }
    return out;
}

static bool same(const centre_box& a, const centre_box& b)
{
    return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h;
}

// A row is 0: missed, and all as before; 1: missed, predicted anew; 2 and more: took detection 0 and so on.
static column coded_rows(const recording& recorded, const grid& steps)
{
    std::vector<std::size_t> first_of_frame(1);
    for (const int count : recorded.detections_of_frame)
        first_of_frame.push_back(first_of_frame.back() + static_cast<std::size_t>(count));

    column out;
    for (const life& l : recorded.lives) {
        const life_row* before = nullptr;
        for (const life_row& row : l.rows) {
            const auto frame = static_cast<std::size_t>(l.birth - 1 + (&row - l.rows.data()));
            if (row.detection >= 0) {
                const auto n = static_cast<std::size_t>(row.detection);
                const grid_box det = steps.of(recorded.detections[first_of_frame[frame] + n].det);
                out.put(static_cast<std::uint32_t>(row.detection) + 2);
                if (before) {
                    put_difference(out, steps.of(row.predicted), det);
                    put_difference(out, steps.of(row.box), det);
                }
            } else if (same(row.predicted, before->predicted)) {
                out.put(0);
            } else {
                out.put(1);
                put_difference(out, steps.of(row.predicted), steps.of(row.box));
            }
            before = &row;
        }
    }
    return out;
}

// By object, each box as the difference to the one before. Objects in the order of their identifiers.
static column coded_truth(std::vector<mot_row> rows, const grid& steps, double scale)
{
    std::stable_sort(rows.begin(), rows.end(), [](const mot_row& a, const mot_row& b) { return a.id < b.id; });
    column out;
    int id = 0;
    int frame = 0;
    grid_box before{};
    for (const mot_row& row : rows) {
        const grid_box box = steps.of((row.left + row.width / 2.0) * scale, (row.top + row.height / 2.0) * scale,
                                      row.width * scale, row.height * scale);
        out.put_signed(row.id - id);
        out.put_signed(row.frame - frame);
        put_difference(out, box, before);
        id = row.id;
        frame = row.frame;
        before = box;
    }
    return out;
}

static column coded_changes(const std::vector<identity_change>& changes)
{
    column out;
    for (const identity_change& change : changes)
        for (const int value : {change.frame, change.object, change.before, change.after})
            out.put_signed(value);
    return out;
}

// --- the page --------------------------------------------------------------------------------------------------------

static std::string parameters(const track_options& o, const track_summary& summary)
{
    json out;
    out.number("scale", summary.scale);
    out.number("automaticScale", automatic_scale(summary.input->rows));
    out.number("chosen", o.scale > 0 ? 1 : 0);
    out.number("gate", gate_units);
    out.number("euc", o.euc);
    out.number("iou", o.iou);
    out.number("stable", o.stable);
    out.number("removal", o.removal);
    out.number("capacity", summary.capacity);
    out.number("ignoreClass", o.ignore_class ? 1 : 0);
    return out.finish();
}

static std::string list(const std::vector<int>& values, int offset)
{
    std::string out = "[";
    for (const int value : values)
        out.append(out.size() > 1 ? "," : "").append(std::to_string(value + offset));
    return out + "]";
}

static std::string page_data(const view_options& options, const track_summary& summary, const recording& recorded,
                             const std::vector<identity_change>& changes)
{
    const track_options& o = options.track;
    const sequence& input = *summary.input;
    const grid steps(recorded, 2 * gate_units * summary.scale / automatic_scale(input.rows));
    const labels named(recorded);
    json out;
    out.text("file", o.detections);
    out.text("command", options.command);
    out.number("frames", input.frames);
    out.raw("parameters", parameters(o, summary));
    out.number("count", recorded.detections.size());
    out.number("weak", input.dropped);
    out.number("unread", input.rows.size() - recorded.detections.size());
    out.number("x", steps.x());
    out.number("y", steps.y());
    out.number("step", steps.step());
    out.number("lowScore", named.low);
    out.number("highScore", named.high);
    out.raw("classes", list(named.classes, o.classes.base - 1));
    out.data("lives", coded_lives(recorded));
    out.data("detections", coded_detections(recorded, steps, named));
    out.data("rows", coded_rows(recorded, steps));
    if (options.truth) {
        out.data("truth", coded_truth(*options.truth, steps, summary.scale));
        out.data("changes", coded_changes(changes));
    }
    return out.finish();
}

track_summary view_sequence(const sequence& input, const view_options& options, std::string& page)
{
    recorder records;
    identity_watch identities;
    const std::vector<mot_row> no_truth;
    const std::vector<mot_row>& truth = options.truth ? *options.truth : no_truth;
    const mot_row* object = truth.data();
    const mot_row* const end = object + truth.size();
    const auto observe = [&](int frame, const std::vector<track_row>& rows, const void* tracker) {
        records.observe(*static_cast<const tracker_t*>(tracker));
        const mot_row* const first = object;
        while (object != end && object->frame == frame)
            ++object;
        identities.observe(frame, first, object, rows);
    };
    const track_summary summary = track_sequence(input, options.track, observe);

    constexpr std::string_view mark = "{{data}}";
    const std::string_view text = viewer_template;
    const std::size_t at = text.find(mark);
    page.append(text.substr(0, at));
    page.append(page_data(options, summary, records.result(), identities.changes()));
    page.append(text.substr(at + mark.size()));
    return summary;
}

}  // namespace zeltrack
