// SPDX-License-Identifier: MIT
//
// Work in child processes: one tracker at a time may run in a process, and what ends a child, be it a crash or the
// system, must not end the search. Children are forked, so they see everything that was loaded before.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace zeltrack {

struct work_result {
    bool lost = false;
    std::string text;  // the answer, or why there is none
};

class worker_pool {
public:
    // Runs in a child. What it throws makes the work lost, too. It must not print.
    using work_function = std::function<std::string(const std::string& request)>;

    // Children are started when there is work for them.
    worker_pool(int jobs, work_function work);
    ~worker_pool();
    worker_pool(const worker_pool&) = delete;
    worker_pool& operator=(const worker_pool&) = delete;

    // Hands the requests out in their order and gives each result as it comes. Ends early, with the children, once
    // `stopped` is true, which is asked every fraction of a second.
    void run(const std::vector<std::string>& requests, const std::function<void(std::size_t index, work_result)>& done,
             const std::function<bool()>& stopped);

private:
    struct worker {
        pid_t pid = -1;  // -1: not started
        int to = -1;
        int from = -1;
        bool busy = false;
        std::size_t index = 0;  // of the request
    };

    void start(worker& it);
    void serve(int from, int to) const;
    std::string end(worker& it, bool kill);
    bool hand_out(worker& it, const std::string& request);
    work_result collect(worker& it);

    std::vector<worker> workers_;
    work_function work_;
};

}  // namespace zeltrack
