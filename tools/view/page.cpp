// SPDX-License-Identifier: MIT
//
// The page: a template, into which the data of a run goes as JSON.
#include <algorithm>
#include <string_view>

#include "track/scale.h"
#include "view/columns.h"
#include "view/json.h"
#include "view/recorder.h"
#include "view/view.h"

namespace zeltrack {

extern const char viewer_template[];  // made of viewer.html by the build

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
    const double median_size = 2 * gate_units * summary.scale / automatic_scale(input.rows);
    const grid steps(recorded, std::min(gate_units, median_size));
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
    out.data("lives", pack_lives(recorded));
    out.data("detections", pack_detections(recorded, steps, named));
    out.data("rows", pack_rows(recorded, steps));
    if (options.truth) {
        out.data("truth", pack_truth(*options.truth, steps, summary.scale));
        out.data("changes", pack_changes(changes));
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
    const auto observe = [&](int frame, const std::vector<track_row>& rows) {
        const mot_row* const first = object;
        while (object != end && object->frame == frame)
            ++object;
        identities.observe(frame, first, object, rows);
    };
    const track_summary summary = track_sequence(input, options.track, observe, {recorder::process, &records});

    constexpr std::string_view mark = "{{data}}";
    const std::string_view text = viewer_template;
    const std::size_t at = text.find(mark);
    page.append(text.substr(0, at));
    page.append(page_data(options, summary, records.result(), identities.changes()));
    page.append(text.substr(at + mark.size()));
    return summary;
}

}  // namespace zeltrack
