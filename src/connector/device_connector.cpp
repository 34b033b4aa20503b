#include "tnv5/connector/device_connector.h"

#include "tnv5/common/convert.h"
#include "tnv5/common/crc8.h"
#include "tnv5/common/text.h"
#include "tnv5/connector/connector_texts.h"
#include "tnv5/platform/code_page.h"

namespace tnv5::connector {

using common::Copy;
using common::CopyFrom;
using common::Crc8Digits;
using common::Pos;
using platform::TComDataPacket;

namespace {

const QString kSerialLink = QStringLiteral("0.0.0.0");

std::unique_ptr<TComDataPacket> makePacket(const char* start)
{
    auto packet = std::make_unique<TComDataPacket>();
    packet->SetStartString(start);
    packet->SetStopString("\r");
    return packet;
}

QStringView sideOf(QStringView line)
{
    return Copy(line, 5, 1);
}

QString withChecksum(const QString& line)
{
    return line + Crc8Digits(line);
}

// "N" is no display; else the width stands in characters 2 to 4 before the first "x", as in "n020x4".
int displayWidth(const QString& gx)
{
    if (gx == u"N") {
        return 0;
    }
    const QStringView beforeX = Copy(gx, 1, Pos(u"x", gx) - 1);
    return common::StrToInt(Copy(beforeX, 2, 3));
}

} // namespace

/// The connector's handler of its port's errors. It is a type of its own so that the connector knows it
/// again, and does nothing once the connector is gone, as a host may have kept a copy.
struct TDeviceConnector::TPortErrors
{
    QPointer<TDeviceConnector> connector;

    void operator()(TComponent* /*Sender*/, platform::TComExceptionKind /*Kind*/, const QString& message,
                    qint64 winError, const QString& /*WinMessage*/) const
    {
        if (connector) {
            connector->ComPortException(message, winError);
        }
    }
};

TDeviceConnector::TDeviceConnector(QObject* AOwner) : TComponent(AOwner)
{
    if (Designing()) {
        return;
    }
    ComDataPacket1 = makePacket("$");
    ComDataPacket1->OnPacket = [this](TComDataPacket*, const QByteArray& body) { OnComData(u"$", body); };
    ComDataPacket2 = makePacket("#");
    ComDataPacket2->OnPacket = [this](TComDataPacket*, const QByteArray& body) { OnComData(u"#", body); };
}

TDeviceConnector::~TDeviceConnector()
{
    if (hasErrorEvent()) {
        FComport->OnException = nullptr;
    }
}

void TDeviceConnector::SetComport(platform::TComPort* Value)
{
    const QPointer<platform::TComPort> old = FComport;
    FComport = Value;
    if (Value == old || Designing()) {
        return;
    }
    installErrorHandler();
    if (old) {
        old->OnException = nullptr;
    }
    ComDataPacket1->SetComPort(Value);
    ComDataPacket2->SetComPort(Value);
}

void TDeviceConnector::installErrorHandler()
{
    if (FComport) {
        FComport->OnException = TPortErrors{this};
    }
}

bool TDeviceConnector::hasErrorEvent() const
{
    const auto* handler = FComport ? FComport->OnException.target<TPortErrors>() : nullptr;
    return handler != nullptr && handler->connector == this;
}

void TDeviceConnector::ComPortException(const QString& message, qint64 winError)
{
    if (winError == 0) {
        return;
    }
    Operation([&] { reportError(kErrorPort, message); });
    throw platform::EAbort();
}

void TDeviceConnector::reportError(QStringView code, const QString& text)
{
    if (FErrorEvent) {
        Fire(FErrorEvent, code.toString() + text);
    }
}

bool TDeviceConnector::GetConnected()
{
    return Operation(
        [this] {
            if (!usesPort()) {
                return false;
            }
            if (FComport->Connected()) {
                return true;
            }
            bool opened = true;
            Attempt([&] { FComport->Open(); },
                    [&](const QString& message) {
                        opened = false;
                        reportError(kErrorOpenClose, message);
                    });
            return opened;
        },
        false);
}

void TDeviceConnector::SetConnected(bool Value)
{
    if (Value) {
        GetConnected();
        return;
    }
    Operation([this] {
        if (usesPort()) {
            Attempt([&] { FComport->Close(); },
                    [&](const QString& message) { reportError(kErrorOpenClose, message); });
        }
    });
}

void TDeviceConnector::GetCommand(const QString& AMess)
{
    Operation([&] { Fire(FOnGetData, QString(AMess)); });
}

void TDeviceConnector::SendDirectCommand(const QString& IP, const QString& AMess)
{
    Q_UNUSED(IP)                     // one serial port carries every board
    Operation([this, text = AMess] { // a copy: the host is called before it is used
        if (!usesPort() || !GetConnected() || !FComport) {
            return;
        }
        const QString line = withChecksum(text);
        CallOut([&] { FComport->Write(platform::toWire(line)); });
        Fire(FLogEvent, line);
    });
}

QString TDeviceConnector::SendCommand(const QString& AMess)
{
    return Operation(
        [this, text = AMess] {
            const TBoardCommand command = parseCommand(text);
            if (isDisplayCommand(command)) {
                sendDisplay(command);
                return QString();
            }
            const auto line = boardLine(command);
            if (!line) {
                return QString();
            }
            SendDirectCommand(command.ip.toString(), *line);
            return Crc8Digits(withChecksum(*line)); // over the line and its checksum; intended
        },
        QString());
}

void TDeviceConnector::sendDisplay(const TBoardCommand& command)
{
    const QString ip = command.ip.toString();
    const int width = DeviceArray.forLine(ip, command.address.toString())->DisplayLine;
    const QStringList lines = displayLines(command, width);
    for (const QString& line : lines) {
        SendDirectCommand(ip, line);
    }
    if (FLogEvent) {
        Fire(FLogEvent, kLinesSent + (lines.isEmpty() ? QString() : withChecksum(lines.last())));
    }
}

QString TDeviceConnector::GetDiagnosticValue(const QString& AMess, const QString& Key)
{
    const qsizetype at = Pos(Key, AMess);
    if (at == 0) {
        return {};
    }
    const QStringView fromKey = Copy(AMess, at, 1000);
    const QStringView piece = Copy(fromKey, 1, Pos(u"/", fromKey) - 1);
    return Copy(piece, Pos(u"=", piece) + 1, 100).toString();
}

void TDeviceConnector::OnComData(QStringView start, const QByteArray& Str)
{
    const QString packet = platform::fromWire(Str);
    const QStringView body = common::Trim(packet);
    if (!body.isEmpty() && FComport && FComport->Connected()) {
        ProcessDataToDevice(kSerialLink, start.toString() + body.toString());
    }
}

void TDeviceConnector::ProcessDataToDevice(const QString& IP, const QString& AMess)
{
    Operation([this, ip = IP, line = AMess] {
        const auto board = DeviceArray.forLine(ip, Copy(line, 2, 4).toString());
        board->LastPing = platform::Now();
        if (line.startsWith(u'#')) {
            handleReply(ip, line, *board);
        } else if (line.startsWith(u'$')) {
            handleEvent(ip, line, *board);
        }
    });
}

// The order of the tests matters: each looks anywhere in the line, the address included.
void TDeviceConnector::handleReply(const QString& ip, const QString& line, TDeviceInfo& board)
{
    if (line.contains(u"BT")) {
        passOnChecked(ip, board.Device + QStringLiteral("BTPH"));
    } else if (line.contains(u"ET")) {
        passOn(u"$", ip, CopyFrom(line, 2)); // "#" becomes "$"; intended
    } else if (line.contains(u"HW")) {
        handleHardware(ip, line, board);
    } else if (line.contains(u"GO")) {
        passOnChecked(ip, board.Device + QStringLiteral("CROSS"));
    }
}

void TDeviceConnector::handleEvent(const QString& ip, const QString& line, TDeviceInfo& board)
{
    const QString& address = board.Device;
    if (line.contains(u"PING")) {
        SendDirectCommand(ip, u'$' + address + QStringLiteral("ECHO"));
        passOnChecked(ip, address + QStringLiteral("PING"));
        if (board.DisplayLine == -1) {
            SendDirectCommand(ip, u'$' + address + QStringLiteral("HW"));
            const QString group = u'$' + groupOf(address).toString();
            if (sideOf(line) == u"A") {
                SendDirectCommand(ip, group + QStringLiteral("BHW"));
            } else if (sideOf(line) == u"B") {
                SendDirectCommand(ip, group + QStringLiteral("AHW"));
            }
        }
        return;
    }
    if (line.contains(u"ET")) {
        passOnChecked(ip, address + QStringLiteral("PING")); // a board that reports an event is alive
    }
    passOn(u"$", ip, CopyFrom(line, 2));
}

void TDeviceConnector::handleHardware(const QString& ip, const QString& line, TDeviceInfo& board)
{
    board.DisplayLine = displayWidth(GetDiagnosticValue(line, QStringLiteral("GX")));
    const QString relays = GetDiagnosticValue(line, QStringLiteral("GR"));
    // the relays of side B are numbered on from those of side A; intended
    const QStringView side = sideOf(line);
    const QStringView numbers = side == u"A"   ? QStringView(u"12")
                                : side == u"B" ? QStringView(u"345")
                                               : QStringView();
    for (qsizetype i = 0; i < numbers.size(); ++i) {
        const QChar state = Copy(relays, i + 1, 1) == u"N" ? u'N' : u'Y';
        passOnChecked(ip, board.Device + QStringLiteral("RELAY") + numbers.at(i) + state);
    }
    passOn(u"#", ip, CopyFrom(line, 2));
}

void TDeviceConnector::passOn(QStringView start, const QString& ip, QStringView rest)
{
    GetCommand(start.toString() + ip + u':' + rest.toString());
}

void TDeviceConnector::passOnChecked(const QString& ip, const QString& rest)
{
    GetCommand(withChecksum(u'#' + ip + u':' + rest));
}

} // namespace tnv5::connector
