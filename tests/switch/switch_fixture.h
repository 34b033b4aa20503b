#pragma once

#include "support/answers.h"
#include "support/fixture.h"
#include "support/remote.h"
#include "support/scripted_link.h"
#include "tnv5/switch/switch_device.h"

#include <QPointer>
#include <stdexcept>

namespace tnv5::tests {

using switching::TSwitchDevice;

inline const QString kLink = QStringLiteral("0.0.0.0");
inline const QString kBoard = QStringLiteral("000A");

// The lines of a transcript; besides, the link has `commanded`. A job is board, relay and two states, as in
// "000A!1!ON!OFF".

QString read(const QString& line);
QString loggedSend(const QString& command);
/// A report; its last value, the text, is always empty.
QString report(const QString& name, const QString& job);
/// The sweep comes to a job, and reports it.
QString reached(const QString& job);
QString stack(const QString& job);
QString check(const QString& job, int mode);
/// The host is asked for the wanted state.
QString asked(const QString& job);
QString monitor(const QString& text);

/// One component on a scripted link.
struct TSwitchFixture : TFixture
{
    explicit TSwitchFixture(qint64 startMs = TManualClock::at(12, 0));

    /// Assigns all events.
    void attach();

    /// One routed line, through the connector; nothing when it is gone.
    void inject(const QString& line);

    /// A job in these states, whose time runs until `seconds` from now.
    switching::PRFidInfo makeJob(const QString& job, int seconds = 60);
    /// As it stands in the table: "000A!1!ON!OFF".
    QString jobAt(int index) const;

    void sweep() { device->p_hw_CallStackArray(); }
    /// Stops the timers that ask boards and report silent ones: no lines of theirs in a transcript.
    void quiet() { device->SetConnector(nullptr); }

    void serve() { tests::serve(network, *device, trace, monitor(QString())); }
    void follow() { tests::follow(network, *device, trace, monitor(QString())); }

    testkit::TMemoryNetwork network;
    TAnswers Host;
    std::map<int, QVariant>& Answers = Host.ByMode;
    /// What `OnNewItem` answers; an invalid value leaves the preset.
    QVariant NewStatus;
    std::unique_ptr<TTestLink> link = std::make_unique<TTestLink>(trace);
    std::unique_ptr<TSwitchDevice> device = std::make_unique<TSwitchDevice>();
};

using TSwitchTest = TTestOn<TSwitchFixture>;

} // namespace tnv5::tests
