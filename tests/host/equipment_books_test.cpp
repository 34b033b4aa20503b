#include "club_fixture.h"
#include "support/text_printers.h"
#include "tnv5/host/books/lamp_books.h"
#include "tnv5/host/club/equipment_books.h"

namespace tnv5::host {
namespace {

TLamp lampOf(const char* name, const char* board, const char* relay, qint64 cents = 50)
{
    return {QString::fromLatin1(name), QString::fromLatin1(board), QString::fromLatin1(relay), cents};
}

TGate gateOf(const char* address, TDirection direction, const char* zone = "hall")
{
    return {QString::fromLatin1(address), QString::fromLatin1(zone), direction};
}

class TEquipmentBooksTest : public TClubFixture
{
protected:
    QStringList lamps()
    {
        QStringList texts;
        for (const TLamp& lamp : TLampBooks(club).lamps()) {
            texts << lamp.name + u' ' + lamp.board + lamp.relay;
        }
        return texts;
    }
    /// Enters lamps. @return why not, "" when they are entered
    QString enter(const QList<TLamp>& wanted)
    {
        return failureOf([&] { enterEquipment(club, {}, wanted); });
    }
};

TEST_F(TEquipmentBooksTest, EntersWhatDiffersAndTellsTheGates)
{
    const TGate same = gateOf("01A", TDirection::In);
    const TGate turned = gateOf("02A", TDirection::In);
    const TGate added = gateOf("05A", TDirection::Out, "gym");
    EXPECT_EQ(enterEquipment(club, {same, turned, added}, {lampOf("Sun", "201A", "1")}),
              QList<TGate>({turned, added}));
    EXPECT_EQ(club.gateAt(QStringLiteral("02A")), turned);
    EXPECT_EQ(club.gateAt(QStringLiteral("05A")), added);
    EXPECT_EQ(club.gates().size(), 5) << "the others stay";
    EXPECT_EQ(lamps(), QStringList({QStringLiteral("Sun 201A1")}));
    EXPECT_EQ(enterEquipment(club, {same, turned, added}, {}), QList<TGate>());
}

TEST_F(TEquipmentBooksTest, AllOrNothing)
{
    const TGate turned = gateOf("02A", TDirection::In);
    EXPECT_NE(failureOf([&] { enterEquipment(club, {turned}, {lampOf("Sun", "201A", "5")}); }), "")
        << "no board has that relay";
    EXPECT_EQ(club.gateAt(QStringLiteral("02A"))->direction, TDirection::Out);
    EXPECT_EQ(lamps(), QStringList());
    EXPECT_EQ(failureOf([&] { enterEquipment(club, {turned}, {}); }), "") << "and nothing is left open";
}

TEST_F(TEquipmentBooksTest, LockedBooksAreNotNeededForWhatTheyHave)
{
    EXPECT_EQ(enter({lampOf("Sun", "201A", "1")}), "");
    whileLocked([&] {
        EXPECT_EQ(enter({lampOf("Sun", "201A", "1")}), "");
        EXPECT_EQ(failureOf([&] { enterEquipment(club, {gateOf("01A", TDirection::In)}, {}); }), "");
        EXPECT_NE(enter({lampOf("Sun", "201A", "1", 60)}), "");
        EXPECT_NE(failureOf([&] { enterEquipment(club, {gateOf("01A", TDirection::Out)}, {}); }), "");
    });
    EXPECT_EQ(club.gateAt(QStringLiteral("01A"))->direction, TDirection::In);
}

TEST_F(TEquipmentBooksTest, LampsAreRenamedAndExchanged)
{
    EXPECT_EQ(enter({lampOf("Sun", "201A", "1"), lampOf("Moon", "201A", "2"), lampOf("Old", "201B", "3")}),
              "");
    EXPECT_EQ(enter({lampOf("Moon", "201A", "1"), lampOf("Sun", "201A", "2")}), "") << "exchanged";
    EXPECT_EQ(lamps(), QStringList({QStringLiteral("Moon 201A1"), QStringLiteral("Old 201B3"),
                                    QStringLiteral("Sun 201A2")}));
    EXPECT_EQ(enter({lampOf("Mars", "201A", "1"), lampOf("Sun", "201B", "3")}), "") << "renamed, moved";
    EXPECT_EQ(lamps(), QStringList({QStringLiteral("Mars 201A1"), QStringLiteral("Sun 201B3")}));
    EXPECT_EQ(enter({lampOf("Sun", "201B", "3", 80)}), "");
    EXPECT_EQ(TLampBooks(club).lamps().last().centsPerMinute, 80);
}

} // namespace
} // namespace tnv5::host
