// SPDX-License-Identifier: MIT
//
// A result on its way out: a file appears whole or not at all. It is written beside its place and renamed by commit();
// a failure before that, or SIGINT, SIGTERM or SIGHUP, removes what was written. Standard output ("-") and what is no
// regular file (/dev/null, a named pipe) are written to directly.
#pragma once

#include <string>
#include <string_view>

namespace zeltrack {

class output_file {
public:
    explicit output_file(const std::string& path);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    // Whoever fills buffer() calls flush_if_full() now and then.
    std::string& buffer() { return buffer_; }
    void flush_if_full();

    void commit();

private:
    void open_beside(unsigned mode);
    void flush();

    std::string name_;  // for messages
    std::string path_;  // behind all symbolic links, so that a link stays one
    std::string temp_;  // empty: written to directly
    std::string buffer_;
    int fd_ = -1;
    int slot_ = -1;
};

// The whole input is read before a result is written; still, nobody wants the one replaced by the other.
void refuse_same_file(const std::string& input, const std::string& output);

// Once, before anything is opened: a closed pipe and a limit on file sizes become errors of writing, and descriptors 0
// to 2 are in use.
void prepare_standard_streams();

}  // namespace zeltrack
