// SPDX-License-Identifier: MIT
//
// The process-wide lock around the tracker: its filters share one work area.
#pragma once

#include <stdint.h>

namespace zelhost {

struct lock_waits {
    uint64_t count;
    double seconds;
};

// Takes the lock; a wait, if there is one, is added to waits.
void take_lock(lock_waits* waits);

void give_lock();

}  // namespace zelhost
