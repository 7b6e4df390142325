// SPDX-License-Identifier: MIT
//
// A result on its way out: a file appears whole or not at all. It is written beside its place as ".zeltrack-PID-N" and
// renamed by commit(), which returns when both file and folder are on the disk. A failure before that, or a signal that
// ends the process and can be caught, removes what was written.
//
// Written to directly are: standard output ("-") and every path that names an open descriptor (/dev/stdout, /dev/fd/N),
// which keep their place in what they lead to; and what is no regular file (/dev/null, a named pipe). A file whose
// folder takes no new file, or that is a mount point, is written in place, by commit() alone.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zeltrack {

class output_file {
public:
    // Without sync, commit() leaves the writing to the system: a power cut may then leave an empty file.
    explicit output_file(const std::string& path, bool sync = true);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    // To be called from time to time by what fills buffer().
    std::string& buffer() { return buffer_; }
    void flush_if_full();

    void commit();

private:
    enum class way { direct, renamed, in_place };

    bool open_beside(unsigned mode);
    void open_present(unsigned mode);
    void flush();
    void replace();
    void copy_in_place();
    void close_synced();

    std::string name_;  // for messages
    std::string path_;  // where all symbolic links lead, so that a link stays one
    std::string temp_;  // empty unless there is one
    std::string buffer_;
    way way_ = way::direct;
    bool sync_;
    int fd_ = -1;
    int slot_ = -1;
};

// Of the option --no-sync.
extern const char no_sync_help[];

// Refuses an output that is one of the inputs or another output, whatever the names: "-" is standard input or output,
// an empty name is none.
void refuse_shared_files(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs);

// Once, before anything is opened: a closed pipe and a limit on file sizes become errors of writing, and descriptors 0
// to 2 are in use.
void prepare_standard_streams();

}  // namespace zeltrack
