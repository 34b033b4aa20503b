#include "apps/tnv5/demo_club.h"

#include "tnv5/common/messages.h"
#include "tnv5/host/books/lamp_books.h"

namespace tnv5::cli {

using host::TDirection;
using host::TEnding;
using host::TRefusal;
using sim::TBehaviour;

namespace {

const QString kHall = QStringLiteral("hall");
const QString kPool = QStringLiteral("pool");
const QString kStaff = QStringLiteral("staff");
const QString kGym = QStringLiteral("gym");

const QString kMain = QStringLiteral("01A");
const QString kExit = QStringLiteral("02A");
const QString kPoolGate = QStringLiteral("03A");
const QString kStaffDoor = QStringLiteral("04D");
const QString kSide = QStringLiteral("06A");
const QString kGymGate = QStringLiteral("101T");
const QString kGymExit = QStringLiteral("102T");

struct TPerson
{
    QString name;
    QString card;
    QStringList zones;
    int fromDay = -30; // of the membership, from today
    int toDay = 300;
    bool suspended = false;
    bool inside = false;
    qint64 cents = 0;
};

const TPerson kAnna = {QStringLiteral("Anna Berg"), QStringLiteral("10000001"), {kHall}};
const TPerson kBoris = {QStringLiteral("Boris Klein"), QStringLiteral("10000002"), {kHall, kPool}};
const TPerson kClara = {QStringLiteral("Clara Weiss"), QStringLiteral("10000003"), {kHall}, -400, -1};
const TPerson kDavid = {QStringLiteral("David Novak"), QStringLiteral("10000004"), {kHall}, 2, 300};
const TPerson kEmma = {QStringLiteral("Emma Fischer"), QStringLiteral("10000005"), {kHall}, -30, 300, true};
const TPerson kFelix = {QStringLiteral("Felix Braun"), QStringLiteral("10000006"), {kHall}};
const TPerson kGreta = {QStringLiteral("Greta Lang"), QStringLiteral("10000007"), {kHall, kStaff}};
const TPerson kHugo = {
    QStringLiteral("Hugo Stern"), QStringLiteral("10000008"), {kHall}, -30, 300, false, true};
const TPerson kIda = {QStringLiteral("Ida Wolf"), QStringLiteral("10000009"), {kPool}};
const TPerson kJonas = {QStringLiteral("Jonas Kraft"), QStringLiteral("10000010"), {kHall}};
const TPerson kKarl = {
    QStringLiteral("Karl Winter"), QStringLiteral("10000011"), {kGym}, -30, 300, false, false, 4'250};
const TPerson kLena = {
    QStringLiteral("Lena Sommer"), QStringLiteral("10000012"), {kGym}, -30, 300, false, false, -705};
const TPerson kMax = {QStringLiteral("Max Herbst"), QStringLiteral("10000013"), {kGym}, -400, -1};
const QString kApples = QStringLiteral("apples");
const QString kBananas = QStringLiteral("bananas");
const QString kMelons = QStringLiteral("melons");
const QString kNuts = QStringLiteral("nuts");
const QString kSun1 = QStringLiteral("Sun 1");
const QString kSun2 = QStringLiteral("Sun 2");
const QString kStrangersCard = QStringLiteral("99999999");

TStep passes(const QString& gate, const QString& card)
{
    return {gate, card, TBehaviour::PassesThrough, TRefusal::None, TEnding::Passed};
}

TStep passes(const QString& gate, const TPerson& person)
{
    return passes(gate, person.card);
}

TStep hesitates(const QString& gate, const TPerson& person)
{
    return {gate, person.card, TBehaviour::GivesUp, TRefusal::None, TEnding::TimedOut};
}

TStep refused(const QString& gate, const QString& card, TRefusal why)
{
    return {gate, card, TBehaviour::PassesThrough, why, TEnding::None};
}

TStep refused(const QString& gate, const TPerson& person, TRefusal why)
{
    return refused(gate, person.card, why);
}

TStep walksOffUnnoticed(const TPerson& person)
{
    return {kSilentGate, person.card, TBehaviour::WalksAway, TRefusal::None, TEnding::Unanswered};
}

TStep showing(TStep step, const QString& who, const QString& what)
{
    step.shown = QStringList({who, what});
    return step;
}

TStep pressesButton()
{
    return passes(kStaffDoor, common::kCardButton);
}

} // namespace

const QString kSilentGate = QStringLiteral("05A");
const QString kLampPair = QStringLiteral("201");

void fillClub(host::TDatabase& club, QDate today)
{
    club.setGate({kMain, kHall, TDirection::In});
    club.setGate({kExit, kHall, TDirection::Out});
    club.setGate({kPoolGate, kPool, TDirection::In});
    club.setGate({kStaffDoor, kStaff, TDirection::Inner});
    club.setGate({kSilentGate, kHall, TDirection::In});
    club.setGate({kSide, kHall, TDirection::In});
    club.setGate({kGymGate, kGym, TDirection::In});
    club.setGate({kGymExit, kGym, TDirection::Out});
    host::TLampBooks lamps(club);
    lamps.setLamp({kSun1, kLampPair + u'A', QStringLiteral("1"), 50});
    lamps.setLamp({kSun2, kLampPair + u'B', QStringLiteral("4"), 70});
    club.setProduct(kApples, 320);
    club.setProduct(kBananas, 180);
    club.setProduct(kMelons, 120);
    club.setProduct(kNuts, 1'490);
    for (const TPerson& person :
         {kAnna, kBoris, kClara, kDavid, kEmma, kFelix, kGreta, kHugo, kIda, kJonas, kKarl, kLena, kMax}) {
        const qint64 id = club.addMember(person.name);
        club.addCard(person.card, id);
        club.addMembership(id, {today.addDays(person.fromDay), today.addDays(person.toDay), person.zones});
        club.setSuspended(id, person.suspended);
        club.setInside(id, person.inside);
        club.setBalance(id, person.cents);
    }
}

QList<TPurchase> demoPurchases()
{
    const auto buys = [](const TPerson& person, const QString& product, const QList<int>& loads,
                         qint64 cents) {
        return TPurchase{person.name, person.card, product, loads, cents};
    };
    return {
        buys(kAnna, kApples, {450}, 144),
        buys(kGreta, kMelons, {21'000, 2'450}, 294), // leans on the scale at first
        buys(kBoris, kBananas, {1'210, 820}, 148),   // thinks better of it
        buys(kJonas, kNuts, {125}, 186),
        buys(kIda, kApples, {333}, 107),
    };
}

QList<TLampVisit> demoLampVisits()
{
    constexpr qint64 kRefused = -1;
    return {
        {kFelix.name, kFelix.card, kSun1, 3, 150},
        {kHugo.name, kHugo.card, kSun1, 2, 100, true}, // goes on where Felix ends
        {kEmma.name, kEmma.card, kSun2, 5, kRefused},  // suspended
        {kClara.name, kClara.card, kSun2, 3, 210},
    };
}

QStringList demoGates()
{
    return {kMain, kExit, kPoolGate, kStaffDoor, kSilentGate, kSide};
}

QStringList demoBoards()
{
    return {kGymGate, kGymExit};
}

QList<TVisitor> demoVisitors()
{
    const auto insideAlready = TRefusal::AlreadyInside;
    const QString karlsBalance = QStringLiteral("Balance 42.50");
    const QString lenasBalance = QStringLiteral("Balance -7.05");
    return {
        {kKarl.name,
         {showing(passes(kGymGate, kKarl), kKarl.name, karlsBalance),
          showing(refused(kGymGate, kKarl, insideAlready), kKarl.name, QStringLiteral("already inside")),
          showing(passes(kGymExit, kKarl), kKarl.name, karlsBalance)}},
        {kLena.name,
         {showing(hesitates(kGymGate, kLena), kLena.name, lenasBalance),
          showing(passes(kGymGate, kLena), kLena.name, lenasBalance),
          showing(passes(kGymExit, kLena), kLena.name, lenasBalance)}},
        {kMax.name,
         {showing(refused(kGymGate, kMax, TRefusal::Expired), kMax.name, QStringLiteral("expired"))}},
        {kAnna.name, {passes(kMain, kAnna), refused(kSide, kAnna, insideAlready), passes(kExit, kAnna)}},
        {kBoris.name, {hesitates(kSide, kBoris), passes(kSide, kBoris), passes(kExit, kBoris)}},
        {kClara.name, {refused(kMain, kClara, TRefusal::Expired)}},
        {kDavid.name, {refused(kSide, kDavid, TRefusal::NotYetValid)}},
        {kEmma.name, {refused(kMain, kEmma, TRefusal::Suspended)}},
        {kFelix.name, {refused(kPoolGate, kFelix, TRefusal::WrongZone)}},
        {kGreta.name, {passes(kStaffDoor, kGreta), pressesButton()}},
        {kHugo.name, {refused(kMain, kHugo, insideAlready), passes(kExit, kHugo), passes(kMain, kHugo)}},
        {kIda.name, {passes(kPoolGate, kIda), passes(kExit, kIda)}},
        {kJonas.name, {walksOffUnnoticed(kJonas), passes(kMain, kJonas), passes(kExit, kJonas)}},
        {QStringLiteral("a stranger"),
         {refused(kSide, kStrangersCard, TRefusal::UnknownCard),
          showing(refused(kGymExit, kStrangersCard, TRefusal::UnknownCard),
                  QStringLiteral("Card ") + kStrangersCard, QStringLiteral("unknown card"))}},
    };
}

} // namespace tnv5::cli
