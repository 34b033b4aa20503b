#pragma once

#include <string>

namespace tnv5::bench {

/// A pseudo-terminal pair in raw mode: the equipment's end is a descriptor, the port's end a path to open.
///
/// The port's end is also held open here, so that its settings stay and nothing is lost before the other
/// program opens it.
class TPseudoTerminal
{
public:
    /// @throws std::system_error
    TPseudoTerminal();
    ~TPseudoTerminal();
    TPseudoTerminal(TPseudoTerminal&& other) noexcept;
    TPseudoTerminal& operator=(TPseudoTerminal&&) = delete;
    TPseudoTerminal(const TPseudoTerminal&) = delete;
    TPseudoTerminal& operator=(const TPseudoTerminal&) = delete;

    /// The equipment's end; reads and writes do not block.
    int descriptor() const { return FMaster; }
    const std::string& portPath() const { return FPath; }

private:
    int FMaster = -1;
    int FSlave = -1;
    std::string FPath;
};

} // namespace tnv5::bench
