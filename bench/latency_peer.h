#pragma once

#include "bench/pseudo_terminal.h"

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tnv5::bench {

/// One program under test: a process that serves the port's end of a pseudo-terminal as a gate.
class TLatencyPeer
{
public:
    /// Starts `command PORT CARDS` with the shell and waits until it prints "ready".
    /// @throws std::runtime_error when it does not within a few seconds.
    TLatencyPeer(std::string name, const std::string& command, const std::string& cardsPath);
    ~TLatencyPeer();
    TLatencyPeer(const TLatencyPeer&) = delete;
    TLatencyPeer& operator=(const TLatencyPeer&) = delete;

    const std::string& name() const { return FName; }

    /// Sends a card line and waits for the answer.
    /// @return time from just before the write of the line to the arrival of the last byte of the answer
    /// @throws std::runtime_error when the answer is wrong or missing
    std::chrono::nanoseconds ask(const std::string& card, const std::string& expected);

    /// Sends lines that need no answer.
    void tell(const std::vector<std::string>& lines);

private:
    void start(const std::string& command, const std::string& cardsPath);
    void awaitReady();
    void send(const std::string& bytes);
    [[noreturn]] void fail(const std::string& what) const;

    std::string FName;
    TPseudoTerminal FLine;
    int FOutput = -1;
    pid_t FProcess = -1;
};

} // namespace tnv5::bench
