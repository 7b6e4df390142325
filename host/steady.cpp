// SPDX-License-Identifier: MIT
//
// A pair is a detection and the one of the frame before that overlap each other most. The median of all other pairs'
// steps is compared with a pair's own: its own would explain part of itself.
#include "steady.h"

#include <math.h>

#include <algorithm>

#include "host.h"

namespace zelhost {

constexpr float pair_overlap = 0.3F;
constexpr int fewest_pairs = 3;
constexpr int fewest_frames = 10;   // before the motion is told
constexpr float dead_zone = 0.01F;  // sizes of a box; a smaller step is none
constexpr double on_above = 0.1;    // explained share
constexpr double off_below = 0.05;
constexpr double fading = 0.99723127;  // per frame: half after 250

// The pairs of a frame, in the work area of the neighbours.
struct pair_steps {
    float* x;
    float* y;
    float* sizes;  // of the boxes
    float* scratch;
    int count;
};

static pair_steps find_pairs(const neighbours* frames, float least)
{
    pair_steps pairs = {};
    pairs.x = static_cast<float*>(frames->work);
    pairs.y = pairs.x + frames->room;
    pairs.sizes = pairs.y + frames->room;
    pairs.scratch = pairs.sizes + frames->room;
    for (int n = 0; n < frames->now.count; ++n) {
        const seen_box& a = frames->now.boxes[n];
        if (!(a.overlap > pair_overlap) || a.confidence < least)
            continue;
        const seen_box& b = frames->before.boxes[a.best];
        if (b.best != n || b.confidence < least)
            continue;
        pairs.x[pairs.count] = (a.x1 - b.x1 + (a.x2 - b.x2)) / 2;
        pairs.y[pairs.count] = (a.y1 - b.y1 + (a.y2 - b.y2)) / 2;
        pairs.sizes[pairs.count] = sqrtf((a.x2 - a.x1) * (a.y2 - a.y1));
        ++pairs.count;
    }
    return pairs;
}

// --- medians ---------------------------------------------------------------------------------------------------------

// The middle of a set of numbers, and what is next to it; for an even count middle is the upper of the two.
struct middle_values {
    float below;
    float middle;
    float above;
    bool odd;
};

static middle_values middle_of(const float* values, int count, float* scratch)
{
    std::copy(values, values + count, scratch);
    float* const at = scratch + count / 2;
    std::nth_element(scratch, at, scratch + count);
    return {*std::max_element(scratch, at), *at, *std::min_element(at + 1, scratch + count), count % 2 == 1};
}

static float median(const middle_values& it)
{
    return it.odd ? it.middle : (it.below + it.middle) / 2;
}

// The median once a number of the set is taken out. Those that equal the middle stand for the middle itself.
static float median_without(const middle_values& it, float value)
{
    if (!it.odd)
        return value < it.middle ? it.middle : it.below;
    if (value < it.middle)
        return (it.middle + it.above) / 2;
    return value > it.middle ? (it.below + it.middle) / 2 : (it.below + it.above) / 2;
}

// --- the camera ------------------------------------------------------------------------------------------------------

// In sizes of the pair's box and at most one of them, so that no pair outweighs the rest.
static float length(float dx, float dy, float size)
{
    return std::min(sqrtf(dx * dx + dy * dy) / size, 1.0F);
}

static void weigh(camera* it, const pair_steps& pairs, const middle_values& x, const middle_values& y)
{
    float steps = 0;
    float left = 0;
    for (int n = 0; n < pairs.count; ++n) {
        const float mx = median_without(x, pairs.x[n]);
        const float my = median_without(y, pairs.y[n]);
        steps += length(pairs.x[n], pairs.y[n], pairs.sizes[n]);
        left += length(pairs.x[n] - mx, pairs.y[n] - my, pairs.sizes[n]);
    }
    it->steps += static_cast<double>(steps);
    it->left += static_cast<double>(left);
}

static void decide(camera* it, int wanted)
{
    if (wanted != ZEL_HOST_AUTO)
        it->on = wanted != 0;
    else if (motion_known(it))
        it->on = explained(it) > (it->on ? off_below : on_above);
}

void follow_camera(camera* it, const neighbours* frames, float least, int wanted)
{
    it->steps *= fading;
    it->left *= fading;
    const pair_steps pairs = find_pairs(frames, least);
    if (pairs.count < fewest_pairs)
        return decide(it, wanted);
    const middle_values x = middle_of(pairs.x, pairs.count, pairs.scratch);
    const middle_values y = middle_of(pairs.y, pairs.count, pairs.scratch);
    weigh(it, pairs, x, y);
    ++it->frames;
    decide(it, wanted);
    if (!it->on)
        return;
    const float size = median(middle_of(pairs.sizes, pairs.count, pairs.scratch));
    if (length(median(x), median(y), size) < dead_zone)
        return;
    it->offset_x += static_cast<double>(median(x));
    it->offset_y += static_cast<double>(median(y));
}

double explained(const camera* it)
{
    return it->steps > 0 ? 1 - it->left / it->steps : 0;
}

bool motion_known(const camera* it)
{
    return it->frames >= fewest_frames;
}

}  // namespace zelhost
