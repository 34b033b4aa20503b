#pragma once

#include <algorithm>
#include <utility>

namespace tnv5::tools {

/// How long to wait before the next attempt: a second at first, then twice as long each time, half a minute
/// at most.
class TBackOff
{
public:
    static constexpr int kFirstMs = 1'000;
    static constexpr int kLongestMs = 30'000;

    /// Milliseconds before the attempt that comes now.
    int next() { return std::exchange(FNextMs, std::min(2 * FNextMs, kLongestMs)); }
    /// It worked.
    void reset() { FNextMs = kFirstMs; }

private:
    int FNextMs = kFirstMs;
};

} // namespace tnv5::tools
