// SPDX-License-Identifier: MIT
//
// Whole files or none. The paths to remove on a signal lie in a static table, for a handler may touch little else.
#include "cli/output_file.h"

#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <utility>

#include "cli/failure.h"
#include "cli/input_file.h"

namespace zeltrack {

const char no_sync_help[] = "do not wait until the result is on the disk; a power cut may then leave an empty file";

// --- removal on a signal ---------------------------------------------------------------------------------------------

static constexpr int slots = 4;
static char to_remove[slots][PATH_MAX];  // an empty one is free
static constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

static void remove_unfinished()
{
    for (const char* path : to_remove)
        if (path[0] != '\0')
            unlink(path);
}

extern "C" {
static void remove_and_end(int signal_number)
{
    remove_unfinished();
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

// --- out of memory where no handler of main() reaches ----------------------------------------------------------------

// Without an exception there was no memory even for one.
static bool ended_by_memory()
{
    try {
        if (const std::exception_ptr error = std::current_exception())
            std::rethrow_exception(error);
        return true;
    } catch (const std::bad_alloc&) {
        return true;
    } catch (...) {
        return false;
    }
}

[[noreturn]] static void end_uncaught()
{
    remove_unfinished();
    if (!ended_by_memory())
        std::abort();
    static const char line[] = "zeltrack: out of memory\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line, sizeof(line) - 1);
    _exit(exit_data);
}

// Before the static objects of this program and of the libraries in it are made: they allocate.
__attribute__((constructor(101))) static void watch_termination()
{
    std::set_terminate(end_uncaught);
}

// --- the destination -------------------------------------------------------------------------------------------------

// The open descriptor that a path names, such as /dev/fd/3, or -1.
static int named_descriptor(const std::filesystem::path& path)
{
    const std::string name = path.filename().string();
    int fd = -1;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), fd);
    std::error_code ignored;
    const bool number = error == std::errc() && end == name.data() + name.size();
    return number && std::filesystem::equivalent(path.parent_path(), "/proc/self/fd", ignored) ? fd : -1;
}

namespace {

struct destination {
    std::string path;     // where all links lead
    int descriptor = -1;  // that the path names instead
};

}  // namespace

// Follows links as the kernel does, but not through a descriptor to the file that is open there.
static destination destination_of(const std::string& name)
{
    if (name == "-")
        return {"", STDOUT_FILENO};
    std::filesystem::path path = name;
    std::error_code ignored;
    constexpr int most_links = 40;  // as the kernel; a loop of links then fails on opening
    for (int n = 0; n < most_links; ++n) {
        const int fd = named_descriptor(path);
        if (fd >= 0)
            return {"", fd};
        if (!std::filesystem::is_symlink(path, ignored))
            break;
        path = path.parent_path() / std::filesystem::read_symlink(path, ignored);
    }
    return {path.string(), -1};
}

static bool examine(const destination& at, struct stat& found)
{
    return (at.descriptor >= 0 ? fstat(at.descriptor, &found) : stat(at.path.c_str(), &found)) == 0;
}

// Of what is not there yet, the name decides.
static bool same_destination(const std::string& a, const std::string& b)
{
    const destination first = destination_of(a);
    const destination second = destination_of(b);
    struct stat one = {};
    struct stat other = {};
    if (examine(first, one) && examine(second, other))
        return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
    std::error_code ignored;
    const auto place = [&ignored](const destination& at) {
        return std::filesystem::weakly_canonical(std::filesystem::absolute(at.path, ignored), ignored);
    };
    return first.descriptor < 0 && second.descriptor < 0 && place(first) == place(second);
}

// A terminal or an open log may be both; a regular file that is replaced may not.
static bool replaces(const std::string& output, const std::string& input)
{
    const destination at = destination_of(output);
    struct stat found = {};
    return at.descriptor < 0 && examine(at, found) && S_ISREG(found.st_mode) && same_file(input, at.path);
}

void refuse_shared_files(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs)
{
    for (auto output = outputs.begin(); output != outputs.end(); ++output) {
        const auto clashes = [&output](const std::string& other) {
            return !other.empty() && same_destination(*output, other);
        };
        if (output->empty())
            continue;
        for (const std::string& input : inputs)
            if (!input.empty() && replaces(*output, input))
                throw failure(printable(*output) + ": expected an output other than the input", exit_usage);
        if (std::any_of(outputs.begin(), output, clashes))
            throw failure(printable(*output) + ": expected a file for each output", exit_usage);
    }
}

// --- the file --------------------------------------------------------------------------------------------------------

output_file::output_file(const std::string& path, bool sync) : name_(path), sync_(sync)
{
    const destination at = destination_of(path);
    if (path == "-" || at.descriptor == STDOUT_FILENO)
        name_ = "standard output";
    if (at.descriptor >= 0) {
        fd_ = fcntl(at.descriptor, F_DUPFD_CLOEXEC, 0);
        if (fd_ < 0)
            throw system_failure(name_, errno);
        return;
    }
    path_ = at.path;
    struct stat present = {};
    const bool exists = examine(at, present);
    if (!exists && (errno != ENOENT || !open_beside(0)))
        throw system_failure(name_, errno);
    if (!exists)
        return;
    // renaming over a file needs no permission to write to it; replacing its contents should
    fd_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd_ < 0)
        throw system_failure(name_, errno);
    if (S_ISREG(present.st_mode))
        open_present(present.st_mode & 0777U);
}

// Beside the file, or else in place of it by commit(): until then nothing of it is lost.
void output_file::open_present(unsigned mode)
{
    const int present = std::exchange(fd_, -1);
    if (open_beside(mode)) {
        close(present);
        return;
    }
    fd_ = present;
    way_ = way::in_place;
}

// False, with errno, if the folder takes no file.
bool output_file::open_beside(unsigned mode)
{
    const std::string folder = std::filesystem::path(path_).parent_path() / "";
    const signals_held held;
    catch_ending_signals();
    int n = 0;
    do {
        temp_ = folder + ".zeltrack-" + std::to_string(getpid()) + "-" + std::to_string(n);
        fd_ = open(temp_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (fd_ < 0 && errno == EEXIST && ++n < 1000);
    if (fd_ < 0) {
        temp_.clear();
        return false;
    }
    way_ = way::renamed;
    slot_ = enter(temp_);
    if (mode != 0)
        fchmod(fd_, mode);
    return true;
}

output_file::~output_file()
{
    if (fd_ >= 0)
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
    if (buffer_.size() >= full && way_ != way::in_place)
        flush();
}

static void write_all(int fd, std::string_view rest, const std::string& name)
{
    while (!rest.empty()) {
        const ssize_t written = write(fd, rest.data(), rest.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)  // nothing taken and no reason given: trying again might never end
            throw system_failure(name, written < 0 ? errno : EIO);
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

void output_file::flush()
{
    write_all(fd_, buffer_, name_);
    buffer_.clear();
}

void output_file::commit()
{
    if (way_ == way::in_place && ftruncate(fd_, 0) != 0)
        throw system_failure(name_, errno);
    flush();
    if (way_ == way::renamed)
        replace();
    else if (way_ == way::in_place)
        close_synced();
}

void output_file::close_synced()
{
    if (sync_ && fsync(fd_) != 0)
        throw system_failure(name_, errno);
    if (close(std::exchange(fd_, -1)) != 0)
        throw system_failure(name_, errno);
}

void output_file::replace()
{
    if (sync_ && fsync(fd_) != 0)
        throw system_failure(name_, errno);
    const signals_held held;
    if (std::rename(temp_.c_str(), path_.c_str()) != 0) {
        if (errno != EBUSY)
            throw system_failure(name_, errno);
        copy_in_place();  // the file is a mount point
        return;
    }
    temp_.clear();
    if (close(std::exchange(fd_, -1)) != 0)
        throw system_failure(name_, errno);
    if (!sync_)
        return;
    const std::filesystem::path folder = std::filesystem::path(path_).parent_path();
    fd_ = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd_ >= 0)  // a folder that may not be listed can only be left to the system
        close_synced();
}

void output_file::copy_in_place()
{
    const int from = std::exchange(fd_, open(path_.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
    bool complete = fd_ >= 0 && lseek(from, 0, SEEK_SET) == 0;
    char block[1 << 14];
    ssize_t got = 0;
    while (complete && (got = read(from, block, sizeof(block))) > 0)
        write_all(fd_, {block, static_cast<std::size_t>(got)}, name_);
    const int error = errno;
    close(from);
    if (!complete || got < 0)
        throw system_failure(name_, error);
    close_synced();
}

void prepare_standard_streams()
{
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    // A file that is opened as descriptor 0, 1 or 2 would be taken for a stream of the user's. What stands in for a
    // closed one is opened the wrong way round, so that using it is an error.
    for (int fd = 0; fd <= STDERR_FILENO; ++fd)
        if (fcntl(fd, F_GETFD) < 0)
            open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

}  // namespace zeltrack
