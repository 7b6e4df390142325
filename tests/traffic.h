// SPDX-License-Identifier: MIT
//
// Objects that appear, wander, are now and then not seen, and go, for runs of any length. Quarters of a unit in whole
// numbers, so that every processor makes the same rows.
#ifndef ZEL_TESTS_TRAFFIC_H
#define ZEL_TESTS_TRAFFIC_H

#include <array>
#include <random>
#include <vector>

class traffic {
public:
    using row = std::array<float, 6>;

    traffic(size_t objects, unsigned seed) : random_(seed), objects_(objects) {}

    // The rows of the next frame.
    std::vector<row>& next()
    {
        rows_.clear();
        for (object& it : objects_) {
            if (it.frames-- <= 0)
                it = {any(0, 4000), any(0, 3000), any(-8, 8), any(-8, 8), any(20, 90), any(1, 3), any(4, 96)};
            it.x += it.dx + any(-2, 2);
            it.y += it.dy + any(-2, 2);
            if (any(1, 16) > 1)
                rows_.push_back({static_cast<float>(it.c), quarters(it.x), quarters(it.y), quarters(it.x + it.size),
                                 quarters(it.y + 2 * it.size), quarters(any(1, 4))});
        }
        return rows_;
    }

private:
    struct object {
        int x, y, dx, dy, size, c;
        int frames = 0;  // still to live
    };

    int any(int low, int high) { return low + static_cast<int>(random_() % static_cast<unsigned>(high - low + 1)); }
    static float quarters(int n) { return static_cast<float>(n) / 4; }

    std::mt19937 random_;
    std::vector<object> objects_;
    std::vector<row> rows_;
};

#endif
