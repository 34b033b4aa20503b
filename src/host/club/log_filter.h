#pragma once

#include <QHash>
#include <QList>
#include <QString>

namespace tnv5::host {

enum class TLevel { Info, Warning, Error };
QString toText(TLevel level);

/// One line of a host's log.
struct TLogLine
{
    qint64 timeMs = 0; ///< by the clock of the module
    TLevel level = TLevel::Info;
    QString source; ///< line, bus, scale ... that it is about; may be empty
    QString text;
    bool operator==(const TLogLine&) const = default;
};

/// Keeps a log small whatever happens: within a minute a trouble of the same words is told once and then
/// counted, and no source tells more than so many lines of a level; the rest is counted, too.
///
///     for (const TLogLine& line : filter.take({now, TLevel::Warning, "entrance", "[04] ..."}))
///     write(line); for (const TLogLine& line : filter.due(now)) write(line);      // now and then
///
/// Nobody's information is ever put together: two passes of the same person are two lines.
class TLogFilter
{
public:
    static constexpr qint64 kWindowMs = 60'000;
    static constexpr int kMaxTroubles = 20; ///< of different words, of one source and level within a minute
    static constexpr int kMaxNews = 300;    ///< lines of information of one source within a minute
    /// Sources that are kept apart; those beyond share one account.
    static constexpr qsizetype kMaxSources = 256;

    /// What is to be written because of a new line: counts of the minute before, and the line itself or
    /// nothing.
    QList<TLogLine> take(const TLogLine& line);
    /// Counts of minutes that are over.
    QList<TLogLine> due(qint64 nowMs);
    /// All counts, at the end.
    QList<TLogLine> rest(qint64 nowMs);

private:
    struct TWindow
    {
        qint64 beganMs = 0;
        int written = 0;
        QHash<QString, qint64> repeated; // texts that were written, and how often they came again
        QList<QString> order;            // the same, oldest first
        qint64 others = 0;               // that were not written at all
        TLogLine last;
    };

    static QList<TLogLine> countsOf(const TWindow& window, qint64 nowMs);

    QHash<QString, TWindow> FWindows; // by source and level
};

/// Example: 12345 gives "12,345".
QString countText(qint64 count);

} // namespace tnv5::host
