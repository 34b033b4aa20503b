// The file that describes a club: what a good one says, and what each mistake is told as.

#include "tnv5/host/club/club_file.h"

#include "support/text_printers.h"

#include <QFile>
#include <gtest/gtest.h>

namespace tnv5::host {
namespace {

const QByteArray kHead = "[club]\nname = \"riverside\"\ndatabase = \"club.sqlite\"\n";

QStringList errorsOf(const QByteArray& text)
{
    QStringList lines;
    for (const TFileError& error : readClub(text, QStringLiteral("/club")).errors) {
        lines << errorText(QStringLiteral("club.toml"), error);
    }
    return lines;
}

/// What is wrong in the lines behind `kHead` (which has three) and a line and a bus (six more).
QStringList errorsOfRest(const QByteArray& rest)
{
    return errorsOf(kHead + "[[line]]\nname = \"entrance\"\nport = \"ttyS0\"\n" +
                    "[[bus]]\nname = \"hall\"\nport = \"ttyS1\"\n" + rest);
}

TEST(ClubFile, AGateOnABusHasAnyFourCharactersButADisplays)
{
    for (const char* address : {"001A", "001B", "001T", "0010", "ABCD", "I01H", "001J", "001Z"}) {
        EXPECT_EQ(errorsOfRest("[[gate]]\nline = \"hall\"\naddress = \"" + QByteArray(address) +
                               "\"\nzone = \"hall\"\ndirection = \"in\"\n"),
                  QStringList())
            << address;
    }
}

TEST(ClubFile, WhatIsNoTomlHasItsLine)
{
    EXPECT_EQ(errorsOf(kHead + "[[`us]]\n[[line]]\n"),
              QStringList({QStringLiteral("club.toml:4: cannot be read")}));
    EXPECT_TRUE(
        errorsOf("[a\xEF\xB3\xBF]").value(0).startsWith(QStringLiteral("club.toml:1: Error while parsing")));
    EXPECT_EQ(errorsOf("[.]"), QStringList({QStringLiteral("club.toml:1: cannot be read")}));
    EXPECT_EQ(errorsOf(kHead + "a = [1,\n2]\n[=]\n\n"),
              QStringList({QStringLiteral("club.toml:6: cannot be read")}));
}

TEST(ClubFile, AWholeClub)
{
    const TClubFile file = readClub(kHead + R"(
log = "/var/log/club.log"
socket = "club.socket"
[[line]]
name = "entrance"
port = "/dev/ttyS0"
monitor = { port = 4001, listen = "0.0.0.0", allow = ["192.168.1.0/24"], feed = ["192.168.1.5"] }
[[line]]
name = "back door"
port = "/dev/ttyS1"
baud = 19200
[line.monitor]
port = 4002
certificate = "host.pem"
key = "/etc/host.key"
authority = "club.pem"
[[bus]]
name = "hall"
port = "/dev/ttyS2"
lamp_monitor = { port = 4003 }
[[gate]]
line = "entrance"
address = "01A"
zone = "hall"
direction = "in"
[[gate]]
line = "hall"
address = "101T"
zone = "gym"
direction = "inner"
[[lamp]]
name = "Sun 1"
bus = "hall"
board = "201B"
relay = 4
cents_per_minute = 70
[[scale]]
name = "fruit"
port = "/dev/ttyS3"
type = 2
[[terminal]]
name = "bar"
port = "/dev/ttyS4"
version = 1
)",
                                    QStringLiteral("/club"));
    ASSERT_EQ(file.errors, QList<TFileError>());
    const TClubPlan& plan = file.plan;
    EXPECT_EQ(plan.name, "riverside");
    EXPECT_EQ(plan.database, "/club/club.sqlite");
    EXPECT_EQ(plan.log, "/var/log/club.log");
    EXPECT_EQ(plan.socket, "/club/club.socket");
    ASSERT_EQ(plan.lines.size(), 2);
    EXPECT_EQ(plan.lines[0].port, "/dev/ttyS0");
    EXPECT_EQ(plan.lines[0].baud, 9600);
    ASSERT_TRUE(plan.lines[0].monitor);
    EXPECT_EQ(plan.lines[0].monitor->port, 4001);
    EXPECT_EQ(plan.lines[0].monitor->access.listenAddress, "0.0.0.0");
    const QList<platform::TPeerRule> rules = {{QStringLiteral("192.168.1.5"), true},
                                              {QStringLiteral("192.168.1.0/24"), false}};
    EXPECT_EQ(plan.lines[0].monitor->access.peers, rules);
    EXPECT_EQ(plan.lines[1].baud, 19200);
    const platform::TTlsFiles tls = {QStringLiteral("/club/host.pem"), QStringLiteral("/etc/host.key"),
                                     QStringLiteral("/club/club.pem")};
    EXPECT_EQ(plan.lines[1].monitor->access.tls, tls);
    ASSERT_EQ(plan.buses.size(), 1);
    EXPECT_FALSE(plan.buses[0].monitor);
    const QList<platform::TPeerRule> usual = {{QStringLiteral("127.0.0.0/8"), false},
                                              {QStringLiteral("::1"), false}};
    EXPECT_EQ(plan.buses[0].lampMonitor->access.peers, usual) << "nobody may feed lines unless it says so";
    ASSERT_EQ(plan.gates.size(), 2);
    EXPECT_EQ(plan.gates[1].line, "hall");
    EXPECT_EQ(plan.gates[1].gate.address, "101T");
    EXPECT_EQ(plan.gates[1].gate.zone, "gym");
    EXPECT_EQ(plan.gates[1].gate.direction, TDirection::Inner);
    ASSERT_EQ(plan.lamps.size(), 1);
    EXPECT_EQ(plan.lamps[0].lamp.relay, "4");
    EXPECT_EQ(plan.lamps[0].lamp.centsPerMinute, 70);
    ASSERT_EQ(plan.scales.size(), 1);
    EXPECT_EQ(plan.scales[0].type, 2);
    ASSERT_EQ(plan.terminals.size(), 1);
    EXPECT_EQ(plan.terminals[0].version, 1);
}

struct TMistake
{
    QByteArray rest;
    QStringList errors;
};

QByteArray gate(const QByteArray& line, const QByteArray& address, const QByteArray& direction = "in")
{
    return "[[gate]]\nline = \"" + line + "\"\naddress = \"" + address +
           "\"\nzone = \"hall\"\ndirection = \"" + direction + "\"\n";
}

QByteArray lamp(const QByteArray& name, const QByteArray& board, const QByteArray& relay)
{
    return "[[lamp]]\nname = \"" + name + "\"\nbus = \"hall\"\nboard = \"" + board + "\"\nrelay = " + relay +
           "\ncents_per_minute = 50\n";
}

TEST(ClubFile, EachMistakeIsToldWithItsLineItsKeyAndWhatIsExpected)
{
    const QList<TMistake> mistakes = {
        {gate("entrance", "01A", "inn"),
         {"club.toml:14: [[gate]] direction: \"inn\" is none of in, out, inner"}},
        {"[[gate]]\nline = \"entrance\"\nadress = \"01A\"\nzone = \"hall\"\ndirection = \"in\"\n",
         {"club.toml:10: [[gate]] address: is missing",
          "club.toml:12: [[gate]] adress: no such key; is address meant?"}},
        {"[[gate]]\nline = \"entrance\"\naddress = \"01A\"\nzone = \"\"\ndirection = \"in\"\n",
         {"club.toml:13: [[gate]] zone: must not be empty"}},
        {gate("entrence", "01A"),
         {"club.toml:11: [[gate]] line: \"entrence\" is no line or bus; there are entrance, hall"}},
        {gate("entrance", "1A"),
         {"club.toml:12: [[gate]] address: \"1A\" is no address on a line: two digits and a capital letter "
          "are "
          "expected, such as 01A"}},
        {gate("entrance", "101T"),
         {"club.toml:12: [[gate]] address: \"101T\" is no address on a line: two digits and a capital letter "
          "are "
          "expected, such as 01A"}},
        {gate("entrance", "01a"),
         {"club.toml:12: [[gate]] address: \"01a\" is no address on a line: two digits and a capital letter "
          "are "
          "expected, such as 01A"}},
        {gate("hall", "101I"),
         {"club.toml:12: [[gate]] address: \"101I\" is no gate on a bus: four digits or capital letters are "
          "expected, such as 001T, and no I at the end (a display)"}},
        {gate("hall", "01A"),
         {"club.toml:12: [[gate]] address: \"01A\" is no gate on a bus: four digits or capital letters are "
          "expected, such as 001T, and no I at the end (a display)"}},
        {gate("hall", "001a"),
         {"club.toml:12: [[gate]] address: \"001a\" is no gate on a bus: four digits or capital letters are "
          "expected, such as 001T, and no I at the end (a display)"}},
        {gate("hall", "201A") + lamp("Sun", "201A", "1"),
         {"club.toml:18: [[lamp]] board: \"201A\" is the gate of line 12 already"}},
        {gate("entrance", "01A") + gate("entrance", "01A"),
         {"club.toml:17: [[gate]] address: \"01A\" is the gate of line 12 already"}},
        {gate("entrance", "01A") + gate("entrance", "01A", "out"),
         {"club.toml:17: [[gate]] address: \"01A\" leads in by line 12 already, a gate has one direction"}},
        {"[[line]]\nname = \"other\"\nport = \"/dev/ttyS1\"\n",
         {"club.toml:9: [[bus]] port: \"ttyS1\" is the port of line 12, too"}},
        {"[[line]]\nname = \"hall\"\nport = \"ttyS7\"\n",
         {"club.toml:8: [[bus]] name: \"hall\" is the name of line 11, too"}},
        {"[[line]]\nname = \"other\"\nport = 7\nbaud = \"9600\"\n",
         {"club.toml:12: [[line]] port: is a whole number, a text in quotes is expected",
          "club.toml:13: [[line]] baud: is a text, a whole number is expected"}},
        {"[[scale]]\nname = \"fruit\"\nport = \"ttyS7\"\ntype = 9\n",
         {"club.toml:13: [[scale]] type: 9 is not between 1 and 8"}},
        {"[[scale]]\nname = \"fruit\"\nport = \"ttyS7\"\nbaud = 9601\ntype = 1\n",
         {"club.toml:13: [[scale]] baud: 9601 is no rate; there are 300, 600, 1200, 2400, 4800, 9600, 19200, "
          "38400, "
          "57600, 115200, 230400, 460800"}},
        {"[[terminal]]\nname = \"bar\"\nport = \"ttyS7\"\n",
         {"club.toml:10: [[terminal]] version: is missing"}},
        {"[[terminal]]\nname = \"bar\"\nport = \"ttyS7\"\nversion = 4\n",
         {"club.toml:13: [[terminal]] version: 4 is not between 1 and 3"}},
        {lamp("Sun", "201C", "1"),
         {"club.toml:13: [[lamp]] board: \"201C\" is no relay board: three digits or capital letters and A "
          "or B are "
          "expected, such as 001A"}},
        {lamp("Sun", "201A", "3"), {"club.toml:14: [[lamp]] relay: 3 is not on side A, which has 1 and 2"}},
        {lamp("Sun", "201B", "2"), {"club.toml:14: [[lamp]] relay: 2 is not on side B, which has 3 to 5"}},
        {lamp("Sun", "201B", "6"),
         {"club.toml:14: [[lamp]] relay: 6 is not between 1 and 5",
          "club.toml:14: [[lamp]] relay: 1 is not on side B, which has 3 to 5"}},
        {lamp("Sun", "201A", "1") + lamp("Moon", "201A", "1"),
         {"club.toml:20: [[lamp]] relay: relay 1 of 201A is the lamp of line 11 already"}},
        {"[[bus]]\nname = \"pool\"\nport = \"ttyS7\"\n" + lamp("Sun", "201A", "1") +
             lamp("Moon", "201A", "1").replace("hall", "pool"),
         {"club.toml:23: [[lamp]] relay: relay 1 of 201A is the lamp of line 14 already"}},
        {"[[gates]]\nline = \"entrance\"\n", {"club.toml:10: gates: no such section; is gate meant?"}},
        {"[scale]\nname = \"fruit\"\n",
         {"club.toml:10: scale: begin each with [[scale]] on a line of its own"}},
        {"monitor = { port = 4001, listen = \"0.0.0.0\" }\n",
         {"club.toml:10: monitor allow: is missing; it lists who may watch, such as \"192.168.1.0/24\""}},
        {"monitor = { port = 4001, allow = [\"192.168.1.0/99\"] }\n",
         {"club.toml:10: [[bus]] monitor: '192.168.1.0/99' is not an address or a network"}},
        {"monitor = { port = 4001, certificate = \"a.pem\" }\n",
         {"club.toml:10: monitor key: is missing", "club.toml:10: monitor authority: is missing"}},
        {"monitor = { port = 4001 }\nlamp_monitor = { port = 4001 }\n",
         {"club.toml:11: lamp_monitor port: 4001 is the port of line 10, too"}},
        {"monitor = { port = 70000 }\n", {"club.toml:10: monitor port: 70000 is not between 1 and 65535"}},
    };
    for (const TMistake& mistake : mistakes) {
        EXPECT_EQ(errorsOfRest(mistake.rest), mistake.errors) << mistake.rest.constData();
    }
}

TEST(ClubFile, TheClubItself)
{
    EXPECT_EQ(errorsOf(""), QStringList("club.toml: [club]: is missing; it names the club and its database"));
    EXPECT_EQ(errorsOf("[club]\nnam = \"x\"\n"),
              QStringList({"club.toml:1: [club] name: is missing", "club.toml:1: [club] database: is missing",
                           "club.toml:2: [club] nam: no such key; is name meant?"}));
    EXPECT_EQ(
        errorsOf("[club]\nname = \"a/b\"\ndatabase = \"x\"\n"),
        QStringList(
            "club.toml:2: [club] name: \"a/b\" is none of letters, digits, \".\", \"_\" and \"-\" (files are "
            "named after it)"));
    EXPECT_EQ(errorsOf("[club]\nname = \"a\"\ndatabase = \"x\"\nvolume = 3\n"),
              QStringList("club.toml:4: [club] volume: no such key; there are name, database, log, socket"));
}

TEST(ClubFile, WhatIsNoToml)
{
    const QStringList errors = errorsOf("[club]\nname = riverside\n");
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].startsWith(QStringLiteral("club.toml:2: "))) << qUtf8Printable(errors[0]);
    EXPECT_EQ(errorsOf("\xff\xfe").size(), 1);
}

TEST(ClubFile, ManyMistakesAtOnceInTheOrderOfTheirLines)
{
    const QStringList errors =
        errorsOfRest(gate("entrance", "01A", "inn") + "[[scale]]\nname = \"fruit\"\ntype = 0\n" +
                     gate("entrance", "9", "out"));
    ASSERT_EQ(errors.size(), 4);
    EXPECT_TRUE(errors[0].startsWith(QStringLiteral("club.toml:14:")));
    EXPECT_TRUE(errors[1].startsWith(QStringLiteral("club.toml:15: [[scale]] port: is missing")));
    EXPECT_TRUE(errors[2].startsWith(QStringLiteral("club.toml:17: [[scale]] type:")));
    EXPECT_TRUE(errors[3].startsWith(QStringLiteral("club.toml:20:")));
}

TEST(ClubFile, ZonesThatTheBooksDoNotHave)
{
    const TClubPlan plan =
        readClub(kHead + "[[line]]\nname = \"entrance\"\nport = \"ttyS0\"\n" + gate("entrance", "01A"),
                 QStringLiteral("/club"))
            .plan;
    EXPECT_EQ(compareWithBooks(plan, {QStringLiteral("hall")}), QList<TFileError>());
    const auto text = [&](const QStringList& zones) {
        return errorText(QStringLiteral("club.toml"), compareWithBooks(plan, zones).value(0));
    };
    EXPECT_EQ(text({QStringLiteral("halls"), QStringLiteral("pool")}),
              "club.toml:10: [[gate]] zone: \"hall\" is no zone of the books; is halls meant?");
    EXPECT_EQ(text({QStringLiteral("gym"), QStringLiteral("pool")}),
              "club.toml:10: [[gate]] zone: \"hall\" is no zone of the books; there are gym, pool");
    EXPECT_EQ(text({}), "club.toml:10: [[gate]] zone: \"hall\" is no zone of the books; there is none");
}

TEST(ClubFile, WhereSomethingStandsMakesNoDifference)
{
    const auto planOf = [](const QByteArray& before) {
        return readClub(before + kHead + "[[line]]\nname = \"entrance\"\nport = \"ttyS0\"\n" +
                            gate("entrance", "01A"),
                        {})
            .plan;
    };
    EXPECT_EQ(planOf("").lines, planOf("# remark\n\n").lines);
    EXPECT_EQ(planOf("").gates, planOf("# remark\n\n").gates);
}

TEST(ClubFile, TheExampleIsGood)
{
    QFile file(QStringLiteral(TNV5_EXAMPLES_FOLDER "/club.toml"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const TClubFile club = readClub(file.readAll(), {});
    EXPECT_EQ(club.errors, QList<TFileError>());
    EXPECT_EQ(club.plan.gates.size(), 3);
}

TEST(ClubFile, NearestWord)
{
    const QStringList words = {QStringLiteral("hall"), QStringLiteral("pool")};
    EXPECT_EQ(nearest(QStringLiteral("hal"), words), "hall");
    EXPECT_EQ(nearest(QStringLiteral("Hall"), words), "hall");
    EXPECT_EQ(nearest(QStringLiteral("street"), words), "");
    EXPECT_EQ(nearest(QStringLiteral("x"), {}), "");
}

} // namespace
} // namespace tnv5::host
