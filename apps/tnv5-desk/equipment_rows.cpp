#include "apps/tnv5-desk/equipment_rows.h"

#include "apps/tnv5-desk/log_model.h"
#include "apps/tnv5-desk/words.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>

namespace tnv5::desk {

namespace {

constexpr qint64 kManyWaiting = 20; // passes; a few always wait for a moment

struct TEquipment
{
    Q_DECLARE_TR_FUNCTIONS(tnv5::desk::TEquipment)

public:
    static TEquipmentSection troubles(const TClubState& state);
    static TEquipmentSection payments(const TClubState& state);
    static TEquipmentSection scales(const TClubState& state);
    static TEquipmentSection lamps(const TClubState& state, qint64 elapsedMs);
    static TEquipmentSection boards(const TClubState& state);
    static TEquipmentSection lines(const TClubState& state);

private:
    static bool isTold(const TClubState& state, const QString& name);
    static TEquipmentRow lamp(const TLampState& lamp, qint64 elapsedMs);
};

// Whether a trouble that the host tells is about this.
bool TEquipment::isTold(const TClubState& state, const QString& name)
{
    static const QRegularExpression edges(QStringLiteral("[^\\w-]+"),
                                          QRegularExpression::UseUnicodePropertiesOption);
    return std::any_of(state.troubles.begin(), state.troubles.end(), [&name](const QString& trouble) {
        return trouble.startsWith(name) || trouble.split(edges).contains(name);
    });
}

TEquipmentSection TEquipment::troubles(const TClubState& state)
{
    TEquipmentSection section{tr("Attention"), {}};
    for (const QString& trouble : state.troubles) {
        section.rows.append({{}, trouble, TMood::Bad});
    }
    for (const TBoardState& board : state.boards) {
        if (!board.answering && !isTold(state, board.address)) {
            section.rows.append(
                {tr("Board %1").arg(board.address),
                 board.heard.isEmpty() ? tr("has not answered yet") : tr("has stopped answering"),
                 TMood::Bad});
        }
    }
    for (const TLineState& line : state.lines) {
        if (!line.open && !isTold(state, line.name)) {
            section.rows.append(
                {tr("Line %1").arg(line.name), tr("is not open: %1").arg(line.why), TMood::Bad});
        }
    }
    if (state.journalWaiting > kManyWaiting) {
        section.rows.append(
            {tr("Journal"), tr("passes not yet written: %1").arg(state.journalWaiting), TMood::Warning});
    }
    return section;
}

TEquipmentSection TEquipment::payments(const TClubState& state)
{
    TEquipmentSection section{tr("Card payments"), {}};
    for (const TTerminalState& terminal : state.terminals) {
        if (terminal.cents == 0) {
            section.rows.append({terminal.name, tr("none under way"), TMood::Faint});
        } else {
            const QString amount = amountText(terminal.cents);
            const QString stage = TWords::stage(terminal.stage);
            section.rows.append({terminal.name,
                                 stage.isEmpty() ? amount : QStringLiteral("%1 – %2").arg(amount, stage),
                                 TMood::Warning});
        }
    }
    return section;
}

TEquipmentSection TEquipment::scales(const TClubState& state)
{
    TEquipmentSection section{tr("Scales"), {}};
    for (const TScaleState& scale : state.scales) {
        if (!scale.grams) {
            section.rows.append({scale.name, tr("no weight"), TMood::Warning});
        } else if (scale.steady || *scale.grams == 0) {
            section.rows.append({scale.name, tr("%1 g").arg(*scale.grams), TMood::Plain});
        } else {
            section.rows.append({scale.name, tr("%1 g, moving").arg(*scale.grams), TMood::Faint});
        }
    }
    return section;
}

TEquipmentRow TEquipment::lamp(const TLampState& lamp, qint64 elapsedMs)
{
    const bool paid = lamp.secondsLeft > 0;
    QStringList parts;
    TMood mood = TMood::Good;
    if (!lamp.answers) {
        parts << tr("its board does not answer");
        mood = TMood::Bad;
    } else if (!lamp.on) {
        parts << tr("off");
        mood = paid ? TMood::Warning : TMood::Faint;
    } else if (!paid) {
        parts << tr("on, not paid for");
        mood = TMood::Warning;
    }
    if (paid) {
        parts << durationText(secondsLeft(lamp.secondsLeft, elapsedMs));
        parts << (lamp.holder.isEmpty() ? QStringList() : QStringList(lamp.holder));
    }
    return {lamp.name, parts.join(QStringLiteral(" – ")), mood};
}

TEquipmentSection TEquipment::lamps(const TClubState& state, qint64 elapsedMs)
{
    TEquipmentSection section{tr("Paid time left"), {}};
    for (const TLampState& each : state.lamps) {
        section.rows.append(lamp(each, elapsedMs));
    }
    return section;
}

TEquipmentSection TEquipment::boards(const TClubState& state)
{
    TEquipmentSection section{tr("Boards"), {}};
    for (const TBoardState& board : state.boards) {
        if (board.answering) {
            section.rows.append({board.address, tr("answers"), TMood::Good});
        } else {
            section.rows.append({board.address,
                                 board.heard.isEmpty() ? tr("never heard")
                                                       : tr("last heard at %1").arg(clockTime(board.heard)),
                                 TMood::Bad});
        }
    }
    return section;
}

TEquipmentSection TEquipment::lines(const TClubState& state)
{
    TEquipmentSection section{tr("Lines"), {}};
    for (const TLineState& line : state.lines) {
        section.rows.append(
            {line.name, line.open ? tr("open") : tr("closed"), line.open ? TMood::Good : TMood::Bad});
    }
    return section;
}

} // namespace

QList<TEquipmentSection> equipmentOf(const TClubState& state, qint64 elapsedMs)
{
    QList<TEquipmentSection> sections = {TEquipment::troubles(state), TEquipment::payments(state),
                                         TEquipment::scales(state),   TEquipment::lamps(state, elapsedMs),
                                         TEquipment::boards(state),   TEquipment::lines(state)};
    sections.removeIf([](const TEquipmentSection& section) { return section.rows.isEmpty(); });
    return sections;
}

} // namespace tnv5::desk
