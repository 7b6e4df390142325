// SPDX-License-Identifier: MIT
//
// Objects of JSON, put together member by member. Every string is safe within a script element of HTML, too.
#pragma once

#include <string>
#include <string_view>

#include "cli/number.h"
#include "view/column.h"

namespace zeltrack {

// In quotes.
std::string json_string(std::string_view text);

class json {
public:
    void text(std::string_view name, std::string_view value) { raw(name, json_string(value)); }

    template <typename T>
    void number(std::string_view name, T value)
    {
        raw(name, to_text(value));
    }

    void data(std::string_view name, const column& value) { raw(name, '"' + value.base64() + '"'); }

    void raw(std::string_view name, std::string_view value)
    {
        out_.append(out_.empty() ? "{" : ",\n").append(json_string(name)).append(":").append(value);
    }

    std::string finish() { return out_ + "}"; }

private:
    std::string out_;
};

}  // namespace zeltrack
