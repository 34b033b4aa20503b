#include "tnv5/d24/d24_device.h"

#include "tnv5/common/messages.h"
#include "tnv5/connector/connector_texts.h"
#include "tnv5/connector/routed_line.h"
#include "tnv5/controller/controller_texts.h"
#include "tnv5/d24/d24_command.h"
#include "tnv5/d24/d24_texts.h"

namespace tnv5::d24 {

using connector::cardNumberOf;
using connector::deviceOf;
using connector::deviceTypeOf;
using connector::ipOf;
using connector::shortStatusOf;
using connector::statusOf;

namespace {

constexpr int kStackIntervalMs = 10;

const QString kRequest = QStringLiteral("RQ");

} // namespace

/// Where a line comes from, or a report.
struct TTurnStylerDeviceD24::TFields
{
    explicit TFields(QStringView line)
        : ip(ipOf(line).toString()),
          device(deviceOf(line).toString()),
          deviceType(deviceTypeOf(line).toString())
    {
    }
    TFields(const QString& IP, const QString& Device, const QString& DeviceType)
        : ip(IP), device(Device), deviceType(DeviceType)
    {
    }

    QString ip;
    QString device;
    QString deviceType;
};

TTurnStylerDeviceD24::TTurnStylerDeviceD24(QObject* AOwner)
    : TNetworkedController(AOwner, controller::kD24Family, kStackIntervalMs)
{
}

void TTurnStylerDeviceD24::p_hw_ProtocolIn(const QString& AMess)
{
    Operation([this, line = AMess] {
        if (!takeLine(line)) {
            return;
        }
        if (line.startsWith(u'$')) {
            handleEvent(line);
        } else if (line.startsWith(u'#')) {
            handleState(line);
        }
        startSweeps();
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
        if (const auto state = checkStatus(from, card, kRequest)) {
            report(common::kCome, from, card, *state, *state);
        }
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
        report(common::kStack, from, QString(), state, state);
    };
    if (word == u"DC") {
        reportState(kConnected);
    } else if (word == u"CC") {
        reportState(kDisconnected);
    } else if (word == connector::kPing) {
        DevicePing(from.ip, from.device, from.deviceType);
    } else if (word == kCross) {
        handleCross(from);
    } else if (word == u"BTPH") {
        handleButton(from);
    }
    report(common::kCome, from, common::kNoCardNumber, status, status);
}

void TTurnStylerDeviceD24::handleCross(const TFields& from)
{
    if (StackArray.findIP(from.ip) >= 0) {
        return; // someone of that link is passing
    }
    report(common::kStack, from, QString(), kCross, kCross);
    if (FCheckCross && hasConnector()) {
        send(alarmCommand(from.ip, from.device));
    }
}

void TTurnStylerDeviceD24::handleButton(const TFields& from)
{
    const PRFidInfo pass = StackArray.at(StackArray.findDevice(from.device));
    if (!pass) {
        checkStatus(from, common::kCardButton, kRequest);
    } else if (pass->Status == common::kNew) {
        sendComCommand(pass, 1);
        pass->Status = common::kOpen;
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
    return Operation([this, from = TFields(IP, Device, DeviceType), card = Cardnumber,
                      status = Status] { return checkStatus(from, card, status).value_or(QString()); },
                     QString());
}

// None when there is no pass and no room for one.
std::optional<QString> TTurnStylerDeviceD24::checkStatus(const TFields& from, const QString& card,
                                                         const QString& status)
{
    QString result = common::kNew;
    if (const PRFidInfo pass = StackArray.at(StackArray.findDevice(from.device))) {
        result = pass->Status;
    } else if (const PRFidInfo added = addPass(from, card)) {
        Fire(FGetImg, from.device, added->Img);
    } else {
        return std::nullopt;
    }
    report(common::kCheck, from, card, status, result);
    return result;
}

PRFidInfo TTurnStylerDeviceD24::addPass(const TFields& from, const QString& card)
{
    const PRFidInfo pass = StackArray.add(from.ip, from.device, from.deviceType, card);
    if (!pass) {
        reportError(controller::kErrorTableFull, common::kPassTableFull);
    }
    return pass;
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
    return Operation([this, from = TFields(IP, Device, DeviceType),
                      card = Relay] { return addPass(from, card) ? StackArray.size() - 1 : -1; },
                     -1);
}

// A known board is reported as its entry tells, not as the ping does; intended.
void TTurnStylerDeviceD24::DevicePing(const QString& IP, const QString& Device, const QString& DeviceType)
{
    Operation([&] { reportPing(*notePing(IP, Device, DeviceType), connector::kPing); });
}

void TTurnStylerDeviceD24::reportPing(const connector::TDevicelist& board, const QString& word)
{
    report(common::kStack, {board.IP, board.Device, board.DeviceType}, QString(), word, word);
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
        show(Sender, FCheckStatus, kErrorStatusReport,
             std::array<QVariant, 7>{FName, IP, Device, DeviceType, Cardnumber, Status1, Status2});
    });
}

void TTurnStylerDeviceD24::showServerStatus(const QStringList& fields)
{
    ShowinternalStatus(this, fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], fields[6]);
}

void TTurnStylerDeviceD24::report(const QString& name, const TFields& from, const QString& card,
                                  const QString& status1, const QString& status2)
{
    reportStatus(FCheckStatus, kErrorStatusReport, name, from.ip, from.device, from.deviceType, card, status1,
                 status2);
}

void TTurnStylerDeviceD24::reportPass(const QString& name, const TRFidInfo& pass)
{
    report(name, {pass.IP, pass.Device, pass.DeviceType}, pass.CardNumber, pass.Status, pass.Status);
}

} // namespace tnv5::d24
