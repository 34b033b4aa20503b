#include "tnv5/host/club_desk.h"

#include "tnv5/common/messages.h"
#include "tnv5/d24/d24_types.h"
#include "tnv5/host/card_decision.h"
#include "tnv5/host/picture.h"
#include "tnv5/turnstile/turnstile_types.h"

#include <algorithm>
#include <cmath>

namespace tnv5::host {

namespace {

constexpr int kNewsDelayMs = 1;
constexpr int kMaxPictures = 256;
constexpr std::size_t kMaxNews = 100'000; // told within a millisecond, unless nothing runs the event loop

static_assert(int(turnstile::cmTimeout) == int(d24::cmTimeout));
static_assert(int(turnstile::cmFinish) == int(d24::cmFinish));
static_assert(int(turnstile::cmNoAnswer) == int(d24::cmNoAnswer));

} // namespace

std::optional<TEnding> endingOf(int mode)
{
    switch (mode) {
    case turnstile::cmTimeout:
        return TEnding::TimedOut;
    case turnstile::cmFinish:
        return TEnding::Passed;
    case turnstile::cmNoAnswer:
        return TEnding::Unanswered;
    default:
        return std::nullopt;
    }
}

TClubDesk::TClubDesk(TDatabase& database) : FDatabase(database), FJournal(database), FPictures(kMaxPictures)
{
    FJournal.OnTrouble = [this](const QString& text) { trouble(text); };
    FJournal.OnLost = [this](const TPass& pass) {
        lost(QStringLiteral("%1  %2").arg(toText(pass.began), logLine(pass)));
    };
    FJournal.OnOutageLost = [this](const TOutage& outage) {
        lost(QStringLiteral("%1 to %2  %3  out of use: %4")
                 .arg(toText(outage.began), toText(outage.ended), outage.line, outage.why));
    };
    holderPicture({}); // loads the fonts now, not while the first person waits
    FNewsTimer.SetInterval(kNewsDelayMs);
    FNewsTimer.OnTimer = [this](platform::TTimer*) { tellNews(); };
    FFileTimer.SetInterval(kFileMs);
    FFileTimer.OnTimer = [this](platform::TTimer*) {
        lookAfterFile();
        tellNoise(FNoise.over(platform::TClock::current().nowMs()));
    };
    FFileTimer.SetEnabled(true);
}

TClubDesk::~TClubDesk()
{
    close();
}

void TClubDesk::close()
{
    if (std::exchange(FClosed, true)) {
        return;
    }
    while (!FUnderWay.empty()) {
        const auto [address, card] = FUnderWay.begin()->first;
        endPass(address, card, TEnding::Interrupted);
    }
    while (!FOutages.empty()) {
        lineBack(QString(FOutages.begin()->first));
    }
    FJournal.close();
    FFileTimer.SetEnabled(false);
    lookAfterFile();
    tellNoise(FNoise.all());
    tellNews();
}

void TClubDesk::lookAfterFile()
{
    const QString what = FDatabase.misplaced();
    if (what.isEmpty() != FMisplaced.isEmpty()) {
        trouble(what.isEmpty()
                    ? QStringLiteral("the database %1 is in its place again").arg(FDatabase.fileName())
                    : what);
    }
    FMisplaced = what;
}

TPass TClubDesk::decideNew(const QString& address, const QString& card)
{
    const auto pass = std::make_shared<TPass>();
    pass->began = platform::Now();
    pass->gate = address;
    pass->card = card;
    pass->refusal = TRefusal::HostFault;
    signByHand(*pass);
    try {
        lookUp(*pass);
    } catch (...) { // told, not raised: the component would ask again and again while a person waits
        trouble(QStringLiteral("card %1 at %2 cannot be decided about: %3")
                    .arg(card, address, platform::exceptionMessage()));
    }
    if (common::IsPseudoCard(card)) {
        pass->refusal = TRefusal::None; // whoever is let out by a button must not wait for a database
    }
    if (pass->opened()) {
        FUnderWay[{address, card}] = pass;
    }
    note(pass);
    return *pass;
}

void TClubDesk::expectByHand(const QString& address, const QString& who, const QString& reason)
{
    FByHand[address] = {platform::Now(), who, reason};
}

// Who opened by hand, and why. What was asked for and never happened is not said of a later opening.
void TClubDesk::signByHand(TPass& pass)
{
    if (pass.card != common::kCardManual) {
        return;
    }
    if (const auto asked = FByHand.extract(pass.gate)) {
        const double ms = (pass.began - asked.mapped().asked) * double(platform::kMsPerDay);
        if (std::abs(ms) <= kByHandMs) {
            pass.who = asked.mapped().who;
            pass.note = asked.mapped().reason;
        }
    }
}

void TClubDesk::lineLost(const QString& line, const QString& why)
{
    POutage& outage = FOutages[line];
    if (!outage) {
        outage = std::make_shared<TOutage>(TOutage{0, line, platform::Now(), 0, why});
        FJournal.add(outage);
    }
}

void TClubDesk::lineBack(const QString& line)
{
    if (const auto outage = FOutages.extract(line)) {
        outage.mapped()->ended = platform::Now();
        FJournal.add(outage.mapped());
    }
}

bool TClubDesk::hasPass(const QString& address, const QString& card) const
{
    return FUnderWay.contains({address, card});
}

void TClubDesk::interrupt(const QString& address)
{
    for (auto pass = FUnderWay.lower_bound({address, {}});
         pass != FUnderWay.end() && pass->first.first == address;
         pass = FUnderWay.lower_bound({address, {}})) {
        endPass(address, QString(pass->first.second), TEnding::Interrupted);
    }
}

QString TClubDesk::holderAt(const QString& address) const
{
    const auto pass = FUnderWay.lower_bound({address, {}});
    if (pass == FUnderWay.end() || pass->first.first != address) {
        return {};
    }
    return pass->second->name.isEmpty() ? pass->second->card : pass->second->name;
}

// Everything that the database knows about a pass, and what follows from it.
void TClubDesk::lookUp(TPass& pass)
{
    const std::optional<TGate> gate = FDatabase.gateAt(pass.gate);
    if (gate) {
        pass.direction = gate->direction;
    }
    std::optional<THolder> holder = FDatabase.holderOf(pass.card);
    if (holder) {
        pass.member = holder->member.id;
        pass.name = holder->member.name;
        pass.balance = holder->member.balance;
        holder->member.inside = isInside(holder->member, pass);
    }
    pass.refusal = decide(gate, holder, dayOf(pass.began));
}

// The database is behind by the passes that wait to be written and those that are being made.
bool TClubDesk::isInside(const TMember& member, const TPass& pass) const
{
    const bool goingIn = std::any_of(FUnderWay.begin(), FUnderWay.end(), [&](const auto& entry) {
        const TPass& other = *entry.second;
        return other.member == member.id && other.gate != pass.gate && other.direction == TDirection::In;
    });
    return goingIn || FJournal.insideOf(member.id).value_or(member.inside);
}

void TClubDesk::endPass(const QString& address, const QString& card, TEnding ending)
{
    const PPass pass = takePass(address, card);
    pass->ended = platform::Now();
    pass->ending = ending;
    note(pass);
}

PPass TClubDesk::takePass(const QString& address, const QString& card)
{
    if (auto known = FUnderWay.extract({address, card})) {
        return known.mapped();
    }
    // Opened without a question: by a button pressed while the card was still waiting for its turn.
    const auto pass = std::make_shared<TPass>();
    pass->began = platform::Now();
    pass->gate = address;
    pass->card = card;
    signByHand(*pass);
    if (!platform::guarded([&] { lookUp(*pass); })) {
        trouble(QStringLiteral("the holder of card %1 at %2 cannot be found out").arg(card, address));
    }
    pass->refusal = TRefusal::None;
    return pass;
}

QImage TClubDesk::pictureFor(const QString& card)
{
    if (common::IsPseudoCard(card)) {
        return {};
    }
    try {
        const std::optional<THolder> holder = FDatabase.holderOf(card);
        if (!holder) {
            return {};
        }
        const TMember& member = holder->member;
        if (!FPictures.contains(member.id)) {
            FPictures.insert(member.id, new QImage(holderPicture(member)));
        }
        return *FPictures.object(member.id);
    } catch (...) { // a missing picture must not keep anyone waiting
        trouble(QStringLiteral("no picture for card %1: %2").arg(card, platform::exceptionMessage()));
    }
    return {};
}

bool TClubDesk::isNoise(const TPass& pass)
{
    QString kind;
    if (pass.refusal == TRefusal::UnknownCard) {
        kind = QStringLiteral("unknown cards at ") + pass.gate;
    } else if (pass.refusal == TRefusal::UnknownGate) { // noise invents addresses, too: they count together
        kind = QStringLiteral("cards at gates that the club does not have");
    } else {
        return false;
    }
    const qint64 now = platform::TClock::current().nowMs();
    tellNoise(FNoise.over(now));
    return !FNoise.admits(kind, now);
}

void TClubDesk::tellNoise(const QStringList& lines)
{
    for (const QString& line : lines) {
        trouble(line);
    }
}

void TClubDesk::note(const PPass& pass)
{
    if (isNoise(*pass)) {
        return;
    }
    FJournal.add(pass);
    if (FNews.size() < kMaxNews) {
        FNews.emplace_back([this, copy = *pass] {
            if (OnPass) {
                OnPass(copy);
            }
        });
        FNewsTimer.SetEnabled(true);
    }
}

void TClubDesk::trouble(const QString& text)
{
    if (FNews.size() < kMaxNews) {
        FNews.emplace_back([this, text] {
            if (OnTrouble) {
                OnTrouble(text);
            }
        });
        FNewsTimer.SetEnabled(true);
    }
}

void TClubDesk::lost(const QString& what)
{
    ++FLost;
    const QString text = QStringLiteral("NOT IN THE JOURNAL: ") + what;
    if (OnLost) {
        OnLost(text);
    } else {
        trouble(text);
    }
}

void TClubDesk::tellNews()
{
    FNewsTimer.SetEnabled(false);
    for (const auto& news : std::exchange(FNews, {})) {
        platform::guarded(news);
    }
}

} // namespace tnv5::host
