#pragma once

#include "tnv5/controller/remote_role.h"

#include <QStringList>
#include <QStringView>
#include <vector>

namespace tnv5::controller {

/// One text of the monitor stream, as a client shows it.
struct TMonitorText
{
    enum TKind { Line, Status };

    TKind kind;
    QString line;       ///< of a line: a server's log, or its error
    QStringList fields; ///< of a status: the name, then the values

    bool operator==(const TMonitorText&) const = default;
};

/// Cuts what a server has sent into its texts, in the order in which a client shows them. Each read is cut by
/// itself: a text without its "&" and everything behind it is dropped, as is what a family's limit cuts off.
///
///     monitorTexts(u"LOG!abc&STATUS!COME!01A!123!NEW!NEW&", kClassicFamily.stream)
///         the line "abc", the status COME, 01A, 123, NEW, NEW
///
/// The families count differently where texts do not follow each other without a gap; every difference is
/// intended and stands in `TStreamDialect`.
std::vector<TMonitorText> monitorTexts(QStringView read, const TStreamDialect& dialect);

} // namespace tnv5::controller
