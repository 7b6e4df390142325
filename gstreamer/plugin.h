// SPDX-License-Identifier: MIT
//
// What the plugin's elements share.
#pragma once

#include <gst/base/gstbasetransform.h>

namespace zelgst {

// A sink and a source for raw video in any kind of memory.
void add_video_pads(GstElementClass* element_class);

// The properties of an element that is there for a file, and no others: a text "location", and "frame-base", 0 or 1,
// which are set while the element is not running.
void install_file_properties(GObjectClass* object_class, const char* blurb);

// Null, with an error posted: there is no location.
const char* location_of(GstBaseTransform* element);

int frame_base_of(GstBaseTransform* element);

// For elements that attach something. The base class passes buffers through, so that upstream may allocate them
// downstream; but if others hold a buffer, too, it is copied here, without its memory.
GstFlowReturn make_metas_writable(GstBaseTransform* element, GstBuffer* input, GstBuffer** output);

// Passing through, with a look at each buffer on its way.
void pass_through(GstBaseTransform* element);

}  // namespace zelgst
