// The deciding half of the component: the sweep over the pass table, the host's check, and the commands.

#include "tnv5/common/busy_scope.h"
#include "tnv5/common/elapsed.h"
#include "tnv5/common/messages.h"
#include "tnv5/common/variants.h"
#include "tnv5/turnstile/command.h"
#include "tnv5/turnstile/line.h"
#include "tnv5/turnstile/turnstile_device.h"
#include "tnv5/turnstile/turnstile_texts.h"

namespace tnv5::turnstile {

namespace {

constexpr int kDoorTimeout = 3;    // seconds that a door may stay open without passage
constexpr int kAnswerTimeout = 1;  // seconds that a controller has to acknowledge
constexpr int kOpenGrace = 2;      // seconds added to the time-out of an open turnstile
constexpr int kProgressGrace = 10; // seconds added while a passage is under way

} // namespace

void TTurnStylerDevice::p_hw_CallStackArray()
{
    Operation([this] {
        if (IDBusy) {
            stopSweepsWhenEmpty();
            return;
        }
        {
            const common::TBusyScope busy(*this, IDBusy);
            const int count = StackArray.size(); // what handlers add meanwhile waits for the next sweep
            for (int index = 0; index < count; ++index) {
                if (sweepOne(StackArray.at(index)) == TVerdict::Remove) {
                    StackArray.remove(index);
                    return;
                }
            }
        }
        stopSweepsWhenEmpty();
    });
}

void TTurnStylerDevice::stopSweepsWhenEmpty()
{
    if (StackArray.isEmpty()) {
        stopSweeps();
    }
}

// The checks stand in this order and see what the ones before them did.
TTurnStylerDevice::TVerdict TTurnStylerDevice::sweepOne(const PRFidInfo& pass)
{
    if (pass->Status == common::kNew) {
        decide(pass);
    }
    if (pass->Status == common::kOpen) {
        reportStack(*pass);
        checkOpen(*pass);
    }
    if (pass->StatusHard.isEmpty() && pass->Status == common::kOpen && elapsed(*pass, kAnswerTimeout)) {
        pass->Status = common::kNoAnswer;
    }
    if (pass->Status == common::kNoAnswer && offer(pass, cmNoAnswer) == TVerdict::Remove) {
        return TVerdict::Remove;
    }
    // set from outside only; kept for that
    if (pass->Status == common::kCrcError && offer(pass, cmNoAnswer) == TVerdict::Remove) {
        return TVerdict::Remove;
    }
    if (pass->Status == common::kTimeout && offer(pass, cmTimeout) == TVerdict::Remove) {
        return TVerdict::Remove;
    }
    if (pass->Status == common::kClose) {
        reportStack(*pass);
        return TVerdict::Remove;
    }
    if (pass->Status == common::kProgress) {
        reportStack(*pass);
        if (isTurnstileChannel(pass->Device) && elapsed(*pass, qint64{FTimeOut} + kProgressGrace)) {
            pass->Status = common::kTimeout;
        }
    }
    if (pass->Status == common::kFinish) {
        return offer(pass, cmFinish);
    }
    return TVerdict::Keep;
}

void TTurnStylerDevice::decide(const PRFidInfo& pass)
{
    reportStack(*pass);
    const int answer = sqlCheck(pass, cmOpen);
    if (answer == 0) {
        sendComCommand(pass, 0);
        pass->Status = common::kClose;
    } else if (answer == 1) {
        sendComCommand(pass, 1);
        if (!common::IsPseudoCard(pass->CardNumber)) {
            pass->Status = common::kOpen;
        }
    }
}

void TTurnStylerDevice::checkOpen(TRFidInfo& pass) const
{
    if (isTurnstileChannel(pass.Device) && elapsed(pass, qint64{FTimeOut} + kOpenGrace)) {
        pass.Status = common::kTimeout;
    }
    if (isDoor(pass.Device) && elapsed(pass, kDoorTimeout)) {
        pass.Status = common::kTimeout;
    }
}

TTurnStylerDevice::TVerdict TTurnStylerDevice::offer(const PRFidInfo& pass, TCheckMode mode)
{
    reportStack(*pass);
    return sqlCheck(pass, mode) == 1 ? TVerdict::Remove : TVerdict::Keep;
}

void TTurnStylerDevice::reportStack(const TRFidInfo& pass)
{
    report(common::kStack, pass.Device, pass.CardNumber, pass.Status, pass.Status);
}

bool TTurnStylerDevice::isDoor(const QString& address) const
{
    return channelOf(address) == FDoorIndex;
}

bool TTurnStylerDevice::elapsed(const TRFidInfo& pass, qint64 limit) const
{
    // times of day: a pass that spans midnight times out at once; intended
    return common::ElapsedMoreThan(platform::TimeOfDay(), pass.Starttime, limit);
}

bool TTurnStylerDevice::p_hw_checktimeout(platform::TDateTime ATime1, platform::TDateTime ATime2,
                                          int ASec) const
{
    return common::ElapsedMoreThan(ATime1, ATime2, ASec);
}

int TTurnStylerDevice::p_hw_SQLCheck(int AIndex, int AMode)
{
    const PRFidInfo pass = StackArray.at(AIndex);
    return pass ? Operation([&] { return sqlCheck(pass, AMode); }, -1) : -1;
}

int TTurnStylerDevice::sqlCheck(const PRFidInfo& pass, int mode)
{
    switch (mode) {
    case cmOpen: {
        const int answer = askHost(pass, mode, -1);
        if (common::IsPseudoCard(pass->CardNumber)) {
            pass->Status = common::kOpen; // whatever the answer, also without one; intended
        }
        return answer;
    }
    case cmTimeout:
    case cmFinish:
    case cmNoAnswer:
        return askHost(pass, mode, 1);
    default:
        return -1;
    }
}

// What the handler raises counts as no answer.
int TTurnStylerDevice::askHost(const PRFidInfo& pass, int mode, int withoutAnswer)
{
    try {
        return common::VariantToInteger(
            ask(FCheckSQL, withoutAnswer, -1, pass->Device, pass->CardNumber, pass->Status, pass->Img, mode));
    } catch (const platform::TDestroyed&) {
        throw;
    } catch (...) {
        reportError(kErrorCheckHandler, platform::exceptionMessage());
        return withoutAnswer;
    }
}

void TTurnStylerDevice::p_hw_SendComCommand(int AIndex, int yesnot)
{
    if (const PRFidInfo pass = StackArray.at(AIndex)) {
        Operation([&] { sendComCommand(pass, yesnot); });
    }
}

void TTurnStylerDevice::sendComCommand(const PRFidInfo& pass, int yesnot)
{
    if (yesnot == 0) {
        sendCommand(refuseCommand(pass->Device, FRelayClose), kErrorCommand);
    } else if (yesnot == 1) {
        sendCommand(openCommand(pass->Device, FRelayOpen, FRelayOpenDoor, FTimeDelayOpen), kErrorCommand);
    }
}

void TTurnStylerDevice::p_hw_relay(const QString& Device, const QString& Relay, int yesnot)
{
    if (yesnot == 0 || yesnot == 1) {
        Operation([&] { sendCommand(relayCommand(Device, Relay, yesnot == 1), kErrorCommand); });
    }
}

void TTurnStylerDevice::p_hw_CheckStatusAll()
{
    Operation([&] { sendCommand(kPollCommand, kErrorPollWrite); });
}

void TTurnStylerDevice::sendCommand(const QString& command, QStringView writeErrorCode)
{
    if (!FComport || !FComport->Connected()) {
        reportEchoedError(kErrorCommand, common::kPortNotOpen);
        return;
    }
    Attempt([&] { FComport->Write(commandLine(command)); },
            [&](const QString& message) { reportEchoedError(writeErrorCode, message); });
    log(common::kSentToPort, command); // also after a failed write; intended
}

} // namespace tnv5::turnstile
