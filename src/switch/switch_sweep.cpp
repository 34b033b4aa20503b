// The deciding half of the component: the sweep over the jobs, and the host's permission.

#include "tnv5/common/busy_scope.h"
#include "tnv5/common/messages.h"
#include "tnv5/common/variants.h"
#include "tnv5/switch/switch_device.h"
#include "tnv5/switch/switch_texts.h"

namespace tnv5::switching {

namespace {

constexpr qint64 kReportTimeout = 2;                // seconds that a board has to report for the first time
constexpr platform::TDateTime kMinute = 1.0 / 1440; // a day's

} // namespace

void TSwitchDevice::p_hw_CallStackArray()
{
    Operation([this] {
        if (IDBusy) {
            return;
        }
        const common::TBusyScope busy(*this, IDBusy);
        for (int index = StackArray.size() - 1; index >= 0; --index) { // what handlers add waits
            sweepOne(StackArray.at(index));
        }
    });
}

// The steps stand in this order and see what the ones before them wrote.
void TSwitchDevice::sweepOne(const PRFidInfo& job)
{
    showStatus(kBeforeStack, job->Device, job->Relay, job->Status, job->StatusDevice);
    if (job->StatusDevice == kNotInLine) {
        giveUp(job);
    }
    if (job->StatusDevice == kNone) {
        awaitFirstReport(job);
    }
    if (job->Status == kNone) {
        askWantedState(job);
    }
    if (job->Status == kOn && job->StatusDevice == kOff) {
        switchOn(job);
    }
    if (job->Status == kOff && job->StatusDevice == kOn) {
        switchOff(job);
    }
    if (job->Status == kOn && job->StatusDevice == kOn) {
        watchTime(job);
    }
}

void TSwitchDevice::giveUp(const PRFidInfo& job)
{
    report(*job);
    if (allowed(job, cmNoAnswer)) {
        job->Status = kOff;
        showStatus(common::kStack, job->Device, job->Relay, job->Status, kGivenUp);
        echo(common::StatusMessage({common::kStack, job->Device, job->Relay, job->Status, kGivenUp}));
        reportError(u"", kDevice + job->Device + kDoesNotWork);
        echo(common::ErrorMessage(kDevice + job->Device + kDoesNotWork));
    }
    job->StatusDevice = kOff;
}

void TSwitchDevice::awaitFirstReport(const PRFidInfo& job)
{
    p_hw_ProtocolIn(u'$' + job->IP + u':' + job->Device + QStringLiteral("900")); // polls nothing; intended
    // a date and time against a time of day: a new job is always given up at once; intended
    if (p_hw_checktimebetween(job->Starttime, platform::TimeOfDay(), kReportTimeout)) {
        job->StatusDevice = kNotInLine;
    }
    report(*job);
}

void TSwitchDevice::askWantedState(const PRFidInfo& job)
{
    QVariant wanted = kOff;
    Fire(FOnNewItem, job->Device, job->Relay, job->Status, job->StatusDevice, wanted);
    job->Status = common::VariantToText(wanted);
}

void TSwitchDevice::switchOn(const PRFidInfo& job)
{
    report(*job);
    if (allowed(job, cmSwitchOn)) {
        commandRelay(job);
        job->StatusDevice = kOn;
    } else {
        job->Status = kOff;
    }
}

void TSwitchDevice::switchOff(const PRFidInfo& job)
{
    report(*job);
    if (allowed(job, cmSwitchOff)) {
        commandRelay(job);
        job->StatusDevice = kOff;
    } else {
        job->Status = kOn;
    }
}

// A job whose time is over is only reported; intended.
void TSwitchDevice::watchTime(const PRFidInfo& job)
{
    report(*job);
    if (p_hw_checktimeout(platform::Now(), job->Finishtime) >= 0) {
        return;
    }
    if (allowed(job, cmRunning)) {
        job->Status = kOff;
        report(*job);
        job->StatusDevice = kOff;
        report(*job);
        commandRelay(job);
    } else {
        job->Finishtime = platform::Now() + kMinute;
    }
}

void TSwitchDevice::commandRelay(const PRFidInfo& job)
{
    p_hw_relay(job->IP, job->Device, job->Relay);
}

int TSwitchDevice::p_hw_SQLCheck(int AIndex, int yesnot)
{
    const PRFidInfo job = StackArray.at(AIndex);
    return job ? Operation([&] { return sqlCheck(job, yesnot); }, -1) : -1;
}

int TSwitchDevice::sqlCheck(const PRFidInfo& job, int mode)
{
    if (mode < cmSwitchOn || mode > cmNoAnswer) {
        return -1;
    }
    return common::VariantToInteger(
        ask(FCheckSQL, 1, 1, job->Device, job->Relay, job->Status, job->StatusDevice, mode));
}

} // namespace tnv5::switching
