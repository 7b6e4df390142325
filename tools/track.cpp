// SPDX-License-Identifier: MIT
//
// The frame loop around the library. The tracker sees corners in its own unit; files hold left, top, width and height
// in pixels. The conversions are made in double, so that they add as little as possible to what the tracker rounds.
#include "track.h"

#include <zel/libzel.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>

#include "command_line.h"
#include "failure.h"
#include "progress.h"
#include "scale.h"

namespace zeltrack {

// Of the capacity that is chosen from the file; a hostile one could ask for any.
static constexpr int max_capacity = 1 << 14;

// --- the options -----------------------------------------------------------------------------------------------------

static void set_scale(const std::string& text, track_options& options)
{
    options.scale = 0;
    if (text == "auto")
        return;
    const std::string wrong = within(min_scale, max_scale)(text);
    if (!wrong.empty())
        throw CLI::ValidationError("--scale", wrong + "; or auto");
    options.scale = std::stod(text);
}

static void add_scale_options(CLI::App& app, track_options& options)
{
    app.add_option_function<std::string>(
           "--scale", [&options](const std::string& text) { set_scale(text, options); },
           "factor between pixels and the tracker's unit. It matters more\n"
           "than all else: from one frame to the next an object may step\n"
           "less than 10 units, which are 10 / N pixels. auto makes that\n"
           "half the size of the median box, the size being sqrt(width *\n"
           "height); 1 is plain pixels; 1e-06 to 1e+06 (default auto)")
        ->type_name("N|auto");
    add_number(app, "--euc", "D", options.euc, 0.0F, 1.0F,
               "squared centre distance, in squared units, up to which a\n"
               "detection matches a track however little the boxes overlap;\n");
    add_number(app, "-i,--iou", "T", options.iou, 0.0F, 1.0F,
               "intersection over union that other matches must exceed; at 1\nnothing ever matches");
}

static void add_life_options(CLI::App& app, track_options& options)
{
    add_number(app, "-s,--stable", "N", options.stable, 1, max_frame,
               "matched frames, the first included, after which a track gets\nits identifier and is reported");
    add_number(app, "-r,--removal", "N", options.removal, 1, max_frame,
               "frames in a row that a track may go unmatched;\n");
    app.add_option("--max-objects", options.max_objects,
                   "capacity: detections per frame, live tracks, rows per frame;\n"
                   "1 to 1000000 (default: what the file needs, up to 16384)")
        ->type_name("N")
        ->check(within(1, 1000000));
    app.add_flag("--coasted", options.coasted,
                 "also write tracks without a detection in a frame, at their\nlast place, for up to two frames");
}

static void add_input_options(CLI::App& app, track_options& options)
{
    app.add_option("--min-conf", options.min_conf, "ignore detections of a lower confidence (default: none)")
        ->type_name("C")
        ->check(within(std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max()));
    app.add_option("--class-column", options.classes.column,
                   "column of the class, a whole number; 8 to 1000. A detection\n"
                   "then matches only tracks of its class (default: all alike)")
        ->type_name("N")
        ->check(within(8, 1000));
    add_number(app, "--class-base", "N", options.classes.base, 0, 1, "number of the first class");
    app.add_flag("--ignore-class", options.ignore_class, "read classes, but match across them");
}

void add_track_options(CLI::App& app, track_options& options)
{
    app.add_option("DETECTIONS", options.detections,
                   "file of lines frame,id,left,top,width,height,conf[,...]; frames\n"
                   "count from 1, in any order; - is standard input")
        ->required()
        ->type_name("");
    add_scale_options(app, options);
    add_life_options(app, options);
    add_input_options(app, options);
    app.add_flag("-q,--quiet", options.quiet, "no summary, no warnings, no progress bar");
    app.set_config("--config", "", "read options from a file, a line NAME = VALUE for each")->type_name("FILE");
    app.allow_config_extras(false);
}

// --- loading ---------------------------------------------------------------------------------------------------------

using row_reader = std::function<std::optional<mot_error>(std::istream& in, std::vector<mot_row>& rows)>;

static std::optional<mot_error> read_named(const std::string& name, const row_reader& read, std::vector<mot_row>& rows)
{
    if (name == "-")
        return read(std::cin, rows);
    std::error_code ignored;  // opening says what is wrong
    if (std::filesystem::is_directory(name, ignored))
        throw system_failure(name, EISDIR);
    errno = 0;
    std::ifstream file(name, std::ios::binary);
    if (!file)
        throw system_failure(name, errno);
    return read(file, rows);
}

static std::vector<mot_row> load_rows(const std::string& name, const row_reader& read)
{
    std::vector<mot_row> rows;
    if (const auto error = read_named(name, read, rows)) {
        const std::string line = error->line == 0 ? "" : ":" + std::to_string(error->line);
        throw failure((name == "-" ? "standard input" : printable(name)) + line + ": " + error->text);
    }
    const auto earlier = [](const mot_row& a, const mot_row& b) { return a.frame < b.frame; };
    if (!std::is_sorted(rows.begin(), rows.end(), earlier))
        std::stable_sort(rows.begin(), rows.end(), earlier);
    return rows;
}

std::vector<mot_row> load_truth(const std::string& name)
{
    std::vector<mot_row> rows = load_rows(name, read_truth);
    const auto uncounted = [](const mot_row& row) { return row.conf == 0; };
    rows.erase(std::remove_if(rows.begin(), rows.end(), uncounted), rows.end());
    return rows;
}

sequence load_sequence(const track_options& options)
{
    const auto read = [&options](std::istream& in, std::vector<mot_row>& read_rows) {
        return read_detections(in, options.classes, read_rows);
    };
    sequence loaded;
    std::vector<mot_row>& rows = loaded.rows;
    rows = load_rows(options.detections, read);
    if (!rows.empty())
        loaded.frames = rows.back().frame;
    const auto weak = [&options](const mot_row& row) { return row.conf < options.min_conf; };
    const auto kept_end = std::remove_if(rows.begin(), rows.end(), weak);
    loaded.dropped = static_cast<std::size_t>(rows.end() - kept_end);
    rows.erase(kept_end, rows.end());
    return loaded;
}

// Every live track took a detection, which no other track took, in this frame or in the removal + 1 before it.
int ample_capacity(const std::vector<mot_row>& rows, int removal)
{
    std::ptrdiff_t most = 1;
    auto first = rows.begin();
    for (auto at = rows.begin(); at != rows.end(); ++at) {
        while (first->frame < at->frame - removal - 1)
            ++first;
        most = std::max(most, at - first + 1);
    }
    return static_cast<int>(std::min<std::ptrdiff_t>(most, std::numeric_limits<int>::max()));
}

// --- one frame -------------------------------------------------------------------------------------------------------

class frame_tracker {
public:
    frame_tracker(const track_options& options, double scale, int capacity);

    // The rows of one frame, valid until the next call.
    const std::vector<track_row>& process(int frame, const mot_row* first, const mot_row* last);

    double seconds() const { return seconds_; }
    const void* handle() const { return handle_.get(); }

private:
    void put(const mot_row* first, const mot_row* last);
    void take(int frame);

    struct releaser {
        void operator()(void* handle) const { zel_tracker_release(handle); }
    };
    std::unique_ptr<void, releaser> handle_;
    double scale_;
    std::size_t capacity_;
    std::unique_ptr<float[][6]> input_;
    std::unique_ptr<float[][8]> output_;
    std::vector<track_row> rows_;
    double seconds_ = 0;
};

frame_tracker::frame_tracker(const track_options& options, double scale, int capacity)
    : handle_(zel_tracker_create(0, 0, capacity, options.euc, options.iou, options.stable, options.removal,
                                 options.ignore_class ? 1 : 0)),
      scale_(scale),
      capacity_(static_cast<std::size_t>(capacity)),
      input_(std::make_unique<float[][6]>(capacity_)),
      output_(std::make_unique<float[][8]>(capacity_))
{
    if (!handle_)
        throw std::bad_alloc();
}

void frame_tracker::put(const mot_row* first, const mot_row* last)
{
    const std::size_t count = std::min(static_cast<std::size_t>(last - first), capacity_);
    for (std::size_t n = 0; n < count; ++n) {
        const mot_row& row = first[n];
        const double right = static_cast<double>(row.left) + row.width;
        const double bottom = static_cast<double>(row.top) + row.height;
        float* in = input_[n];
        in[0] = row.cls;
        in[1] = static_cast<float>(row.left * scale_);
        in[2] = static_cast<float>(row.top * scale_);
        in[3] = static_cast<float>(right * scale_);
        in[4] = static_cast<float>(bottom * scale_);
        in[5] = row.conf;
    }
    if (count < capacity_)
        input_[count][0] = 0;
}

void frame_tracker::take(int frame)
{
    rows_.clear();
    for (std::size_t n = 0; n < capacity_ && output_[n][0] >= 0; ++n) {
        const float* out = output_[n];
        mot_row row;
        row.frame = frame;
        row.id = static_cast<int>(out[0]);
        row.left = static_cast<float>(out[2] / scale_);
        row.top = static_cast<float>(out[3] / scale_);
        row.width = static_cast<float>((static_cast<double>(out[4]) - out[2]) / scale_);
        row.height = static_cast<float>((static_cast<double>(out[5]) - out[3]) / scale_);
        row.conf = out[6];
        row.cls = out[1];
        rows_.push_back({row, static_cast<int>(out[7])});
    }
}

const std::vector<track_row>& frame_tracker::process(int frame, const mot_row* first, const mot_row* last)
{
    using clock = std::chrono::steady_clock;
    put(first, last);
    const clock::time_point start = clock::now();
    zel_tracker_process(handle_.get(), input_.get(), output_.get());
    seconds_ += std::chrono::duration<double>(clock::now() - start).count();
    take(frame);
    return rows_;
}

// --- all frames ------------------------------------------------------------------------------------------------------

namespace {

// What is counted while the frames go by.
class tally {
public:
    tally(track_summary& summary, bool coasted) : summary_(summary), coasted_(coasted), seen_(1 << 20) {}

    // Keeps the rows that are wanted.
    const std::vector<track_row>& count(const std::vector<track_row>& rows, std::ptrdiff_t detections)
    {
        wanted_.clear();
        for (const track_row& row : rows) {
            summary_.identified += row.detection >= 0;
            if (row.detection < 0 && !coasted_)
                continue;
            wanted_.push_back(row);
            summary_.identifiers += !seen_[static_cast<std::size_t>(row.box.id)];
            seen_[static_cast<std::size_t>(row.box.id)] = true;
        }
        summary_.rows += wanted_.size();
        const bool full = detections > summary_.capacity || static_cast<int>(rows.size()) == summary_.capacity;
        summary_.full_frames += full && summary_.capacity < summary_.ample;
        return wanted_;
    }

private:
    track_summary& summary_;
    bool coasted_;
    std::vector<bool> seen_;  // by identifier, which stays below 2^20
    std::vector<track_row> wanted_;
};

}  // namespace

// A gate of twice the distance that nine in ten detections keep; but wider than two boxes, it would join strangers.
static double wider_scale(step_watch& steps, double automatic)
{
    return std::max(gate_units / (2 * steps.reach(0.9)), automatic / 4);
}

track_summary track_sequence(const sequence& input, const track_options& options, const frame_callback& each)
{
    track_summary summary;
    summary.input = &input;
    summary.scale = options.scale > 0 ? options.scale : automatic_scale(input.rows);
    summary.ample = ample_capacity(input.rows, options.removal);
    summary.capacity = options.max_objects > 0 ? options.max_objects : std::min(summary.ample, max_capacity);
    frame_tracker tracker(options, summary.scale, summary.capacity);
    tally counts(summary, options.coasted);
    step_watch steps;
    progress bar(!options.quiet, "frame", input.frames);

    const mot_row* first = input.rows.data();
    const mot_row* const end = first + input.rows.size();
    for (int frame = 1; frame <= input.frames; ++frame) {
        const mot_row* last = first;
        while (last != end && last->frame == frame)
            ++last;
        const std::vector<track_row>& rows = tracker.process(frame, first, last);
        each(frame, counts.count(rows, last - first), tracker.handle());
        steps.observe(first, first + std::min<std::ptrdiff_t>(last - first, summary.capacity), rows);
        bar.update(frame);
        first = last;
    }
    summary.seconds = tracker.seconds();
    summary.far_share = steps.share_beyond(gate_units / summary.scale);
    if (summary.far_share > 0.1)
        summary.better_scale = wider_scale(steps, automatic_scale(input.rows));
    return summary;
}

// --- the summary -----------------------------------------------------------------------------------------------------

// Rounded to so many significant digits, without exponent as far as people read it that way.
static std::string number(double value, int digits)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::setprecision(std::fabs(value) >= 1000 ? 0 : digits);
    if (std::fabs(value) >= 1000)
        text << std::fixed;
    text << value;
    return text.str();
}

static void print_capacity(std::ostream& out, const track_summary& summary)
{
    if (summary.capacity >= summary.ample)
        return;
    out << "capacity     " << summary.capacity << " (";
    if (summary.full_frames > 0)
        out << "reached in " << summary.full_frames << " frames or more; ";
    out << summary.ample << " is enough for certain)\n";
}

static void print_warning(std::ostream& out, const track_summary& summary)
{
    if (summary.far_share <= 0.1)
        return;
    out << "zeltrack: warning: " << number(100 * summary.far_share, 3)
        << " % of the detections had nothing of the frame before within the gate; ";
    if (summary.better_scale < summary.scale)
        out << "try --scale " << number(summary.better_scale, 2) << '\n';
    else
        out << "the frames may lie too far apart\n";
}

void print_summary(std::ostream& out, const track_summary& summary, const track_options& options)
{
    const sequence& input = *summary.input;
    const double detections = std::max(1.0, static_cast<double>(input.rows.size()));
    out << "frames       " << input.frames << "\ndetections   " << input.rows.size();
    if (input.dropped > 0)
        out << " (" << input.dropped << " more below --min-conf)";
    out << "\nrows         " << summary.rows << "\nidentifiers  " << summary.identifiers << "\nin a track   "
        << number(100 * static_cast<double>(summary.identified) / detections, 3)
        << " % of the detections, reported under an identifier\n";
    if (summary.seconds > 0)
        out << "speed        " << number(input.frames / summary.seconds, 4)
            << " frames per second in the tracker alone\n";
    out << "gate         " << number(gate_units / summary.scale, 3) << " pixels (scale " << number(summary.scale, 3)
        << (options.scale > 0 ? ")\n" : ", auto)\n");
    print_capacity(out, summary);
    print_warning(out, summary);
}

}  // namespace zeltrack
