// SPDX-License-Identifier: MIT
//
// This room invents sequences: boxes that wander through an image, cross, leave at its edges and are followed by new
// ones, and the detections that a moderately good detector would make of them. The same options give the same rows on
// every machine.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "cli/command_line.h"
#include "mot/mot.h"

namespace zeltrack {

extern const subcommand synth_command;

constexpr range<int> image_side = {16, 100000};  // pixels

struct synth_options {
    int objects = 20;
    int frames = 300;
    int width = 1920;
    int height = 1080;
    double miss = 0.1;   // probability that an object is not detected in a frame
    double pan = 0;      // pixels per frame that the camera moves to the right
    double noise = 1.0;  // standard deviation of a detection's centre and size, in pixels
    std::uint64_t seed = 1;
};

class synth_scene {
public:
    explicit synth_scene(const synth_options& options);

    // Replaces both lists by the next frame's rows: the detections in random order, the ground truth with identifiers.
    void next_frame(std::vector<mot_row>& detections, std::vector<mot_row>& truth);

private:
    using milli = std::int64_t;  // a thousandth of a pixel: whole numbers come out the same on every processor

    struct object {
        int id;
        milli x, y, dx, dy;
        milli height;
        milli growth;   // of the height, per frame
        milli breadth;  // width in thousandths of the height
    };

    milli uniform(milli low, milli high);
    milli normal();
    bool chance(double probability);

    object new_object();
    void place_at_edge(object& it);
    void move(object& it);
    bool in_view(const object& it) const;
    mot_row row_of(const object& it) const;
    mot_row detected(const object& it);

    synth_options options_;
    milli width_, height_;
    milli tallest_;
    milli noise_;
    milli pan_;
    int frame_ = 0;
    int next_id_ = 1;
    std::mt19937_64 random_;
    std::vector<object> objects_;
};

}  // namespace zeltrack
