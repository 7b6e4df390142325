// SPDX-License-Identifier: MIT
//
// The properties of "zeltracker": the host kit's parameters under their own names, and what the element adds.
#pragma once

#include <gst/gst.h>

#include <atomic>

#include "stream.h"

namespace zelgst {

struct tracker_settings {
    std::atomic<bool> boxes = false;
    std::atomic<bool> drop_unmatched = false;
    std::atomic<bool> ignore_discont = false;
    std::atomic<bool> keep_identifiers = true;
};

void install_properties(GObjectClass* object_class);

// False: the value is out of its range, and nothing was changed.
bool set_property(stream& kit, tracker_settings& settings, guint id, const GValue* value);
void get_property(const stream& kit, const tracker_settings& settings, guint id, GValue* value);

}  // namespace zelgst
