// SPDX-License-Identifier: MIT
//
// The three families of figures, each from a scene; and what is common to them and to sums over sequences.
#pragma once

#include <cstdint>
#include <vector>

#include "eval/assignment.h"
#include "eval/scene.h"
#include "eval/score.h"

namespace zeltrack {

class hota_figures {
public:
    void score(const scene& of, hota_score& result);

private:
    // A pair that was matched in one frame, at so many of the thresholds.
    struct reached {
        std::uint32_t link;
        std::uint32_t level;
    };

    void align(const scene& of);
    void match(const scene& of, hota_score& result);
    void associate(const scene& of, hota_score& result);

    assignment assignment_;
    std::vector<edge> edges_;
    std::vector<double> object_sums_;  // of one frame's overlaps
    std::vector<double> track_sums_;
    std::vector<double> alignments_;  // by link
    std::vector<reached> matches_;
};

class clear_figures {
public:
    void score(const scene& of, clear_score& result);

    std::vector<identity_switch> switches;
    std::vector<object_match> matches;

private:
    // What CLEAR remembers of an object. Frames are counted among those that hold both objects and tracks.
    struct memory {
        std::uint32_t track = assignment::none;  // the latest
        std::uint32_t shared = 0;                // the latest shared frame with a track, from 1; 0: none yet
        int frame = 0;                           // the same as a frame of the sequence
        double assigned = 0;
        double starts = 0;
    };

    void match(const scene& of, const shared_frame& in, std::uint32_t shared);
    void follow(const scene& of, int frame, std::uint32_t shared, std::uint32_t object, std::uint32_t track);

    assignment assignment_;
    std::vector<edge> edges_;
    std::vector<memory> memories_;  // by object
    double matched_ = 0;
    double overlaps_ = 0;
};

class identity_figures {
public:
    void score(const scene& of, identity_score& result);

private:
    assignment assignment_;
    std::vector<edge> edges_;  // by link
};

// The ratios among the figures, from the counts and sums among them.
void form_ratios(hota_score& figures);
void form_ratios(clear_score& figures);
void form_ratios(identity_score& figures);

}  // namespace zeltrack
