// SPDX-License-Identifier: MIT
//
// The options of CLI11, which converts nothing here: every value is text until a reader of our own takes it.
#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstring>
#include <iostream>

namespace zeltrack {

struct command_line::parts {
    CLI::App app;
    std::string name;
    int argc;
    const char* const* argv;
};

void option::required() const
{
    it_->required();
}

command_line::command_line(const subcommand& chosen, int argc, const char* const* argv)
    : parts_(new parts{CLI::App(chosen.description, std::string("zeltrack ") + chosen.name), chosen.name, argc, argv})
{
    parts_->app.get_formatter()->column_width(24);
    parts_->app.footer(std::string(chosen.notes) + exit_status_help);
}

command_line::~command_line() = default;

// --- declaring -------------------------------------------------------------------------------------------------------

void command_line::flag(const std::string& names, bool& value, const std::string& help)
{
    parts_->app.add_flag(names, value, help);
}

option command_line::text(const std::string& names, const std::string& unit, std::string& value,
                          const std::string& help)
{
    return option(parts_->app.add_option(names, value, help)->type_name(unit));
}

option command_line::texts(const std::string& names, const std::string& unit, std::vector<std::string>& values,
                           const std::string& help)
{
    const bool positional = names[0] != '-';
    return option(parts_->app.add_option(names, values, help)->type_name(unit)->allow_extra_args(positional));
}

option command_line::custom(const std::string& names, const std::string& unit, const reader& read,
                            const std::string& help)
{
    // the check of a value is where it is taken, too: its error then names the option
    return option(parts_->app.add_option(names)->description(help)->type_name(unit)->check(read));
}

void command_line::config_file()
{
    parts_->app.set_config("--config", "", "read options from a file, a line NAME = VALUE for each")->type_name("FILE");
    parts_->app.allow_config_extras(false);
}

// --- parsing ---------------------------------------------------------------------------------------------------------

bool command_line::parse()
{
    try {
        parts_->app.parse(parts_->argc, parts_->argv);
        return true;
    } catch (const CLI::CallForHelp&) {
        print(parts_->app.help());
        return false;
    } catch (const CLI::Error& error) {
        constexpr std::size_t longest = 200;  // a wrong --config file can have lines of any length
        throw failure(printable(std::string_view(error.what()).substr(0, longest)) + " (see zeltrack " + parts_->name +
                          " --help)",
                      exit_usage);
    }
}

std::string command_line::typed() const
{
    return "zeltrack " + shell_line(parts_->argc, parts_->argv);
}

void print(const std::string& text)
{
    std::cout << text << std::flush;
    if (!std::cout)
        throw failure("standard output cannot be written");
}

static bool is_plain(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || std::strchr("%+,-./:=@_", c);
}

std::string shell_line(int count, const char* const* words)
{
    std::string line;
    for (int i = 0; i < count; ++i) {
        const std::string_view word = words[i];
        line += i > 0 ? " " : "";
        if (!word.empty() && std::all_of(word.begin(), word.end(), is_plain)) {
            line += word;
            continue;
        }
        line += '\'';
        for (const char c : word)
            line.append(c == '\'' ? "'\\''" : std::string(1, c));
        line += '\'';
    }
    return line;
}

}  // namespace zeltrack
