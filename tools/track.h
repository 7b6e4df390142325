// SPDX-License-Identifier: MIT
//
// Tracking a detection file: the options, the loading and the loop over the frames, for every command that tracks.
#pragma once

#include <functional>
#include <iosfwd>
#include <limits>
#include <string>
#include <vector>

#include "mot.h"

namespace CLI {
class App;
}

namespace zeltrack {

struct track_options {
    std::string detections;  // "-": standard input
    double scale = 0;        // 0: automatic_scale()
    int max_objects = 0;     // 0: ample_capacity()
    float euc = 1.0F;
    float iou = 0.3F;
    int stable = 3;
    int removal = 10;
    bool ignore_class = false;
    float min_conf = std::numeric_limits<float>::lowest();
    mot_classes classes;
    bool coasted = false;
    bool quiet = false;
};

// The positional DETECTIONS, all options of tracking and --config.
void add_track_options(CLI::App& app, track_options& options);

struct sequence {
    std::vector<mot_row> rows;  // by frame, within a frame as in the file
    int frames = 0;             // up to the last one of the file, even if its rows were dropped
    std::size_t dropped = 0;    // rows below the least confidence
};

sequence load_sequence(const track_options& options);

// The true boxes of a file, by frame, without those that it marks by a 0 in the seventh column as not to be counted.
std::vector<mot_row> load_truth(const std::string& name);

// A capacity that no set of live tracks and no frame of the sequence can exceed.
int ample_capacity(const std::vector<mot_row>& rows, int removal);

struct track_row {
    mot_row box;    // in the coordinates of the file
    int detection;  // index among the frame's rows; -1 for a row without a detection
};

struct track_summary {
    sequence const* input = nullptr;
    double scale = 1;
    int capacity = 0;
    int ample = 0;
    int full_frames = 0;  // in which the detections or the reported tracks filled the capacity
    std::size_t rows = 0;
    std::size_t identified = 0;  // detections reported under an identifier
    std::size_t identifiers = 0;
    double seconds = 0;       // within the tracker
    double far_share = 0;     // of the detections, had nothing of the frame before within the gate
    double better_scale = 0;  // to try if that is more than a tenth
};

// The handle is the tracker's, right after the frame.
using frame_callback = std::function<void(int frame, const std::vector<track_row>& rows, const void* handle)>;

// Runs the tracker over all frames, empty ones too, and hands on each frame's rows.
track_summary track_sequence(const sequence& input, const track_options& options, const frame_callback& each);

void print_summary(std::ostream& out, const track_summary& summary, const track_options& options);

}  // namespace zeltrack
