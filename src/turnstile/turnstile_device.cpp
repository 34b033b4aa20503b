#include "tnv5/turnstile/turnstile_device.h"

#include "tnv5/common/messages.h"
#include "tnv5/common/text.h"
#include "tnv5/controller/controller_texts.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/turnstile/command.h"
#include "tnv5/turnstile/line.h"
#include "tnv5/turnstile/turnstile_texts.h"

namespace tnv5::turnstile {

using platform::TComDataPacket;

namespace {

constexpr int kStackIntervalMs = 100;

const QString kRead = kCardRead.toString();

std::unique_ptr<TComDataPacket> makePacket(const char* start)
{
    auto packet = std::make_unique<TComDataPacket>();
    packet->SetStartString(start);
    packet->SetStopString("\r");
    return packet;
}

} // namespace

TTurnStylerDevice::TTurnStylerDevice(QObject* AOwner)
    : TControllerDevice(AOwner, controller::kClassicFamily, kStackIntervalMs)
{
    if (Designing()) {
        return;
    }
    ComDataPacket1 = makePacket("$");
    ComDataPacket1->OnPacket = [this](TComDataPacket*, const QByteArray& body) { OnComData1(body); };
    ComDataPacket2 = makePacket("#");
    ComDataPacket2->OnPacket = [this](TComDataPacket*, const QByteArray& body) { OnComData2(body); };
}

TTurnStylerDevice::~TTurnStylerDevice() = default;

void TTurnStylerDevice::SetComport(platform::TComPort* Value)
{
    if (Value != FComport && !Designing()) {
        ComDataPacket1->SetComPort(Value);
        ComDataPacket2->SetComPort(Value);
    }
    FComport = Value;
}

void TTurnStylerDevice::OnComData1(const QByteArray& Str)
{
    p_hw_ProtocolIn(platform::fromWire(Str, {&kEventStart, 1}));
}

void TTurnStylerDevice::OnComData2(const QByteArray& Str)
{
    p_hw_ProtocolIn(platform::fromWire(Str, {&kMessageStart, 1}));
}

void TTurnStylerDevice::p_hw_ProtocolIn(const QString& AMess)
{
    Operation([this, line = AMess] {
        log(common::kReadFromPort, line);
        if (forwarded(line)) {
            return;
        }
        if (line == kPollLine) {
            p_hw_CheckStatusAll();
            return;
        }
        if (line.startsWith(kEventStart)) {
            handleEvent(line);
        } else if (line.startsWith(kMessageStart)) {
            handleMessage(line);
        }
        startSweeps();
    });
}

// Without a link the line is handled here, as if there were no server.
bool TTurnStylerDevice::forwarded(const QString& AMess)
{
    return role() == PodClient && sendToServer(platform::toWire(AMess));
}

void TTurnStylerDevice::handleEvent(const QString& AMess)
{
    const TEventLine line = parseEvent(AMess);
    const QString address = line.address.toString();
    if (!FDeviceList.contains(address)) {
        reportError(kErrorUnknownDevice, kDeviceNotFound + address);
    }
    if (line.command == kCardRead) {
        const QString card = line.data.toString();
        if (const auto status = checkStatus(address, card, kRead)) {
            report(common::kCome, address, card, *status, *status);
        }
    } else if (const PRFidInfo pass = findPass(address)) {
        if (line.command == kPassage) {
            if (isDoor(pass->Device)) {
                pass->Status = common::kFinish;
            }
            if (isTurnstileChannel(pass->Device)) { // wins when the door letter is "A"
                pass->Status = common::kProgress;
            }
        } else if (line.command == kPassed) {
            pass->Status = common::kFinish;
        } else if (line.command == kGaveUp) {
            pass->Status = common::kTimeout;
        } else {
            return;
        }
        report(common::kCome, pass->Device, pass->CardNumber, pass->Status, pass->Status);
    }
}

void TTurnStylerDevice::handleMessage(const QString& AMess)
{
    const TMessageLine line = parseMessage(AMess);
    const QString address = line.address.toString();
    const auto says = [&line](TMessageForm form) { return isMessage(line.text, form); };

    if (says(TMessageForm::HardReset)) {
        addDevice(address);
    }
    if (says(TMessageForm::WaitCard)) {
        addDevice(address);
    }
    if (says(TMessageForm::Relay)) {
        addDevice(address);
        if (const PRFidInfo pass = findPass(address)) {
            pass->StatusHard = kHardRelay;
        }
    }
    if (says(TMessageForm::CrcError)) {
        if (const PRFidInfo pass = findPass(address)) {
            pass->StatusHard = common::kCrcError;
        }
    }
    if (says(TMessageForm::GateOpen)) {
        if (const PRFidInfo pass = findPass(address)) {
            pass->StatusHard = kHardGateOpen;
            if (isDoor(address)) {
                pass->Status = common::kFinish;
            }
        }
    }
    if (says(TMessageForm::ButtonActive) && isDoor(address)) {
        handleButton(address);
    }
    if (says(TMessageForm::InGateActive)) {
        handleButton(address);
    }
    const QString text = line.text.toString();
    report(common::kCome, address, common::kNoCardNumber, text, text);
}

void TTurnStylerDevice::handleButton(const QString& address)
{
    const PRFidInfo pass = findPass(address);
    if (!pass) {
        checkStatus(address, common::kCardButton, kRead);
    } else if (pass->Status == common::kNew) {
        sendComCommand(pass, 1);
        pass->Status = common::kOpen;
    }
}

void TTurnStylerDevice::addDevice(const QString& address)
{
    if (!FDeviceList.contains(address) && FDeviceList.list().size() < kMaxDevices) {
        FDeviceList.add(address);
    }
}

int TTurnStylerDevice::p_hw_FindDeviceByRelay(const QString& Device, const QString& Relay)
{
    const int index = StackArray.find(Device, Relay);
    if (index >= 0) {
        return index;
    }
    return Operation(
        [this, device = Device, card = Relay] { return addPass(device, card) ? StackArray.size() - 1 : -1; },
        -1);
}

PRFidInfo TTurnStylerDevice::addPass(const QString& device, const QString& card)
{
    const PRFidInfo pass = StackArray.add(device, card);
    if (!pass) {
        reportError(controller::kErrorTableFull, common::kPassTableFull);
    }
    return pass;
}

QString TTurnStylerDevice::p_hw_CheckStatus(const QString& Device, const QString& Cardnumber,
                                            const QString& Status)
{
    return Operation([this, device = Device, card = Cardnumber,
                      status = Status] { return checkStatus(device, card, status).value_or(QString()); },
                     QString());
}

// None when there is no pass and no room for one.
std::optional<QString> TTurnStylerDevice::checkStatus(const QString& device, const QString& card,
                                                      const QString& status)
{
    QString result = common::kNew;
    if (const PRFidInfo pass = findPass(device)) {
        result = pass->Status;
    } else if (const PRFidInfo added = addPass(device, card)) {
        Fire(FGetImg, device, added->Img);
    } else {
        return std::nullopt;
    }
    report(common::kCheck, device, card, status, result);
    return result;
}

bool TTurnStylerDevice::CheckCRC(const QString& AMess) const
{
    const QStringView last = common::CopyFrom(AMess, AMess.size() - 1);
    return checksum(last) == last;
}

void TTurnStylerDevice::ShowinternalStatus(TComponent* Sender, const QString& AName, const QString& Device,
                                           const QString& Cardnumber, const QString& Status1,
                                           const QString& Status2)
{
    Operation([&] {
        show(Sender, FCheckStatus, kErrorStatusReport,
             std::array<QVariant, 5>{AName, Device, Cardnumber, Status1, Status2});
    });
}

void TTurnStylerDevice::showServerStatus(const QStringList& fields)
{
    ShowinternalStatus(this, fields[0], fields[1], fields[2], fields[3], fields[4]);
}

void TTurnStylerDevice::ServerEcho(const QString& AMess)
{
    Operation([this, text = AMess] { echo(text); });
}

bool TTurnStylerDevice::lineReady()
{
    return FComport && FComport->Connected();
}

void TTurnStylerDevice::report(const QString& name, const QString& device, const QString& card,
                               const QString& status1, const QString& status2)
{
    reportStatus(FCheckStatus, kErrorStatusReport, name, device, card, status1, status2);
}

void TTurnStylerDevice::reportEchoedError(QStringView code, const QString& text)
{
    reportError(code, text);
    echo(common::ErrorMessage(code.toString() + text));
}

} // namespace tnv5::turnstile
