// SPDX-License-Identifier: MIT
//
// The element "motwrite": writes the tracks on passing buffers to a MOTChallenge file. The n-th buffer of a stream is
// frame n.
#pragma once

#include <gst/base/gstbasetransform.h>

G_BEGIN_DECLS

#define ZEL_TYPE_MOT_WRITE (zel_mot_write_get_type())
G_DECLARE_FINAL_TYPE(ZelMotWrite, zel_mot_write, ZEL, MOT_WRITE, GstBaseTransform)

G_END_DECLS
