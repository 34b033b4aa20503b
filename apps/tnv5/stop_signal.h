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

} // namespace tnv5::cli
