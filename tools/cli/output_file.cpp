// SPDX-License-Identifier: MIT
//
// Whole files or none. The paths to remove on a signal lie in a static table, for a handler may touch little else.
#include "cli/output_file.h"

#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

#include "cli/failure.h"

namespace zeltrack {

// --- removal on a signal ---------------------------------------------------------------------------------------------

static constexpr int slots = 4;
static char to_remove[slots][PATH_MAX];  // an empty one is free
static constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGTERM};

extern "C" {
static void remove_and_end(int signal_number)
{
    for (const char* path : to_remove)
        if (path[0] != '\0')
            unlink(path);
    raise(signal_number);  // the handler is gone, so this ends the process once it returns
}
}

static void catch_ending_signals()
{
    for (const int number : ending_signals) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler != SIG_DFL)
            continue;  // ignored under nohup; or caught already
        action.sa_handler = remove_and_end;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(number, &action, nullptr);
    }
}

// Holds the signals back, so that a file and its entry in the table come and go together.
class signals_held {
public:
    signals_held()
    {
        sigset_t set;
        sigemptyset(&set);
        for (const int number : ending_signals)
            sigaddset(&set, number);
        sigprocmask(SIG_BLOCK, &set, &before_);
    }
    ~signals_held() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    signals_held(const signals_held&) = delete;
    signals_held& operator=(const signals_held&) = delete;

private:
    sigset_t before_;
};

static int enter(const std::string& path)
{
    for (int slot = 0; slot < slots; ++slot)
        if (to_remove[slot][0] == '\0' && path.size() < PATH_MAX) {
            std::memcpy(to_remove[slot], path.c_str(), path.size() + 1);
            return slot;
        }
    return -1;
}

// --- the file --------------------------------------------------------------------------------------------------------

static std::string behind_links(std::filesystem::path path)
{
    std::error_code ignored;
    constexpr int most_links = 40;  // as the kernel; a loop of links then fails on opening
    for (int n = 0; n < most_links && std::filesystem::is_symlink(path, ignored); ++n)
        path = path.parent_path() / std::filesystem::read_symlink(path, ignored);
    return path.string();
}

output_file::output_file(const std::string& path) : name_(path)
{
    if (path == "-" || path == "/dev/stdout") {
        name_ = "standard output";
        fd_ = STDOUT_FILENO;
        return;
    }
    path_ = behind_links(path);
    struct stat present = {};
    const bool exists = stat(path_.c_str(), &present) == 0;
    if (!exists && errno != ENOENT)
        throw system_failure(name_, errno);
    if (!exists) {
        open_beside(0);
        return;
    }
    // renaming over a file needs no permission to write to it; replacing its contents should
    fd_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd_ < 0)
        throw system_failure(name_, errno);
    if (S_ISREG(present.st_mode)) {
        close(fd_);
        open_beside(present.st_mode & 0777U);
    }
}

void output_file::open_beside(unsigned mode)
{
    const std::string directory = std::filesystem::path(path_).parent_path() / "";
    const signals_held held;
    catch_ending_signals();
    int n = 0;
    do {
        temp_ = directory + ".zeltrack-" + std::to_string(getpid()) + "-" + std::to_string(n);
        fd_ = open(temp_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (fd_ < 0 && errno == EEXIST && ++n < 1000);
    if (fd_ < 0)
        throw system_failure(name_, errno);
    slot_ = enter(temp_);
    if (mode != 0)
        fchmod(fd_, mode);
}

output_file::~output_file()
{
    if (fd_ > STDERR_FILENO)
        close(fd_);
    const signals_held held;
    if (!temp_.empty())
        unlink(temp_.c_str());
    if (slot_ >= 0)
        to_remove[slot_][0] = '\0';
}

void output_file::flush_if_full()
{
    constexpr std::size_t full = 1U << 16U;
    if (buffer_.size() >= full)
        flush();
}

void output_file::flush()
{
    std::string_view rest = buffer_;
    while (!rest.empty()) {
        const ssize_t written = write(fd_, rest.data(), rest.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throw system_failure(name_, errno);
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    buffer_.clear();
}

void output_file::commit()
{
    flush();
    if (fd_ == STDOUT_FILENO)
        return;
    if (close(std::exchange(fd_, -1)) != 0)
        throw system_failure(name_, errno);
    const signals_held held;
    if (temp_.empty())
        return;
    if (std::rename(temp_.c_str(), path_.c_str()) != 0)
        throw system_failure(name_, errno);
    temp_.clear();
}

void prepare_standard_streams()
{
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    // a file opened as descriptor 1 or 2 would receive what is meant for the user; reading only, so that writing fails
    int fd = 0;
    do
        fd = open("/dev/null", O_RDONLY);
    while (fd >= 0 && fd <= STDERR_FILENO);
    if (fd >= 0)
        close(fd);
}

void refuse_same_file(const std::string& input, const std::string& output)
{
    std::error_code ignored;
    if (input != "-" && std::filesystem::is_regular_file(output, ignored) &&
        std::filesystem::equivalent(input, output, ignored))
        throw failure(printable(output) + ": expected an output other than the input", exit_usage);
}

}  // namespace zeltrack
