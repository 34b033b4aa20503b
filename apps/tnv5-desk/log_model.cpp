#include "apps/tnv5-desk/log_model.h"

#include "apps/tnv5-desk/plain_text.h"
#include "apps/tnv5-desk/theme.h"

#include <algorithm>

namespace tnv5::desk {

TLogLevel toLogLevel(const QString& word)
{
    if (word == QLatin1String("error")) {
        return TLogLevel::Error;
    }
    return word == QLatin1String("warning") ? TLogLevel::Warning : TLogLevel::Info;
}

QString clockTime(const QString& iso)
{
    const qsizetype begin = iso.indexOf(u'T');
    return begin < 0 ? QString() : iso.mid(begin + 1, 8);
}

void TLogFilter::search(const QString& text)
{
    words = text.split(u' ', Qt::SkipEmptyParts);
}

bool TLogFilter::shows(const TLogLine& line) const
{
    const bool level = line.level == TLogLevel::Info      ? info
                       : line.level == TLogLevel::Warning ? warnings
                                                          : errors;
    return level && std::all_of(words.begin(), words.end(), [&line](const QString& word) {
               return line.text.contains(word, Qt::CaseInsensitive) || clockTime(line.time).startsWith(word);
           });
}

TLogModel::TLogModel(int most, QObject* parent)
    : QAbstractTableModel(parent), FMost(static_cast<std::size_t>(std::max(most, 1)))
{
}

void TLogModel::add(TLogLine line)
{
    line.time.truncate(kMaxTime);
    line.text.truncate(kMaxText);
    line.text.replace(u'\n', u' ');
    if (FLines.size() >= FMost) {
        beginRemoveRows({}, 0, 0);
        FLines.pop_front();
        endRemoveRows();
    }
    const int row = static_cast<int>(FLines.size());
    beginInsertRows({}, row, row);
    FLines.push_back(std::move(line));
    endInsertRows();
}

int TLogModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(FLines.size());
}

int TLogModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Columns;
}

QVariant TLogModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const TLogLine& entry = line(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return index.column() == Time ? clockTime(entry.time) : entry.text;
    case Qt::ToolTipRole:
        return tipText(index.column() == Time ? entry.time : entry.text);
    case Qt::ForegroundRole:
        return entry.level == TLogLevel::Info
                   ? QVariant()
                   : QVariant(moodColour(entry.level == TLogLevel::Error ? TMood::Bad : TMood::Warning));
    default:
        return {};
    }
}

QVariant TLogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    return section == Time ? tr("Time") : tr("What happened");
}

TFilteredLog::TFilteredLog(TLogModel* log, QObject* parent) : QSortFilterProxyModel(parent), FLog(log)
{
    setSourceModel(log);
}

void TFilteredLog::setFilter(TLogFilter filter)
{
    FFilter = std::move(filter);
    invalidateFilter();
}

bool TFilteredLog::filterAcceptsRow(int row, const QModelIndex&) const
{
    return FFilter.shows(FLog->line(row));
}

} // namespace tnv5::desk
