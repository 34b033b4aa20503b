#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace tnv5::d24::model {

/// Every way that the model can go; scenarios that leave one out prove nothing about it.
inline constexpr auto kBranches = std::to_array<std::string_view>({
    "line: server repeats it",
    "line: client forwards it",
    "line: another first character",
    "line: timer started",
    "line: timer runs already",
    "line: no timer",
    "ET: not in confirmation mode",
    "ET: no pass",
    "ET: pass with check text",
    "ET: confirmed",
    "RQ",
    "PR: no pass",
    "PR: type D",
    "PR: other types",
    "GR: no pass",
    "GR: pass",
    "FK: no pass",
    "FK: pass",
    "short status: unknown",
    "DC",
    "CC",
    "PING: new",
    "PING: known",
    "CROSS: pass pending",
    "CROSS: no alarm",
    "CROSS: alarm",
    "CROSS: alarm sent",
    "CROSS: alarm without connector",
    "BTPH: no pass",
    "BTPH: new pass",
    "BTPH: other pass",
    "state: unknown",
    "update ping: known",
    "update ping: unknown",
    "lookup: found",
    "lookup: made",
    "by card: found",
    "by card: made",
    "status handler raised",
    "send: no connector",
    "send: not connected",
    "send: connector gone",
    "send: refuse G",
    "send: refuse I",
    "send: refuse T with text",
    "send: refuse T without text",
    "send: refuse other",
    "send: allow G",
    "send: allow I",
    "send: allow T with text",
    "send: allow T without text",
    "send: allow other",
    "send: refuse failed",
    "send: allow failed",
    "send: neither allow nor refuse",
    "check: mode 0 without handler",
    "check: mode 0 with handler",
    "check: other modes without handler",
    "check: other modes with handler",
    "check: unknown mode",
    "check: pseudo card",
    "check: type I",
    "check: not a number",
    "pass: busy",
    "pass: resend",
    "pass: record gone",
    "pass: left by exception",
    "pass: unknown status",
    "pass: table empty",
    "NEW: no answer",
    "NEW: refused",
    "NEW: button",
    "NEW: manual",
    "NEW: type I",
    "NEW: allowed",
    "NEW: asked again",
    "OPEN: confirmed",
    "OPEN: not confirmed",
    "OPEN: not confirmed in time",
    "OPEN: no confirmation wanted",
    "OPEN: T waits",
    "OPEN: T times out",
    "OPEN: D waits",
    "OPEN: D times out",
    "OPEN: pseudo card",
    "NOANSWER: kept",
    "NOANSWER: removed",
    "CRC-ERROR: kept",
    "CRC-ERROR: removed",
    "TIMEOUT: kept",
    "TIMEOUT: removed",
    "CLOSE",
    "PROGRESSSTART: in time",
    "PROGRESSSTART: late",
    "PROGRESS: in time",
    "PROGRESS: late",
    "FINISH: not answered",
    "FINISH: removed",
    "silent: reported",
    "silent: heard lately",
    "manual: pending",
    "manual: new",
    "send: connector set",
    "connector: set",
    "connector: cleared",
    "connector: none before",
    "interval: running",
    "interval: stopped",
    "destroyed inside a handler",
});

/// How often each was gone, over all models of the process.
inline std::array<long, kBranches.size()>& branchCounts()
{
    static std::array<long, kBranches.size()> counts{};
    return counts;
}

/// The name of a branch, found when the program is compiled.
struct TBranch
{
    template <std::size_t Size>
    consteval TBranch(const char (&name)[Size]) // NOLINT(google-explicit-constructor)
        : index(std::size_t(std::find(kBranches.begin(), kBranches.end(), std::string_view(name)) -
                            kBranches.begin()))
    {
        if (index == kBranches.size()) {
            throw "no such branch";
        }
    }
    std::size_t index;
};

inline void went(TBranch branch)
{
    ++branchCounts()[branch.index];
}

/// Notes which way a test went, and gives its result.
inline bool either(bool test, TBranch yes, TBranch no)
{
    went(test ? yes : no);
    return test;
}

} // namespace tnv5::d24::model
