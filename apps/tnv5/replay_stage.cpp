#include "apps/tnv5/replay_stage.h"

#include "apps/tnv5/console.h"
#include "tnv5/tools/recording.h"

#include <QTime>
#include <utility>

namespace tnv5::cli {

namespace {

QString now()
{
    const qint64 ms = platform::TClock::current().nowMs() % platform::kMsPerDay;
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(ms)).toString(QStringLiteral("HH:mm:ss.zzz"));
}

void tell(const QString& what)
{
    print(now() + u' ' + what);
}

QString shown(const QByteArray& bytes)
{
    return QString::fromLatin1(tools::escaped(bytes));
}

} // namespace

TReplayStage::TReplayStage(tools::TProtocol protocol, bool allow)
{
    FPort.KeepWrites = false;
    FPort.OnWritten = [](const QByteArray& bytes) { tell(QStringLiteral("  sends   ") + shown(bytes)); };
    if (protocol == tools::TProtocol::Bus) {
        addConnector();
    } else {
        addTurnstile(allow);
    }
    FPort.Open();
}

void TReplayStage::hear(const QByteArray& bytes)
{
    tell(QStringLiteral("hears ") + shown(bytes));
    FPort.feed(bytes);
}

// A pass under way reports the same state ten times a second.
void TReplayStage::tellStatus(const QString& status)
{
    if (std::exchange(FLastStatus, status) != status) {
        tell(QStringLiteral("  status  ") + status);
    }
}

void TReplayStage::addConnector()
{
    FConnector = std::make_unique<connector::TDeviceConnector>();
    FConnector->SetConnectorType(connector::podComPort);
    FConnector->SetOnError([](auto*, const QString& text) { tell(QStringLiteral("  error   ") + text); });
    FConnector->SetOnGetData([](auto*, const QString& line) { tell(QStringLiteral("  routes  ") + line); });
    FConnector->SetComport(&FPort);
}

void TReplayStage::addTurnstile(bool allow)
{
    FTurnstile = std::make_unique<turnstile::TTurnStylerDevice>();
    FTurnstile->SetOnError([](auto*, const QString& text) { tell(QStringLiteral("  error   ") + text); });
    FTurnstile->SetOnCheckStatus([this](auto*, const QVariant& name, const QVariant& device,
                                        const QVariant& card, const QVariant& status, const QVariant&) {
        tellStatus(
            QStringList({name.toString(), device.toString(), card.toString(), status.toString()}).join(u' '));
    });
    FTurnstile->SetOnCheckSQL([allow](auto*, const QVariant& device, const QVariant& card, const QVariant&,
                                      QImage&, const QVariant& mode, QVariant& result) {
        result = mode.toInt() == turnstile::cmOpen ? int(allow) : 1;
        tell(QStringLiteral("  asks    mode %1, %2, card ").arg(mode.toInt()).arg(device.toString()) +
             card.toString() + QStringLiteral(": answered ") + result.toString());
    });
    FTurnstile->SetComport(&FPort);
}

} // namespace tnv5::cli
