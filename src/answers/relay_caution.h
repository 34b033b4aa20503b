#pragma once

#include <QString>

namespace tnv5::answers {

/// When a relay must not be commanded.
///
/// The same command switches on and off, and a board's answer may be older than the last command. So none is
/// given for `kSettleLooks` looks after a board reported a change by itself, and the same one is not repeated
/// for as long: an answer that comes late cannot switch on what has just gone off.
class TRelayCaution
{
public:
    static constexpr int kLookMs = 250;     ///< between two looks
    static constexpr int kSettleLooks = 16; ///< boards tell their relays every 2 s, up to 2 s late

    /// The wanted state that the component has for the relay now, as "ON" or "OFF". One that is not the one
    /// left behind comes from the board itself ("SS"), which is quicker than its answers about the state of
    /// its relays.
    void seen(const QString& status);
    /// The wanted state that the component will have.
    void leave(const QString& status) { FStatus = status; }
    /// The state that the component takes the relay to be in may be wrong.
    void doubt() { FDoubt = kSettleLooks; }

    /// Whether a command could do the opposite of what it should. @param command `cmSwitchOn` or
    /// `cmSwitchOff`
    bool unsure(int command) const;
    /// The command has been permitted.
    void commanded(int command);

    /// Counted, not timed: while the program itself stands still, no answer comes in either.
    void tick();

private:
    QString FStatus; // wanted state that was left in the job; empty: none yet
    int FDoubt = 0;  // looks to wait: the board reported a change by itself
    int FCommand = -1;
    int FSettling = 0; // looks to wait until it may be repeated
};

} // namespace tnv5::answers
