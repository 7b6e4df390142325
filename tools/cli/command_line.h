// SPDX-License-Identifier: MIT
//
// This room is what a subcommand shares with its user: the command line (here), numbers as text (number.h), failures
// (failure.h), output files (output_file.h) and the progress bar (progress.h). It knows nothing of tracking.
//
// Every option is bound to a variable, whose value at that time is the default; the help text shows that default and
// the range that is checked. CLI11, which does the rest, takes long to compile: only command_line.cpp includes it.
#pragma once

#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/failure.h"
#include "cli/number.h"

namespace CLI {
class Option;
}

namespace zeltrack {

class command_line;

// What a room offers to main(). `run` declares the options, calls parse() and does the work; it fails by an exception.
struct subcommand {
    const char* name;
    const char* summary;      // one line for `zeltrack --help`
    const char* description;  // above the options
    const char* notes;        // below them: "" or whole lines
    void (*run)(command_line& line);
};

class option {
public:
    explicit option(CLI::Option* it) : it_(it) {}
    void required() const;

private:
    CLI::Option* it_;
};

// Names are "-s,--stable" or "--stable"; without dashes the option is a positional argument. `unit` stands for the
// value in the help text, which is one line, whatever its length.
class command_line {
public:
    // argv[0] is the subcommand's name.
    command_line(const subcommand& chosen, int argc, const char* const* argv);
    ~command_line();
    command_line(const command_line&) = delete;
    command_line& operator=(const command_line&) = delete;

    void flag(const std::string& names, bool& value, const std::string& help);
    option text(const std::string& names, const std::string& unit, std::string& value, const std::string& help);

    // One value each time the option is given; all that follow, up to the next option, if it is positional or so
    // wanted.
    option texts(const std::string& names, const std::string& unit, std::vector<std::string>& values,
                 const std::string& help, bool all_that_follow = false);

    // `unset` is shown in place of a default that says nothing to a user.
    template <typename T>
    option number(const std::string& names, const std::string& unit, T& value, const range<T>& allowed,
                  const std::string& help, const std::string& unset = "")
    {
        const auto read = [&value, allowed](const std::string& found) { return read_number(found, allowed, value); };
        return custom(names, unit, read,
                      with_range(help, allowed, unset.empty() ? ' ' + to_text(value) : ": " + unset));
    }

    // A number, or a word, the default, that stands for the value that the variable has.
    template <typename T>
    option number_or(const std::string& word, const std::string& names, const std::string& unit, T& value,
                     const range<T>& allowed, const std::string& help)
    {
        const auto read = [&value, allowed, word, meant = value](const std::string& found) -> std::string {
            value = meant;
            if (found == word)
                return "";
            const std::string wrong = read_number(found, allowed, value);
            return wrong.empty() ? "" : wrong + "; or " + word;
        };
        return custom(names, unit + '|' + word, read, with_range(help, allowed, ' ' + word));
    }

    // One of a few words, each with what it means.
    template <typename T>
    option choice(const std::string& names, T& value, std::initializer_list<std::pair<std::string, T>> words,
                  const std::string& help)
    {
        std::string all;
        std::string chosen;
        for (const auto& [word, meaning] : words) {
            all += (all.empty() ? "" : "|") + word;
            chosen = meaning == value ? word : chosen;
        }
        const std::vector<std::pair<std::string, T>> table(words);
        const auto read = [&value, table, all](const std::string& found) -> std::string {
            for (const auto& [word, meaning] : table)
                if (found == word) {
                    value = meaning;
                    return "";
                }
            return expected(all, found);
        };
        return custom(names, all, read, help + " (default " + chosen + ")");
    }

    // Whatever else a value can be: `read` takes it, or returns "expected ..., found ...".
    using reader = std::function<std::string(const std::string& found)>;
    option custom(const std::string& names, const std::string& unit, const reader& read, const std::string& help);

    // The same for each time the option is given.
    option several(const std::string& names, const std::string& unit, const reader& read, const std::string& help);

    // --config: options from a file. The command line comes first.
    void config_file();

    // False after --help, which is answered here. What is wrong is a failure with exit_usage.
    [[nodiscard]] bool parse();

    // The whole command, in the form that a shell reads.
    std::string typed() const;

private:
    template <typename T>
    static std::string read_number(const std::string& found, const range<T>& allowed, T& value)
    {
        return parse_number(found, allowed, value) ? "" : expected("a number from " + to_text(allowed), found);
    }

    // "HELP; LOW to HIGH (default VALUE)". All numbers are no range.
    template <typename T>
    static std::string with_range(const std::string& help, const range<T>& allowed, const std::string& value)
    {
        const bool all = static_cast<double>(allowed.high) >= std::numeric_limits<float>::max();
        const std::string shown = all ? "" : "; " + to_text(allowed);
        return help + shown + " (default" + value + ')';
    }

    struct parts;
    std::unique_ptr<parts> parts_;
};

// Text that was asked for, such as a list of commands, on standard output.
void print(const std::string& text);

// Help, with lines of more than 80 characters broken at spaces. What goes on after an indented line begins in the
// column of the descriptions.
std::string filled(const std::string& help);

// The words of a command in the form that a shell reads them.
std::string shell_line(int count, const char* const* words);

}  // namespace zeltrack
