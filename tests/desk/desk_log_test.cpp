#include "apps/tnv5-desk/equipment_rows.h"
#include "apps/tnv5-desk/log_model.h"
#include "apps/tnv5-desk/words.h"
#include "tnv5/common/messages.h"

#include <gtest/gtest.h>

using namespace tnv5::desk;

namespace {

TLogLine line(TLogLevel level, const char* text)
{
    return {level, QStringLiteral("2026-01-05T12:00:00.250+02:00"), QString::fromUtf8(text)};
}

QStringList shown(const TFilteredLog& log)
{
    QStringList lines;
    for (int row = 0; row < log.rowCount(); ++row) {
        lines << log.index(row, TLogModel::Text).data().toString();
    }
    return lines;
}

TEST(DeskLog, KeepsTheLastLines)
{
    TLogModel log(3);
    for (const char* text : {"one", "two", "three", "four"}) {
        log.add(line(TLogLevel::Info, text));
    }
    EXPECT_EQ(log.rowCount(), 3);
    EXPECT_EQ(log.line(0).text, QStringLiteral("two"));
    EXPECT_EQ(log.line(2).text, QStringLiteral("four"));
    EXPECT_EQ(log.index(0, TLogModel::Time).data().toString(), QStringLiteral("12:00:00"));
    EXPECT_EQ(TLogModel::kUsualLines, 10'000);
}

TEST(DeskLog, ALineHasOneLineAndAnEnd)
{
    TLogModel log;
    log.add({TLogLevel::Info, {}, QStringLiteral("a\nb")});
    log.add({TLogLevel::Info, {}, QString(100'000, u'x')});
    EXPECT_EQ(log.line(0).text, QStringLiteral("a b"));
    EXPECT_EQ(log.line(1).text.size(), TLogModel::kMaxText);
    log.add({TLogLevel::Info, QString(100'000, u'1'), {}});
    EXPECT_EQ(log.line(2).time.size(), TLogModel::kMaxTime);
}

TEST(DeskLog, IsSearchedByWordsAndLevels)
{
    TLogModel log;
    TFilteredLog filtered(&log);
    log.add(line(TLogLevel::Info, "01A  Anna Berg  opened"));
    log.add(line(TLogLevel::Warning, "the port went away"));
    log.add(line(TLogLevel::Error, "card 17 at 01A: Світло"));
    TLogFilter filter;
    EXPECT_EQ(filtered.lines(), 3);
    filter.search(QStringLiteral("  01a opened "));
    filtered.setFilter(filter);
    EXPECT_EQ(shown(filtered), QStringList(QStringLiteral("01A  Anna Berg  opened")));
    log.add(line(TLogLevel::Info, "01A somebody opened"));
    EXPECT_EQ(filtered.lines(), 2); // live
    filter.search(QStringLiteral("СВІТЛО"));
    filtered.setFilter(filter);
    EXPECT_EQ(filtered.lines(), 1);
    filter.search(QStringLiteral("12:00"));
    filtered.setFilter(filter);
    EXPECT_EQ(filtered.lines(), 4);
    filter.search({});
    filter.info = false;
    filtered.setFilter(filter);
    EXPECT_EQ(filtered.lines(), 2);
    filter.warnings = false;
    filtered.setFilter(filter);
    EXPECT_EQ(filtered.lines(), 1);
    filter.errors = false;
    filtered.setFilter(filter);
    EXPECT_EQ(filtered.lines(), 0);
}

TEST(DeskLog, LevelsAndTimes)
{
    EXPECT_EQ(toLogLevel(QStringLiteral("warning")), TLogLevel::Warning);
    EXPECT_EQ(toLogLevel(QStringLiteral("error")), TLogLevel::Error);
    EXPECT_EQ(toLogLevel(QStringLiteral("strange")), TLogLevel::Info);
    EXPECT_EQ(clockTime(QStringLiteral("junk")), QString());
}

std::string text(const QList<TEquipmentSection>& sections)
{
    QStringList lines;
    for (const TEquipmentSection& section : sections) {
        lines << section.title + u':';
        for (const TEquipmentRow& row : section.rows) {
            lines << row.name + u'=' + row.text;
        }
    }
    return lines.join(u'\n').toStdString();
}

TEST(DeskEquipment, NothingWithoutAnything)
{
    EXPECT_EQ(text(equipmentOf({}, 0)), "");
}

TEST(DeskEquipment, OfAClub)
{
    TClubState state;
    state.terminals = {{QStringLiteral("bar"), 350, QStringLiteral("the bank answers 00")},
                       {QStringLiteral("shop"), 0, {}},
                       {QStringLiteral("door"), 1'000, {}}};
    state.scales = {{QStringLiteral("fruit"), 450, true},
                    {QStringLiteral("nuts"), 20, false},
                    {QStringLiteral("empty"), 0, false},
                    {QStringLiteral("salad"), std::nullopt, false}};
    TLampState sun{QStringLiteral("Sun 1"),
                   QStringLiteral("201A"),
                   QStringLiteral("1"),
                   true,
                   true,
                   QStringLiteral("Felix"),
                   65};
    state.lamps = {sun, sun, sun, sun, sun, sun};
    state.lamps[1].holder.clear();
    state.lamps[2].secondsLeft = 0;
    state.lamps[3].secondsLeft = 0;
    state.lamps[3].on = false;
    state.lamps[4].answers = false;
    state.lamps[5].on = false; // what is paid for is not lit
    state.boards = {{QStringLiteral("101T"), {}, true, {}}};
    state.lines = {{QStringLiteral("gates"), {}, true, {}}};
    EXPECT_EQ(text(equipmentOf(state, 5'000)),
              "Card payments:\nbar=3.50 – the bank has answered\nshop=none under way\ndoor=10.00\n"
              "Scales:\nfruit=450 g\nnuts=20 g, moving\nempty=0 g\nsalad=no weight\n"
              "Paid time left:\nSun 1=1:00 – Felix\nSun 1=1:00\nSun 1=on, not paid for\nSun 1=off\n"
              "Sun 1=its board does not answer – 1:00 – Felix\nSun 1=off – 1:00 – Felix\n"
              "Boards:\n101T=answers\nLines:\ngates=open");
    QList<TMood> moods;
    const TEquipmentSection lamps = equipmentOf(state, 5'000).at(2);
    for (const TEquipmentRow& row : lamps.rows) {
        moods << row.mood;
    }
    EXPECT_EQ(moods, QList<TMood>({TMood::Good, TMood::Good, TMood::Warning, TMood::Faint, TMood::Bad,
                                   TMood::Warning}));
}

TEST(DeskEquipment, WhatIsWrongComesFirst)
{
    TClubState state;
    state.troubles = {QStringLiteral("no paper")};
    state.boards = {{QStringLiteral("101T"), {}, false, QStringLiteral("2026-01-05T12:00:00Z")},
                    {QStringLiteral("102T"), {}, false, {}}};
    state.lines = {{QStringLiteral("gates"), {}, false, QStringLiteral("gone")}};
    state.journalWaiting = 21;
    EXPECT_EQ(text(equipmentOf(state, 0)),
              "Attention:\n=no paper\nBoard 101T=has stopped answering\nBoard 102T=has not answered yet\n"
              "Line gates=is not open: gone\nJournal=passes not yet written: 21\n"
              "Boards:\n101T=last heard at 12:00:00\n102T=never heard\nLines:\ngates=closed");
    state.troubles = {QStringLiteral("board 101T: silent"),
                      QStringLiteral("gates is not open")}; // not said twice
    state.journalWaiting = 0;
    EXPECT_TRUE(text(equipmentOf(state, 0))
                    .starts_with("Attention:\n=board 101T: silent\n=gates is not open\n"
                                 "Board 102T=has not answered yet\nBoards:"));
    state = {};
    state.journalWaiting = 20;
    EXPECT_EQ(text(equipmentOf(state, 0)), "");
}

TEST(DeskWords, AreTheHosts)
{
    EXPECT_EQ(TWords::ending(QStringLiteral("timed out")), QStringLiteral("nobody passed"));
    EXPECT_EQ(TWords::ending(QStringLiteral("a new word")), QStringLiteral("a new word"));
    EXPECT_EQ(TWords::reason(QStringLiteral("host fault")), QStringLiteral("the host could not find out"));
    EXPECT_EQ(TWords::stage(QStringLiteral("the amount 4.50 goes to the terminal")),
              QStringLiteral("the amount goes to the terminal"));
    EXPECT_EQ(TWords::stage(QStringLiteral("waiting until the terminal asks for the amount")),
              QStringLiteral("waits for the terminal"));
    EXPECT_EQ(TWords::stage(QStringLiteral("strange")), QStringLiteral("strange"));
    EXPECT_EQ(TWords::gate(QStringLiteral("01A"), QStringLiteral("hall"), TWay::In),
              QStringLiteral("01A (hall, in)"));
    EXPECT_EQ(TWords::gate(QStringLiteral("01A"), QStringLiteral("hall"), {}), QStringLiteral("01A (hall)"));
    EXPECT_EQ(TWords::gate(QStringLiteral("01A"), {}, TWay::In), QStringLiteral("01A"));
}

TEST(DeskWords, OfAPass)
{
    TPassNews pass;
    pass.card = QStringLiteral("17");
    EXPECT_EQ(TWords::holder(pass), QStringLiteral("card 17"));
    pass.name = QStringLiteral("Anna");
    EXPECT_EQ(TWords::holder(pass), QStringLiteral("Anna"));
    pass.reason = QStringLiteral("expired");
    EXPECT_EQ(TWords::outcome(pass), QStringLiteral("refused: expired"));
    pass.opened = true;
    EXPECT_EQ(TWords::outcome(pass), QStringLiteral("may pass"));
    pass.card = tnv5::common::kCardButton;
    EXPECT_EQ(TWords::holder(pass), QStringLiteral("exit button"));
    pass.card = tnv5::common::kCardManual;
    EXPECT_EQ(TWords::holder(pass), QStringLiteral("opened by hand"));
    pass.who = QStringLiteral("Olha (desk1)");
    pass.note = QStringLiteral("pram");
    pass.ending = QStringLiteral("passed");
    EXPECT_EQ(TWords::holder(pass), QStringLiteral("opened by hand: Olha (desk1)"));
    EXPECT_EQ(TWords::outcome(pass), QStringLiteral("passed (pram)"));
}

} // namespace
