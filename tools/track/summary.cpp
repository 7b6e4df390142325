// SPDX-License-Identifier: MIT
//
// The summary as text, its figures rounded.
#include "track/summary.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "cli/number.h"
#include "track/scale.h"

namespace zeltrack {

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
    out << "zeltrack: warning: " << to_text(100 * summary.far_share, 3)
        << " % of the detections had nothing of the frame before within the gate; ";
    if (summary.better_scale < summary.scale)
        out << "try --scale " << to_text(summary.better_scale, 2) << '\n';
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
        << to_text(100 * static_cast<double>(summary.identified) / detections, 3)
        << " % of the detections, reported under an identifier\n";
    if (summary.seconds > 0)
        out << "speed        " << to_text(input.frames / summary.seconds, 4)
            << " frames per second in the tracker alone\n";
    out << "gate         " << to_text(gate_units / summary.scale, 3) << " pixels (scale " << to_text(summary.scale, 3)
        << (options.scale > 0 ? ")\n" : ", auto)\n");
    print_capacity(out, summary);
    print_warning(out, summary);
}

}  // namespace zeltrack
