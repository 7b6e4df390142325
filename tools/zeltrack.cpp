// SPDX-License-Identifier: MIT
//
// The zeltrack command: its subcommands, one for each room that does the work, and the mapping of what goes wrong to a
// line and an exit status.
#include <iostream>
#include <new>

#include "cli/command_line.h"
#include "cli/nearest.h"
#include "cli/output_file.h"
#include "eval/eval.h"
#include "synth/synth.h"
#include "track/track.h"
#include "tune/tune.h"
#include "view/view.h"

namespace zeltrack {

static const subcommand* const commands[] = {&track_command, &eval_command, &tune_command, &view_command,
                                             &synth_command};

static std::string help()
{
    std::string text =
        "Usage: zeltrack COMMAND [OPTIONS]\n"
        "Multi-object tracking by detection.\n"
        "\n"
        "Commands:\n";
    for (const subcommand* it : commands)
        text.append("  ").append(it->name).append(8 - std::string_view(it->name).size(), ' ') +=
            it->summary + std::string("\n");
    return text + "\nzeltrack COMMAND --help says more; zeltrack --version prints the version.\n" + exit_status_help +
           '\n';
}

static std::vector<std::string> names()
{
    std::vector<std::string> all;
    for (const subcommand* it : commands)
        all.emplace_back(it->name);
    return all;
}

static void dispatch(int argc, char** argv)
{
    const std::string name = argc > 1 ? argv[1] : "";
    for (const subcommand* it : commands) {
        if (name != it->name)
            continue;
        command_line line(*it, argc - 1, argv + 1);
        return it->run(line);
    }
    if (name == "-h" || name == "--help")
        print(filled(help()));
    else if (name == "--version")
        print("zeltrack " ZELTRACK_VERSION "\n");
    else
        throw failure(expected("a command", name) + suggestion(name, names()) + " (see zeltrack --help)", exit_usage);
}

}  // namespace zeltrack

int main(int argc, char** argv)
{
    zeltrack::prepare_standard_streams();
    try {
        zeltrack::dispatch(argc, argv);
        return zeltrack::exit_done;
    } catch (const zeltrack::failure& error) {
        std::cerr << "zeltrack: " << error.what() << '\n';
        return error.status;
    } catch (const std::bad_alloc&) {
        std::cerr << "zeltrack: out of memory\n";
    } catch (const std::exception& error) {
        std::cerr << "zeltrack: " << zeltrack::printable(error.what()) << '\n';
    }
    return zeltrack::exit_data;
}
