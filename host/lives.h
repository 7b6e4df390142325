// SPDX-License-Identifier: MIT
//
// What the tracker's rows do not say of a track: how often it was detected and for how long it has been missed.
#pragma once

#include <stdint.h>

namespace zelhost {

struct life {
    int id;         // 0: a free slot
    int hits;       // frames in which it was detected
    uint64_t last;  // the latest of them
};

// A hash table by identifier, with at least four times the slots that live tracks can fill.
struct lives {
    life* slots;
    life* spare;  // of the same size, for the next clearing
    uint32_t mask;
    uint32_t used;
};

// False if memory runs out; free_lives() is due in any case.
bool make_lives(lives* table, int capacity);
void free_lives(lives* table);
void clear_lives(lives* table);

// The life of an identifier, a new one with hits 0 if there is none. Lives whose track has been missed for more than
// removal frames, and so is gone, make room for it. Valid until the next call.
life* life_of(lives* table, int id, uint64_t frame, int removal);

}  // namespace zelhost
