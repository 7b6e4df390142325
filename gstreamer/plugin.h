// SPDX-License-Identifier: MIT
//
// What the plugin's elements share.
#pragma once

#include <gst/base/gstbasetransform.h>

#include <string>

namespace zelgst {

// A sink and a source for raw video in any kind of memory.
void add_video_pads(GstElementClass* element_class);

// A text property "location", with the number 1, that is set while the element is not running.
void install_location(GObjectClass* object_class, const char* blurb);

// False, with an error posted: there is no location.
bool has_location(GstBaseTransform* element, const std::string& location);

// For elements that attach something. The base class passes buffers through, so that upstream may allocate them
// downstream; but if others hold a buffer, too, it is copied here, without its memory.
GstFlowReturn make_metas_writable(GstBaseTransform* element, GstBuffer* input, GstBuffer** output);

// Passing through, with a look at each buffer on its way.
void pass_through(GstBaseTransform* element);

}  // namespace zelgst
