// SPDX-License-Identifier: MIT
//
// The element "motdetections": stands for a detector, with the boxes of a MOTChallenge file. The n-th buffer of a
// stream is frame n.
#pragma once

#include <gst/base/gstbasetransform.h>

G_BEGIN_DECLS

#define ZEL_TYPE_MOT_DETECTIONS (zel_mot_detections_get_type())
G_DECLARE_FINAL_TYPE(ZelMotDetections, zel_mot_detections, ZEL, MOT_DETECTIONS, GstBaseTransform)

G_END_DECLS
