// SPDX-License-Identifier: MIT
//
// The texts of errors. File names keep their bytes beyond ASCII, found data does not.
#include "cli/failure.h"

#include <system_error>

namespace zeltrack {

const char exit_status_help[] =
    "Exit status: 0 done, 1 input that cannot be read or output that cannot be written, 2 wrong usage.";

static std::string escaped(std::string_view text, unsigned first_refused)
{
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f && byte < first_refused)
            out += c;
        else
            out.append("\\x").append({digits[byte >> 4], digits[byte & 15]});
    }
    return out;
}

std::string printable(std::string_view text)
{
    return escaped(text, 0x100);
}

std::string excerpt(std::string_view text)
{
    constexpr std::size_t shown = 40;
    return '"' + escaped(text.substr(0, shown), 0x80) + (text.size() > shown ? "...\"" : "\"");
}

std::string expected(const std::string& what, std::string_view found)
{
    return "expected " + what + ", found " + excerpt(found);
}

failure system_failure(const std::string& name, int error)
{
    return failure(printable(name) + ": " + std::generic_category().message(error));
}

}  // namespace zeltrack
