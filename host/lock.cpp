// SPDX-License-Identifier: MIT
//
// A plain mutex. The clock is read only where the lock is taken already, so that an undisturbed frame pays nothing.
#include "lock.h"

#include "host.h"

// A WebAssembly module without threads has nobody to be kept out.
#if !defined(__wasm__) || defined(_REENTRANT)
#define ZEL_HOST_THREADS
#include <pthread.h>
#include <time.h>
#endif

namespace zelhost {

#ifdef ZEL_HOST_THREADS

static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

static double now()
{
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

void take_lock(lock_waits* waits)
{
    if (pthread_mutex_trylock(&mutex) == 0)
        return;
    const double start = now();
    pthread_mutex_lock(&mutex);
    waits->seconds += now() - start;
    ++waits->count;
}

void give_lock()
{
    pthread_mutex_unlock(&mutex);
}

#else

void take_lock(lock_waits*) {}

void give_lock() {}

#endif

}  // namespace zelhost

void zel_host_lock(void)
{
    zelhost::lock_waits waits = {};
    zelhost::take_lock(&waits);
}

void zel_host_unlock(void)
{
    zelhost::give_lock();
}
