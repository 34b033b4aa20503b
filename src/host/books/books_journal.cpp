#include "tnv5/host/books/books_journal.h"

#include "tnv5/common/messages.h"
#include "tnv5/host/books/books_query.h"

#include <QDateTime>
#include <QRegularExpression>
#include <algorithm>

namespace tnv5::host {

namespace {

enum { Id, Began, Ended, Gate, Zone, Direction, Card, Member, Name, Opened, Reason, Ending, Who, Note };

constexpr char16_t kPasses[] =
    u"SELECT pass.id, began, ended, pass.gate, coalesce(gate.zone, ''), coalesce(gate.direction, ''), card,"
    u" coalesce(pass.member, 0), coalesce(member.name, ''), result = 'opened', reason, ending, who, note "
    u"FROM pass"
    u" LEFT JOIN gate ON gate.address = pass.gate LEFT JOIN member ON member.id = pass.member";

const QString kRefused = QStringLiteral("refused");
const QString kOpen = QStringLiteral("open");

QString textOf(platform::TDateTime time)
{
    return toText(time);
}

platform::TDateTime fromLocal(const QDateTime& time)
{
    return toDateTime(time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz")));
}

QDateTime now()
{
    return QDateTime::fromString(toText(platform::Now()), QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

QDateTime atDay(QDate day, bool end)
{
    return end ? day.endOfDay() : day.startOfDay(); // where summer time begins at midnight, there is no 0:00
}

[[noreturn]] void failMoment(const QString& text)
{
    throw EBooks(
        QStringLiteral("\"%1\" is no time; write it like 2026-01-31, \"2026-01-31 12:00\", today, yesterday, "
                       "or 90m, 24h, 7d, 2w ago")
            .arg(text));
}

QString whoOf(const QVariantList& row)
{
    const QString card = row[Card].toString();
    if (card == common::kCardButton) {
        return QStringLiteral("exit button");
    }
    if (card == common::kCardManual) {
        QString text = QStringLiteral("by hand");
        text += row[Who].toString().isEmpty() ? QString() : QStringLiteral(": ") + row[Who].toString();
        text +=
            row[Note].toString().isEmpty() ? QString() : QStringLiteral(" (%1)").arg(row[Note].toString());
        return text;
    }
    return row[Name].toString();
}

bool isUnderWay(const QVariantList& row)
{
    return row[Opened].toBool() && row[Ending].toString().isEmpty();
}

QString whatOf(const QVariantList& row)
{
    if (!row[Opened].toBool()) {
        return QStringLiteral("refused: ") + row[Reason].toString();
    }
    return isUnderWay(row) ? kOpen : row[Ending].toString();
}

} // namespace

QStringList journalEndings()
{
    QStringList words;
    for (const TEnding ending : {TEnding::Passed, TEnding::TimedOut, TEnding::Unanswered,
                                 TEnding::Interrupted, TEnding::Abandoned}) {
        words.append(toText(ending));
    }
    return words + QStringList{kRefused, kOpen};
}

TJournalReader::TJournalReader(TDatabase& database, TJournalQuery query)
    : FDatabase(database), FQuery(std::move(query))
{
    FQuery.ending.replace(u'-', u' '); // "timed-out" needs no quotation marks in a shell
    if (!FQuery.ending.isEmpty() && !journalEndings().contains(FQuery.ending)) {
        throw EBooks(QStringLiteral("\"%1\" is no ending; there are %2")
                         .arg(FQuery.ending, journalEndings().join(QStringLiteral(", "))));
    }
}

const QList<TColumn>& TJournalReader::columns()
{
    static const QList<TColumn> columns = {{QStringLiteral("id"), TColumnKind::Number},
                                           {QStringLiteral("began"), TColumnKind::Time},
                                           {QStringLiteral("ended"), TColumnKind::Time},
                                           {QStringLiteral("gate")},
                                           {QStringLiteral("zone")},
                                           {QStringLiteral("direction")},
                                           {QStringLiteral("card")},
                                           {QStringLiteral("member"), TColumnKind::Number},
                                           {QStringLiteral("name")},
                                           {QStringLiteral("opened"), TColumnKind::Flag},
                                           {QStringLiteral("reason")},
                                           {QStringLiteral("ending")},
                                           {QStringLiteral("who")},
                                           {QStringLiteral("note")}};
    return columns;
}

const QList<TColumn>& TJournalReader::columnsForPeople()
{
    static const QList<TColumn> columns = {{QStringLiteral("began"), TColumnKind::Time},
                                           {QStringLiteral("gate")},
                                           {QStringLiteral("what")},
                                           {QStringLiteral("card")},
                                           {QStringLiteral("who")}};
    return columns;
}

QVariantList TJournalReader::forPeople(const QVariantList& row)
{
    const QString card = row[Card].toString();
    return {row[Began], row[Gate], whatOf(row), common::IsPseudoCard(card) ? QString() : card, whoOf(row)};
}

QVariantList TJournalReader::rowFrom(const TRows& row)
{
    QVariantList values;
    for (int column = Id; column <= Note; ++column) {
        const QVariant value = row.value(column);
        values.append(column == Began || column == Ended ? QVariant(toDateTime(value.toString())) : value);
    }
    return values;
}

QList<QVariantList> TJournalReader::next(int limit)
{
    begin();
    const qint64 newest =
        FDatabase.lastPass(); // rows up to it are looked at once, whether they are wanted or not
    for (;;) {
        const QList<QVariantList> looked = FLast < newest ? look(newest, limit) : QList<QVariantList>();
        FLast = looked.size() < limit ? std::max(FLast, newest) : looked.last()[Id].toLongLong();
        QList<QVariantList> rows;
        for (const QVariantList& row : looked) {
            if (isUnderWay(row)) {
                FOpen.append(row[Id].toLongLong());
            }
            if (wants(row)) {
                rows.append(row);
            }
        }
        if (!rows.isEmpty() || FLast >= newest) {
            return rows;
        }
    }
}

// Rows are added about in the order of their time: what is older need not be looked at.
void TJournalReader::begin()
{
    if (FBegun) {
        return;
    }
    if (FQuery.since != 0) {
        TStatement statement(FDatabase.connection(),
                             QStringLiteral("SELECT coalesce((SELECT min(id) - 1 FROM pass WHERE began >= ?),"
                                            " (SELECT max(id) FROM pass), 0)"));
        FLast = statement.run({textOf(FQuery.since)}).number();
    }
    FBegun = true;
}

// Passes under way are among them whatever ending is asked for: it is not known yet.
QList<QVariantList> TJournalReader::look(qint64 newest, int limit)
{
    QString sql = QString::fromUtf16(kPasses) + QStringLiteral(" WHERE pass.id > ? AND pass.id <= ?");
    QVariantList values = {FLast, newest};
    const auto want = [&](const char* condition, const QVariantList& bound) {
        sql += QStringLiteral(" AND ") + QLatin1String(condition);
        values += bound;
    };
    if (FQuery.since != 0) {
        want("began >= ?", {textOf(FQuery.since)});
    }
    if (FQuery.until != 0) {
        want("began <= ?", {textOf(FQuery.until)});
    }
    if (FQuery.member != 0) {
        want("pass.member = ?", {FQuery.member});
    }
    if (!FQuery.gate.isEmpty()) {
        want("pass.gate = ?", {FQuery.gate});
    }
    if (FQuery.ending == kRefused) {
        want("result = 'refused'", {});
    } else if (!FQuery.ending.isEmpty()) {
        want("result = 'opened' AND (ending = '' OR ending = ?)", {FQuery.ending});
    }
    sql += QStringLiteral(" ORDER BY pass.id LIMIT ?");
    values.append(limit);
    TStatement statement(FDatabase.connection(), sql);
    return statement.run(values).all([this](const TRows& row) { return rowFrom(row); });
}

bool TJournalReader::wants(const QVariantList& row) const
{
    if (FQuery.ending.isEmpty() || FQuery.ending == kRefused) { // which `look` has asked for
        return true;
    }
    return FQuery.ending == kOpen ? isUnderWay(row) : row[Ending].toString() == FQuery.ending;
}

QList<QVariantList> TJournalReader::ended()
{
    if (FOpen.isEmpty()) {
        return {};
    }
    QList<QVariantList> rows;
    TStatement statement(FDatabase.connection(),
                         QString::fromUtf16(kPasses) + QStringLiteral(" WHERE pass.id = ?"));
    for (const qint64 id : QList<qint64>(FOpen)) {
        const auto found = statement.run({id}).all([this](const TRows& row) { return rowFrom(row); });
        if (!found.isEmpty() && isUnderWay(found[0])) {
            continue;
        }
        FOpen.removeAll(id);
        if (!found.isEmpty() && (FQuery.ending == kOpen || wants(found[0]))) { // those shown open end, too
            rows += found;
        }
    }
    return rows;
}

TBookTable outages(TDatabase& database)
{
    constexpr int kPiece = 1'000;
    TBookTable table = {{{QStringLiteral("id"), TColumnKind::Number},
                         {QStringLiteral("line")},
                         {QStringLiteral("began"), TColumnKind::Time},
                         {QStringLiteral("ended"), TColumnKind::Time},
                         {QStringLiteral("why")}},
                        {}};
    qint64 last = 0;
    for (;;) {
        const QList<TOutage> piece = database.outagesAfter(last, kPiece);
        for (const TOutage& outage : piece) {
            table.rows.append({outage.id, outage.line, outage.began, outage.ended, outage.why});
            last = outage.id;
        }
        if (piece.size() < kPiece) {
            return table;
        }
    }
}

platform::TDateTime readMoment(const QString& text, bool end)
{
    static const QRegularExpression ago(QStringLiteral("\\A([0-9]{1,6})([mhdw])\\z"));
    static const QRegularExpression moment(QStringLiteral(
        "\\A([0-9]{4}-[0-9]{2}-[0-9]{2})(?:[T ]([0-9]{2}:[0-9]{2})(:[0-9]{2}(?:\\.[0-9]{1,3})?)?)?"
        "(Z|[+-][0-9]{2}:[0-9]{2})?\\z"));
    const QString word = text.trimmed();
    if (word == QStringLiteral("today")) {
        return fromLocal(atDay(now().date(), end));
    }
    if (word == QStringLiteral("yesterday")) {
        return fromLocal(atDay(now().date().addDays(-1), end));
    }
    if (const auto match = ago.match(word); match.hasMatch()) {
        const qint64 count = match.captured(1).toLongLong();
        const QChar unit = match.captured(2)[0];
        const qint64 seconds = unit == u'm' ? 60 : unit == u'h' ? 3'600 : unit == u'd' ? 86'400 : 604'800;
        return fromLocal(now().addSecs(-count * seconds));
    }
    const auto match = moment.match(word);
    if (!match.hasMatch()) {
        failMoment(text);
    }
    if (match.captured(2).isEmpty() && match.captured(4).isEmpty()) {
        const QDate day = QDate::fromString(match.captured(1), Qt::ISODate);
        if (!day.isValid()) {
            failMoment(text);
        }
        return fromLocal(atDay(day, end));
    }
    const bool whole = match.captured(3).isEmpty();
    const QString seconds = !whole ? match.captured(3)
                            : end  ? QStringLiteral(":59.999")
                                   : QStringLiteral(":00");
    const QDateTime time = QDateTime::fromString(
        match.captured(1) + u'T' + match.captured(2) + seconds + match.captured(4), Qt::ISODateWithMs);
    if (!time.isValid()) {
        failMoment(text);
    }
    return fromLocal(time);
}

platform::TDateTime readAge(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("\\A([1-9][0-9]{0,3})([dwmy])\\z"));
    const auto match = form.match(text.trimmed());
    if (!match.hasMatch()) {
        throw EBooks(QStringLiteral("\"%1\" is no age; write it like 90d, 8w, 18m (months) or 3y").arg(text));
    }
    const int count = match.captured(1).toInt();
    const QChar unit = match.captured(2)[0];
    const QDateTime today = now();
    return fromLocal(unit == u'd'   ? today.addDays(-count)
                     : unit == u'w' ? today.addDays(-7 * qint64{count})
                     : unit == u'm' ? today.addMonths(-count)
                                    : today.addYears(-count));
}

} // namespace tnv5::host
