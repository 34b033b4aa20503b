#pragma once

#include "tools/line_cutter.h"

#include <CLI/CLI.hpp>
#include <string>

namespace tnv5::cli {

/// Adds "--as bus|turnstile" to a command; `protocol` must live as long as the command.
inline void addProtocolOption(CLI::App& command, tools::TProtocol& protocol)
{
    const auto set = [&protocol](const std::string& name) {
        protocol = name == "bus" ? tools::TProtocol::Bus : tools::TProtocol::Turnstile;
    };
    command
        .add_option_function<std::string>("--as", set,
                                          "What is spoken: bus (boards) or turnstile (classic controllers)")
        ->required()
        ->type_name("PROTOCOL")
        ->check(CLI::IsMember({"bus", "turnstile"}).description(""));
}

} // namespace tnv5::cli
