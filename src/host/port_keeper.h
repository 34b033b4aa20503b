#pragma once

#include "tnv5/platform/com_port.h"
#include "tnv5/platform/timer.h"

namespace tnv5::host {

/// Keeps a port open: opens it, notices when it goes away, and opens it again when it is back.
///
/// Components never do that by themselves. The pauses between tries grow from `kFirstPauseMs` to
/// `kLongestPauseMs`, also for a port that opens and goes away again at once. Changes are told, tries are
/// not. The port's `OnException` is left to others.
class TPortKeeper
{
public:
    static constexpr int kFirstPauseMs = 100;
    static constexpr int kLongestPauseMs = 5'000;
    static constexpr int kWatchMs = 250;    ///< how often an open port is looked at
    static constexpr int kSteadyMs = 2'000; ///< open that long: the pauses start small again

    /// The port must outlive the keeper.
    explicit TPortKeeper(platform::TComPort& port);
    ~TPortKeeper();
    TPortKeeper(const TPortKeeper&) = delete;
    TPortKeeper& operator=(const TPortKeeper&) = delete;

    /// Tries to open the port at once, and keeps it from then on.
    /// @return whether it is open now.
    bool start();
    /// Keeps it no longer; an open port stays open.
    void stop();

    /// Times that a port was opened.
    int openings() const { return FOpenings; }

    /// The system's number of the error for which the port could not be opened last, 0 if none.
    qint64 osError() const { return FOsError; }

    std::function<void()> OnOpened;
    /// The port went away.
    std::function<void(const QString& why)> OnLost;
    /// The port cannot be opened: told once until it has been open, and again when the reason changes.
    std::function<void(const QString& why)> OnCannotOpen;

private:
    void look();
    void tryOpen();
    void cannot(const QString& why, qint64 osError);
    void opened();
    void lost();
    void wait(int ms);

    void hear(platform::TComExceptionKind kind, const QString& message);

    platform::TComPort& FPort;
    QMetaObject::Connection FErrors;
    platform::TTimer FTimer;
    bool FOpen = false;
    int FPauseMs = kFirstPauseMs;
    int FOpenForMs = 0;
    int FOpenings = 0;
    qint64 FOsError = 0;
    QString FWhyNot;  // the last told reason why the port cannot be opened
    QString FWhyLost; // what the system said last about an open port
};

} // namespace tnv5::host
