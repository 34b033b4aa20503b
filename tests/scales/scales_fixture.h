#pragma once

#include "support/bytes.h"
#include "support/fixture.h"
#include "tnv5/scales/scales_device.h"

#include <deque>
#include <stdexcept>

namespace tnv5::tests {

using scales::TScalesDevice;

// The lines of a transcript.

QString weighed(int weight);
/// A packet in the log.
QString got(const QByteArray& packet);
/// A request: its bytes, then its line in the log.
QStringList sent(const QByteArray& bytes);
/// A packet that came in one read.
QStringList received(const QByteArray& packet);

inline const QString kStart = QStringLiteral("log [01] Start read from port ");
inline const QString kStop = QStringLiteral("log [02] Stop read from port ");
inline const QString kNoPort = QStringLiteral("error [1] Com port not found!");
inline const QString kOverload = QStringLiteral("error [2] Scales are overvalue!");
inline const QString kNegative = QStringLiteral("error [3] Weight <0!");
inline const QString kNoAnswer = QStringLiteral("error [4] Scales does not answer!");
inline const QString kResetPort = QStringLiteral("log [07] Reset port COM7");

/// One component on the port, which is named "COM7", with English messages.
struct TScalesFixture : TPortFixture
{
    explicit TScalesFixture(qint64 startMs = TManualClock::at(12, 0));

    /// Assigns all events.
    void attach();

    /// Chooses a family; nothing of it is left in the trace.
    void use(int type);

    /// Asks for the weight without waiting and forgets how.
    void ask();

    /// What happens in each pass of the message loop while the component waits; then 10 ms a pass.
    std::deque<std::function<void()>> Waits;
    int passes = 0;

    /// A step of `Waits`: time passes, then these bytes arrive.
    std::function<void()> arrives(const QByteArray& bytes, qint64 afterMs = 0);

    /// Milliseconds that a blocking weighing takes.
    qint64 timeOfWeighing(int* weight = nullptr);

    std::unique_ptr<TScalesDevice> scales = std::make_unique<TScalesDevice>();

private:
    void wait();
};

using TScalesTest = TTestOn<TScalesFixture>;

} // namespace tnv5::tests
