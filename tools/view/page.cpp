// SPDX-License-Identifier: MIT
//
// The page: its template with the data in place.
#include "view/view.h"

#include <string_view>

#include "view/columns.h"
#include "view/identity.h"
#include "view/recorder.h"

namespace zeltrack {

extern const char page_template[];  // joined by the build

track_summary view_sequence(const sequence& file, const selected_rows& selected, const view_options& options,
                            std::string& page)
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
    const track_summary summary = track_sequence(selected.rows, options.track, observe, {recorder::process, &records});

    package data;
    data.text("file", options.track.detections);
    data.text("command", options.command);
    pack_input(data, file, options.track);
    if (options.truth)
        pack_truth(data, *options.truth);
    pack_run(data, records.result(), selected, summary, options.track, identities.changes());

    constexpr std::string_view mark = "{{data}}";
    const std::string_view text = page_template;
    const std::size_t at = text.find(mark);
    page.append(text.substr(0, at));
    append_base64(page, data.bytes());
    page.append(text.substr(at + mark.size()));
    return summary;
}

}  // namespace zeltrack
