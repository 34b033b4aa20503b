#include "apps/tnv5/commands.h"
#include "tnv5/script/reference.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace tnv5::cli {

void addScriptReferenceCommand(CLI::App& app, TCommand& chosen)
{
    CLI::App* command =
        app.add_subcommand("script-reference", "Print what scripts can use, as a page for docs/");
    command->group(""); // for the developers of this module
    command->callback([&chosen] {
        chosen = [] {
            std::fputs(qUtf8Printable(script::scriptReference()), stdout);
            return kDone;
        };
    });
}

} // namespace tnv5::cli
