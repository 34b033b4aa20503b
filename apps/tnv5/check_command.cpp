#include "apps/tnv5/club_run.h"
#include "apps/tnv5/commands.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace tnv5::cli {

void addCheckCommand(CLI::App& app, TCommand& chosen)
{
    const auto file = std::make_shared<std::string>();
    CLI::App* command =
        app.add_subcommand("check", "Check the file that describes a club, without any hardware");
    command->add_option("file", *file, "The file: see docs/club-file.md")->required()->type_name("CLUB.toml");
    command->footer("\nTells every mistake with its line, and ends with 1 when there is any. Touches no "
                    "port, and neither\n"
                    "makes a database nor changes one.");
    command->callback(
        [&chosen, file] { chosen = [file] { return checkClubFile(QString::fromStdString(*file)); }; });
}

} // namespace tnv5::cli
