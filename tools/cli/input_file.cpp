// SPDX-License-Identifier: MIT
//
// Reading by read(2): the standard input of the C++ library takes an error for an end of file.
#include "cli/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "cli/failure.h"

namespace zeltrack {

static int open_input(const std::string& path)
{
    if (path == "-")
        return STDIN_FILENO;
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        throw system_failure(path, errno);
    return fd;
}

input_file::input_file(const std::string& path)
    : name_(path == "-" ? "standard input" : printable(path)), buffer_(open_input(path), name_), stream_(&buffer_)
{
    stream_.exceptions(std::ios::badbit);  // hands on what underflow() throws
}

input_file::descriptor::~descriptor()
{
    if (fd_ > STDERR_FILENO)
        close(fd_);
}

std::streambuf::int_type input_file::descriptor::underflow()
{
    ssize_t got = 0;
    do
        got = read(fd_, buffer_, sizeof(buffer_));
    while (got < 0 && errno == EINTR);
    if (got < 0)
        throw system_failure(name_, errno);
    setg(buffer_, buffer_, buffer_ + got);
    return got == 0 ? traits_type::eof() : traits_type::to_int_type(buffer_[0]);
}

bool same_file(const std::string& input, const std::string& path)
{
    struct stat a = {};
    struct stat b = {};
    const bool known = input == "-" ? fstat(STDIN_FILENO, &a) == 0 : stat(input.c_str(), &a) == 0;
    return known && stat(path.c_str(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace zeltrack
