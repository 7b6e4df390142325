// SPDX-License-Identifier: MIT
//
// Encoding of a run. What a track adds to a detection goes as the difference to it, which is small. Frames without
// anything cost nothing.
#include "view/columns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "track/scale.h"

namespace zeltrack {

// --- rows of files ---------------------------------------------------------------------------------------------------

// Each frame that has rows as the distance to the one before it and the number of its rows.
static column frames_of(const std::vector<mot_row>& rows)
{
    column out;
    int before = 0;
    for (auto first = rows.begin(); first != rows.end();) {
        const auto last =
            std::find_if(first, rows.end(), [&first](const mot_row& row) { return row.frame != first->frame; });
        out.put(static_cast<std::uint64_t>(first->frame - before));
        out.put(static_cast<std::uint64_t>(last - first));
        before = first->frame;
        first = last;
    }
    return out;
}

static column field(const std::vector<mot_row>& rows, float mot_row::*member)
{
    std::vector<float> values;
    values.reserve(rows.size());
    for (const mot_row& row : rows)
        values.push_back(row.*member);
    return exact_column(values);
}

static void pack_boxes(package& out, const std::string& name, const std::vector<mot_row>& rows)
{
    out.number(name + "Count", static_cast<double>(rows.size()));
    out.data(name + "Frames", frames_of(rows));
    out.data(name + "Left", field(rows, &mot_row::left));
    out.data(name + "Top", field(rows, &mot_row::top));
    out.data(name + "Width", field(rows, &mot_row::width));
    out.data(name + "Height", field(rows, &mot_row::height));
    out.data(name + "Score", field(rows, &mot_row::conf));
    out.data(name + "Class", field(rows, &mot_row::cls));
}

void pack_input(package& out, const sequence& file, const track_options& options)
{
    out.number("frames", file.frames);
    out.number("classBase", options.layout.class_base);
    out.number("classColumn", options.layout.class_column);
    out.number("frameBase", options.layout.frame_base);
    pack_boxes(out, "input", file.rows);
}

void pack_tracks(package& out, const std::string& name, const std::vector<mot_row>& rows)
{
    column ids;
    for (const mot_row& row : rows)
        ids.put_signed(row.id);
    pack_boxes(out, name, rows);
    out.data(name + "Id", ids);
}

void pack_truth(package& out, const true_boxes& truth)
{
    pack_tracks(out, "truth", truth.counted);
    if (!truth.others.empty())
        pack_boxes(out, "others", truth.others);
}

// --- boxes of tracks -------------------------------------------------------------------------------------------------

namespace {

using grid_box = std::array<std::int64_t, 4>;  // centre and size

// Whole parts of a pixel, a power of ten so that they print without another rounding. Boxes far beyond all others are
// longer numbers, and cost the others nothing.
class grid {
public:
    explicit grid(double median_size)
    {
        while (digits_ < max_digits && median_size * unit_ < parts_of_median) {
            ++digits_;
            unit_ *= 10;
        }
    }

    int digits() const { return digits_; }

    grid_box of(const mot_row& row) const
    {
        return {whole(row.left + row.width / 2.0), whole(row.top + row.height / 2.0), whole(row.width),
                whole(row.height)};
    }
    grid_box of(const centre_box& b, double scale, const selected_rows::offset& moved) const
    {
        return {whole(b.x / scale + moved.x), whole(b.y / scale + moved.y), whole(b.w / scale), whole(b.h / scale)};
    }

private:
    static constexpr double parts_of_median = 2000;
    static constexpr int max_digits = 9;
    static constexpr double limit = 1e15;  // the difference of two is still exact in a double

    std::int64_t whole(double value) const
    {
        const double number = value * unit_;
        return number == number ? std::llround(std::clamp(number, -limit, limit)) : 0;
    }

    int digits_ = 2;
    double unit_ = 100;
};

}  // namespace

static void put_difference(column& out, const grid_box& a, const grid_box& b)
{
    for (std::size_t n = 0; n < a.size(); ++n)
        out.put_signed(a[n] - b[n]);
}

static bool same(const centre_box& a, const centre_box& b)
{
    return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h;
}

// --- lives -----------------------------------------------------------------------------------------------------------

static column coded_lives(const recording& recorded)
{
    column out;
    int birth = 0;
    int id = 0;
    for (const life& l : recorded.lives) {
        out.put(static_cast<std::uint64_t>(l.birth - birth));
        birth = l.birth;
        out.put(l.rows.size());
        out.put(static_cast<std::uint64_t>(l.end));
        out.put(static_cast<std::uint64_t>(l.confirmed + 1));
        if (l.confirmed >= 0)
            out.put_signed(l.id - id);
        id = std::max(id, l.id);
        out.put(l.forgotten.size());
        for (const int row : l.forgotten)
            out.put(static_cast<std::uint64_t>(row));
    }
    return out;
}

namespace {

// Rows are 0: missed, all as before; 2: missed at a new prediction; 1 and 3: the same, and not reported; 4 and more:
// took detection 0 and so on. After 0 and 1 stands how many more such rows follow.
class row_coder {
public:
    row_coder(const grid& steps, double scale) : steps_(steps), scale_(scale) {}

    // `taken` is the row of the file that was taken, or null; `moved` the offset of the frame.
    void put(const life_row& row, const mot_row* taken, const selected_rows::offset& moved)
    {
        const unsigned silent = row.reported ? 0 : 1;
        const bool unmoved = moved.x == moved_.x && moved.y == moved_.y;
        const bool still = !taken && before_ && unmoved && same(row.predicted, before_->predicted);
        moved_ = moved;
        if (!still || silent != repeated_)
            flush();
        if (still) {
            repeated_ = silent;
            ++repeats_;
        } else if (taken) {
            put_match(row, *taken);
        } else {
            out_.put(2 + silent);
            put_difference(out_, steps_.of(row.predicted, scale_, moved_), steps_.of(row.box, scale_, moved_));
        }
        before_ = &row;
    }

    void end_life()
    {
        flush();
        before_ = nullptr;
    }

    const column& finish() const { return out_; }

private:
    void put_match(const life_row& row, const mot_row& taken)
    {
        const grid_box det = steps_.of(taken);
        out_.put(static_cast<std::uint64_t>(row.detection) + 4);
        if (!before_)
            return;
        put_difference(out_, steps_.of(row.predicted, scale_, moved_), det);
        put_difference(out_, steps_.of(row.box, scale_, moved_), det);
    }

    void flush()
    {
        if (repeats_ > 0) {
            out_.put(repeated_);
            out_.put(repeats_ - 1);
        }
        repeats_ = 0;
    }

    column out_;
    const grid& steps_;
    double scale_;
    selected_rows::offset moved_ = {};
    const life_row* before_ = nullptr;
    unsigned repeated_ = 0;
    std::uint64_t repeats_ = 0;
};

}  // namespace

static selected_rows::offset offset_of(const selected_rows& selected, int frame)
{
    const auto next = std::upper_bound(selected.moves.begin(), selected.moves.end(), frame,
                                       [](int wanted, const selected_rows::move& it) { return wanted < it.frame; });
    return next == selected.moves.begin() ? selected_rows::offset{} : std::prev(next)->by;
}

static column coded_rows(const recording& recorded, const selected_rows& selected, const grid& steps, double scale)
{
    const std::vector<mot_row>& rows = selected.rows.rows;
    row_coder out(steps, scale);
    for (const life& l : recorded.lives) {
        int frame = l.birth;
        auto first = std::lower_bound(rows.begin(), rows.end(), frame,
                                      [](const mot_row& row, int wanted) { return row.frame < wanted; });
        for (const life_row& row : l.rows) {
            while (first != rows.end() && first->frame < frame)
                ++first;
            out.put(row, row.detection < 0 ? nullptr : &first[row.detection], offset_of(selected, frame));
            ++frame;
        }
        out.end_life();
    }
    return out.finish();
}

// --- detections ------------------------------------------------------------------------------------------------------

static void put_outcome(column& out, const recorded_detection& d, float euc)
{
    constexpr unsigned started_bit = 8;
    constexpr unsigned close_bit = 16;
    const association& why = d.why;
    out.put(static_cast<unsigned>(why.result) | (d.started ? started_bit : 0) |
            (why.nearest >= 0 && why.distance <= euc ? close_bit : 0));
    out.put(static_cast<std::uint64_t>(why.nearest + 1));
    if (why.nearest < 0)
        return;
    out.put_float(why.distance);
    out.put_float(why.overlap);
    if (why.rival >= 0)
        out.put(static_cast<std::uint64_t>(why.rival));
}

// Each with the number of rows of the file that were passed over since the one before.
static column coded_detections(const recording& recorded, const selected_rows& selected, float euc)
{
    column out;
    std::size_t next = 0;
    for (std::size_t i = 0; i < recorded.detections.size(); ++i) {
        out.put(selected.places[i] - next);
        next = selected.places[i] + 1;
        put_outcome(out, recorded.detections[i], euc);
    }
    return out;
}

// --- the whole -------------------------------------------------------------------------------------------------------

static void pack_parameters(package& out, const track_options& o, const track_summary& summary)
{
    out.number("scale", summary.scale);
    out.number("chosen", o.scale > 0);
    out.number("gate", gate_units);
    out.number("euc", o.euc);
    out.number("iou", o.iou);
    out.number("stable", o.stable);
    out.number("removal", summary.host.removal);
    out.number("minConf", o.min_conf);  // the largest float: chosen by the kit
    out.number("minConfNow", summary.host.min_confidence);
    out.number("steady", o.steady);  // -1: chosen by the kit
    out.number("steadyNow", summary.host.steady);
    out.number("capacity", summary.capacity);
    out.number("maxObjects", o.max_objects);
    out.number("ignoreClass", o.ignore_class);
}

void pack_run(package& out, const recording& recorded, const selected_rows& selected, const track_summary& summary,
              const track_options& options)
{
    const grid steps(summary.host.typical_size);
    out.number("medianSize", summary.host.typical_size);
    pack_parameters(out, options, summary);
    out.number("count", static_cast<double>(recorded.detections.size()));
    out.number("weak", static_cast<double>(summary.host.weak));
    out.number("unread", static_cast<double>(summary.host.cut + summary.host.invalid));
    out.number("digits", steps.digits());
    out.number("lifeCount", static_cast<double>(recorded.lives.size()));
    out.data("lives", coded_lives(recorded));
    out.data("detections", coded_detections(recorded, selected, options.euc));
    out.data("rows", coded_rows(recorded, selected, steps, summary.scale));
}

}  // namespace zeltrack
