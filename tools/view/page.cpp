// SPDX-License-Identifier: MIT
//
// The page: its template with the data in place.
#include <cstddef>
#include <initializer_list>
#include <set>
#include <string_view>
#include <utility>

#include "cli/progress.h"
#include "view/run.h"
#include "view/view.h"

namespace zeltrack {

// Made by the build. Without the module there is no tracker in the page.
extern const char page_template[];
extern const unsigned char page_module[];
extern const std::size_t page_module_size;

// The template with each mark, in the order of the page, replaced by base64.
static void append_page(std::string& page, std::initializer_list<std::pair<std::string_view, std::string_view>> parts)
{
    std::string_view rest = page_template;
    for (const auto& [mark, bytes] : parts) {
        const std::size_t at = rest.find(mark);
        page.append(rest.substr(0, at));
        append_base64(page, bytes);
        rest.remove_prefix(at + mark.size());
    }
    page.append(rest);
}

static void pack_pictures(package& data, const picture_files& pictures)
{
    std::string names;
    for (const std::string& name : pictures.names)
        names.append(names.empty() ? "" : "\n").append(name);
    data.text("pictureFolder", pictures.folder);
    data.text("pictureNames", names);
}

static void pack_compared(package& data, const view_options& options, int frames)
{
    if (options.compared_name.empty())
        return;
    data.text("compareName", options.compared_name);
    pack_tracks(data, "compare", options.compared);
    run_scorer scoring(options.truth ? &*options.truth : nullptr);
    std::vector<track_row> rows;
    std::set<int> ids;
    for (const mot_row& row : options.compared) {
        rows.push_back({row, -1});
        ids.insert(row.id);
    }
    scoring.observe(rows);
    scoring.score(frames);
    data.number("compareFigure.tracks", static_cast<double>(ids.size()));
    data.number("compareFigure.rows", static_cast<double>(rows.size()));
    scoring.pack_figures(data, "compareFigure.");
    if (options.truth)
        scoring.pack_followers(data, "compareTruthTrack");
}

track_summary view_sequence(const sequence& file, const view_options& options, std::string& page)
{
    package data;
    data.text("file", options.track.detections);
    data.text("command", options.command);
    pack_input(data, file, options.track);
    data.number("width", options.width);
    data.number("height", options.height);
    if (options.truth)
        pack_truth(data, *options.truth);
    pack_compared(data, options, file.frames);
    if (!options.pictures.names.empty())
        pack_pictures(data, options.pictures);
    progress bar(!options.track.quiet, "frame", file.frames);
    const track_summary summary = pack_tracked(data, {file, options.truth ? &*options.truth : nullptr}, options.track,
                                               [&bar](int frame) { bar.update(frame); });

    const std::string_view module(reinterpret_cast<const char*>(page_module), page_module_size);
    append_page(page, {{"{{data}}", data.bytes()}, {"{{module}}", module}});
    return summary;
}

}  // namespace zeltrack
