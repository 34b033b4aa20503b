// The working half of the component: the sweep over the pass table, the host's check, and the commands.

#include "tnv5/common/busy_scope.h"
#include "tnv5/common/elapsed.h"
#include "tnv5/common/messages.h"
#include "tnv5/common/variants.h"
#include "tnv5/d24/d24_command.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/d24/d24_texts.h"

#include <optional>

namespace tnv5::d24 {

namespace {

constexpr int kResendAfter = 1;    // seconds after which an unconfirmed command is repeated, every sweep
constexpr int kConfirmTimeout = 2; // seconds that a controller has to confirm
constexpr int kDoorTimeout = 3;    // seconds that a door may stay open
constexpr int kOpenGrace = 2;      // seconds added to the time-out of an open turnstile
constexpr int kProgressGrace = 10; // seconds added while a passage is under way

bool isType(const TRFidInfo& pass, QStringView letter)
{
    return pass.DeviceType == letter;
}

// The states that a pass reports and acts on.
bool isKnownStatus(const QString& status)
{
    return status == common::kNew || status == common::kOpen || status == common::kNoAnswer ||
           status == common::kCrcError || status == common::kTimeout || status == common::kClose ||
           status == kProgressStart || status == common::kProgress || status == common::kFinish;
}

} // namespace

void TTurnStylerDeviceD24::p_hw_CallStackArray()
{
    Operation([this] {
        if (!IDBusy) {
            std::optional<common::TBusyScope> busy;
            const int count = StackArray.size(); // what handlers add meanwhile waits for the next sweep
            for (int index = 0; index < count; ++index) {
                const PRFidInfo pass = StackArray.at(index);
                if (!pass) {
                    break;
                }
                resend(pass); // the first one before the sweep counts as busy; intended
                if (!busy) {
                    busy.emplace(*this, IDBusy);
                }
                if (StackArray.at(index) != pass) {
                    break; // a sweep inside the resend has removed some
                }
                if (sweepOne(pass) == TVerdict::Remove) {
                    StackArray.remove(index);
                    return;
                }
            }
        }
        stopSweepsWhenEmpty();
    });
}

void TTurnStylerDeviceD24::stopSweepsWhenEmpty()
{
    if (StackArray.isEmpty()) {
        stopSweeps();
    }
}

void TTurnStylerDeviceD24::resend(const PRFidInfo& pass)
{
    if (FCheckET && !pass->Finish && !pass->Command.isEmpty() && elapsed(*pass, kResendAfter) &&
        hasConnector()) {
        send(pass->Command);
    }
}

TTurnStylerDeviceD24::TVerdict TTurnStylerDeviceD24::sweepOne(const PRFidInfo& pass)
{
    if (!isKnownStatus(pass->Status)) {
        return TVerdict::Keep;
    }
    reportPass(common::kStack, *pass); // a handler may change the state: the new one is acted on
    const auto removeWhen = [](bool retired) { return retired ? TVerdict::Remove : TVerdict::Keep; };
    if (pass->Status == common::kNew) {
        decide(pass);
    } else if (pass->Status == common::kOpen) {
        checkOpen(*pass);
    } else if (pass->Status == common::kNoAnswer) {
        return removeWhen(sqlCheck(pass, cmNoAnswer) != 0); // any answer but 0, unlike the others; intended
    } else if (pass->Status == common::kCrcError) {
        return removeWhen(sqlCheck(pass, cmNoAnswer) == 1); // set from outside only; kept for that
    } else if (pass->Status == common::kTimeout) {
        return removeWhen(sqlCheck(pass, cmTimeout) == 1);
    } else if (pass->Status == common::kClose) {
        return TVerdict::Remove;
    } else if (pass->Status == kProgressStart) {
        beginProgress(pass);
    } else if (pass->Status == common::kProgress) {
        checkProgress(*pass);
    } else if (pass->Status == common::kFinish) {
        return finish(pass);
    }
    return TVerdict::Keep;
}

void TTurnStylerDeviceD24::decide(const PRFidInfo& pass)
{
    const int answer = sqlCheck(pass, cmOpen);
    if (answer == -1) {
        pass->Status = common::kNoAnswer;
    } else if (answer == 0) {
        sendComCommand(pass, 0);
        pass->Status = common::kClose;
    } else if (answer == 1) {
        if (pass->CardNumber != common::kCardButton) { // the button has opened already
            sendComCommand(pass, 1);
        }
        if (isType(*pass, u"I")) {
            pass->Status = common::kFinish;
        } else if (!common::IsPseudoCard(pass->CardNumber)) {
            pass->Status = common::kOpen;
        }
    }
}

void TTurnStylerDeviceD24::checkOpen(TRFidInfo& pass) const
{
    if (isType(pass, u"I") || isType(pass, u"G")) {
        if (!FCheckET || pass.Finish || elapsed(pass, kConfirmTimeout)) {
            pass.Status = common::kNoAnswer;
        }
    }
    if (isType(pass, u"T") && elapsed(pass, qint64{FTimeOut} + kOpenGrace)) {
        pass.Status = common::kTimeout;
    }
    if (isType(pass, u"D") && elapsed(pass, kDoorTimeout)) {
        pass.Status = common::kTimeout;
    }
    if (common::IsPseudoCard(pass.CardNumber)) { // wins over the others
        pass.Status = common::kFinish;
    }
}

void TTurnStylerDeviceD24::beginProgress(const PRFidInfo& pass)
{
    checkProgress(*pass);
    sqlCheck(pass, cmProgress);
    pass->Status = common::kProgress; // also over a time-out set just before; intended
}

void TTurnStylerDeviceD24::checkProgress(TRFidInfo& pass) const
{
    if (isType(pass, u"T") && elapsed(pass, qint64{FTimeOut} + kProgressGrace)) {
        pass.Status = common::kTimeout;
    }
}

TTurnStylerDeviceD24::TVerdict TTurnStylerDeviceD24::finish(const PRFidInfo& pass)
{
    if (sqlCheck(pass, cmFinish) == 1) {
        return TVerdict::Remove;
    }
    pass->Status = common::kNoAnswer;
    return TVerdict::Keep;
}

bool TTurnStylerDeviceD24::elapsed(const TRFidInfo& pass, qint64 limit) const
{
    // times of day: a pass that spans midnight times out at once; intended
    return common::ElapsedMoreThan(pass.Starttime, platform::TimeOfDay(), limit);
}

bool TTurnStylerDeviceD24::p_hw_checktimeout(platform::TDateTime ATime1, platform::TDateTime ATime2,
                                             int ASec) const
{
    return common::ElapsedMoreThan(ATime1, ATime2, ASec);
}

int TTurnStylerDeviceD24::p_hw_SQLCheck(int AIndex, int AMode)
{
    const PRFidInfo pass = StackArray.at(AIndex);
    return pass ? Operation([&] { return sqlCheck(pass, AMode); }, -1) : -1;
}

int TTurnStylerDeviceD24::sqlCheck(const PRFidInfo& pass, int mode)
{
    switch (mode) {
    case cmOpen: {
        const int answer = askHost(pass, mode, -1);
        if (common::IsPseudoCard(pass->CardNumber)) {
            pass->Status = common::kOpen; // whatever the answer, also without one; intended
        }
        if (isType(*pass, u"I")) {
            pass->Status = common::kFinish;
        }
        return answer;
    }
    case cmTimeout:
    case cmFinish:
    case cmNoAnswer:
    case cmProgress:
        return askHost(pass, mode, 1);
    default:
        return -1;
    }
}

// Exceptions of the handler leave the sweep; intended.
int TTurnStylerDeviceD24::askHost(const PRFidInfo& pass, int mode, int withoutHandler)
{
    if (!FCheckSQL) {
        return withoutHandler;
    }
    QVariant mess = QString();
    const QVariant answer = ask(FCheckSQL, withoutHandler, -1, pass->IP, pass->Device, pass->DeviceType,
                                pass->CardNumber, pass->Status, pass->Img, mode, mess);
    if (mode == cmOpen) {
        pass->InfoMess = common::VariantToText(mess);
    }
    return common::VariantToInteger(answer);
}

bool TTurnStylerDeviceD24::p_hw_SendComCommand(int AIndex, int yesnot)
{
    const PRFidInfo pass = StackArray.at(AIndex);
    Operation([&] { sendComCommand(pass, yesnot); });
    return true;
}

void TTurnStylerDeviceD24::sendComCommand(const PRFidInfo& pass, int yesnot)
{
    if (!connectorReady() || !pass || (yesnot != 0 && yesnot != 1)) {
        return;
    }
    const bool allow = yesnot == 1;
    const TCommands commands = commandsFor(*pass, allow);
    Attempt(
        [&] {
            if (!commands.extra.isEmpty()) {
                send(commands.extra);
            }
            pass->Command = commands.main;
            pass->Finish = false;
            pass->CRC = send(commands.main); // also an empty one
            pass->CRCtime = platform::TimeOfDay();
        },
        [&](const QString& message) {
            reportError(allow ? kErrorCommand : kErrorRefuse, message);
            echo(common::ErrorMessage((allow ? kErrorAllowMonitor : kErrorRefuse).toString() + message));
        });
    log(common::kSentToPort, commands.main);
}

bool TTurnStylerDeviceD24::connectorReady()
{
    const bool ready = lineReady();
    if (!ready) {
        reportError(kErrorCommand, common::kPortNotOpen);
        echo(common::ErrorMessage(kErrorCommand.toString() + common::kPortNotOpen));
    }
    return ready;
}

bool TTurnStylerDeviceD24::p_hw_CheckStatusAll()
{
    Operation([this] { connectorReady(); });
    return true;
}

bool TTurnStylerDeviceD24::p_hw_relay(const QString& IP, const QString& Device, const QString& Relay,
                                      int yesnot)
{
    Q_UNUSED(IP)
    Q_UNUSED(Device)
    Q_UNUSED(Relay)
    Q_UNUSED(yesnot)
    return p_hw_CheckStatusAll(); // relays of these controllers are not switched one by one
}

} // namespace tnv5::d24
