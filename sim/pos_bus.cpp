#include "sim/pos_bus.h"

#include "tnv5/platform/automation/dbus_value.h"
#include "tnv5/platform/errors.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFile>
#include <QTimer>
#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace tnv5::sim {

using platform::automation::fromBus;
using platform::automation::toBus;

namespace {

constexpr int kStartMs = 60'000;
constexpr int kCrashed = 3;

const QString kConfiguration = QStringLiteral("<busconfig>\n"
                                              "  <type>session</type>\n"
                                              "  <listen>unix:dir=%1</listen>\n"
                                              "  <policy context=\"default\">\n"
                                              "    <allow send_destination=\"*\"/>\n"
                                              "    <allow receive_sender=\"*\"/>\n"
                                              "    <allow own=\"*\"/>\n"
                                              "  </policy>\n"
                                              "</busconfig>\n");

} // namespace

TPosOnBus::TPosOnBus(const QString& address, int type, const TPosScenario& scenario)
    : FBusName(QStringLiteral("tnv5-pos-%1").arg(quintptr(this))),
      FName(posBusName(type)),
      FPos(makeSimulatedPos(type, scenario))
{
    QDBusConnection bus = QDBusConnection::connectToBus(address, FBusName);
    const QString path = platform::automation::pathOf(FName);
    if (!bus.isConnected() || !bus.registerVirtualObject(path, this) || !bus.registerService(FName)) {
        throw platform::Exception(QStringLiteral("%1: %2").arg(FName, bus.lastError().message()));
    }
}

TPosOnBus::~TPosOnBus()
{
    QDBusConnection::disconnectFromBus(FBusName);
}

QString TPosOnBus::introspect(const QString&) const
{
    return {};
}

bool TPosOnBus::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    if (message.interface() == u"org.freedesktop.DBus.Properties") {
        return handleProperty(message, connection);
    }
    if (message.interface() != FName) {
        return false;
    }
    const TPosReply reply = FPos->call(message.member(), message.arguments());
    for (const TPosReply::TEvent& event : reply.events) {
        QTimer::singleShot(event.afterMs, this, [this, event] { send(event); });
    }
    message.setDelayedReply(true);
    if (reply.afterMs == 0) {
        answer(message, reply);
    } else {
        QTimer::singleShot(reply.afterMs, this, [this, message, reply] { answer(message, reply); });
    }
    return true;
}

bool TPosOnBus::handleProperty(const QDBusMessage& message, const QDBusConnection& connection)
{
    const QVariantList arguments = message.arguments();
    const QString name = arguments.value(1).toString();
    const auto found = FPos->properties.find(name);
    if (found == FPos->properties.end()) {
        connection.send(message.createErrorReply(QDBusError::UnknownProperty,
                                                 QStringLiteral("no property \"%1\"").arg(name)));
    } else if (message.member() == u"Get") {
        connection.send(message.createReply(QVariant::fromValue(QDBusVariant(toBus(found->second)))));
    } else {
        found->second = fromBus(arguments.value(2));
        connection.send(message.createReply());
    }
    return true;
}

void TPosOnBus::answer(const QDBusMessage& message, const TPosReply& reply)
{
    QDBusConnection bus(FBusName);
    if (reply.end == TPosEnd::Crash) {
        _exit(kCrashed);
    }
    if (reply.end == TPosEnd::Hang) {
        return;
    }
    if (!reply.error.isEmpty()) {
        bus.send(message.createErrorReply(QDBusError::UnknownMethod, reply.error));
        return;
    }
    QVariantList values;
    if (!reply.result.isEmpty() || !reply.outs.empty()) {
        values << toBus(reply.result);
    }
    for (const auto& out : reply.outs) {
        values << toBus(out);
    }
    bus.send(message.createReply(values));
}

void TPosOnBus::send(const TPosReply::TEvent& event)
{
    QDBusMessage signal = QDBusMessage::createSignal(platform::automation::pathOf(FName), FName, event.name);
    signal << toBus(event.value);
    QDBusConnection(FBusName).send(signal);
}

void endWithUs(QProcess& program)
{
    program.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

TPrivateBus::TPrivateBus()
{
    const QString configuration = FFolder.filePath(QStringLiteral("bus.conf"));
    QFile file(configuration);
    file.open(QIODevice::WriteOnly);
    file.write(kConfiguration.arg(FFolder.path()).toUtf8());
    file.close();
    endWithUs(FDaemon);
    FDaemon.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--config-file=") + configuration, QStringLiteral("--nofork"),
                   QStringLiteral("--nopidfile"), QStringLiteral("--print-address")});
    while (FDaemon.state() != QProcess::NotRunning && !FDaemon.canReadLine() &&
           FDaemon.waitForReadyRead(kStartMs)) {
    }
    FAddress = QString::fromUtf8(FDaemon.readLine()).trimmed();
    if (FAddress.isEmpty()) {
        throw platform::Exception(QStringLiteral("dbus-daemon does not start: ") + FDaemon.errorString());
    }
}

TPrivateBus::~TPrivateBus()
{
    stop();
}

void TPrivateBus::stop()
{
    FDaemon.kill();
    FDaemon.waitForFinished();
}

} // namespace tnv5::sim
