#pragma once

#include <QObject>
#include <functional>

class QSocketNotifier;

namespace tnv5::cli {

/// Turns Ctrl-C and SIGTERM into a call on the main thread while it lives. The first one is a wish to stop;
/// a second one ends the program at once, whatever it is doing.
class TStopSignal final : public QObject
{
    Q_OBJECT

public:
    /// @throws platform::Exception when the system refuses.
    explicit TStopSignal(std::function<void()> onStop);
    ~TStopSignal() override;

    bool received() const { return FReceived; }

private:
    void onSignal();

    std::function<void()> FOnStop;
    int FDescriptor;
    QSocketNotifier* FNotifier = nullptr;
    bool FReceived = false;
};

/// Turns SIGHUP, a closed terminal or a wish to read the settings anew, into a call on the main thread while
/// it lives.
class THangUp final : public QObject
{
    Q_OBJECT

public:
    /// @throws platform::Exception when the system refuses.
    explicit THangUp(std::function<void()> onHangUp);
    ~THangUp() override;

private:
    void onSignal();

    std::function<void()> FOnHangUp;
    int FDescriptor;
};

/// SIGINT, SIGTERM and SIGHUP wait from now on until somebody takes them: `TStopSignal` and `THangUp`, which
/// may come later. To be called before anything that must not be left half done.
void holdSignals();

/// Writing to a pipe that nobody reads, or to a file that may not grow, fails from now on, instead of ending
/// the program.
void failInsteadOfEnding();

/// Standard input, output and error that the program was started without become /dev/null, so that no file
/// that is opened later takes their place and gets what is printed.
void fillStandardStreams();

} // namespace tnv5::cli
