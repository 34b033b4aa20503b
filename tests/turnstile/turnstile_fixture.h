#pragma once

#include "support/answers.h"
#include "support/fixture.h"
#include "support/remote.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QPointer>
#include <stdexcept>

namespace tnv5::tests {

using turnstile::TTurnStylerDevice;

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

    /// The gate is a server with one client ("echo"), or a client ("forward").
    void serve() { tests::serve(network, *gate, trace); }
    void follow() { tests::follow(network, *gate, trace); }

    testkit::TMemoryNetwork network;
    TAnswers Host;
    std::map<int, QVariant>& Answers = Host.ByMode;
    std::unique_ptr<TTurnStylerDevice> gate = std::make_unique<TTurnStylerDevice>();
};

using TTurnstileTest = TTestOn<TTurnstileFixture>;

} // namespace tnv5::tests
