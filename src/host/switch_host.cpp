#include "tnv5/host/switch_host.h"

#include "tnv5/common/date_time_text.h"
#include "tnv5/connector/connector_texts.h"
#include "tnv5/switch/switch_texts.h"

#include <algorithm>
#include <utility>

namespace tnv5::host {

using switching::cmNoAnswer;
using switching::cmRunning;
using switching::cmSwitchOff;
using switching::cmSwitchOn;
using switching::kNone;
using switching::kOff;
using switching::kOn;

namespace {

const QString kLink = QStringLiteral("0.0.0.0"); // the serial line's

qint64 nowMs()
{
    return platform::TClock::current().nowMs();
}

/// Less than so long ago; also when the clock was set back meanwhile, it ends.
bool within(qint64 since, qint64 ms)
{
    const qint64 passed = nowMs() - since;
    return passed >= 0 && passed < ms;
}

} // namespace

TSwitchHost::TSwitchHost(switching::TSwitchDevice& device, TDatabase& database,
                         const std::optional<QStringList>& names)
    : FDevice(&device), FDatabase(database), FBooks(database)
{
    for (const TLamp& lamp : FBooks.lamps()) {
        if (!names || names->contains(lamp.name)) {
            FPlaces[lamp.board + lamp.relay].lamp = lamp;
        }
    }
    load();
    attach();
    FTimer.SetInterval(kLookMs);
    FTimer.OnTimer = [this](platform::TTimer*) { tick(); };
    FTimer.SetEnabled(true);
}

TSwitchHost::~TSwitchHost()
{
    close();
}

void TSwitchHost::attach()
{
    using platform::TComponent;
    FDevice->SetOnCheckSQL([this](TComponent*, const QVariant& board, const QVariant& relay,
                                  const QVariant& status, const QVariant&, const QVariant& mode,
                                  QVariant& result) {
        result = onCheck(board.toString(), relay.toString(), status.toString(), mode.toInt());
    });
    FDevice->SetOnNewItem([this](TComponent*, const QVariant& board, const QVariant& relay, const QVariant&,
                                 const QVariant& statusDevice, QVariant& status) {
        status = onNewItem(board.toString(), relay.toString(), statusDevice.toString());
    });
    FDevice->SetOnCheckStatus([this](TComponent*, const QVariant&, const QVariant& board, const QVariant&,
                                     const QVariant& status, const QVariant&,
                                     const QVariant&) { onStatus(board.toString(), status.toString()); });
    FDevice->SetOnError([this](TComponent*, const QString& text) { tell(text); });
}

void TSwitchHost::close()
{
    FTimer.SetEnabled(false);
    if (FDevice) {
        FDevice->SetOnCheckSQL({});
        FDevice->SetOnNewItem({});
        FDevice->SetOnCheckStatus({});
        FDevice->SetOnError({});
        FDevice.clear();
    }
}

// Reads what has not ended. What was known stays known when the books cannot be read: paid time ends all the
// same.
void TSwitchHost::load()
{
    FLoadedAt = nowMs();
    try {
        const QList<TLampTime> times = FBooks.open();
        for (auto& [key, place] : FPlaces) {
            place.times.clear();
        }
        for (const TLampTime& time : times) {
            if (TPlace* const place = placeOf(time.lamp)) {
                place->times.append(std::make_shared<TLampTime>(time));
            }
        }
    } catch (const EDatabase& error) {
        booksFailed(QStringLiteral("the books of the lamps cannot be read: ") + error.message());
    }
}

// ---- what the component asks

int TSwitchHost::onCheck(const QString& board, const QString& relay, const QString& status, int mode)
{
    TPlace* const place = placeOf(board, relay);
    if (place == nullptr) {
        return 0; // no lamp: the component follows what the board says
    }
    place->caution.seen(status);
    bool yes = false;
    switch (mode) {
    case cmSwitchOn:
        yes = maySwitchOn(*place);
        place->caution.leave(yes ? kOn : kOff);
        break;
    case cmSwitchOff:
    case cmRunning:
        yes = maySwitchOff(*place);
        place->caution.leave(yes ? kOff : kOn);
        break;
    case cmNoAnswer:
        place->caution.doubt(); // the component takes it for off from now on
        yes = !answers(board);
        place->caution.leave(yes ? kOff : status);
        if (const PLampTime order = yes ? place->order() : nullptr) {
            end(*place, order, TLampEnding::Unanswered);
        }
        break;
    default:
        break;
    }
    return int(yes);
}

bool TSwitchHost::maySwitchOn(TPlace& place)
{
    if (place.caution.unsure(cmSwitchOn)) {
        return false;
    }
    if (!place.running()) {
        const PLampTime order = place.order();
        if (!order) {
            return false;
        }
        if (hasGone(place.lamp.board)) {
            end(place, order, TLampEnding::Unanswered);
            return false;
        }
        if (!begin(place, order)) {
            return false;
        }
    }
    place.caution.commanded(cmSwitchOn);
    return true;
}

bool TSwitchHost::maySwitchOff(TPlace& place)
{
    if (place.running() || place.caution.unsure(cmSwitchOff)) {
        return false;
    }
    place.caution.commanded(cmSwitchOff);
    return true;
}

// A relay that is no lamp is wanted as it is, and the component follows its board.
QString TSwitchHost::onNewItem(const QString& board, const QString& relay, const QString& statusDevice)
{
    TPlace* const place = placeOf(board, relay);
    if (place == nullptr) {
        return statusDevice == kOn ? kOn : kOff;
    }
    const QString& wanted = place->running() ? kOn : kOff;
    place->caution.leave(wanted);
    return wanted;
}

void TSwitchHost::onStatus(const QString& board, const QString& status)
{
    if (status == connector::kPing) {
        FHeard[board] = FLooks;
    }
}

// ---- what the books say

void TSwitchHost::tick()
{
    ++FLooks;
    for (auto& [key, place] : FPlaces) {
        place.caution.tick();
    }
    look();
}

void TSwitchHost::look()
{
    if (FLooking || !FDevice) {
        return;
    }
    FLooking = true;
    if (!within(FLoadedAt, kReloadMs)) {
        load();
    }
    bool changed = false;
    for (auto& [key, place] : FPlaces) {
        changed = direct(place) || changed;
    }
    if (changed) {
        sweep();
    }
    for (auto& [key, place] : FPlaces) {
        endOver(place); // the lamps are off already: they need not wait for the books
        watchBoard(place);
    }
    FLooking = false;
}

// Also orders that have waited too long.
void TSwitchHost::endOver(TPlace& place)
{
    for (const PLampTime& time : QList(place.times)) {
        if (time->waiting() && !within(common::WholeMs(time->ordered), kPatienceMs)) {
            end(place, time, TLampEnding::Unanswered);
        } else if (!time->waiting() && !time->running(platform::Now())) {
            end(place, time, TLampEnding::Over);
        }
    }
}

// Makes the wanted state of a lamp's job what the books say.
// @return whether there is something to sweep for
bool TSwitchHost::direct(TPlace& place)
{
    const PLampTime order = place.order();
    const switching::PRFidInfo& job = jobOf(place);
    if (!job) { // its board has told nothing yet; the component finds out whether it answers
        if (order) {
            setWanted(place, kOn);
        }
        return order != nullptr;
    }
    place.caution.seen(job->Status);
    if (job->Status == kNone) {
        return false; // the component will ask
    }
    const bool lit = job->Status == kOn && job->StatusDevice == kOn; // also without anybody's paying
    if (order && (place.running() || (lit && !place.caution.unsure(cmSwitchOff)))) {
        begin(place, order);
    }
    const bool on = place.running() || place.order();
    const QString& wanted = on ? kOn : kOff;
    if (place.caution.unsure(on ? cmSwitchOn : cmSwitchOff)) {
        return false;
    }
    if (job->Status != wanted) {
        setWanted(place, wanted);
        return true;
    }
    return job->StatusDevice == (on ? kOff : kOn); // somebody switched it, or it lost its power
}

void TSwitchHost::setWanted(TPlace& place, const QString& wanted)
{
    if (!FDevice) {
        return;
    }
    place.caution.leave(wanted);
    const platform::TDateTime until = wanted == kOn ? place.end() : platform::Now();
    platform::guarded(
        [&] { FDevice->p_hw_CheckStatus(kLink, place.lamp.board, place.lamp.relay, wanted, until); });
}

// Now, and not up to three seconds later.
void TSwitchHost::sweep()
{
    if (FDevice) {
        platform::guarded([this] { FDevice->p_hw_CallStackArray(); });
    }
}

bool TSwitchHost::sell(const QString& card, const QString& lamp, int minutes)
{
    TPlace* const place = placeOf(lamp);
    if (place == nullptr || minutes < 1 || minutes > TLampBooks::kMaxMinutes) {
        tell(QStringLiteral("%1 min on \"%2\" are not sold").arg(minutes).arg(lamp));
        return false;
    }
    const std::optional<THolder> holder = FDatabase.holderOf(card);
    if (!holder) {
        tell(QStringLiteral("card %1 is unknown, nothing is sold").arg(card));
        return false;
    }
    if (place->order()) {
        tell(QStringLiteral("%1 is being switched on for somebody else").arg(lamp));
        return false;
    }
    const auto time = std::make_shared<TLampTime>();
    time->ordered = platform::Now();
    time->lamp = lamp;
    time->card = card;
    time->member = holder->member.id;
    time->name = holder->member.name;
    time->minutes = minutes;
    time->cents = minutes * place->lamp.centsPerMinute;
    FBooks.order(*time);
    place->times.append(time);
    look();
    return std::any_of(place->times.begin(), place->times.end(),
                       [&](const PLampTime& open) { return open->id == time->id; });
}

bool TSwitchHost::stop(const QString& lamp)
{
    TPlace* const place = placeOf(lamp);
    if (place == nullptr || place->times.isEmpty()) {
        return false;
    }
    for (const PLampTime& time : QList(place->times)) {
        FBooks.end(*time, platform::Now(), TLampEnding::Stopped);
        place->times.removeOne(time);
        tellTime(*time);
    }
    look();
    return true;
}

// @return false when it may not begin, or not now
bool TSwitchHost::begin(TPlace& place, const PLampTime& time)
{
    if (within(FFailedAt, kReloadMs)) {
        return false;
    }
    const platform::TDateTime now = platform::Now();
    const qint64 from = std::max(common::WholeMs(now), common::WholeMs(place.end()));
    const auto until = static_cast<double>(from + time->minutes * static_cast<qint64>(MinuteMs));
    try {
        if (FBooks.begin(*time, now, until / static_cast<double>(platform::kMsPerDay))) {
            tellTime(*time);
            return true;
        }
    } catch (const EDatabase& error) { // the order stays, and is tried again
        booksFailed(QStringLiteral("time on %1 cannot begin: ").arg(time->lamp) + error.message());
        return false;
    }
    end(place, time, TLampEnding::Refused);
    return false;
}

// What the books do not take is tried again.
void TSwitchHost::end(TPlace& place, const PLampTime& time, TLampEnding ending)
{
    if (within(FFailedAt, kReloadMs)) {
        return;
    }
    try {
        FBooks.end(*time, platform::Now(), ending);
    } catch (const EDatabase& error) {
        booksFailed(QStringLiteral("the end of time on %1 cannot be written: ").arg(time->lamp) +
                    error.message());
        return;
    }
    place.times.removeOne(time);
    tellTime(*time);
}

void TSwitchHost::booksFailed(const QString& why)
{
    FFailedAt = nowMs();
    if (!std::exchange(FFailing, true)) {
        tell(why);
    }
}

// ---- what there is to see

QList<TLampState> TSwitchHost::lamps()
{
    QList<TLampState> states;
    for (auto& [key, place] : FPlaces) {
        TLampState state;
        state.lamp = place.lamp;
        const switching::PRFidInfo& job = jobOf(place);
        state.on = job && job->StatusDevice == kOn;
        state.answers = answers(place.lamp.board);
        for (const PLampTime& time : place.times) {
            if (state.name.isEmpty() && time->running(platform::Now())) {
                state.name = time->name;
            }
        }
        state.secondsLeft = secondsBetween(platform::Now(), place.end());
        states.append(state);
    }
    return states;
}

platform::TDateTime TSwitchHost::TPlace::end() const
{
    platform::TDateTime last = 0;
    for (const PLampTime& time : times) {
        if (time->running(platform::Now())) {
            last = std::max(last, time->until);
        }
    }
    return last;
}

PLampTime TSwitchHost::TPlace::order() const
{
    const auto order =
        std::find_if(times.begin(), times.end(), [](const PLampTime& time) { return time->waiting(); });
    return order == times.end() ? nullptr : *order;
}

TSwitchHost::TPlace* TSwitchHost::placeOf(const QString& board, const QString& relay)
{
    const auto place = FPlaces.find(board + relay);
    return place == FPlaces.end() ? nullptr : &place->second;
}

TSwitchHost::TPlace* TSwitchHost::placeOf(const QString& lamp)
{
    const auto place = std::find_if(FPlaces.begin(), FPlaces.end(),
                                    [&](const auto& entry) { return entry.second.lamp.name == lamp; });
    return place == FPlaces.end() ? nullptr : &place->second;
}

const switching::PRFidInfo& TSwitchHost::jobOf(TPlace& place)
{
    for (; FDevice && FKnownJobs < FDevice->StackItemsCount(); ++FKnownJobs) {
        const switching::PRFidInfo job = FDevice->StackItem(FKnownJobs);
        if (TPlace* const owner = placeOf(job->Device, job->Relay)) {
            owner->job = job;
        }
    }
    return place.job;
}

bool TSwitchHost::answers(const QString& board) const
{
    const auto heard = FHeard.constFind(board);
    return heard != FHeard.cend() && FLooks - *heard < patienceLooks();
}

/// How long a board may say nothing.
qint64 TSwitchHost::patienceLooks() const
{
    return FDevice ? FDevice->pingdelay() * 1'000LL / kLookMs : 0;
}

// A host that has just begun cannot know yet.
bool TSwitchHost::hasGone(const QString& board) const
{
    return FDevice && !answers(board) && FLooks >= patienceLooks();
}

// A lamp whose time runs on a board that does not answer may be on or off: somebody must look.
void TSwitchHost::watchBoard(TPlace& place)
{
    const QString& board = place.lamp.board;
    if (!place.gone && place.running() && hasGone(board)) {
        place.gone = true;
        tell(QStringLiteral("%1: its board %2 does not answer").arg(place.lamp.name, board));
    } else if (place.gone && answers(board)) {
        place.gone = false;
        tell(QStringLiteral("%1: its board %2 answers again").arg(place.lamp.name, board));
    }
}

void TSwitchHost::tell(const QString& text)
{
    if (OnTrouble) {
        platform::guarded([&] { OnTrouble(text); });
    }
}

void TSwitchHost::tellTime(const TLampTime& time)
{
    FFailing = false;
    if (OnTime) {
        platform::guarded([&] { OnTime(time); });
    }
}

} // namespace tnv5::host
