// SPDX-License-Identifier: MIT
//
// A pipe to each child and one back. A message is its length, a byte that says whether the work is lost, and text.
#include "tune/workers.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include "cli/failure.h"

namespace zeltrack {

static constexpr int poll_milliseconds = 100;

// --- messages --------------------------------------------------------------------------------------------------------

static bool write_bytes(int fd, const char* bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t written = write(fd, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

static bool read_bytes(int fd, char* bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t got = read(fd, bytes, count);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        bytes += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

static bool send(int fd, bool lost, const std::string& text)
{
    const auto size = static_cast<std::uint32_t>(text.size());
    std::string message(sizeof(size) + 1, lost ? 1 : 0);
    std::memcpy(message.data(), &size, sizeof(size));
    message += text;
    return write_bytes(fd, message.data(), message.size());
}

static bool receive(int fd, work_result& result)
{
    char head[sizeof(std::uint32_t) + 1];
    if (!read_bytes(fd, head, sizeof(head)))
        return false;
    std::uint32_t size = 0;
    std::memcpy(&size, head, sizeof(size));
    result.lost = head[sizeof(size)] != 0;
    result.text.resize(size);
    return read_bytes(fd, result.text.data(), size);
}

// --- children --------------------------------------------------------------------------------------------------------

worker_pool::worker_pool(int jobs, work_function work)
    : workers_(static_cast<std::size_t>(jobs)), work_(std::move(work))
{
}

worker_pool::~worker_pool()
{
    for (worker& it : workers_)
        end(it, true);
}

// Until the parent closes the pipe or is gone.
void worker_pool::serve(int from, int to) const
{
    work_result request;
    while (receive(from, request)) {
        work_result result;
        try {
            result.text = work_(request.text);
        } catch (const std::exception& error) {
            result = {true, error.what()};
        }
        if (!send(to, result.lost, result.text))
            break;
    }
}

void worker_pool::start(worker& it)
{
    int down[2];
    int up[2];
    if (pipe(down) != 0)
        throw system_failure("a pipe", errno);
    if (pipe(up) != 0) {
        const int error = errno;
        close(down[0]);
        close(down[1]);
        throw system_failure("a pipe", error);
    }
    it.pid = fork();
    if (it.pid == 0) {
        // Ctrl-C reaches all processes of a terminal, a batch system's signal all of a job: the parent decides
        signal(SIGINT, SIG_IGN);
        signal(SIGTERM, SIG_IGN);
        close(down[1]);
        close(up[0]);
        // else a child would keep its sisters' pipes open
        for (const worker& other : workers_)
            for (const int fd : {other.to, other.from})
                if (fd >= 0)
                    close(fd);
        serve(down[0], up[1]);
        _exit(0);
    }
    const int error = errno;
    close(down[0]);
    close(up[1]);
    it.to = down[1];
    it.from = up[0];
    if (it.pid < 0) {
        end(it, false);
        throw system_failure("a child process", error);
    }
}

static std::string reason_of(int status)
{
    if (WIFSIGNALED(status))
        return "its process was killed by signal " + std::to_string(WTERMSIG(status)) + " (" +
               strsignal(WTERMSIG(status)) + ")";
    return "its process ended with status " + std::to_string(WEXITSTATUS(status));
}

// Returns how it ended.
std::string worker_pool::end(worker& it, bool kill_it)
{
    for (int* fd : {&it.to, &it.from})
        if (*fd >= 0)
            close(std::exchange(*fd, -1));
    it.busy = false;
    if (it.pid < 0)
        return "";
    if (kill_it)
        kill(it.pid, SIGKILL);
    int status = 0;
    while (waitpid(it.pid, &status, 0) < 0 && errno == EINTR) {
    }
    it.pid = -1;
    return reason_of(status);
}

// --- the parent's side -----------------------------------------------------------------------------------------------

// A child that was killed while it had nothing to do is replaced.
bool worker_pool::hand_out(worker& it, const std::string& request)
{
    if (it.pid >= 0 && send(it.to, false, request))
        return true;
    end(it, true);
    start(it);
    return send(it.to, false, request);
}

work_result worker_pool::collect(worker& it)
{
    work_result result;
    it.busy = false;
    if (!receive(it.from, result))
        return {true, end(it, false)};
    return result;
}

void worker_pool::run(const std::vector<std::string>& requests,
                      const std::function<void(std::size_t index, work_result)>& done,
                      const std::function<bool()>& stopped)
{
    std::size_t given = 0;
    std::size_t open = 0;
    while (!stopped()) {
        for (worker& it : workers_) {
            if (it.busy || given == requests.size())
                continue;
            it.index = given++;
            it.busy = hand_out(it, requests[it.index]);
            if (it.busy)
                ++open;
            else
                done(it.index, {true, end(it, true)});
        }
        if (open == 0 && given == requests.size())
            return;
        std::vector<pollfd> waiting;
        waiting.reserve(workers_.size());
        for (const worker& it : workers_)
            waiting.push_back({it.busy ? it.from : -1, POLLIN, 0});
        if (poll(waiting.data(), waiting.size(), poll_milliseconds) <= 0)
            continue;
        for (std::size_t w = 0; w < workers_.size(); ++w)
            if (waiting[w].revents != 0) {
                --open;
                const std::size_t index = workers_[w].index;
                done(index, collect(workers_[w]));
            }
    }
    for (worker& it : workers_)
        end(it, true);
}

}  // namespace zeltrack
