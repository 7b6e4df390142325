// SPDX-License-Identifier: MIT
//
// Strings of JSON.
#include "view/json.h"

namespace zeltrack {

std::string json_string(std::string_view text)
{
    static const char digits[] = "0123456789abcdef";
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        // "</script>" and "<!--" would end or change the element
        if (byte < 0x20 || byte == 0x7f || c == '"' || c == '\\' || c == '<')
            out.append("\\u00").append({digits[byte >> 4], digits[byte & 15]});
        else
            out += c;
    }
    return out += '"';
}

}  // namespace zeltrack
