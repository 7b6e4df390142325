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

// What a region of interest says about its track.
struct region_track {
    zel_host_track_t track;
    int rank;  // place among the frame's tracks, oldest first
};

class region_list {
public:
    // Takes over the buffer's regions; detections() are theirs, in the same order.
    void read(GstBuffer* buffer, const image_size& size);
    const std::vector<zel_host_detection_t>& detections() const { return detections_; }

    // Adds to each region that was matched what its track is, and makes regions for tracks without one.
    void write(const zel_host_track_t* tracks, int count);
    void drop_unmatched();

private:
    void add_coasted(const region_track& it);

    GstBuffer* buffer_ = nullptr;
    std::vector<GstVideoRegionOfInterestMeta*> regions_;
    std::vector<zel_host_detection_t> detections_;
    std::vector<bool> matched_;
    label_map labels_;
};

// As a detector would: the box exactly in the structure "detection", and rounded in the region itself.
void attach_detection(GstBuffer* buffer, const image_size& size, const zel_host_detection_t& detection,
                      const char* label);

// The tracks that regions of the buffer name, oldest first.
void read_tracks(GstBuffer* buffer, std::vector<region_track>& tracks);

}  // namespace zelgst
