#pragma once

#include "support/answers.h"
#include "support/fixture.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QPointer>
#include <optional>
#include <stdexcept>

namespace tnv5::tests {

/// The component with its remote side in the test's hand.
class TTestGate : public turnstile::TTurnStylerDevice
{
public:
    using TTurnStylerDevice::TTurnStylerDevice;

    std::function<void(const QString& message)> OnEcho;
    std::function<void(const QString& line)> OnForward;
    std::optional<bool> Ready; ///< answer of `Connected`; unset: the component's own
    int ConnectedCalls = 0;

    bool Connected() override
    {
        ++ConnectedCalls;
        return Ready ? *Ready : TTurnStylerDevice::Connected();
    }

    void ServerEcho(const QString& AMess) override
    {
        if (RemoutDevice() == turnstile::podServer && OnEcho) {
            OnEcho(AMess);
        }
    }

protected:
    void ForwardLine(const QString& AMess) override
    {
        if (OnForward) {
            OnForward(AMess);
        }
    }
};

// The lines of a transcript; besides, the remote side has "echo" and "forward".

QString read(const QString& line);
/// The line in the log that a command leaves, which is without its checksum.
QString loggedSend(const QString& command);
QString come(const QString& device, const QString& card, const QString& status);
/// A report of a "#" line.
QString heard(const QString& device, const QString& text);
QString looked(const QString& device, const QString& card, const QString& result);
QString stack(const QString& device, const QString& card, const QString& status);
QString check(const QString& device, const QString& card, const QString& status, int mode);

inline const QString kButtonCard = QStringLiteral("-2-2-2-2-2");
inline const QString kManualCard = QStringLiteral("-1-1-1-1-1");
inline const QString kPortClosed = QStringLiteral("error [04] Порт не открыт или не назначен");

/// One component on the port; 01A, 01D and 02A are listed.
struct TTurnstileFixture : TPortFixture
{
    TTurnstileFixture();

    /// Assigns all events.
    void attach();

    /// A pass in the table without a line; the stack timer stays as it is.
    turnstile::PRFidInfo makePass(const QString& device, const QString& card, const QString& status = "NEW");

    /// A card that was let in and acknowledged; nothing of it is left in the trace.
    turnstile::PRFidInfo openPass(const QString& device);

    QString statusOf(int index) const;

    TAnswers Host;
    std::map<int, QVariant>& Answers = Host.ByMode;
    std::unique_ptr<TTestGate> gate = std::make_unique<TTestGate>();
};

using TTurnstileTest = TTestOn<TTurnstileFixture>;

} // namespace tnv5::tests
