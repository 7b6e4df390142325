// SPDX-License-Identifier: MIT
//
// One flag, and the handlers that were there before.
#include "cli/stop.h"

#include <signal.h>

#include <cstddef>

namespace zeltrack {

static constexpr int stopping[] = {SIGINT, SIGTERM};
static constexpr std::size_t count = sizeof(stopping) / sizeof(*stopping);
static struct sigaction before[count];
static volatile sig_atomic_t stop_asked = 0;

extern "C" {
static void ask_to_stop(int)
{
    stop_asked = 1;
    for (std::size_t n = 0; n < count; ++n)
        sigaction(stopping[n], &before[n], nullptr);
}
}

stop_watch::stop_watch()
{
    stop_asked = 0;
    for (std::size_t n = 0; n < count; ++n) {
        sigaction(stopping[n], nullptr, &before[n]);
        if (before[n].sa_handler == SIG_IGN)
            continue;
        struct sigaction action = {};
        action.sa_handler = ask_to_stop;
        sigaction(stopping[n], &action, nullptr);
    }
}

stop_watch::~stop_watch()
{
    for (std::size_t n = 0; n < count; ++n)
        sigaction(stopping[n], &before[n], nullptr);
}

bool stop_watch::asked()
{
    return stop_asked != 0;
}

}  // namespace zeltrack
