// SPDX-License-Identifier: MIT
//
// A file on its way in, or standard input ("-"). An end of file is one that the system reports: an error of reading
// leaves the stream's calls as a failure that names the file.
#pragma once

#include <istream>
#include <streambuf>
#include <string>

namespace zeltrack {

class input_file {
public:
    explicit input_file(const std::string& path);

    std::istream& stream() { return stream_; }

    // For messages, fit for a terminal.
    const std::string& name() const { return name_; }

private:
    class descriptor : public std::streambuf {
    public:
        descriptor(int fd, const std::string& name) : fd_(fd), name_(name) {}
        ~descriptor() override;
        descriptor(const descriptor&) = delete;
        descriptor& operator=(const descriptor&) = delete;

    protected:
        int_type underflow() override;

    private:
        int fd_;
        const std::string& name_;
        char buffer_[1 << 16] = {};
    };

    std::string name_;
    descriptor buffer_;
    std::istream stream_;
};

// True when both name one file: "-" is what is open as standard input.
bool same_file(const std::string& input, const std::string& path);

}  // namespace zeltrack
