#include "tnv5/switch/switch_device.h"

#include "tnv5/common/date_time_text.h"
#include "tnv5/common/elapsed.h"
#include "tnv5/common/messages.h"
#include "tnv5/connector/connector_texts.h"
#include "tnv5/connector/routed_line.h"
#include "tnv5/controller/controller_texts.h"
#include "tnv5/switch/switch_line.h"
#include "tnv5/switch/switch_texts.h"

#include <array>
#include <cstdlib>

namespace tnv5::switching {

using connector::deviceOf;
using connector::ipOf;
using connector::shortStatusOf;
using connector::statusOf;

namespace {

constexpr int kStackIntervalMs = 3000;
constexpr int kCheckIntervalMs = 2000;
constexpr qint64 kMsPerMinute = 60'000;

} // namespace

TSwitchDevice::TSwitchDevice(QObject* AOwner)
    : TNetworkedController(AOwner, controller::kSwitchFamily, kStackIntervalMs)
{
    if (Designing()) {
        return;
    }
    CheckTime = std::make_unique<platform::TTimer>();
    CheckTime->SetInterval(kCheckIntervalMs);
    CheckTime->OnTimer = [this](platform::TTimer* sender) { OnCheckTimer(sender); };
    CheckTime->SetEnabled(true);
}

void TSwitchDevice::p_hw_ProtocolIn(const QString& AMess)
{
    Operation([this, line = AMess] {
        if (!takeLine(line)) {
            return;
        }
        if (line.startsWith(u'$')) {
            handleReport(line);
        } else if (line.startsWith(u'#')) {
            handleState(line);
        }
        startSweeps(); // it never stops again: only the first line sweeps at once; intended
    });
}

// Other codes, "ET", "RQ", "PR", "GR" and "FK" among them, are ignored; intended.
void TSwitchDevice::handleReport(const QString& line)
{
    const QString ip = ipOf(line).toString();
    const QString device = deviceOf(line).toString();
    if (statusOf(line).startsWith(u"900")) {
        p_hw_CheckStatusAll();
    } else if (shortStatusOf(line) == u"SS") {
        const QString relay = reportedRelay(line).toString();
        const QStringView state = reportedState(line);
        const platform::TDateTime until =
            common::TextToDateTime(reportedTime(line)).value_or(platform::Now());
        if (state == u"F") {
            if (const PRFidInfo job = findOrAdd(ip, device, relay)) {
                job->Status = kOff;
            }
        } else if (state == u"N") {
            p_hw_CheckStatus(ip, device, relay, kOn, until);
        }
    }
}

// Other words, "DC", "CC" and "BTPH" among them, are ignored; intended.
void TSwitchDevice::handleState(const QString& line)
{
    const QString ip = ipOf(line).toString();
    const QString device = deviceOf(line).toString();
    const QStringView status = statusOf(line);
    if (status.contains(u"RELAY")) {
        if (const PRFidInfo job = findOrAdd(ip, device, relayNumber(line).toString())) {
            job->StatusDevice = relayState(line) == u"Y" ? kOn : kOff;
        }
    } else if (status.toString().toUpper() == connector::kPing) {
        DevicePing(ip, device, connector::deviceTypeOf(line).toString());
    }
}

QString TSwitchDevice::ParseMessage(const QString& AMess, const QString& AKey)
{
    using TCut = QStringView (*)(QStringView);
    static constexpr std::array<std::pair<QStringView, TCut>, 11> cuts = {{
        {u"IP", ipOf},
        {u"DEVICE", deviceOf},
        {u"DEVICETYPE", connector::deviceTypeOf},
        {u"RELA", reportedRelay},
        {u"RELAONOFF", reportedState},
        {u"RELATIME", reportedTime},
        {u"RELAY", relayNumber},
        {u"RELAYONOFF", relayState},
        {u"STATUS", statusOf},
        {u"STATUSSHORT", shortStatusOf},
        {u"CARDNUMBER", connector::cardNumberOf},
    }};
    for (const auto& [key, cut] : cuts) {
        if (AKey == key) {
            return cut(AMess).toString();
        }
    }
    return {};
}

void TSwitchDevice::UpdatePing(const QString& IP, const QString& Device, const QString& DeviceType)
{
    Q_UNUSED(IP)
    Q_UNUSED(Device)
    Q_UNUSED(DeviceType)
}

int TSwitchDevice::p_hw_FindDevice(const QString& IP, const QString& Device, const QString& Relay)
{
    return Operation(
        [this, ip = IP, device = Device, relay = Relay] {
            findOrAdd(ip, device, relay);
            return StackArray.find(device, relay);
        },
        -1);
}

// None when there is no such job and no room for one, and in the form designer, where there is no table.
PRFidInfo TSwitchDevice::findOrAdd(const QString& ip, const QString& device, const QString& relay)
{
    if (const PRFidInfo job = StackArray.at(StackArray.find(device, relay))) {
        return job;
    }
    if (Designing()) {
        return nullptr;
    }
    const PRFidInfo added = StackArray.add(ip, device, relay);
    if (!added) {
        reportError(controller::kErrorTableFull, kJobTableFull);
    }
    return added;
}

QString TSwitchDevice::p_hw_CheckStatus(const QString& IP, const QString& Device, const QString& Relay,
                                        const QString& Status, platform::TDateTime FinishTime)
{
    return Operation(
        [=, this, ip = IP, device = Device, relay = Relay, status = Status] {
            const PRFidInfo job = findOrAdd(ip, device, relay);
            if (!job) {
                return QString();
            }
            job->Status = status;
            job->Finishtime = FinishTime;
            showStatus(kCheckOld, job->Device, job->Relay, job->Status, job->StatusDevice);
            echoJob(common::kCheck, *job);
            logJobs();
            return job->Status;
        },
        QString());
}

void TSwitchDevice::logJobs()
{
    const int count = FLogEvent ? StackArray.size() : 0;
    for (int index = 0; index < count; ++index) {
        const PRFidInfo job = StackArray.at(index);
        Fire(FLogEvent, QString::number(index) + u' ' + job->Device + u' ' + job->StatusDevice);
    }
}

bool TSwitchDevice::p_hw_relay(const QString& IP, const QString& Device, const QString& Relay)
{
    Operation([this, command = relayCommand(IP, Device, Relay)] {
        SendCommandToConnector(command); // also an empty one
        if (FLogEvent) {
            Fire(FLogEvent, common::kSentToPort + command);
        }
    });
    return true;
}

bool TSwitchDevice::p_hw_SendComCommand(int yesnot)
{
    Q_UNUSED(yesnot)
    return true;
}

bool TSwitchDevice::p_hw_CheckStatusAll()
{
    Operation([this] {
        if (!lineReady()) {
            return;
        }
        const int count = DeviceList().size();
        for (int index = 0; index < count; ++index) {
            const connector::RDeviceList board = DeviceList().at(index);
            SendCommandToConnector(QStringLiteral("HW") + board->IP + u':' + board->Device);
        }
    });
    return true;
}

void TSwitchDevice::OnCheckTimer(TComponent* Sender)
{
    Q_UNUSED(Sender)
    p_hw_CheckStatusAll();
}

void TSwitchDevice::SendCommandToConnector(const QString& Cmd)
{
    Operation([this, command = Cmd] {
        if (hasConnector()) {
            send(command);
        }
    });
}

int TSwitchDevice::p_hw_checktimeout(platform::TDateTime ATime1, platform::TDateTime ATime2)
{
    const qint64 first = common::TimeOfDayMs(ATime1);
    const qint64 second = common::TimeOfDayMs(ATime2);
    const int order = first < second ? -1 : int(first > second);
    return Operation(
        [&] {
            if (FLogEvent) {
                const auto text = [](qint64 ms) {
                    return common::DateTimeToText(static_cast<double>(ms) /
                                                  static_cast<double>(platform::kMsPerDay));
                };
                Fire(FLogEvent, kTimesCompared + text(first) + u' ' + text(second) + u' ' +
                                    QString::number(std::abs(first - second) / kMsPerMinute));
            }
            return order;
        },
        order);
}

bool TSwitchDevice::p_hw_checktimebetween(platform::TDateTime ATime1, platform::TDateTime ATime2,
                                          qint64 ASeconds) const
{
    return common::ElapsedMoreThan(ATime1, ATime2, ASeconds);
}

void TSwitchDevice::ShowinternalStatus(TComponent* Sender, const QString& FName, const QString& fDevice,
                                       const QString& fRelay, const QString& fStatus1,
                                       const QString& fStatus2)
{
    Operation([&] {
        show(Sender, FCheckStatus, u"",
             std::array<QVariant, 6>{FName, fDevice, fRelay, fStatus1, fStatus2, QString()});
    });
}

void TSwitchDevice::showStatus(const QString& name, const QString& device, const QString& relay,
                               const QString& status1, const QString& status2)
{
    if (FCheckStatus) {
        ShowinternalStatus(this, name, device, relay, status1, status2);
    }
}

// The event and the monitor text each read the job anew.
void TSwitchDevice::report(const TRFidInfo& job)
{
    showStatus(common::kStack, job.Device, job.Relay, job.Status, job.StatusDevice);
    echoJob(common::kStack, job);
}

void TSwitchDevice::echoJob(const QString& name, const TRFidInfo& job)
{
    if (echoes()) {
        echo(common::StatusMessage({name, job.Device, job.Relay, job.Status, job.StatusDevice}));
    }
}

// A board is reported as its ping tells, whatever its entry says; intended.
void TSwitchDevice::DevicePing(const QString& IP, const QString& Device, const QString& DeviceType)
{
    Operation([this, told = connector::TDevicelist{IP, Device, DeviceType}] {
        notePing(told.IP, told.Device, told.DeviceType);
        reportPing(told, connector::kPing);
    });
}

void TSwitchDevice::reportPing(const connector::TDevicelist& board, const QString& word)
{
    showStatus(common::kStack, board.Device, QString(), word, word);
    if (echoes()) {
        echo(common::StatusMessage(
            {common::kStack, board.IP, board.Device, board.DeviceType, QString(), word, word}));
    }
}

} // namespace tnv5::switching
