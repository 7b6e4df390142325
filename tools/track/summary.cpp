// SPDX-License-Identifier: MIT
//
// The summary as text, its figures rounded.
#include "track/summary.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>

#include "cli/failure.h"
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

// --- what the choices came to ----------------------------------------------------------------------------------------

static std::string why(int reason)
{
    return reason == ZEL_HOST_FIXED ? "given" : std::string("auto: ") + zel_host_reason_text(reason);
}

static std::string percent(std::uint64_t part, std::uint64_t whole)
{
    return to_text(100 * static_cast<double>(part) / static_cast<double>(std::max<std::uint64_t>(whole, 1)), 3) + " %";
}

static void print_choices(std::ostream& out, const track_summary& summary, const track_options& options)
{
    const zel_host_status_t& host = summary.host;
    const bool none = host.min_confidence == std::numeric_limits<float>::lowest();
    out << "min-conf     " << (none ? "none" : to_text(host.min_confidence, 3)) << " ("
        << why(host.min_confidence_reason) << ")\n";
    if (summary.scale > 0)
        out << "gate         " << to_text(gate_units / summary.scale, 3) << " pixels (scale "
            << to_text(summary.scale, 3)
            << (options.scale_factor != 1 ? ", " + to_text(options.scale_factor) + " times auto)\n"
                : options.scale > 0       ? ", given)\n"
                                          : ", auto: the median box of the first frame)\n");
    out << "steady       " << (host.steady ? "on" : "off") << " (" << why(host.steady_reason) << ")\n"
        << "removal      " << host.removal << " frames (" << why(host.removal_reason) << ")\n";
}

// --- warnings --------------------------------------------------------------------------------------------------------

static void print_far_steps(std::ostream& out, const track_summary& summary)
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

static void print_warnings(std::ostream& out, const track_summary& summary)
{
    const zel_host_status_t& host = summary.host;
    print_far_steps(out, summary);
    if (host.weak > host.detections / 10 * 9)
        out << "zeltrack: warning: " << percent(host.weak, host.detections)
            << " of the detections were below the least confidence; try a lower --min-conf\n";
    if (host.scale_misled)
        out << "zeltrack: warning: the boxes of the first frame, " << to_text(host.first_size, 3)
            << " pixels in size, are unlike the others, " << to_text(host.typical_size, 3) << " pixels; try --scale "
            << to_text(gate_units / host.typical_size, 2) << '\n';
    if (host.invalid > 0)
        out << "zeltrack: warning: " << host.invalid
            << " detections without a size, or with one below 0, were ignored\n";
}

void refuse_missing_memory(const track_summary& summary)
{
    if (summary.host.unstarted > 0)
        throw failure("out of memory: " + std::to_string(summary.host.unstarted) +
                      " times a track could not be started or confirmed");
}

void print_summary(std::ostream& out, const track_summary& summary, const track_options& options)
{
    const sequence& input = *summary.input;
    const zel_host_status_t& host = summary.host;
    const std::uint64_t given = host.detections - host.weak - host.cut - host.invalid;
    out << "frames       " << input.frames << "\ndetections   " << given;
    if (host.weak > 0)
        out << " (" << host.weak << " more below --min-conf)";
    out << "\nrows         " << summary.rows << "\nidentifiers  " << summary.identifiers << "\nin a track   "
        << percent(summary.identified, given) << " of the detections, reported under an identifier\n";
    if (summary.seconds > 0)
        out << "speed        " << to_text(input.frames / summary.seconds, 4)
            << " frames per second in the tracker alone\n";
    print_choices(out, summary, options);
    print_capacity(out, summary);
    print_warnings(out, summary);
}

}  // namespace zeltrack
