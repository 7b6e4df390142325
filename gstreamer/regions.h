// SPDX-License-Identifier: MIT
//
// Detections and tracks as regions of interest on a buffer. A detector attaches a region with its label as type and a
// structure "detection" that has the confidence, and where it is exact the box in parts of the image; the tracker adds
// the structures "object_id" and "zel-track".
#pragma once

#include <gst/video/video.h>
#include <zel/host.h>

#include <unordered_map>
#include <vector>

namespace zelgst {

struct image_size {
    int width;
    int height;
};

// What a detector calls the objects of each class, for regions that the tracker makes.
using label_map = std::unordered_map<int, GQuark>;

class region_list {
public:
    // Takes over the buffer's regions; detections() are theirs, in the same order.
    void read(GstBuffer* buffer, const image_size& size);
    const std::vector<zel_host_detection_t>& detections() const { return detections_; }

    // Adds to each region that was matched what its track is, with the track's own box if wanted, and makes regions for
    // tracks without one.
    void write(const zel_host_track_t* tracks, int count, bool boxes);
    void drop_unmatched();

private:
    void note_label(int class_id, GQuark label);
    GstVideoRegionOfInterestMeta* add_coasted(const zel_host_track_t& track);

    GstBuffer* buffer_ = nullptr;
    std::vector<GstVideoRegionOfInterestMeta*> regions_;
    std::vector<zel_host_detection_t> detections_;
    std::vector<bool> matched_;
    label_map labels_;
    int latest_class_ = 0;
    GQuark latest_label_ = 0;
};

// As a detector would: the box exactly in the structure "detection", and rounded in the region itself.
void attach_detection(GstBuffer* buffer, const image_size& size, const zel_host_detection_t& detection,
                      const char* label);

}  // namespace zelgst
