// SPDX-License-Identifier: MIT
//
// The options of CLI11, which converts nothing here: every value is text until a reader of our own takes it.
#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstring>
#include <iostream>
#include <sstream>

#include "cli/input_file.h"
#include "cli/nearest.h"

namespace zeltrack {

static constexpr std::size_t longest_message = 200;  // an argument may have any length
static constexpr std::size_t help_width = 80;
static constexpr std::size_t description_column = 24;

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
    parts_->app.get_formatter()->column_width(description_column);
    parts_->app.footer(std::string(chosen.notes) + exit_status_help);
}

command_line::~command_line() = default;

// --- declaring -------------------------------------------------------------------------------------------------------

void command_line::flag(const std::string& names, bool& value, const std::string& help)
{
    const auto is_truth_value = [](const std::string& text) {
        bool ignored = false;
        return CLI::detail::lexical_cast(text, ignored) ? "" : expected("true or false", text);
    };
    parts_->app.add_flag(names, value, help)->check(is_truth_value);
}

option command_line::text(const std::string& names, const std::string& unit, std::string& value,
                          const std::string& help)
{
    return option(parts_->app.add_option(names, value, help)->type_name(unit));
}

option command_line::texts(const std::string& names, const std::string& unit, std::vector<std::string>& values,
                           const std::string& help, bool all_that_follow)
{
    const bool many = all_that_follow || names[0] != '-';
    return option(parts_->app.add_option(names, values, help)->type_name(unit)->allow_extra_args(many));
}

option command_line::custom(const std::string& names, const std::string& unit, const reader& read,
                            const std::string& help)
{
    // the check of a value is where it is taken, too: its error then names the option
    return option(parts_->app.add_option(names)->description(help)->type_name(unit)->check(read));
}

option command_line::several(const std::string& names, const std::string& unit, const reader& read,
                             const std::string& help)
{
    CLI::Option* const many = parts_->app.add_option(names)->description(help)->type_name(unit);
    return option(many->expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args(false)->check(read));
}

// Those that a file may have as well; the others end the program or read such a file.
static bool is_for_files(const CLI::Option* it, const CLI::App& app)
{
    return it != app.get_help_ptr() && it != app.get_config_ptr();
}

// The long names of all options that are taken, each after the dashes.
template <typename F>
static std::vector<std::string> option_names(const CLI::App& app, const std::string& dashes, F is_taken)
{
    std::vector<std::string> names;
    for (const CLI::Option* it : app.get_options())
        for (const std::string& name : it->get_lnames())
            if (is_taken(it))
                names.push_back(dashes + name);
    return names;
}

// What is wrong with an option, in our words where CLI11's are not a sentence.
static std::string plain_message(const CLI::Error& error)
{
    std::string text = printable(std::string_view(error.what()).substr(0, longest_message));
    const std::string name = text.substr(0, text.find(':'));
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) && name != text)
        return name + (text.find("missing") == std::string::npos ? ": given more than once" : ": expected a value");
    return text;
}

// --- options from a file ---------------------------------------------------------------------------------------------

namespace {

// Plain lines in place of CLI11's nested sections, which take memory without bound and know no line numbers. An option
// of the command line comes first.
class plain_config : public CLI::Config {
public:
    explicit plain_config(CLI::App& app) : app_(app) {}

    std::vector<CLI::ConfigItem> from_config(std::istream& input) const override
    {
        const std::string name = printable(app_.get_config_ptr()->as<std::string>());
        std::string text(most + 1, '\0');
        input.read(text.data(), static_cast<std::streamsize>(text.size()));
        if (input.bad())
            throw failure(name + ": reading failed");
        text.resize(static_cast<std::size_t>(input.gcount()));
        if (text.size() > most)
            throw wrong(name, "expected a file of at most " + to_text(most) + " bytes");
        const std::vector<CLI::Option*> typed = app_.get_options([](CLI::Option* it) { return !it->empty(); });
        std::istringstream lines(text);
        std::string line;
        for (int number = 1; std::getline(lines, line); ++number) {
            const std::string error = take(line.substr(0, line.find('#')), typed);
            if (!error.empty())
                throw wrong(name + ':' + to_text(number), error);
        }
        return {};
    }

    std::string to_config(const CLI::App* /*app*/, bool /*defaults*/, bool /*descriptions*/,
                          std::string /*prefix*/) const override
    {
        return "";
    }

private:
    static constexpr std::size_t most = 1U << 16U;

    failure wrong(const std::string& place, const std::string& error) const
    {
        return failure(place + ": " + error + " (see " + app_.get_name() + " --help)", exit_usage);
    }

    // Returns what is wrong with the line.
    std::string take(const std::string& line, const std::vector<CLI::Option*>& typed) const
    {
        if (CLI::detail::trim_copy(line).empty())
            return "";
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos)
            return expected("NAME = VALUE", line);
        const std::string name = CLI::detail::trim_copy(line.substr(0, equals));
        std::string value = CLI::detail::trim_copy(line.substr(equals + 1));
        CLI::detail::remove_quotes(value);
        CLI::Option* option = app_.get_option_no_throw("--" + name);
        if (!option)
            option = app_.get_option_no_throw(name);
        const auto taken = [this](const CLI::Option* it) { return is_for_files(it, app_); };
        if (!option || !taken(option))
            return expected("the name of an option", name) + suggestion(name, option_names(app_, "", taken));
        return std::find(typed.begin(), typed.end(), option) == typed.end() ? set(*option, value) : "";
    }

    static std::string set(CLI::Option& option, const std::string& value)
    {
        try {
            const bool flag = option.get_expected_min() == 0;
            option.add_result(flag ? option.get_flag_value(option.get_single_name(), value) : value);
            option.run_callback();
        } catch (const CLI::Error& error) {
            return plain_message(error);
        }
        return "";
    }

    CLI::App& app_;
};

}  // namespace

void command_line::config_file()
{
    CLI::App& app = parts_->app;
    app.set_config("--config", "", "read options from a file, a line NAME = VALUE for each")->type_name("FILE");
    app.config_formatter(std::make_shared<plain_config>(app));
}

// --- parsing ---------------------------------------------------------------------------------------------------------

// What CLI11 found wrong. An unknown option comes first: it may have left its value where another argument was
// expected.
static std::string message_of(const CLI::Error& error, const CLI::App& app)
{
    for (const std::string& word : app.remaining()) {
        const std::string name = word.substr(0, word.find('='));
        if (name.size() > 1 && name[0] == '-')
            return "expected an option, found " + excerpt(name) +
                   suggestion(name, option_names(app, "--", [](const CLI::Option*) { return true; }));
    }
    return plain_message(error);
}

bool command_line::parse()
{
    try {
        parts_->app.parse(parts_->argc, parts_->argv);
        return true;
    } catch (const CLI::CallForHelp&) {
        print(filled(parts_->app.help()));
        return false;
    } catch (const CLI::FileError&) {
        const input_file unreadable(parts_->app.get_config_ptr()->as<std::string>());  // says why it is
        throw failure(unreadable.name() + ": expected a file");
    } catch (const CLI::Error& error) {
        throw failure(message_of(error, parts_->app) + " (see zeltrack " + parts_->name + " --help)", exit_usage);
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

std::string filled(const std::string& help)
{
    std::istringstream lines(help);
    std::string result;
    for (std::string line; std::getline(lines, line);) {
        const std::string indent(line[0] == ' ' ? description_column : 0, ' ');
        while (line.size() > help_width) {
            const std::size_t space = line.rfind(' ', help_width);
            if (space == std::string::npos || space <= indent.size())
                break;
            result.append(line, 0, space) += '\n';
            line.replace(0, space + 1, indent);
        }
        result += line + '\n';
    }
    return result;
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
