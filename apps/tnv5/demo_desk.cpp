#include "apps/tnv5/demo_desk.h"

#include "apps/tnv5/console.h"
#include "apps/tnv5/demo_gates.h"
#include "tnv5/common/messages.h"
#include "tnv5/host/books/statement.h"
#include "tnv5/host/local/local_events.h"
#include "tnv5/version.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QRegularExpression>

namespace tnv5::cli {

using host::isoTime;

namespace {

const QString kLink = QStringLiteral("0.0.0.0"); // what the connector calls its serial port
constexpr double kAliveMs = 5'000;               // without a ping: the board has stopped answering

bool within(platform::TDateTime time, double ms)
{
    return (platform::Now() - time) * double(platform::kMsPerDay) <= ms;
}

} // namespace

TDemoDesk::TDemoDesk(const TClub& club, const QString& socket) : FClub(club), FStarted(platform::Now())
{
    for (const host::TGate& gate : FClub.books.gates()) {
        FGates[gate.address] = gate;
    }
    FServer = std::make_unique<host::TLocalServer>(*this, socket);
    FClub.fruit.OnSale = [this](const host::TSale& sale) { FServer->tell(saleEvent(sale)); };
    FClub.bar.OnPayment = [this](const host::TPayment& payment) { FServer->tell(paymentEvent(payment)); };
    FClub.lamps.OnTime = [this](const host::TLampTime& time) { FServer->tell(lampTimeEvent(time)); };
    overhear([this](const QString& line, bool complaint) { hear(line, complaint); });
}

TDemoDesk::~TDemoDesk()
{
    overhear({});
    FClub.fruit.OnSale = nullptr;
    FClub.bar.OnPayment = nullptr;
    FClub.lamps.OnTime = nullptr;
}

void TDemoDesk::onPass(const host::TPass& pass)
{
    FServer->tell(passEvent(pass, zoneOf(pass.gate)));
    FServer->stateChanged();
}

// The time stands in the event.
void TDemoDesk::hear(const QString& line, bool complaint)
{
    static const QRegularExpression time(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d\\s+"));
    static const QString announcement = QStringLiteral("--- ");
    QString text = line;
    text.remove(time);
    const bool announced = text.startsWith(announcement);
    const auto level = complaint   ? host::TLevel::Error
                       : announced ? host::TLevel::Warning
                                   : host::TLevel::Info;
    text = text.mid(announced ? announcement.size() : 0).trimmed();
    if (!text.isEmpty()) {
        FServer->tell(lineEvent(level, platform::Now(), text));
    }
}

QJsonObject TDemoDesk::state()
{
    host::TStatement inside(FClub.books.connection(),
                            QStringLiteral("SELECT count(*) FROM member WHERE inside = 1"));
    QJsonArray troubles;
    const QJsonArray lines = {lineState(QStringLiteral("gates"), FClub.linePort),
                              lineState(QStringLiteral("boards"), FClub.boardPort),
                              lineState(QStringLiteral("lamps"), FClub.lamps.port()),
                              lineState(QStringLiteral("fruit"), FClub.fruit.port()),
                              lineState(QStringLiteral("bar"), FClub.bar.port())};
    for (const QJsonValue line : lines) {
        if (!line[u"open"].toBool()) {
            troubles.append(
                QStringLiteral("line %1: %2").arg(line[u"name"].toString(), line[u"why"].toString()));
        }
    }
    return {{QStringLiteral("club"), QStringLiteral("Demo club")},
            {QStringLiteral("version"), QStringLiteral(TNV5_VERSION_STRING)},
            {QStringLiteral("started"), isoTime(FStarted)},
            {QStringLiteral("pid"), QCoreApplication::applicationPid()},
            {QStringLiteral("lines"), lines},
            {QStringLiteral("gates"), gateStates()},
            {QStringLiteral("boards"), boardStates()},
            {QStringLiteral("lamps"), FClub.lamps.states()},
            {QStringLiteral("scales"), QJsonArray{FClub.fruit.state()}},
            {QStringLiteral("terminals"), QJsonArray{FClub.bar.state()}},
            {QStringLiteral("inside"), inside.run().number()},
            {QStringLiteral("journalWaiting"), FClub.desk.waiting()},
            {QStringLiteral("troubles"), troubles}};
}

QJsonObject TDemoDesk::lineState(const QString& name, const platform::TSerialPort& port)
{
    TLineState& line = FLines[name];
    const bool open = port.Connected();
    if (line.since == 0 || line.open != open) {
        line = {open, platform::Now()};
    }
    return {{QStringLiteral("name"), name},
            {QStringLiteral("port"), port.Port()},
            {QStringLiteral("open"), open},
            {QStringLiteral("why"), open ? QString() : QStringLiteral("the adapter is pulled out")},
            {QStringLiteral("since"), isoTime(line.since)}};
}

QJsonArray TDemoDesk::gateStates()
{
    QJsonArray gates;
    for (const host::TGate& gate : qAsConst(FGates)) {
        QJsonValue answering = QJsonValue::Null; // a classic controller says nothing by itself
        if (TDemoGates::isBoard(gate.address)) {
            answering = within(FClub.connector.GetDeviceFromList(kLink, gate.address)->LastPing, kAliveMs);
        }
        const QString holder = FClub.desk.holderAt(gate.address);
        gates.append(
            QJsonObject{{QStringLiteral("address"), gate.address},
                        {QStringLiteral("zone"), gate.zone},
                        {QStringLiteral("direction"), toText(gate.direction)},
                        {QStringLiteral("line"), TDemoGates::isBoard(gate.address) ? QStringLiteral("boards")
                                                                                   : QStringLiteral("gates")},
                        {QStringLiteral("answering"), answering},
                        {QStringLiteral("busy"), !holder.isEmpty()},
                        {QStringLiteral("holder"), common::IsPseudoCard(holder) ? QString() : holder}});
    }
    return gates;
}

QJsonArray TDemoDesk::boardStates() const
{
    QJsonArray boards;
    const auto add = [&boards](const connector::TDeviceConnector& connector, const QString& line) {
        for (int index = 0; index < connector.DeviceCount(); ++index) {
            const connector::TDeviceInfo& board = *connector.DeviceItem(index);
            boards.append(QJsonObject{{QStringLiteral("address"), board.Device},
                                      {QStringLiteral("line"), line},
                                      {QStringLiteral("answering"), within(board.LastPing, kAliveMs)},
                                      {QStringLiteral("heard"), isoTime(board.LastPing)}});
        }
    };
    add(FClub.connector, QStringLiteral("boards"));
    add(FClub.lamps.connector(), QStringLiteral("lamps"));
    return boards;
}

QString TDemoDesk::open(const QString& gate, const QString& who, const QString& reason)
{
    if (!FGates.contains(gate)) {
        return QStringLiteral("there is no gate \"%1\"").arg(gate);
    }
    const bool board = TDemoGates::isBoard(gate);
    if (!(board ? FClub.boardPort : FClub.linePort).Connected()) {
        return QStringLiteral("%1 is not open")
            .arg(board ? QStringLiteral("boards") : QStringLiteral("gates"));
    }
    if ((board ? FClub.boards.p_hw_FindDevice(kLink, gate) : FClub.line.p_hw_FindDevice(gate)) >= 0) {
        return QStringLiteral("somebody is passing at %1").arg(gate);
    }
    FClub.desk.expectByHand(gate, who, reason);
    if (board) {
        FClub.boards.p_hw_manual(kLink, gate, common::kOpen);
    } else { // as if a card were read
        FClub.line.p_hw_ProtocolIn(u'$' + gate + u'R' + common::kCardManual);
    }
    return {};
}

QString TDemoDesk::reload()
{
    return QStringLiteral("The demo's club has no file.");
}

QByteArray TDemoDesk::picture(const QString& card)
{
    if (FPictures.contains(card)) {
        return FPictures.value(card);
    }
    QByteArray png;
    QBuffer buffer(&png);
    const QImage image = FClub.desk.pictureFor(card);
    if (!image.isNull()) {
        image.save(&buffer, "PNG");
        FPictures[card] = png;
    }
    return png;
}

QJsonArray TDemoDesk::journal(qint64 after, int limit)
{
    QJsonArray rows;
    for (host::TPass pass : FClub.books.passesAfter(after, limit)) {
        pass.direction = FGates.value(pass.gate).direction;
        if (const auto holder = FClub.books.holderOf(pass.card)) {
            pass.name = holder->member.name;
            pass.balance = holder->member.balance;
        }
        rows.append(toJson(pass, zoneOf(pass.gate)));
    }
    return rows;
}

} // namespace tnv5::cli
