// SPDX-License-Identifier: MIT
//
// A progress bar on standard error, shown after half a second of work, and only on a terminal.
#pragma once

#include <chrono>
#include <string>

namespace zeltrack {

class progress {
public:
    progress(bool wanted, std::string what, int total);
    ~progress();
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    // `note` follows the numbers.
    void update(int done, const std::string& note = "");

private:
    using clock = std::chrono::steady_clock;

    bool active_;
    int drawn_ = 0;  // columns of the last line
    std::string what_;
    int total_;
    clock::time_point next_;
};

}  // namespace zeltrack
