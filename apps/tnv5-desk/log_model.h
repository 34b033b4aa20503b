#pragma once

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>
#include <QStringList>
#include <deque>

namespace tnv5::desk {

enum class TLogLevel { Info, Warning, Error };

TLogLevel toLogLevel(const QString& word);

struct TLogLine
{
    TLogLevel level = TLogLevel::Info;
    QString time; ///< ISO with zone
    QString text;
};

/// The time of day of an ISO time as it is written, whatever zone the desk is in.
/// Example: "2026-01-05T12:00:00.250+02:00" gives "12:00:00".
QString clockTime(const QString& iso);

/// What a line must have to be shown: all the words that are searched for, in any order and case, and a level
/// that is not hidden.
struct TLogFilter
{
    QStringList words;
    bool info = true;
    bool warnings = true;
    bool errors = true;

    /// @param text words between blanks
    void search(const QString& text);
    bool shows(const TLogLine& line) const;
};

/// The last lines of the log, oldest first.
class TLogModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int kUsualLines = 10'000;
    static constexpr int kMaxText = 4'000; ///< characters of a line that are kept
    static constexpr int kMaxTime = 40;    ///< and of its time
    enum TColumn { Time, Text, Columns };

    explicit TLogModel(int most = kUsualLines, QObject* parent = nullptr);

    /// A new last line; the oldest goes when there are too many.
    void add(TLogLine line);
    const TLogLine& line(int row) const { return FLines[static_cast<std::size_t>(row)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    const std::size_t FMost;
    std::deque<TLogLine> FLines;
};

/// The lines of a log that a filter shows.
class TFilteredLog final : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit TFilteredLog(TLogModel* log, QObject* parent = nullptr);

    const TLogFilter& filter() const { return FFilter; }
    void setFilter(TLogFilter filter);
    int lines() const { return rowCount(); }

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    TLogModel* FLog;
    TLogFilter FFilter;
};

} // namespace tnv5::desk
