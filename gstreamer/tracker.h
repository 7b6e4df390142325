// SPDX-License-Identifier: MIT
//
// The element "zeltracker": numbers the detections that are attached to passing buffers. The buffers' pixels are not
// touched, so any kind of memory will do.
#pragma once

#include <gst/base/gstbasetransform.h>

G_BEGIN_DECLS

#define ZEL_TYPE_TRACKER (zel_tracker_get_type())
G_DECLARE_FINAL_TYPE(ZelTracker, zel_tracker, ZEL, TRACKER, GstBaseTransform)

G_END_DECLS
