// SPDX-License-Identifier: MIT
//
// Numbers for the page in few bytes, and the package of named columns that the page reads.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zeltrack {

// Whole numbers have seven bits in a byte, the least first: most numbers of a recording are small and take one byte.
class column {
public:
    void put(std::uint64_t value);

    // The sign in the lowest bit, so that small numbers of both signs are short.
    void put_signed(std::int64_t value);

    // Four bytes, the least first.
    void put_float(float value);

    const std::string& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

// All values, exactly: as whole numbers of a decimal unit where a file has so few digits, else as their bits; of one
// value only as that value.
column exact_column(const std::vector<float>& values);

// Named numbers, texts and columns, one after the other: name, size and bytes of each.
class package {
public:
    void number(std::string_view name, double value);
    void text(std::string_view name, std::string_view value);
    void data(std::string_view name, const column& value) { text(name, value.bytes()); }

    const std::string& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

void append_base64(std::string& text, std::string_view bytes);

}  // namespace zeltrack
