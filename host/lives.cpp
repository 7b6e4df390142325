// SPDX-License-Identifier: MIT
//
// Open addressing with linear probing. Nothing is ever taken out one by one: when half of the slots are used, those
// that still matter move to the spare array, at most a quarter of it.
#include "lives.h"

#include <stdlib.h>
#include <string.h>

namespace zelhost {

static uint32_t size_of(const lives* table)
{
    return table->mask + 1;
}

bool make_lives(lives* table, int capacity)
{
    uint32_t size = 16;
    while (size / 4 < static_cast<uint32_t>(capacity))
        size *= 2;
    table->mask = size - 1;
    table->used = 0;
    table->slots = static_cast<life*>(calloc(size, sizeof(life)));
    table->spare = static_cast<life*>(calloc(size, sizeof(life)));
    return table->slots && table->spare;
}

void free_lives(lives* table)
{
    free(table->slots);
    free(table->spare);
}

void clear_lives(lives* table)
{
    memset(table->slots, 0, size_of(table) * sizeof(life));
    table->used = 0;
}

// The slot of the identifier, or the free one where it belongs. Identifiers that follow each other lie side by side.
static life* slot_of(life* slots, uint32_t mask, int id)
{
    uint32_t at = static_cast<uint32_t>(id) & mask;
    while (slots[at].id != 0 && slots[at].id != id)
        at = (at + 1) & mask;
    return &slots[at];
}

static void drop_ended(lives* table, uint64_t frame, int removal)
{
    life* old = table->slots;
    table->slots = table->spare;
    table->spare = old;
    clear_lives(table);
    for (uint32_t n = 0; n < size_of(table); ++n) {
        if (old[n].id == 0 || frame - old[n].last > static_cast<uint64_t>(removal))
            continue;
        *slot_of(table->slots, table->mask, old[n].id) = old[n];
        ++table->used;
    }
}

life* life_of(lives* table, int id, uint64_t frame, int removal)
{
    life* found = slot_of(table->slots, table->mask, id);
    if (found->id == id)
        return found;
    if (table->used >= size_of(table) / 2) {
        drop_ended(table, frame, removal);
        found = slot_of(table->slots, table->mask, id);
    }
    ++table->used;
    found->id = id;
    found->hits = 0;
    found->last = frame;
    return found;
}

}  // namespace zelhost
