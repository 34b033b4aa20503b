#pragma once

#include "bench/pseudo_terminal.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tnv5::bench {

/// Rate of a line at 9600 baud with one start and one stop bit.
constexpr int kBytesPerSecond = 960;
/// First card of every line; each card line carries the next number.
constexpr int kFirstSerial = 10'000'000;

/// Card lines that a port gets in so many seconds at full rate.
int linesIn(int seconds);

/// A process of its own that plays the equipment on many lines: it writes card lines at full rate to each,
/// in the small pieces in which a serial chip hands them on, and reads away what comes back.
///
/// Create it before anything that does not survive a fork.
class TLineFeeder
{
public:
    /// @throws std::system_error
    TLineFeeder(const std::vector<TPseudoTerminal>& lines, int seconds);
    ~TLineFeeder();
    TLineFeeder(const TLineFeeder&) = delete;
    TLineFeeder& operator=(const TLineFeeder&) = delete;

    void start();

    /// When everything is written: how many bytes found their line full and came late. A real serial chip
    /// would have lost them. Nothing when the feeder has not finished yet.
    std::optional<std::uint64_t> lateBytes() const;

private:
    pid_t FProcess = -1;
    int FStart = -1;
    int FResult = -1;
};

} // namespace tnv5::bench
