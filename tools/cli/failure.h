// SPDX-License-Identifier: MIT
//
// What ends a command early: one line for the user and the exit status. Only main() catches it.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace zeltrack {

enum exit_status { exit_done = 0, exit_data = 1, exit_usage = 2 };

// The last line of every help text.
extern const char exit_status_help[];

class failure : public std::runtime_error {
public:
    explicit failure(const std::string& text, exit_status code = exit_data) : std::runtime_error(text), status(code) {}

    exit_status status;
};

// "NAME: reason", with the reason of an errno value.
failure system_failure(const std::string& name, int error);

// Text of foreign origin, fit for one line of a terminal: control characters, marks that turn the direction of writing
// and bytes that are no UTF-8 become \xNN.
std::string printable(std::string_view text);

// The same in quotes, for data: cut short, and with everything beyond ASCII escaped, since it need not be UTF-8.
std::string excerpt(std::string_view text);

// "expected WHAT, found EXCERPT"
std::string expected(const std::string& what, std::string_view found);

}  // namespace zeltrack
