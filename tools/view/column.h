// SPDX-License-Identifier: MIT
//
// Whole numbers for the page, as text: seven bits a byte, the least first, in base64. Most numbers of a recording are
// small, and take one byte.
#pragma once

#include <cstdint>
#include <string>

namespace zeltrack {

class column {
public:
    void put(std::uint32_t value);

    // The sign in the lowest bit, so that small numbers of both signs are short.
    void put_signed(std::int32_t value);

    std::string base64() const;

private:
    std::string bytes_;
};

}  // namespace zeltrack
