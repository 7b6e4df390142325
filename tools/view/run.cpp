// SPDX-License-Identifier: MIT
//
// The tracker, the recorder and what is told of both.
#include "view/run.h"

#include <cstdint>
#include <cstring>

#include "view/recorder.h"
#include "view/scoring.h"

namespace zeltrack {

namespace {

// What was reported, in one number that differs wherever a bit of a row does (FNV-1a).
class row_digest {
public:
    void add(const mot_row& row)
    {
        unsigned char bytes[sizeof(row)];
        std::memcpy(bytes, &row, sizeof(row));
        for (const unsigned char byte : bytes)
            digest_ = (digest_ ^ byte) * 0x100000001b3;
    }
    // As two whole numbers, which a double holds exactly.
    void pack(package& out) const
    {
        out.number("digestHigh", static_cast<double>(digest_ >> 32));
        out.number("digestLow", static_cast<double>(digest_ & 0xffffffff));
    }

private:
    std::uint64_t digest_ = 0xcbf29ce484222325;
};

// Gathers the rows that went into the tracker, frame by frame.
class row_selector {
public:
    explicit row_selector(const sequence& file) : file_(file) { selected_.rows.frames = file.frames; }

    void add(int frame, const zel_host_frame_t& given)
    {
        const std::size_t first = next_;
        while (next_ < file_.rows.size() && file_.rows[next_].frame == frame)
            ++next_;
        for (int n = 0; n < given.count; ++n) {
            selected_.places.push_back(first + static_cast<std::size_t>(given.detections[n]));
            selected_.rows.rows.push_back(file_.rows[selected_.places.back()]);
        }
        if (given.offset_x != offset_.x || given.offset_y != offset_.y) {
            offset_ = {given.offset_x, given.offset_y};
            selected_.moves.push_back({frame, offset_});
        }
    }

    const selected_rows& result() const { return selected_; }

private:
    const sequence& file_;
    std::size_t next_ = 0;
    selected_rows selected_;
    selected_rows::offset offset_ = {};
};

}  // namespace

// What is told of any run, and what of one with ground truth.
static void pack_figures(package& out, const track_summary& summary, const run_scorer& scoring)
{
    out.number("figure.tracks", static_cast<double>(summary.identifiers));
    out.number("figure.rows", static_cast<double>(summary.rows));
    scoring.pack_figures(out);
}

void pack_figures_only(package& out, const run_input& input, const track_options& options)
{
    run_scorer scoring(input.truth);
    const auto observe = [&scoring](int, const std::vector<track_row>& rows, const zel_host_frame_t&) {
        scoring.observe(rows);
    };
    const track_summary summary = track_sequence(input.file, options, observe);
    scoring.score(input.file.frames);
    pack_figures(out, summary, scoring);
}

track_summary pack_tracked(package& out, const run_input& input, const track_options& options,
                           const std::function<void(int frame)>& each)
{
    recorder records;
    run_scorer scoring(input.truth);
    row_digest digest;
    row_selector selector(input.file);
    const auto observe = [&](int frame, const std::vector<track_row>& rows, const zel_host_frame_t& given) {
        selector.add(frame, given);
        scoring.observe(rows);
        for (const track_row& row : rows)
            digest.add(row.box);
        each(frame);
    };
    const track_summary summary = track_sequence(input.file, options, observe, {recorder::process, &records});
    scoring.score(input.file.frames);
    pack_run(out, records.result(), selector.result(), summary, options);
    digest.pack(out);
    pack_figures(out, summary, scoring);
    scoring.pack_objects(out, selector.result().rows.rows);
    return summary;
}

}  // namespace zeltrack
