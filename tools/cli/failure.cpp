// SPDX-License-Identifier: MIT
//
// The texts of errors. File names keep their bytes beyond ASCII, excerpts of data do not.
#include "cli/failure.h"

#include <algorithm>
#include <cstdint>
#include <system_error>

namespace zeltrack {

const char exit_status_help[] =
    "Exit status: 0 done, 1 input that cannot be read or output that cannot be written, 2 wrong usage.";

static void append_escaped(std::string& out, std::string_view bytes)
{
    static const char digits[] = "0123456789abcdef";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out.append("\\x").append({digits[byte >> 4], digits[byte & 15]});
    }
}

static bool is_plain_ascii(char c)
{
    return c >= 0x20 && c < 0x7f;
}

// Bytes of a UTF-8 character by the first of them; 0 for one that begins none.
static std::size_t length_of(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xc2 || lead >= 0xf5)
        return 0;
    return lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
}

// Bytes of the well-formed UTF-8 character that text begins with, and its code; 0 if there is none.
static std::size_t decode(std::string_view text, std::uint32_t& code)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = length_of(lead);
    if (length == 0 || text.size() < length)
        return 0;
    code = length == 1 ? lead : lead & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xc0) != 0x80)
            return 0;
        code = code << 6 | (byte & 0x3f);
    }
    static constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code < 0xe000;
    return code >= least[length] && code <= 0x10ffff && !surrogate ? length : 0;
}

// What a terminal takes as a command, or what changes the order in which a line is read.
static bool misleads(std::uint32_t code)
{
    const bool control = code < 0x20 || (code >= 0x7f && code < 0xa0);
    const bool direction = code == 0x61c || code == 0x200e || code == 0x200f || (code >= 0x202a && code <= 0x202e) ||
                           (code >= 0x2066 && code <= 0x2069);
    return control || direction || code == 0x2028 || code == 0x2029;
}

std::string printable(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        std::uint32_t code = 0;
        const std::size_t length = decode(text, code);
        if (length > 0 && !misleads(code))
            out += text.substr(0, length);
        else
            append_escaped(out, text.substr(0, std::max<std::size_t>(length, 1)));
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

std::string excerpt(std::string_view text)
{
    constexpr std::size_t shown = 40;
    std::string out = "\"";
    for (const char c : text.substr(0, shown)) {
        if (is_plain_ascii(c))
            out += c;
        else
            append_escaped(out, {&c, 1});
    }
    return out + (text.size() > shown ? "...\"" : "\"");
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
