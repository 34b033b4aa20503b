#pragma once

#include "tnv5/tools/monitor_cutter.h"

#include <QDateTime>
#include <QHash>
#include <QJsonObject>
#include <QPair>
#include <QStringView>

namespace tnv5::tools {

/// Whose monitor stream it is.
enum class TStation { Turnstile, D24, Switch };

/// What one piece of a monitor stream says to people and programs.
struct TMonitorReport
{
    TMonitorPiece piece;
    QString kind;                          ///< "read" and "sent" (lines), "log", "error", "status", "rest"
    QString text;                          ///< the piece's; of a line the line alone
    QList<QPair<QString, QString>> fields; ///< names and values of a status that has as many as it must
    QString meaning;                       ///< in plain words; empty when they would say nothing new
};

/// Example: of a turnstile's status "STACK!01A!123!OPEN!OPEN" the fields are name, device, card, status1 and
/// status2, and the meaning is "card 123 at 01A: may pass".
TMonitorReport monitorReport(TStation station, const TMonitorPiece& piece);

/// Tells what a person need not see again: a server repeats what its table holds at every sweep.
class TRepeats
{
public:
    /// Whether a report is a table's status of the same pass, board or relay in the same states as before.
    bool has(const TMonitorReport& report);

private:
    static constexpr qsizetype kMaxKept = 4'096; // then it begins anew

    QHash<QString, QString> FStates; // of each pass, board or relay
};

/// One line for people: kind, text, meaning.
QString monitorLine(const TMonitorReport& report);

/// For programs: "time" (ISO 8601 with milliseconds and offset), "kind" and "text"; "meaning" when there is
/// one; of a status each field by its name.
QJsonObject monitorObject(const TMonitorReport& report, const QDateTime& time);

/// An object as one line that no terminal takes for a command.
QString jsonLine(const QJsonObject& object);

} // namespace tnv5::tools
