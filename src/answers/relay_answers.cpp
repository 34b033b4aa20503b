#include "tnv5/answers/relay_answers.h"

#include "tnv5/platform/errors.h"
#include "tnv5/switch/switch_texts.h"

namespace tnv5::answers {

using switching::cmNoAnswer;
using switching::cmRunning;
using switching::cmSwitchOff;
using switching::cmSwitchOn;
using switching::kNone;
using switching::kOff;
using switching::kOn;

namespace {

// The component's own end of a job is not used: the handlers are.
constexpr double kOneMinute = 1.0 / (24 * 60);

const QString& textOf(bool on)
{
    return on ? kOn : kOff;
}

} // namespace

struct TRelayAnswers::TRelay
{
    TRelayQuestion question;
    QString link;
    TRelayHandler handler;
    bool on = false;          // as the handler said last
    switching::PRFidInfo job; // the component's; none until it has one, never removed afterwards
    TRelayCaution caution;
};

TRelayAnswers::TRelayAnswers(switching::TSwitchDevice& device) : FDevice(&device)
{
    using platform::TComponent;
    device.SetOnCheckSQL([this](TComponent*, const QVariant& board, const QVariant& relay,
                                const QVariant& status, const QVariant&, const QVariant& mode,
                                QVariant& result) {
        result = onCheck(board.toString(), relay.toString(), status.toString(), mode.toInt());
    });
    device.SetOnNewItem([this](TComponent*, const QVariant& board, const QVariant& relay, const QVariant&,
                               const QVariant& statusDevice, QVariant& status) {
        status = onNewItem(board.toString(), relay.toString(), statusDevice.toString());
    });
    FTimer.SetInterval(TRelayCaution::kLookMs);
    FTimer.OnTimer = [this](platform::TTimer*) {
        for (auto& [key, relay] : FRelays) {
            relay->caution.tick();
        }
        look();
    };
    FTimer.SetEnabled(true);
}

TRelayAnswers::~TRelayAnswers()
{
    *FAlive = false;
    if (FDevice) {
        FDevice->SetOnCheckSQL({});
        FDevice->SetOnNewItem({});
    }
}

void TRelayAnswers::onRelay(const QString& board, const QString& relay, TRelayHandler handler,
                            const QString& link)
{
    PRelay& entry = FRelays[board + relay];
    if (!entry) {
        entry = std::make_shared<TRelay>();
        entry->question = {board, relay};
        FKnownJobs = 0; // the component may have its job already
    }
    entry->link = link;
    entry->handler = std::move(handler);
}

bool TRelayAnswers::wantsOn(const PRelay& relay)
{
    if (const TRelayHandler handler = relay->handler) { // a copy: it may replace itself
        platform::guarded([&] { relay->on = handler(relay->question); });
    }
    return relay->on;
}

// ---- what the component asks

int TRelayAnswers::onCheck(const QString& board, const QString& relay, const QString& status, int mode)
{
    const PRelay asked = relayOf(board, relay);
    if (!asked) {
        return 0; // the component follows what the board says
    }
    asked->caution.seen(status);
    if (mode == cmNoAnswer) {
        const bool silent = FDevice->DevicePingFind(asked->link, board) < 0;
        asked->caution.doubt(); // the component takes it for off from now on
        asked->caution.leave(silent ? kOff : status);
        return int(silent);
    }
    const int command = mode == cmSwitchOn ? cmSwitchOn : cmSwitchOff;
    const bool yes = wantsOn(asked) == (mode == cmSwitchOn) && !asked->caution.unsure(command);
    if (yes) {
        asked->caution.commanded(command);
    }
    asked->caution.leave(textOf(yes == (mode == cmSwitchOn)));
    return int(yes);
}

// A relay that nobody answers for is wanted as it is.
QString TRelayAnswers::onNewItem(const QString& board, const QString& relay, const QString& statusDevice)
{
    const PRelay asked = relayOf(board, relay);
    if (!asked) {
        return textOf(statusDevice == kOn);
    }
    const QString& wanted = textOf(wantsOn(asked));
    asked->caution.leave(wanted);
    return wanted;
}

// ---- what the handlers say

void TRelayAnswers::look()
{
    if (FLooking || !FDevice) {
        return;
    }
    const std::shared_ptr<bool> alive = FAlive;
    FLooking = true;
    findJobs();
    bool changed = false;
    for (const auto& [key, relay] : std::map(FRelays)) { // a copy: handlers may add relays
        changed = (*alive && FDevice && direct(relay)) || changed;
    }
    if (changed && *alive && FDevice) {
        platform::guarded(
            [this] { FDevice->p_hw_CallStackArray(); }); // now, and not up to three seconds later
    }
    if (*alive) {
        FLooking = false;
    }
}

// Makes the wanted state of a relay's job what its handler says.
// @return whether there is something to sweep for
bool TRelayAnswers::direct(const PRelay& relay)
{
    const std::shared_ptr<bool> alive = FAlive;
    const bool on = wantsOn(relay);
    if (!*alive || !FDevice) {
        return false;
    }
    const switching::PRFidInfo& job = relay->job;
    if (job) {
        relay->caution.seen(job->Status);
        if (job->Status == kNone || relay->caution.unsure(on ? cmSwitchOn : cmSwitchOff)) {
            return false; // the component will ask, or it is not sure what a command would do
        }
        if (job->Status == textOf(on)) {
            return job->StatusDevice == textOf(!on); // somebody switched it, or it lost its power
        }
    } else if (!on) {
        return false; // its board has told nothing yet
    }
    relay->caution.leave(textOf(on));
    platform::guarded([&] {
        FDevice->p_hw_CheckStatus(relay->link, relay->question.board, relay->question.relay, textOf(on),
                                  platform::Now() + kOneMinute);
    });
    return true;
}

void TRelayAnswers::findJobs()
{
    for (; FKnownJobs < FDevice->StackItemsCount(); ++FKnownJobs) {
        const switching::PRFidInfo job = FDevice->StackItem(FKnownJobs);
        if (const PRelay relay = relayOf(job->Device, job->Relay)) {
            relay->job = job;
        }
    }
}

TRelayAnswers::PRelay TRelayAnswers::relayOf(const QString& board, const QString& relay) const
{
    const auto found = FRelays.find(board + relay);
    return found == FRelays.end() ? nullptr : found->second;
}

} // namespace tnv5::answers
