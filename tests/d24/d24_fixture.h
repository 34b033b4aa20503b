#pragma once

#include "support/answers.h"
#include "support/fixture.h"
#include "support/remote.h"
#include "support/scripted_link.h"
#include "tnv5/d24/d24_device.h"

#include <QPointer>
#include <stdexcept>

namespace tnv5::tests {

using d24::TTurnStylerDeviceD24;

// The controllers of the tests: address of the link, controller and type, as reports show them.

inline const QString kT = QStringLiteral("10.0.0.5!001T!T");
inline const QString kG = QStringLiteral("10.0.0.5!002G!G");
inline const QString kI = QStringLiteral("10.0.0.5!003I!I");

// The lines of a transcript; besides, the link has `commanded`.

QString read(const QString& line);
/// The line in the log that a command leaves.
QString loggedSend(const QString& command);
/// A report with one state, which is given twice.
QString report(const QString& name, const QString& who, const QString& card, const QString& status);
QString come(const QString& who, const QString& card, const QString& status);
/// The report of a state line.
QString heard(const QString& who, const QString& text);
QString looked(const QString& who, const QString& card, const QString& result);
QString stack(const QString& who, const QString& card, const QString& status);
/// A report about a controller as such: a ping, a crossing.
QString noted(const QString& who, const QString& status);
QString check(const QString& who, const QString& card, const QString& status, int mode);
QString monitor(const QString& text);
/// What the monitor gets for a line "status ..." of the transcript.
QString echoOf(const QString& statusLine);

inline const QString kButtonCard = QStringLiteral("-2-2-2-2-2");
inline const QString kManualCard = QStringLiteral("-1-1-1-1-1");
inline const QString kPortClosed = QStringLiteral("error [04] Порт не открыт или не назначен");

/// One component on a scripted link.
struct TD24Fixture : TFixture
{
    TD24Fixture();

    /// Assigns all events.
    void attach();

    /// One routed line, through the connector; nothing when it is gone.
    void inject(const QString& line);

    /// A pass in the table without a line; the stack timer stays as it is. `who` as in reports.
    d24::PRFidInfo makePass(const QString& who, const QString& card, const QString& status = "NEW");

    /// Starts the stack timer, so that a line runs no pass at once; the table is empty afterwards.
    void startTicks();

    /// One pass over the table by a direct call.
    void runPass() { gate->p_hw_CallStackArray(); }

    QString statusOf(int index) const;

    /// The component is a server with one client, or a client; what goes to the other side is "monitor".
    void serve() { tests::serve(network, *gate, trace, monitor(QString())); }
    void follow() { tests::follow(network, *gate, trace, monitor(QString())); }

    testkit::TMemoryNetwork network;
    TAnswers Host;
    std::map<int, QVariant>& Answers = Host.ByMode;
    QVariant& Message = Host.Message;
    std::unique_ptr<TTestLink> link = std::make_unique<TTestLink>(trace);
    std::unique_ptr<TTurnStylerDeviceD24> gate = std::make_unique<TTurnStylerDeviceD24>();
};

using TD24Test = TTestOn<TD24Fixture>;

} // namespace tnv5::tests
