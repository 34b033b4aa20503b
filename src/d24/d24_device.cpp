#include "tnv5/d24/d24_device.h"

#include "tnv5/common/elapsed.h"
#include "tnv5/common/messages.h"
#include "tnv5/common/text.h"
#include "tnv5/d24/d24_command.h"
#include "tnv5/d24/d24_line.h"
#include "tnv5/d24/d24_texts.h"
#include "tnv5/platform/code_page.h"

namespace tnv5::d24 {

using platform::TTimer;

namespace {

constexpr int kStackIntervalMs = 10;
constexpr int kPingIntervalMs = 2000;

const QString kRequest = QStringLiteral("RQ");

} // namespace

/// Where a line comes from.
struct TTurnStylerDeviceD24::TFields
{
    explicit TFields(QStringView line)
        : ip(ipOf(line).toString()),
          device(deviceOf(line).toString()),
          deviceType(deviceTypeOf(line).toString())
    {
    }

    QString ip;
    QString device;
    QString deviceType;
};

TTurnStylerDeviceD24::TTurnStylerDeviceD24(QObject* AOwner) : TComponent(AOwner)
{
    if (Designing()) {
        return;
    }
    StackTime = std::make_unique<TTimer>();
    StackTime->SetInterval(kStackIntervalMs);
    StackTime->OnTimer = [this](TTimer*) { p_hw_CallStackArray(); };
    PingTimer = std::make_unique<TTimer>();
    PingTimer->SetInterval(kPingIntervalMs);
    PingTimer->OnTimer = [this](TTimer* sender) { DevicePingTime(sender); };
    PingTimer->SetEnabled(true);
}

TTurnStylerDeviceD24::~TTurnStylerDeviceD24()
{
    if (FConnector) {
        FConnector->SetOnGetData(nullptr);
    }
}

QVariantList TTurnStylerDeviceD24::DeviceListValues() const
{
    QVariantList values;
    for (int index = 0; index < FDeviceList.size(); ++index) {
        const PDevicelist entry = FDeviceList.at(index);
        values << QVariantMap{{QStringLiteral("IP"), entry->IP},
                              {QStringLiteral("Device"), entry->Device},
                              {QStringLiteral("DeviceType"), entry->DeviceType},
                              {QStringLiteral("Pingtime"), entry->Pingtime}};
    }
    return values;
}

void TTurnStylerDeviceD24::SetConnector(connector::TDeviceConnector* Value)
{
    const QPointer<connector::TDeviceConnector> old = FConnector;
    FConnector = Value;
    if (Designing()) {
        return;
    }
    if (Value != nullptr) {
        // a connector that was set before keeps calling until someone else attaches to it; it may outlive
        // this
        Value->SetOnGetData(
            [self = QPointer<TTurnStylerDeviceD24>(this)](TComponent* sender, const QString& line) {
                if (self) {
                    self->OnConnectorData(sender, line);
                }
            });
    } else if (old) {
        old->SetOnGetData(nullptr);
    }
}

void TTurnStylerDeviceD24::OnConnectorData(TComponent* Sender, const QString& AMess)
{
    Q_UNUSED(Sender)
    p_hw_ProtocolIn(AMess);
}

void TTurnStylerDeviceD24::p_hw_ProtocolIn(const QString& AMess)
{
    Operation([this, line = AMess] {
        if (FLogEvent) {
            Fire(FLogEvent, common::Joined(kReadFromPortLog, line));
        }
        if (FRemoutDevice == podServer) {
            monitor(common::LogMessage(common::kReadFromPort + line));
        }
        if (FRemoutDevice == PodClient) {
            monitor(line);
            return;
        }
        if (line.startsWith(u'$')) {
            handleEvent(line);
        } else if (line.startsWith(u'#')) {
            handleState(line);
        }
        startStack();
    });
}

void TTurnStylerDeviceD24::handleEvent(const QString& AMess)
{
    const TFields from(AMess);
    const QString status = shortStatusOf(AMess).toString();
    UpdatePing(from.ip, from.device);
    if (status == u"ET") {
        confirm(from.device);
    } else if (status == kRequest) {
        const QString card = cardNumberOf(AMess).toString();
        const QString state = p_hw_CheckStatus(from.ip, from.device, from.deviceType, card, kRequest);
        report(common::kCome, from.ip, from.device, from.deviceType, card, state, state);
    } else if (status == u"PR") {
        const PRFidInfo pass = StackArray.at(StackArray.findDevice(from.device));
        setStatus(from.device, pass && pass->DeviceType == u"D" ? common::kFinish : kProgressStart);
    } else if (status == u"GR") {
        setStatus(from.device, common::kFinish);
    } else if (status == u"FK") {
        setStatus(from.device, common::kTimeout);
    }
}

// Only a command for which the connector returned an empty text is confirmed; intended.
void TTurnStylerDeviceD24::confirm(const QString& device)
{
    const PRFidInfo pass = StackArray.at(StackArray.findDevice(device));
    if (FCheckET && pass && pass->CRC.isEmpty()) {
        pass->Command.clear();
        pass->Finish = true;
    }
}

void TTurnStylerDeviceD24::setStatus(const QString& device, const QString& status)
{
    if (const PRFidInfo pass = StackArray.at(StackArray.findDevice(device))) {
        pass->Status = status;
        reportPass(common::kCome, *pass);
    }
}

void TTurnStylerDeviceD24::handleState(const QString& AMess)
{
    const TFields from(AMess);
    const QString status = statusOf(AMess).toString();
    const QString word = status.toUpper();
    UpdatePing(from.ip, from.device);
    const auto reportState = [&](const QString& state) {
        report(common::kStack, from.ip, from.device, from.deviceType, QString(), state, state);
    };
    if (word == u"DC") {
        reportState(kConnected);
    } else if (word == u"CC") {
        reportState(kDisconnected);
    } else if (word == kPing) {
        DevicePing(from.ip, from.device, from.deviceType);
    } else if (word == kCross) {
        handleCross(from);
    } else if (word == u"BTPH") {
        handleButton(from);
    }
    report(common::kCome, from.ip, from.device, from.deviceType, common::kNoCardNumber, status, status);
}

void TTurnStylerDeviceD24::handleCross(const TFields& from)
{
    if (StackArray.findIP(from.ip) >= 0) {
        return; // someone of that link is passing
    }
    report(common::kStack, from.ip, from.device, from.deviceType, QString(), kCross, kCross);
    if (FCheckCross && FConnector) {
        send(alarmCommand(from.ip, from.device));
    }
}

void TTurnStylerDeviceD24::handleButton(const TFields& from)
{
    const PRFidInfo pass = StackArray.at(StackArray.findDevice(from.device));
    if (!pass) {
        p_hw_CheckStatus(from.ip, from.device, from.deviceType, common::kCardButton, kRequest);
    } else if (pass->Status == common::kNew) {
        sendComCommand(pass, 1);
        pass->Status = common::kOpen;
    }
}

void TTurnStylerDeviceD24::startStack()
{
    if (StackTime && !StackTime->Enabled()) {
        StackTime->SetEnabled(true);
        p_hw_CallStackArray();
    }
}

QString TTurnStylerDeviceD24::ParseMessage(const QString& AType, const QString& AMess)
{
    if (AType == u"IP") {
        return ipOf(AMess).toString();
    }
    if (AType == u"DEVICE") {
        return deviceOf(AMess).toString();
    }
    if (AType == u"DEVICETYPE") {
        return deviceTypeOf(AMess).toString();
    }
    if (AType == u"STATUS") {
        return statusOf(AMess).toString();
    }
    if (AType == u"STATUSSHORT") {
        return shortStatusOf(AMess).toString();
    }
    if (AType == u"CARDNUMBER") {
        return cardNumberOf(AMess).toString();
    }
    return {};
}

QString TTurnStylerDeviceD24::p_hw_CheckStatus(const QString& IP, const QString& Device,
                                               const QString& DeviceType, const QString& Cardnumber,
                                               const QString& Status)
{
    return Operation(
        [this, ip = IP, device = Device, deviceType = DeviceType, card = Cardnumber, status = Status] {
            QString result = common::kNew;
            if (const PRFidInfo pass = StackArray.at(StackArray.findDevice(device))) {
                result = pass->Status;
            } else {
                const PRFidInfo added = StackArray.add(ip, device, deviceType, card);
                Fire(FGetImg, device, added->Img);
            }
            report(common::kCheck, ip, device, deviceType, card, status, result);
            return result;
        },
        QString());
}

int TTurnStylerDeviceD24::p_hw_FindDevice(const QString& IP, const QString& Device) const
{
    Q_UNUSED(IP) // one pass per controller, whatever link it came from; intended
    return StackArray.findDevice(Device);
}

int TTurnStylerDeviceD24::p_hw_FindDeviceByRelay(const QString& IP, const QString& Device,
                                                 const QString& DeviceType, const QString& Relay)
{
    const int index = StackArray.findCard(Device, Relay);
    if (index >= 0) {
        return index;
    }
    StackArray.add(IP, Device, DeviceType, Relay);
    return StackArray.size() - 1;
}

void TTurnStylerDeviceD24::DevicePing(const QString& IP, const QString& Device, const QString& DeviceType)
{
    Operation([&] {
        PDevicelist entry = FDeviceList.at(FDeviceList.find(IP, Device));
        if (entry) {
            entry->Pingtime = platform::TimeOfDay();
        } else {
            entry = FDeviceList.add(IP, Device, DeviceType);
        }
        report(common::kStack, entry->IP, entry->Device, entry->DeviceType, QString(), kPing, kPing);
    });
}

void TTurnStylerDeviceD24::UpdatePing(const QString& IP, const QString& Device)
{
    if (const PDevicelist entry = FDeviceList.at(FDeviceList.find(IP, Device))) {
        entry->Pingtime = platform::TimeOfDay();
    }
}

void TTurnStylerDeviceD24::DevicePingTime(TComponent* Sender)
{
    Q_UNUSED(Sender)
    Operation([this] {
        const int count = FDeviceList.size();
        for (int index = 0; index < count; ++index) {
            const PDevicelist entry = FDeviceList.at(index);
            if (common::ElapsedMoreThan(entry->Pingtime, platform::TimeOfDay(), fpingdelay)) {
                report(common::kStack, entry->IP, entry->Device, entry->DeviceType, QString(), kNoPing,
                       kNoPing);
            }
        }
    });
}

void TTurnStylerDeviceD24::p_hw_manual(const QString& IP, const QString& Device, const QString& Status)
{
    if (const PRFidInfo pass = StackArray.at(StackArray.findDevice(IP))) { // the first argument; intended
        pass->Status = Status;
        return;
    }
    p_hw_ProtocolIn(u'$' + IP + u':' + Device + kRequest + common::kCardManual + QStringLiteral("00"));
}

void TTurnStylerDeviceD24::ShowinternalStatus(TComponent* Sender, const QString& FName, const QString& IP,
                                              const QString& Device, const QString& DeviceType,
                                              const QString& Cardnumber, const QString& Status1,
                                              const QString& Status2)
{
    Operation([&] {
        const auto handler = FCheckStatus;
        if (!handler) {
            return;
        }
        Attempt([&] { handler(Sender, FName, IP, Device, DeviceType, Cardnumber, Status1, Status2); },
                [&](const QString& message) { reportError(kErrorStatusReport, message); });
    });
}

void TTurnStylerDeviceD24::SendToMonitor(const QByteArray& AMess)
{
    Q_UNUSED(AMess) // nobody can be connected yet: the monitor sockets are to come
}

bool TTurnStylerDeviceD24::Connected()
{
    // the remote modes are ready when their socket is; it is to come
    return FRemoutDevice == podNone &&
           Operation([this] { return FConnector && FConnector->GetConnected(); }, false);
}

void TTurnStylerDeviceD24::report(const QString& name, const QString& ip, const QString& device,
                                  const QString& deviceType, const QString& card, const QString& status1,
                                  const QString& status2)
{
    if (!FCheckStatus && FRemoutDevice == podNone) {
        return;
    }
    // copies: the handler may change the record that the arguments stand in, the monitor gets the same values
    const QString values[] = {ip, device, deviceType, card, status1, status2};
    ShowinternalStatus(this, name, values[0], values[1], values[2], values[3], values[4], values[5]);
    if (FRemoutDevice != podNone) {
        monitor(
            common::StatusMessage({name, values[0], values[1], values[2], values[3], values[4], values[5]}));
    }
}

void TTurnStylerDeviceD24::reportPass(const QString& name, const TRFidInfo& pass)
{
    report(name, pass.IP, pass.Device, pass.DeviceType, pass.CardNumber, pass.Status, pass.Status);
}

void TTurnStylerDeviceD24::reportError(QStringView code, const QString& text)
{
    if (FErrorEvent) {
        Fire(FErrorEvent, code.toString() + text);
    }
}

void TTurnStylerDeviceD24::monitor(const QString& text)
{
    if (FRemoutDevice != podNone) {
        SendToMonitor(platform::toWire(text));
    }
}

} // namespace tnv5::d24
