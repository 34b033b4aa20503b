#include "tnv5/tools/monitor_report.h"

#include "tnv5/common/crc8.h"
#include "tnv5/common/messages.h"
#include "tnv5/connector/board_command.h"
#include "tnv5/connector/connector_texts.h"
#include "tnv5/connector/routed_line.h"
#include "tnv5/d24/d24_texts.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/switch/switch_line.h"
#include "tnv5/switch/switch_texts.h"
#include "tnv5/tools/explanation.h"

#include <QJsonDocument>

namespace tnv5::tools {

namespace {

constexpr int kKindWidth = 6;
constexpr int kTextWidth = 40;

// Names of a status's fields.
const QStringList kTurnstileFields = {QStringLiteral("name"), QStringLiteral("device"),
                                      QStringLiteral("card"), QStringLiteral("status1"),
                                      QStringLiteral("status2")};
const QStringList kBoardFields = {QStringLiteral("name"),   QStringLiteral("link"), QStringLiteral("device"),
                                  QStringLiteral("type"),   QStringLiteral("card"), QStringLiteral("status1"),
                                  QStringLiteral("status2")};
const QStringList kJobFields = {QStringLiteral("name"), QStringLiteral("device"), QStringLiteral("relay"),
                                QStringLiteral("wanted"), QStringLiteral("reported")};

QStringList namesOf(TStation station, qsizetype count)
{
    const QStringList& usual = station == TStation::Turnstile ? kTurnstileFields
                               : station == TStation::D24     ? kBoardFields
                                                              : kJobFields;
    if (usual.size() == count) {
        return usual;
    }
    const bool ofPing = station == TStation::Switch && count == kBoardFields.size();
    return ofPing ? kBoardFields : QStringList();
}

QString board(QStringView address)
{
    return QStringLiteral("board ") + address.toString();
}

// Lines

QString turnstileMeaning(const QString& line)
{
    const TExplanation explanation = explainTurnstile(platform::toWire(line) + '\r');
    return explanation.Direction == TDirection::Unknown ? QString() : explanation.Meaning;
}

/// A line as the connector hands it on. What stands behind its text is no checksum of it; it gets one.
QString routedMeaning(const QString& line)
{
    const QStringView device = connector::deviceOf(line);
    const QStringView status = connector::statusOf(line);
    if (device.isEmpty() || status.isEmpty() || !(line.startsWith(u'$') || line.startsWith(u'#'))) {
        return {};
    }
    if (line.startsWith(u'#')) {
        if (status == u"PING") {
            return board(device) + QStringLiteral(" pings");
        }
        if (status == u"CROSS") {
            return QStringLiteral("somebody crossed at ") + board(device);
        }
        if (status == u"BTPH") {
            return QStringLiteral("exit button pressed at ") + board(device);
        }
        if (status.startsWith(u"RELAY")) {
            return board(device) + QStringLiteral(" has relay ") + switching::relayNumber(line).toString() +
                   (switching::relayState(line) == u"Y" ? QStringLiteral(" on") : QStringLiteral(" off"));
        }
    }
    const QString whole = line.front() + device.toString() + status.toString();
    return explainBus(platform::toWire(whole + common::Crc8Digits(whole)) + '\r').Meaning;
}

QString commandMeaning(const QString& text)
{
    const connector::TBoardCommand command = connector::parseCommand(text);
    if (command.code == u"GO") {
        return QStringLiteral("open ") + board(command.address);
    }
    return command.code == u"PH" ? QStringLiteral("refuse at ") + board(command.address) : QString();
}

void explainLine(TStation station, TMonitorReport& report)
{
    const auto cut = [&report](const QString& prefix) {
        const bool found = report.text.startsWith(prefix);
        report.text.remove(0, found ? prefix.size() : 0);
        return found;
    };
    const bool turnstile = station == TStation::Turnstile;
    if (cut(common::kReadFromPort) || cut(connector::kReadFromPortLog)) {
        report.kind = QStringLiteral("read");
        report.meaning = turnstile ? turnstileMeaning(report.text) : routedMeaning(report.text);
    } else if (cut(common::kSentToPort)) {
        report.kind = QStringLiteral("sent");
        report.meaning = turnstile ? turnstileMeaning(report.text) : commandMeaning(report.text);
    }
}

// Reports

/// Words for a state; none for one that has none.
QString stateWords(const QString& state)
{
    static const QHash<QString, QString> kWords = {
        {common::kNew, QStringLiteral("waits for the decision")},
        {common::kOpen, QStringLiteral("may pass")},
        {common::kClose, QStringLiteral("is refused")},
        {common::kProgress, QStringLiteral("passes")},
        {d24::kProgressStart, QStringLiteral("begins to pass")},
        {common::kFinish, QStringLiteral("has passed")},
        {common::kTimeout, QStringLiteral("did not pass in time")},
        {common::kNoAnswer, QStringLiteral("got no answer")},
        {common::kCrcError, QStringLiteral("the command arrived damaged")},
        {d24::kCross, QStringLiteral("has crossed")},
    };
    return kWords.value(state);
}

QString cardWords(const QString& card)
{
    if (card == common::kCardManual) {
        return QStringLiteral("opened by hand");
    }
    if (card == common::kCardButton) {
        return QStringLiteral("exit button");
    }
    return card.isEmpty() || card == common::kNoCardNumber ? QStringLiteral("somebody")
                                                           : QStringLiteral("card ") + card;
}

/// A board that is heard, or is not; empty for other states.
QString presenceMeaning(const QString& device, const QString& state)
{
    if (state == connector::kPing || state == d24::kConnected) {
        return board(device) + QStringLiteral(" is there");
    }
    return state == connector::kNoPing || state == d24::kDisconnected
               ? board(device) + QStringLiteral(" is not heard")
               : QString();
}

QString passMeaning(const QString& device, const QString& card, const QString& state)
{
    if (const QString presence = presenceMeaning(device, state); !presence.isEmpty()) {
        return presence;
    }
    const QString words = stateWords(state);
    return words.isEmpty() ? QString()
                           : cardWords(card) + QStringLiteral(" at ") + device + QStringLiteral(": ") + words;
}

QString jobMeaning(const QString& device, const QString& relay, const QString& wanted,
                   const QString& reported)
{
    const QString which = QStringLiteral("relay ") + relay + QStringLiteral(" of ") + board(device);
    if (reported == switching::kNotInLine) {
        return which + QStringLiteral(": the board does not answer");
    }
    if (reported == switching::kGivenUp) {
        return which + QStringLiteral(" is given up");
    }
    const auto word = [](const QString& state) {
        return state == switching::kNone ? QStringLiteral("not known") : state.toLower();
    };
    return which + QStringLiteral(": wanted ") + word(wanted) + QStringLiteral(", is ") + word(reported);
}

void explainStatus(TStation station, TMonitorReport& report)
{
    const QStringList values = report.text.split(u'!');
    const QStringList names = namesOf(station, values.size());
    for (qsizetype i = 0; i < names.size(); ++i) {
        report.fields.append({names[i], values[i]});
    }
    if (names == kTurnstileFields) {
        report.meaning = passMeaning(values[1], values[2], values[4]);
    } else if (names == kBoardFields) {
        report.meaning = passMeaning(values[2], values[4], values[6]);
    } else if (names == kJobFields) {
        report.meaning = jobMeaning(values[1], values[2], values[3], values[4]);
    }
}

} // namespace

TMonitorReport monitorReport(TStation station, const TMonitorPiece& piece)
{
    TMonitorReport report = {piece, QStringLiteral("rest"), piece.text, {}, {}};
    switch (piece.kind) {
    case TMonitorPiece::Log:
        report.kind = QStringLiteral("log");
        explainLine(station, report);
        break;
    case TMonitorPiece::Error:
        report.kind = QStringLiteral("error");
        break;
    case TMonitorPiece::Status:
        report.kind = QStringLiteral("status");
        explainStatus(station, report);
        break;
    case TMonitorPiece::Rest:
        break;
    }
    return report;
}

bool TRepeats::has(const TMonitorReport& report)
{
    constexpr qsizetype kStates = 2; // the last fields
    if (report.fields.value(0).second != common::kStack) {
        return false;
    }
    const qsizetype states = report.fields.size() - kStates;
    const QString whose = report.text.section(u'!', 0, states - 1);
    const QString now = report.text.section(u'!', states);
    const auto before = FStates.constFind(whose);
    if (before != FStates.constEnd() && *before == now) {
        return true;
    }
    if (FStates.size() >= kMaxKept) {
        FStates.clear();
    }
    FStates.insert(whose, now);
    return false;
}

QString monitorLine(const TMonitorReport& report)
{
    QString text = report.text;
    if (report.piece.kind == TMonitorPiece::Status) {
        text = text.split(u'!').join(u' ');
    }
    const QString line = report.kind.leftJustified(kKindWidth) + u' ';
    return report.meaning.isEmpty()
               ? line + text
               : line + text.leftJustified(kTextWidth) + QStringLiteral("  ") + report.meaning;
}

QJsonObject monitorObject(const TMonitorReport& report, const QDateTime& time)
{
    QJsonObject object;
    for (const auto& [name, value] : report.fields) {
        object.insert(name, value);
    }
    object.insert(QStringLiteral("time"),
                  time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODateWithMs));
    object.insert(QStringLiteral("kind"), report.kind);
    object.insert(QStringLiteral("text"), report.text);
    if (!report.meaning.isEmpty()) {
        object.insert(QStringLiteral("meaning"), report.meaning);
    }
    return object;
}

QString jsonLine(const QJsonObject& object)
{
    const QString plain = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    QString line;
    for (const QChar character : plain) {
        if (character.category() == QChar::Other_Control) {
            line += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QChar(u'0'));
        } else {
            line += character;
        }
    }
    return line;
}

} // namespace tnv5::tools
