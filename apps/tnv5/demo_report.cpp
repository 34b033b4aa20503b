#include "apps/tnv5/demo_report.h"

#include "tnv5/common/messages.h"

#include <algorithm>
#include <cmath>

namespace tnv5::cli {

using host::TEnding;
using host::TPass;
using host::TRefusal;

namespace {

bool mustOpen(const TStep& step)
{
    return step.refusal == TRefusal::None;
}

QString describe(TRefusal refusal, TEnding ending)
{
    return refusal == TRefusal::None ? QStringLiteral("opened, %1").arg(toText(ending))
                                     : QStringLiteral("refused, %1").arg(toText(refusal));
}

QString describe(const sim::TReading& seen)
{
    switch (seen.Fate) {
    case sim::TFate::Opened:
        return seen.Passed ? QStringLiteral("opened, passed") : QStringLiteral("opened, nobody passed");
    case sim::TFate::Refused:
        return QStringLiteral("refused");
    case sim::TFate::Waiting:
    case sim::TFate::NoCommand:
        break;
    }
    return QStringLiteral("no command came");
}

bool asItMustBe(const sim::TReading& seen, const TStep& step)
{
    const auto fate = mustOpen(step) ? sim::TFate::Opened : sim::TFate::Refused;
    return seen.Fate == fate && seen.Passed == (step.ending == TEnding::Passed);
}

bool asItMustBe(const TPass& pass, const TStep& step)
{
    return pass.card == step.card && pass.refusal == step.refusal && pass.ending == step.ending;
}

// Nearest rank, of sorted values.
double percentile(const QList<double>& sorted, double percent)
{
    const auto rank = static_cast<qsizetype>(std::ceil(percent / 100 * static_cast<double>(sorted.size())));
    return sorted[std::max<qsizetype>(rank, 1) - 1];
}

QStringList shownRows(const TVisit& visit)
{
    return visit.display.mid(0, visit.step.shown.size());
}

QString row(const QString& name, qsizetype value)
{
    return closingRow(name, QString::number(value));
}

/// One row a gate.
QStringList gateRows(const QList<TVisit>& visits)
{
    struct TCounts
    {
        int opened = 0;
        int passed = 0;
        int refused = 0;
    };
    std::map<QString, TCounts> gates;
    for (const QString& gate : demoGates() + demoBoards()) {
        gates[gate] = {};
    }
    for (const TVisit& visit : visits) { // as seen at the gate
        TCounts& counts = gates[visit.step.gate];
        counts.opened += visit.seen.Fate == sim::TFate::Opened ? 1 : 0;
        counts.passed += visit.seen.Passed ? 1 : 0;
        counts.refused += visit.seen.Fate == sim::TFate::Refused ? 1 : 0;
    }
    const QString layout = QStringLiteral("  %1 %2 %3 %4");
    QStringList lines = {layout.arg(QStringLiteral("gate"), -22)
                             .arg(QStringLiteral("opened"), 6)
                             .arg(QStringLiteral("passed"), 6)
                             .arg(QStringLiteral("refused"), 7)};
    for (const auto& [gate, counts] : gates) {
        lines << layout.arg(gate, -22).arg(counts.opened, 6).arg(counts.passed, 6).arg(counts.refused, 7);
    }
    return lines;
}

} // namespace

QStringList compare(const QList<TVisit>& visits, const QList<TPass>& journal)
{
    std::map<QString, QList<TPass>> rows; // at one gate, the journal is in the order of the visits
    for (const TPass& pass : journal) {
        rows[pass.gate].append(pass);
    }
    QStringList wrong;
    for (const TVisit& visit : visits) {
        const TStep& step = visit.step;
        const QString who = QStringLiteral("%1 (%2) at %3 must be: %4; ")
                                .arg(visit.name, step.card, step.gate, describe(step.refusal, step.ending));
        if (!asItMustBe(visit.seen, step)) {
            wrong << who + QStringLiteral("the gate: ") + describe(visit.seen);
        }
        if (shownRows(visit) != step.shown) {
            wrong << who + QStringLiteral("the display: ") + visit.display.join(QStringLiteral(" / "));
        }
        QList<TPass>& here = rows[step.gate];
        if (here.isEmpty()) {
            wrong << who + QStringLiteral("the journal: nothing");
            continue;
        }
        const TPass pass = here.takeFirst();
        if (!asItMustBe(pass, step)) {
            wrong << who + QStringLiteral("the journal: %1 %2")
                               .arg(pass.card, describe(pass.refusal, pass.ending));
        }
    }
    for (const auto& [gate, rest] : rows) {
        for (const TPass& pass : rest) {
            wrong << QStringLiteral("in the journal, but nobody was at %1: card %2").arg(gate, pass.card);
        }
    }
    return wrong;
}

QString closingRow(const QString& name, const QString& value)
{
    return QStringLiteral("  %1 %2").arg(name, -32).arg(value, 10);
}

QStringList closingTable(const QList<TVisit>& visits)
{
    const auto count = [&visits](auto&& test) {
        return std::count_if(visits.begin(), visits.end(),
                             [&](const TVisit& visit) { return test(visit.step); });
    };
    const auto buttons = count([](const TStep& step) { return step.card == common::kCardButton; });
    QStringList lines = {QString()};
    lines << row(QStringLiteral("cards read"), visits.size() - buttons);
    lines << row(QStringLiteral("exit button"), buttons);
    lines << row(QStringLiteral("opened"), count(mustOpen));
    for (const TEnding ending : {TEnding::Passed, TEnding::TimedOut, TEnding::Unanswered}) {
        lines << row(QStringLiteral("  ") + toText(ending),
                     count([ending](const TStep& step) { return step.ending == ending; }));
    }
    lines << row(QStringLiteral("refused"), count([](const TStep& step) { return !mustOpen(step); }));
    for (const TRefusal why : {TRefusal::UnknownCard, TRefusal::Expired, TRefusal::NotYetValid,
                               TRefusal::WrongZone, TRefusal::Suspended, TRefusal::AlreadyInside}) {
        lines << row(QStringLiteral("  ") + toText(why),
                     count([why](const TStep& step) { return step.refusal == why; }));
    }
    QList<double> times;
    for (const TVisit& visit : visits) {
        if (visit.relayMs >= 0) {
            times.append(visit.relayMs);
        }
    }
    std::sort(times.begin(), times.end());
    if (!times.isEmpty()) {
        const auto ms = [&times](double percent) {
            return QString::number(percentile(times, percent), 'f', 2) + QStringLiteral(" ms");
        };
        lines << closingRow(QStringLiteral("card to relay, median"), ms(50));
        lines << closingRow(QStringLiteral("card to relay, 99th percentile"), ms(99));
    }
    return lines << QString() << gateRows(visits);
}

} // namespace tnv5::cli
