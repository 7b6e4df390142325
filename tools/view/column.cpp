// SPDX-License-Identifier: MIT
//
// Bytes, and their base64.
#include "view/column.h"

#include <cstddef>

namespace zeltrack {

void column::put(std::uint32_t value)
{
    for (; value >= 0x80; value >>= 7)
        bytes_ += static_cast<char>(0x80 | (value & 0x7f));
    bytes_ += static_cast<char>(value);
}

void column::put_signed(std::int32_t value)
{
    const std::uint32_t doubled = static_cast<std::uint32_t>(value) << 1;
    put(value < 0 ? ~doubled : doubled);
}

std::string column::base64() const
{
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (std::size_t i = 0; i < bytes_.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes_.size() ? static_cast<unsigned char>(bytes_[i + k]) : 0U);
        for (unsigned shift = 24; shift > 0; shift -= 6)
            out += digits[group >> (shift - 6) & 63];
    }
    const std::size_t padding = (3 - bytes_.size() % 3) % 3;
    return out.replace(out.size() - padding, padding, padding, '=');
}

}  // namespace zeltrack
