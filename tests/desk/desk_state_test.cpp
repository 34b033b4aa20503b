#include "apps/tnv5-desk/desk_state.h"
#include "apps/tnv5-desk/gate_pairs.h"

#include <QJsonDocument>
#include <QMap>
#include <gtest/gtest.h>

using namespace tnv5::desk;

namespace {

QJsonObject json(const char* text)
{
    return QJsonDocument::fromJson(text).object();
}

TGateState gate(const char* address, const char* zone, TWay way)
{
    TGateState state;
    state.address = QLatin1String(address);
    state.zone = QLatin1String(zone);
    state.way = way;
    state.line = QStringLiteral("gates");
    return state;
}

std::string text(const QList<TGatePair>& pairs)
{
    QStringList lines;
    for (const TGatePair& pair : pairs) {
        lines << pair.caption + u'|' + pair.gateA + u'|' + pair.gateB;
    }
    return lines.join(u' ').toStdString();
}

TEST(DeskState, IsReadWhole)
{
    const TClubState state = toState(json(R"({
        "club": "Riverside", "version": "0.1.0", "inside": 12, "journalWaiting": 3, "troubles": ["no paper"],
        "lines": [{"name": "hall", "port": "/dev/ttyUSB0", "open": false, "why": "gone"}],
        "gates": [{"address": "01A", "zone": "hall", "direction": "in", "line": "hall", "answering": null,
                   "busy": true, "holder": "Anna"},
                  {"address": "02A", "zone": "hall", "direction": "out", "line": "hall", "answering": false},
                  {"address": "04D", "zone": "staff", "direction": "inner", "line": "hall", "answering": true}],
        "boards": [{"address": "101T", "line": "bus", "answering": true, "heard": "2026-01-05T12:00:00Z"}],
        "lamps": [{"name": "Sun", "board": "201A", "relay": "1", "on": true, "answers": true, "holder": "Felix",
                   "secondsLeft": 299}],
        "scales": [{"name": "fruit", "grams": 450, "steady": true}, {"name": "salad", "grams": null}],
        "terminals": [{"name": "bar", "cents": 350, "stage": "waits"}]})"));
    EXPECT_EQ(state.club, QStringLiteral("Riverside"));
    EXPECT_EQ(state.version, QStringLiteral("0.1.0"));
    EXPECT_EQ(state.inside, 12);
    EXPECT_EQ(state.journalWaiting, 3);
    EXPECT_EQ(state.troubles, QStringList(QStringLiteral("no paper")));
    ASSERT_EQ(state.lines.size(), 1);
    EXPECT_EQ(state.lines[0].name + state.lines[0].port + state.lines[0].why,
              QStringLiteral("hall/dev/ttyUSB0gone"));
    EXPECT_FALSE(state.lines[0].open);
    ASSERT_EQ(state.gates.size(), 3);
    EXPECT_EQ(state.gates[0].holder, QStringLiteral("Anna"));
    EXPECT_TRUE(state.gates[0].busy);
    EXPECT_EQ(state.gates[0].answering, std::nullopt);
    EXPECT_EQ(state.gates[1].answering, false);
    EXPECT_EQ(state.gates[2].answering, true);
    EXPECT_EQ(state.gates[0].way, TWay::In);
    EXPECT_EQ(state.gates[1].way, TWay::Out);
    EXPECT_EQ(state.gates[2].way, TWay::Inner);
    EXPECT_EQ(state.boards[0].heard, QStringLiteral("2026-01-05T12:00:00Z"));
    EXPECT_TRUE(state.lamps[0].on && state.lamps[0].answers);
    EXPECT_EQ(state.lamps[0].secondsLeft, 299);
    EXPECT_EQ(state.scales[0].grams, 450);
    EXPECT_EQ(state.scales[1].grams, std::nullopt);
    EXPECT_EQ(state.terminals[0].cents, 350);
    EXPECT_EQ(state.terminals[0].stage, QStringLiteral("waits"));
}

TEST(DeskState, WhatIsMissingOrStrangeIsEmpty)
{
    EXPECT_EQ(toState({}).gates.size(), 0);
    EXPECT_EQ(toState(json(R"({"inside": null})")).inside, std::nullopt);
    const TClubState state = toState(
        json(R"({"club": 7, "gates": "none", "lamps": [1, {"secondsLeft": -5}], "troubles": [null]})"));
    EXPECT_EQ(state.club, QString());
    EXPECT_EQ(state.gates.size(), 0);
    ASSERT_EQ(state.lamps.size(), 2);
    EXPECT_EQ(state.lamps[1].secondsLeft, 0);
    EXPECT_FALSE(toPass(json(R"({"picture": "###", "direction": "up"})")).way);
}

TEST(DeskState, APass)
{
    const TPassNews pass =
        toPass(json(R"({"began": "b", "ended": "e", "card": "17", "member": 3, "name": "Anna",
        "balance": -5, "gate": "01A", "zone": "hall", "direction": "out", "opened": true, "reason": "r",
        "ending": "passed", "who": "w", "note": "n", "picture": "UE5H"})"));
    EXPECT_EQ(pass.began + pass.ended + pass.card + pass.name + pass.gate + pass.zone + pass.reason +
                  pass.ending + pass.who + pass.note,
              QStringLiteral("be17Anna01Ahallrpassedwn"));
    EXPECT_EQ(pass.member, 3);
    EXPECT_EQ(pass.balance, -5);
    EXPECT_EQ(pass.way, TWay::Out);
    EXPECT_TRUE(pass.opened);
    EXPECT_FALSE(pass.underWay());
    EXPECT_EQ(pass.picture, "PNG");
    TPassNews other = pass;
    other.ending.clear();
    EXPECT_TRUE(other.underWay());
    EXPECT_TRUE(other.sameAs(pass));
    other.began = QStringLiteral("later");
    EXPECT_FALSE(other.sameAs(pass));
}

TEST(DeskState, TimeRunsDownBetweenStates)
{
    EXPECT_EQ(secondsLeft(299, 0), 299);
    EXPECT_EQ(secondsLeft(299, 999), 299);
    EXPECT_EQ(secondsLeft(299, 1'000), 298);
    EXPECT_EQ(secondsLeft(2, 5'000), 0);
    EXPECT_EQ(durationText(0).toStdString(), "0:00");
    EXPECT_EQ(durationText(299).toStdString(), "4:59");
    EXPECT_EQ(durationText(3'899).toStdString(), "1:04:59");
    EXPECT_EQ(amountText(-5).toStdString(), "-0.05");
    EXPECT_EQ(amountText(1'250).toStdString(), "12.50");
    EXPECT_EQ(amountText(std::numeric_limits<qint64>::min()).toStdString(), "-92233720368547758.08");
}

TEST(DeskPairs, WaysInAndOutOfAZoneShareAPanel)
{
    EXPECT_EQ(text(pairsOf({})), "");
    EXPECT_EQ(text(pairsOf({gate("01A", "hall", TWay::In), gate("101T", "gym", TWay::Out),
                            gate("02A", "hall", TWay::Out)})),
              "hall|01A|02A gym||101T");
    EXPECT_EQ(text(pairsOf({gate("01A", "hall", TWay::In), gate("02A", "hall", TWay::In),
                            gate("03A", "hall", TWay::Out), gate("04D", "staff", TWay::Inner)})),
              "hall 1|01A|03A hall 2|02A| staff|04D|");
    EXPECT_EQ(text(pairsOf({gate("04D", "hall", TWay::Inner), gate("01A", "hall", TWay::In),
                            gate("02A", "hall", TWay::Out), gate("03A", "hall", TWay::Out)})),
              "hall 1|01A|02A hall 2||03A hall 3|04D|"); // a door shares no row with a way out
}

class DeskLook : public ::testing::Test
{
protected:
    DeskLook()
    {
        state.gates = {gate("01A", "hall", TWay::In), gate("02A", "hall", TWay::Out)};
        state.lines = {{QStringLiteral("gates"), {}, true, {}}};
    }
    std::string look(qint64 nowMs = 0) const
    {
        const TPairState shown =
            stateOf({{}, QStringLiteral("01A"), QStringLiteral("02A")}, state, refusals, nowMs);
        return std::to_string(int(shown.look)) + ' ' + shown.text.toStdString();
    }

    TClubState state;
    QMap<QString, TRefusalShown> refusals;
};

TEST_F(DeskLook, SaysWhoPasses)
{
    EXPECT_EQ(look(), "0 free");
    state.gates[1].busy = true;
    EXPECT_EQ(look(), "1 open");
    state.gates[1].holder = QStringLiteral("-2-2-2-2-2"); // by the button
    EXPECT_EQ(look(), "1 open");
    state.gates[1].holder = QStringLiteral("Anna");
    EXPECT_EQ(look(), "1 Anna");
    refusals[QStringLiteral("01A")] = {QStringLiteral("expired"), 0};
    EXPECT_EQ(look(), "1 Anna"); // whoever passes comes first
}

TEST_F(DeskLook, SaysWhoWasRefusedForAMoment)
{
    refusals[QStringLiteral("02A")] = {QStringLiteral("expired"), 1'000};
    EXPECT_EQ(look(1'000), "2 expired");
    EXPECT_EQ(look(1'000 + kRefusalMs - 1), "2 expired");
    EXPECT_EQ(look(1'000 + kRefusalMs), "0 free");
}

TEST_F(DeskLook, SaysWhatDoesNotWork)
{
    state.gates[0].answering = true;
    state.gates[1].answering = false;
    EXPECT_EQ(look(), "3 does not answer");
    state.gates[1].answering = true;
    EXPECT_EQ(look(), "0 free");
    state.lines[0].open = false;
    EXPECT_EQ(look(), "3 line closed");
    EXPECT_EQ(unconnected().look, TGateLook::Unconnected);
    EXPECT_EQ(unconnected().text, QStringLiteral("not connected"));
    state.gates.clear();
    EXPECT_EQ(look(), "4 not in this club");
}

} // namespace
