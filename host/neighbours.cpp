// SPDX-License-Identifier: MIT
//
// A sweep from left to right over the boxes of both frames: a box is compared with those of the other frame that began
// before it and have not ended. Boxes that do not share a column are never compared.
#include "neighbours.h"

#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

namespace zelhost {

// A box that has begun; what a comparison reads lies side by side.
struct active_box {
    float x2;
    float y1;
    float y2;
    int index;
};

struct active_list {
    active_box* boxes;
    int count;
};

static frame_boxes copy_of(const frame_boxes& old, int room)
{
    const frame_boxes copy = {static_cast<seen_box*>(calloc(static_cast<size_t>(room), sizeof(seen_box))), old.count};
    if (copy.boxes && old.count > 0)
        memcpy(copy.boxes, old.boxes, static_cast<size_t>(old.count) * sizeof(seen_box));
    return copy;
}

bool make_neighbour_room(neighbours* it, int room)
{
    const size_t work_size = 2 * sizeof(active_box);  // for a box of either frame
    neighbours larger = {copy_of(it->now, room), copy_of(it->before, room),
                         calloc(static_cast<size_t>(room), work_size), room};
    const bool made = larger.now.boxes && larger.before.boxes && larger.work;
    if (made)
        std::swap(*it, larger);
    free_neighbours(&larger);
    return made;
}

void free_neighbours(neighbours* it)
{
    free(it->now.boxes);
    free(it->before.boxes);
    free(it->work);
}

void clear_neighbours(neighbours* it)
{
    it->now.count = 0;
    it->before.count = 0;
}

void next_frame(neighbours* it)
{
    std::swap(it->now, it->before);
    it->now.count = 0;
}

// 0 where both are without an area.
static float overlap_of(const seen_box& a, const seen_box& b)
{
    const float w = std::min(a.x2, b.x2) - std::max(a.x1, b.x1);
    const float h = std::min(a.y2, b.y2) - std::max(a.y1, b.y1);
    if (!(w > 0 && h > 0))
        return 0;
    const float shared = w * h;
    return shared / ((a.x2 - a.x1) * (a.y2 - a.y1) + (b.x2 - b.x1) * (b.y2 - b.y1) - shared);
}

static void note(seen_box* box, int other, float overlap)
{
    if (!(overlap > box->overlap))
        return;
    box->overlap = overlap;
    box->best = other;
}

static void compare(frame_boxes* own, int index, frame_boxes* others, int other)
{
    seen_box* box = &own->boxes[index];
    seen_box* met = &others->boxes[other];
    const float overlap = overlap_of(*box, *met);
    note(box, other, overlap);
    note(met, index, overlap);
}

// Compares a box that begins with the active ones of the other frame, and takes those out that ended before it. Most do
// not share a row with it, which is the one branch here that a processor can foresee.
static void meet(frame_boxes* own, int index, frame_boxes* others, active_list* active)
{
    const seen_box box = own->boxes[index];
    active_box* const list = active->boxes;
    int left = 0;
    for (int n = 0; n < active->count; ++n) {
        const active_box other = list[n];
        list[left] = other;
        const bool lives = other.x2 > box.x1;
        left += lives;
        if (lives & (other.y1 < box.y2) & (other.y2 > box.y1))
            compare(own, index, others, other.index);
    }
    active->count = left;
}

static void begin(active_list* active, const frame_boxes* own, int index)
{
    const seen_box& box = own->boxes[index];
    active->boxes[active->count++] = {box.x2, box.y1, box.y2, index};
}

static void forget(frame_boxes* boxes)
{
    for (int n = 0; n < boxes->count; ++n) {
        boxes->boxes[n].best = -1;
        boxes->boxes[n].overlap = 0;
    }
}

void find_neighbours(neighbours* it)
{
    std::sort(it->now.boxes, it->now.boxes + it->now.count,
              [](const seen_box& a, const seen_box& b) { return a.x1 < b.x1; });
    forget(&it->now);
    forget(&it->before);
    active_list now = {static_cast<active_box*>(it->work), 0};
    active_list before = {now.boxes + it->room, 0};
    int n = 0;
    int b = 0;
    while (n < it->now.count || b < it->before.count) {
        const bool old = n == it->now.count || (b < it->before.count && it->before.boxes[b].x1 <= it->now.boxes[n].x1);
        if (old) {
            meet(&it->before, b, &it->now, &now);
            begin(&before, &it->before, b++);
        } else {
            meet(&it->now, n, &it->before, &before);
            begin(&now, &it->now, n++);
        }
    }
}

}  // namespace zelhost
