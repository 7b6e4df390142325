// SPDX-License-Identifier: MIT
//
// Long work that can end with what there is: the first SIGINT or SIGTERM asks for that, a second one ends the process
// as it would have without.
#pragma once

namespace zeltrack {

class stop_watch {
public:
    // To be made after the output files, whose handlers it puts aside. A signal that is ignored stays so.
    stop_watch();
    ~stop_watch();
    stop_watch(const stop_watch&) = delete;
    stop_watch& operator=(const stop_watch&) = delete;

    static bool asked();
};

}  // namespace zeltrack
