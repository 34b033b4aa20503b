#include "support/text_printers.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/tools/back_off.h"
#include "tnv5/tools/monitor_report.h"

#include <QJsonDocument>
#include <gtest/gtest.h>
#include <random>

namespace tnv5::tools {

namespace {

void PrintTo(const TMonitorPiece& piece, std::ostream* out)
{
    *out << piece.kind << ' ' << piece.text.toStdString();
}

using TPieces = QList<TMonitorPiece>;

constexpr auto kLog = TMonitorPiece::Log;
constexpr auto kError = TMonitorPiece::Error;
constexpr auto kStatus = TMonitorPiece::Status;
constexpr auto kRest = TMonitorPiece::Rest;

TPieces cut(const QByteArray& bytes, qsizetype size)
{
    TMonitorCutter cutter;
    TPieces pieces;
    for (qsizetype at = 0; at < bytes.size(); at += size) {
        pieces += cutter.take(QByteArrayView(bytes).sliced(at, std::min(size, bytes.size() - at)));
    }
    return pieces + cutter.end();
}

// However the network cuts it.
void expectCut(const QByteArray& bytes, const TPieces& pieces)
{
    for (qsizetype size = 1; size <= bytes.size(); ++size) {
        EXPECT_EQ(cut(bytes, size), pieces) << "in pieces of " << size;
    }
}

TMonitorReport reported(TStation station, TMonitorPiece::TKind kind, const QString& text)
{
    return monitorReport(station, {kind, text});
}

QString meaning(TStation station, TMonitorPiece::TKind kind, const QString& text)
{
    return reported(station, kind, text).meaning;
}

TEST(MonitorCutter, Texts)
{
    expectCut("LOG!abc&STATUS!COME!01A!123!NEW!NEW&ERROR![04] x&LOG!&",
              {{kLog, "abc"}, {kStatus, "COME!01A!123!NEW!NEW"}, {kError, "[04] x"}, {kLog, ""}});
    expectCut(platform::toWire(QStringLiteral("LOG!%Считано с порта% $01AP&")),
              {{kLog, QStringLiteral("%Считано с порта% $01AP")}});
}

TEST(MonitorCutter, ATextGoesToTheNextAmpersand)
{
    expectCut("LOG!a LOG!b STATUS!c&", {{kLog, "a LOG!b STATUS!c"}});
    expectCut("LOG!%read% STATUS!CHECK!1&&LOG!b&", {{kLog, "%read% STATUS!CHECK!1"}, {kLog, "b"}});
}

TEST(MonitorCutter, Rests)
{
    expectCut("noise LOG!a&more&ERROR!b&\r\nSTATUS!c&LOG!not all", {{kRest, "noise "},
                                                                    {kLog, "a"},
                                                                    {kRest, "more&"},
                                                                    {kError, "b"},
                                                                    {kRest, "\r\n"},
                                                                    {kStatus, "c"},
                                                                    {kRest, "LOG!not all"}});
    expectCut("log!a&LO G!b&!&&", {{kRest, "log!a&LO G!b&!&&"}});
    expectCut("XLOG!a&", {{kRest, "X"}, {kLog, "a"}});
    expectCut("LOLOG!a&", {{kRest, "LO"}, {kLog, "a"}});
    expectCut("&&&", {});
    EXPECT_EQ(TMonitorCutter().end(), TPieces());
}

TEST(MonitorCutter, EndBeginsAnew)
{
    TMonitorCutter cutter;
    EXPECT_EQ(cutter.take("LOG!a"), TPieces());
    EXPECT_EQ(cutter.end(), (TPieces{{kRest, "LOG!a"}}));
    EXPECT_EQ(cutter.take("b&LOG!c&"), (TPieces{{kRest, "b&"}, {kLog, "c"}}));
}

TEST(MonitorCutter, TextWithoutAnEndIsBounded)
{
    const qsizetype most = TMonitorCutter::kMaxText - 4; // the tag counts
    const QByteArray longest(most - 1, 'x');
    for (const qsizetype size : {1, 1000, 65'536, 1'000'000}) {
        EXPECT_EQ(cut("LOG!" + longest + "&", size), (TPieces{{kLog, QString::fromLatin1(longest)}}));
        const TPieces pieces = cut("LOG!" + longest + "yz&LOG!b&", size);
        EXPECT_EQ(
            pieces,
            (TPieces{{kRest, "LOG!" + QString::fromLatin1(longest) + "y"}, {kRest, "z&"}, {kLog, "b"}}));
        EXPECT_EQ(cut(QByteArray(3 * TMonitorCutter::kMaxText, 'q'), size).size(), 3);
    }
}

// Nothing is lost and nothing is invented, however it is cut.
TEST(MonitorCutter, RandomStreams)
{
    std::mt19937 random(5);
    const QByteArrayList words = {"LOG!", "ERROR!", "STATUS!", "&", "!", "LO", "a", "\xe0", "STATUS", "&&"};
    for (int round = 0; round < 300; ++round) {
        QByteArray stream;
        for (unsigned count = random() % 40; count > 0; --count) {
            stream += words[static_cast<qsizetype>(random() % static_cast<unsigned>(words.size()))];
        }
        const TPieces whole = cut(stream, std::max<qsizetype>(stream.size(), 1));
        EXPECT_EQ(cut(stream, 1), whole);
        EXPECT_EQ(cut(stream, 3), whole);
        QString all;
        for (const TMonitorPiece& piece : whole) {
            static const QStringList kBefore = {"LOG!", "ERROR!", "STATUS!", ""};
            all += kBefore[piece.kind] + piece.text + (piece.kind == kRest ? "" : "&");
        }
        EXPECT_EQ(all.remove(u'&'), platform::fromWire(stream).remove(u'&'));
    }
}

TEST(MonitorReport, LinesOfTurnstiles)
{
    const TMonitorReport read =
        reported(TStation::Turnstile, kLog, QStringLiteral("%Считано с порта% $01AR12345678"));
    EXPECT_EQ(read.kind, QStringLiteral("read"));
    EXPECT_EQ(read.text, QStringLiteral("$01AR12345678"));
    EXPECT_EQ(read.meaning, QStringLiteral("card 12345678 read at turnstile 01A"));
    EXPECT_EQ(monitorLine(read),
              QStringLiteral(
                  "read   $01AR12345678                             card 12345678 read at turnstile 01A"));
    const TMonitorReport sent =
        reported(TStation::Turnstile, kLog, QStringLiteral("%Отправлено на порт% $01A10366"));
    EXPECT_EQ(sent.kind, QStringLiteral("sent"));
    EXPECT_EQ(sent.meaning, QStringLiteral("open turnstile 01A for 3, relay 1"));
    EXPECT_EQ(meaning(TStation::Turnstile, kLog, QStringLiteral("%Считано с порта% noise")), QString());
    EXPECT_EQ(monitorLine(reported(TStation::Turnstile, kLog, "started")), QStringLiteral("log    started"));
}

TEST(MonitorReport, LinesOfBoards)
{
    const auto of = [](const char* line) {
        return meaning(TStation::D24, kLog, QStringLiteral("%Считано с порта% ") + line);
    };
    EXPECT_EQ(of("$10.0.0.5:001TRQ1234500"), QStringLiteral("card 12345 read at board 001T"));
    EXPECT_EQ(of("$10.0.0.5:001TGR00"), QStringLiteral("passage done at board 001T"));
    EXPECT_EQ(of("#0.0.0.0:000APING22"), QStringLiteral("board 000A pings"));
    EXPECT_EQ(of("#0.0.0.0:000ACROSS22"), QStringLiteral("somebody crossed at board 000A"));
    EXPECT_EQ(of("#0.0.0.0:000ABTPH22"), QStringLiteral("exit button pressed at board 000A"));
    EXPECT_EQ(of("#0.0.0.0:000ARELAY2Y22"), QStringLiteral("board 000A has relay 2 on"));
    EXPECT_EQ(of("#0.0.0.0:000ARELAY3N22"), QStringLiteral("board 000A has relay 3 off"));
    EXPECT_EQ(of("nothing"), QString());
    EXPECT_EQ(of("$"), QString());
    EXPECT_EQ(of("#0.0.0.0:000ARELAY"), QStringLiteral("board 000A says \"REL\", which is passed to nobody"));
    EXPECT_EQ(meaning(TStation::Switch, kLog, QStringLiteral("%Считано с порта*% #0.0.0.0:000APING22")),
              QStringLiteral("board 000A pings"));
    EXPECT_EQ(meaning(TStation::D24, kLog, QStringLiteral("%Отправлено на порт% GO10.0.0.5:001T")),
              QStringLiteral("open board 001T"));
    EXPECT_EQ(meaning(TStation::D24, kLog, QStringLiteral("%Отправлено на порт% PH10.0.0.5:001T")),
              QStringLiteral("refuse at board 001T"));
    EXPECT_EQ(meaning(TStation::D24, kLog, QStringLiteral("%Отправлено на порт% ")), QString());
}

TEST(MonitorReport, StatusOfTurnstiles)
{
    const TMonitorReport report = reported(TStation::Turnstile, kStatus, "STACK!01A!123!NEW!OPEN");
    EXPECT_EQ(report.kind, QStringLiteral("status"));
    EXPECT_EQ(
        report.fields,
        (QList<QPair<QString, QString>>{
            {"name", "STACK"}, {"device", "01A"}, {"card", "123"}, {"status1", "NEW"}, {"status2", "OPEN"}}));
    EXPECT_EQ(monitorLine(report),
              QStringLiteral("status STACK 01A 123 NEW OPEN                    card 123 at 01A: may pass"));
    const auto words = [](const char* card, const char* state) {
        return meaning(TStation::Turnstile, kStatus,
                       QStringLiteral("STACK!01A!%1!%2!%2").arg(QLatin1String(card), QLatin1String(state)));
    };
    EXPECT_EQ(words("1", "NEW"), QStringLiteral("card 1 at 01A: waits for the decision"));
    EXPECT_EQ(words("1", "CLOSE"), QStringLiteral("card 1 at 01A: is refused"));
    EXPECT_EQ(words("1", "PROGRESS"), QStringLiteral("card 1 at 01A: passes"));
    EXPECT_EQ(words("1", "FINISH"), QStringLiteral("card 1 at 01A: has passed"));
    EXPECT_EQ(words("1", "TIMEOUT"), QStringLiteral("card 1 at 01A: did not pass in time"));
    EXPECT_EQ(words("1", "NOANSWER"), QStringLiteral("card 1 at 01A: got no answer"));
    EXPECT_EQ(words("1", "CRC-ERROR"), QStringLiteral("card 1 at 01A: the command arrived damaged"));
    EXPECT_EQ(words("-1-1-1-1-1", "OPEN"), QStringLiteral("opened by hand at 01A: may pass"));
    EXPECT_EQ(words("-2-2-2-2-2", "FINISH"), QStringLiteral("exit button at 01A: has passed"));
    EXPECT_EQ(words("NOCARDNUMBER", "OPEN"), QStringLiteral("somebody at 01A: may pass"));
    EXPECT_EQ(words("1", "?"), QString());
}

TEST(MonitorReport, StatusOfBoards)
{
    const TMonitorReport report =
        reported(TStation::D24, kStatus, "COME!10.0.0.5!001T!T!123!PROGRESSSTART!PROGRESSSTART");
    EXPECT_EQ(report.fields.size(), 7);
    EXPECT_EQ(report.fields.value(1), qMakePair(QStringLiteral("link"), QStringLiteral("10.0.0.5")));
    EXPECT_EQ(report.fields.value(3), qMakePair(QStringLiteral("type"), QStringLiteral("T")));
    EXPECT_EQ(report.meaning, QStringLiteral("card 123 at 001T: begins to pass"));
    EXPECT_EQ(meaning(TStation::D24, kStatus, "STACK!10.0.0.5!001T!T!!CROSS!CROSS"),
              QStringLiteral("somebody at 001T: has crossed"));
    EXPECT_EQ(meaning(TStation::D24, kStatus, "STACK!10.0.0.5!001T!T!!CONNECTED!CONNECTED"),
              QStringLiteral("board 001T is there"));
    EXPECT_EQ(meaning(TStation::D24, kStatus, "STACK!10.0.0.5!001T!T!!DISCONNECTED!DISCONNECTED"),
              QStringLiteral("board 001T is not heard"));
}

TEST(MonitorReport, StatusOfRelays)
{
    const auto words = [](const char* text) { return meaning(TStation::Switch, kStatus, text); };
    EXPECT_EQ(words("STACK!012A!1!ON!OFF"), QStringLiteral("relay 1 of board 012A: wanted on, is off"));
    EXPECT_EQ(words("STACK!012A!1!NONE!NONE"),
              QStringLiteral("relay 1 of board 012A: wanted not known, is not known"));
    EXPECT_EQ(words("STACK!012A!1!ON!NOTINLINE"),
              QStringLiteral("relay 1 of board 012A: the board does not answer"));
    EXPECT_EQ(words("STACK!012A!1!OFF!XXX"), QStringLiteral("relay 1 of board 012A is given up"));
    EXPECT_EQ(words("STACK!0.0.0.0!012A!T!!PING!PING"), QStringLiteral("board 012A is there"));
    EXPECT_EQ(words("STACK!0.0.0.0!012A!T!!NOPING!NOPING"), QStringLiteral("board 012A is not heard"));
    EXPECT_EQ(reported(TStation::Switch, kStatus, "STACK!012A!1!ON!OFF").fields.value(3).first,
              QStringLiteral("wanted"));
}

TEST(MonitorReport, RepeatsOfATable)
{
    TRepeats repeats;
    const auto repeated = [&](TStation station, const char* text) {
        return repeats.has(reported(station, kStatus, QString::fromLatin1(text)));
    };
    const auto turnstile = TStation::Turnstile;
    EXPECT_FALSE(repeated(turnstile, "STACK!01A!1!NEW!NEW"));
    EXPECT_TRUE(repeated(turnstile, "STACK!01A!1!NEW!NEW"));
    EXPECT_FALSE(repeated(turnstile, "STACK!01A!2!NEW!NEW"));
    EXPECT_FALSE(repeated(turnstile, "STACK!02A!1!NEW!NEW"));
    EXPECT_FALSE(repeated(turnstile, "STACK!01A!1!NEW!OPEN"));
    EXPECT_FALSE(repeated(turnstile, "STACK!01A!1!NEW!NEW"));
    EXPECT_FALSE(repeated(turnstile, "COME!01A!1!NEW!NEW")); // something has happened
    EXPECT_FALSE(repeated(turnstile, "COME!01A!1!NEW!NEW"));
    EXPECT_FALSE(repeated(turnstile, "STACK!1")); // of another form
    EXPECT_FALSE(repeated(turnstile, "STACK!1"));
    EXPECT_FALSE(repeated(TStation::Switch, "STACK!012A!1!ON!OFF"));
    EXPECT_TRUE(repeated(TStation::Switch, "STACK!012A!1!ON!OFF"));
    EXPECT_FALSE(repeated(TStation::Switch, "STACK!012A!1!ON!ON"));
    for (int card = 0; card < 100'000; ++card) {
        EXPECT_FALSE(
            repeats.has(reported(turnstile, kStatus, QStringLiteral("STACK!09A!%1!NEW!NEW").arg(card))));
    }
}

// A status with too few or too many fields is shown as it is.
TEST(MonitorReport, StatusOfAnotherForm)
{
    for (const TStation station : {TStation::Turnstile, TStation::D24, TStation::Switch}) {
        for (const char* text : {"", "STACK", "a!b!c!d!e!f", "a!b!c!d!e!f!g!h"}) {
            const TMonitorReport report = reported(station, kStatus, text);
            EXPECT_TRUE(report.fields.isEmpty());
            EXPECT_EQ(report.meaning, QString());
            EXPECT_EQ(report.text, QString(text));
        }
    }
    EXPECT_EQ(monitorLine(reported(TStation::Turnstile, kStatus, "a!b")), QStringLiteral("status a b"));
}

TEST(MonitorReport, ForPrograms)
{
    const QDateTime time(QDate(2026, 1, 5), QTime(12, 30, 15, 7), Qt::OffsetFromUTC, 3600);
    EXPECT_EQ(
        jsonLine(monitorObject(reported(TStation::Turnstile, kStatus, "STACK!01A!1!NEW!OPEN"), time)),
        QStringLiteral(R"({"card":"1","device":"01A","kind":"status","meaning":"card 1 at 01A: may pass",)"
                       R"("name":"STACK","status1":"NEW","status2":"OPEN",)"
                       R"("text":"STACK!01A!1!NEW!OPEN","time":"2026-01-05T12:30:15.007+01:00"})"));
    EXPECT_EQ(
        jsonLine(monitorObject(reported(TStation::D24, kError, "[04] \"x\""), time)),
        QStringLiteral(R"({"kind":"error","text":"[04] \"x\"","time":"2026-01-05T12:30:15.007+01:00"})"));
}

// No control character goes out, and none is lost.
TEST(MonitorReport, ForProgramsAndTerminals)
{
    QByteArray bytes;
    for (int code = 0; code < 256; ++code) {
        bytes += static_cast<char>(code);
    }
    const QString text = platform::fromWire(bytes);
    const QString line = jsonLine(monitorObject(reported(TStation::Turnstile, kLog, text), {}));
    for (const QChar character : line) {
        EXPECT_NE(character.category(), QChar::Other_Control);
    }
    EXPECT_EQ(QJsonDocument::fromJson(line.toUtf8()).object().value("text").toString(), text);
}

TEST(BackOff, DoublesUpToHalfAMinute)
{
    TBackOff backOff;
    for (const int ms : {1'000, 2'000, 4'000, 8'000, 16'000, 30'000, 30'000}) {
        EXPECT_EQ(backOff.next(), ms);
    }
    backOff.reset();
    EXPECT_EQ(backOff.next(), 1'000);
}

} // namespace

} // namespace tnv5::tools
