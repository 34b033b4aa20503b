#include "tnv5/common/crc8.h"
#include "tnv5/common/text.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/tools/explanation.h"

#include <algorithm>

namespace tnv5::tools {

using common::Copy;
using common::CopyFrom;

namespace {

constexpr qsizetype kPairEnd = 4;    // "$" and three characters
constexpr qsizetype kAddressEnd = 5; // "$" and four
constexpr qsizetype kChecksumLength = 2;

QString quoted(QStringView text)
{
    return u'"' + text.toString() + u'"';
}

bool isHexDigit(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F');
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool hasRightChecksum(QStringView line)
{
    return line.size() > kChecksumLength &&
           common::Crc8Digits(line.chopped(kChecksumLength)) == line.last(kChecksumLength);
}

bool endsInHexDigits(QStringView line)
{
    const QStringView digits = line.last(kChecksumLength);
    return std::all_of(digits.begin(), digits.end(), isHexDigit);
}

// Commands to the boards

QString pairMeaning(QStringView line)
{
    const QStringView body = line.sliced(std::min(kPairEnd, line.size()));
    const QString pair = Copy(line, 2, kPairEnd - 1).toString();
    if (body == u"BFL1") {
        return QStringLiteral("light at boards %1A and %1B").arg(pair);
    }
    if (body == u"BES") {
        return QStringLiteral("sound at boards %1A and %1B").arg(pair);
    }
    return {};
}

QString relayMeaning(const QString& board, QStringView body)
{
    constexpr qsizetype kLength = 6; // "RL", relay, two digits of time, "N"
    if (body.size() != kLength || !body.startsWith(u"RL") || !isDigit(body[3]) || !isDigit(body[4]) ||
        body[5] != u'N') {
        return {};
    }
    if (body == u"RL320N") {
        return QStringLiteral("alarm at ") + board + QStringLiteral(": relay 3 for 20");
    }
    const QString relay = QStringLiteral("switch relay ") + body[2] + QStringLiteral(" of ") + board;
    const QStringView time = body.sliced(3, 2);
    return time == u"00" ? relay : relay + QStringLiteral(" for ") + time.toString();
}

QString rowMeaning(const QString& board, QStringView body)
{
    constexpr qsizetype kPrefix = 6; // "PSN100"
    if (!body.startsWith(u"PSN100") || body.size() <= kPrefix || body[kPrefix] < u'1' ||
        body[kPrefix] > u'4') {
        return {};
    }
    return QStringLiteral("display row ") + body[kPrefix] + QStringLiteral(" of ") + board +
           QStringLiteral(" shows ") + quoted(body.sliced(kPrefix + 1));
}

/// Empty for what is no command.
QString commandMeaning(QStringView line)
{
    if (const QString pair = pairMeaning(line); !pair.isEmpty()) {
        return pair;
    }
    const QStringView body = line.sliced(std::min(kAddressEnd, line.size()));
    const QString board = QStringLiteral("board ") + Copy(line, 2, kAddressEnd - 1).toString();
    if (body == u"ECHO") {
        return QStringLiteral("answers the ping of ") + board;
    }
    if (body == u"HW") {
        return QStringLiteral("asks ") + board + QStringLiteral(" for its display and relays");
    }
    if (body == u"GO") {
        return QStringLiteral("open ") + board;
    }
    if (body == u"PH") {
        return QStringLiteral("refuse at ") + board;
    }
    if (body == u"SDG") {
        return QStringLiteral("SDG command to ") + board;
    }
    if (body == u"CS") {
        return QStringLiteral("clear the display of ") + board;
    }
    const QString relay = relayMeaning(board, body);
    return relay.isEmpty() ? rowMeaning(board, body) : relay;
}

TExplanation explainCommand(QStringView line)
{
    const bool right = hasRightChecksum(line);
    const QString meaning =
        line.size() > kChecksumLength ? commandMeaning(line.chopped(kChecksumLength)) : QString();
    if (!right && (meaning.isEmpty() || line.front() != u'$')) {
        return {TDirection::Unknown, TChecksum::None, QStringLiteral("no line of a board")};
    }
    return {TDirection::ToEquipment, right ? TChecksum::Right : TChecksum::Wrong,
            meaning.isEmpty() ? QStringLiteral("unknown command") : meaning};
}

// Lines of the boards; the order of the tests is the connector's

QString hardwareMeaning(const QString& board, const QString& line)
{
    const QString display = connector::TDeviceConnector::GetDiagnosticValue(line, QStringLiteral("GX"));
    const QString relays = connector::TDeviceConnector::GetDiagnosticValue(line, QStringLiteral("GR"));
    QStringList parts;
    parts << (display == u"N" ? QStringLiteral("no display") : QStringLiteral("display ") + quoted(display));
    for (qsizetype i = 0; i < relays.size(); ++i) {
        parts << QStringLiteral("relay ") + QString::number(i + 1) +
                     (relays[i] == u'N' ? QStringLiteral(" off") : QStringLiteral(" on"));
    }
    return board + QStringLiteral(" has ") + parts.join(QStringLiteral(", "));
}

QString replyMeaning(const QString& board, const QString& line, QStringView body)
{
    if (line.contains(u"BT")) {
        return QStringLiteral("exit button pressed at ") + board;
    }
    if (line.contains(u"ET")) {
        return board + QStringLiteral(" reports an event: ") + quoted(body);
    }
    if (line.contains(u"HW")) {
        return hardwareMeaning(board, line);
    }
    if (line.contains(u"GO")) {
        return QStringLiteral("somebody crossed at ") + board;
    }
    return board + QStringLiteral(" says ") + quoted(body) + QStringLiteral(", which is passed to nobody");
}

QString eventMeaning(const QString& board, const QString& line, QStringView body)
{
    if (line.contains(u"PING")) {
        return board + QStringLiteral(" pings");
    }
    if (body.startsWith(u"ET")) {
        return board + QStringLiteral(" confirms a command");
    }
    if (line.contains(u"ET")) {
        return board + QStringLiteral(" reports an event: ") + quoted(body);
    }
    if (body.startsWith(u"RQ")) {
        return QStringLiteral("card ") + CopyFrom(body, 3).toString() + QStringLiteral(" read at ") + board;
    }
    if (body.startsWith(u"PR")) {
        return QStringLiteral("passage under way at ") + board;
    }
    if (body.startsWith(u"GR")) {
        return QStringLiteral("passage done at ") + board;
    }
    if (body.startsWith(u"FK")) {
        return QStringLiteral("nobody came at ") + board;
    }
    if (body.startsWith(u"SS")) {
        return board + QStringLiteral(" reports relay ") + Copy(body, 3, 1).toString() +
               (Copy(body, 4, 1) == u"F" ? QStringLiteral(" off") : QStringLiteral(" on"));
    }
    return board + QStringLiteral(" says ") + quoted(body);
}

// A checksum behind a board's line is usual but nobody's duty: one that is not right is wrong only where the
// line would not be whole without it.
TChecksum checkBoardLine(QStringView line)
{
    if (hasRightChecksum(line)) {
        return TChecksum::Right;
    }
    const QStringView body = line.sliced(kAddressEnd);
    const bool wholeWithout = body == u"PING" || body == u"BT" || body == u"GO" || body == u"ET" ||
                              body.endsWith(u'/') || body.size() <= kChecksumLength;
    return wholeWithout || !endsInHexDigits(line) ? TChecksum::None : TChecksum::Wrong;
}

TExplanation explainBoardLine(const QString& line)
{
    const TChecksum checksum = checkBoardLine(line);
    QStringView body = QStringView(line).sliced(kAddressEnd);
    if (checksum != TChecksum::None) {
        body.chop(std::min(kChecksumLength, body.size()));
    }
    const QString board = QStringLiteral("board ") + line.sliced(1, kAddressEnd - 1);
    return {TDirection::FromEquipment, checksum,
            line.startsWith(u'#') ? replyMeaning(board, line, body) : eventMeaning(board, line, body)};
}

} // namespace

TExplanation explainBus(const QByteArray& piece)
{
    const QString text = platform::fromWire(piece);
    const bool start = text.startsWith(u'$') || text.startsWith(u'#');
    if (!start || !text.endsWith(u'\r')) {
        return start
                   ? explainCommand(text)
                   : TExplanation{TDirection::Unknown, TChecksum::None, QStringLiteral("no line of a board")};
    }
    const QString line = text.front() + common::Trim(QStringView(text).sliced(1)).toString();
    if (line.size() <= kAddressEnd) {
        return {TDirection::Unknown, TChecksum::None, QStringLiteral("too short for a line of a board")};
    }
    return explainBoardLine(line);
}

} // namespace tnv5::tools
