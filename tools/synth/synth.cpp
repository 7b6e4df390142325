// SPDX-License-Identifier: MIT
//
// Everything random is made of whole numbers: the standard's distributions and most of its mathematics may differ from
// platform to platform, its engines may not.
#include "synth/synth.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zeltrack {

// --- random numbers --------------------------------------------------------------------------------------------------

synth_scene::milli synth_scene::uniform(milli low, milli high)
{
    return low + static_cast<milli>(random_() % static_cast<std::uint64_t>(high - low + 1));
}

// Thousandths of a standard deviation: twelve uniform numbers of variance 1/12 add up to nearly a normal one.
synth_scene::milli synth_scene::normal()
{
    milli sum = 0;
    for (int n = 0; n < 12; ++n)
        sum += uniform(-500, 500);
    return sum;
}

bool synth_scene::chance(double probability)
{
    constexpr double range = 4294967296.0;
    return static_cast<double>(random_() >> 32U) < probability * range;
}

// --- the objects -----------------------------------------------------------------------------------------------------

synth_scene::synth_scene(const synth_options& options)
    : options_(options),
      width_(milli{1000} * options.width),
      height_(milli{1000} * options.height),
      noise_(std::llround(options.noise * 1000)),
      pan_(std::llround(options.pan * 1000)),
      random_(options.seed)
{
    // 0.8 of the distance between objects on a regular grid, so that they often cross and rarely hide each other
    const double spacing = std::sqrt(static_cast<double>(options.width) * options.height / options.objects);
    tallest_ = std::clamp(static_cast<milli>(800 * spacing), milli{4000}, std::max(height_ / 2, milli{4000}));
    for (int n = 0; n < options.objects; ++n) {
        objects_.push_back(new_object());
        objects_.back().x = uniform(0, width_ - 1);
        objects_.back().y = uniform(0, height_ - 1);
    }
}

synth_scene::object synth_scene::new_object()
{
    object it = {};
    it.id = next_id_++;
    it.height = uniform(tallest_ / 2, tallest_);
    it.growth = uniform(-it.height / 1000, it.height / 1000);
    it.breadth = uniform(300, 600);
    it.dx = uniform(-it.height / 20, it.height / 20);
    it.dy = uniform(-it.height / 40, it.height / 40);
    return it;
}

void synth_scene::place_at_edge(object& it)
{
    it.x = uniform(0, width_ - 1);
    it.y = uniform(0, height_ - 1);
    milli edge = uniform(0, 3);
    if (edge < 2 && pan_ != 0)  // at the side that the camera moves to, or it would be out of view at once
        edge = pan_ > 0 ? 1 : 0;
    switch (edge) {
    case 0:
        it.x = 0;
        it.dx = std::abs(it.dx);
        break;
    case 1:
        it.x = width_ - 1;
        it.dx = -std::abs(it.dx);
        break;
    case 2:
        it.y = 0;
        it.dy = std::abs(it.dy);
        break;
    default:
        it.y = height_ - 1;
        it.dy = -std::abs(it.dy);
    }
}

// The step wanders a little from frame to frame, within what suits the size.
void synth_scene::move(object& it)
{
    const milli jerk = it.height / 500;
    it.dx = std::clamp(it.dx + uniform(-jerk, jerk), -it.height / 20, it.height / 20);
    it.dy = std::clamp(it.dy + uniform(-jerk, jerk), -it.height / 40, it.height / 40);
    it.x += it.dx - pan_;
    it.y += it.dy;
    it.height = std::clamp(it.height + it.growth, tallest_ / 2, tallest_);
}

bool synth_scene::in_view(const object& it) const
{
    return it.x >= 0 && it.x < width_ && it.y >= 0 && it.y < height_;
}

// --- the rows --------------------------------------------------------------------------------------------------------

static float pixels(std::int64_t milli)
{
    return static_cast<float>(static_cast<double>(milli) / 1000);
}

mot_row synth_scene::row_of(const object& it) const
{
    const milli breadth = it.height * it.breadth / 1000;
    mot_row row;
    row.frame = frame_;
    row.id = it.id;
    row.left = pixels(it.x - breadth / 2);
    row.top = pixels(it.y - it.height / 2);
    row.width = pixels(breadth);
    row.height = pixels(it.height);
    return row;
}

mot_row synth_scene::detected(const object& it)
{
    object seen = it;
    seen.x += normal() * noise_ / 1000;
    seen.y += normal() * noise_ / 1000;
    seen.height = std::max(it.height + normal() * noise_ / 1000, milli{1000});
    mot_row row = row_of(seen);
    row.id = -1;
    row.conf = pixels(uniform(500, 999));
    return row;
}

void synth_scene::next_frame(std::vector<mot_row>& detections, std::vector<mot_row>& truth)
{
    ++frame_;
    detections.clear();
    truth.clear();
    for (object& it : objects_) {
        if (frame_ > 1)
            move(it);
        if (!in_view(it)) {
            it = new_object();
            place_at_edge(it);
        }
        truth.push_back(row_of(it));
        if (!chance(options_.miss))
            detections.push_back(detected(it));
    }
    for (std::size_t n = detections.size(); n > 1; --n)
        std::swap(detections[n - 1], detections[static_cast<std::size_t>(uniform(0, static_cast<milli>(n) - 1))]);
}

}  // namespace zeltrack
