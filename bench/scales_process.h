#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace tnv5::bench {

constexpr int kFamilies = 8;

/// A process of its own that plays eight scales, one of each family, each on a pseudo-terminal and at the
/// speed of its line, so that packets come in pieces. The same weight lies on all of them all the time.
///
/// Create it before anything that does not survive a fork.
class TScalesProcess
{
public:
    /// @throws std::system_error; std::runtime_error when the other process has no pseudo-terminals.
    explicit TScalesProcess(int weight);
    ~TScalesProcess();
    TScalesProcess(const TScalesProcess&) = delete;
    TScalesProcess& operator=(const TScalesProcess&) = delete;

    /// Ports to open, that of family 1 first.
    const std::vector<std::string>& ports() const { return FPorts; }

    /// Off: no scale says anything, those that talk by themselves included. On at first.
    void setSpeaking(bool speaking);

private:
    pid_t FProcess = -1;
    int FCommands = -1;
    std::vector<std::string> FPorts;
};

} // namespace tnv5::bench
