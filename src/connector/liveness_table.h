#pragma once

#include "tnv5/common/record_table.h"
#include "tnv5/platform/clock.h"

#include <QString>
#include <QStringView>

namespace tnv5::connector {

/// One board that has pinged; kept as long as the component lives.
struct TDevicelist
{
    QString IP;
    QString Device;
    QString DeviceType;
    platform::TDateTime Pingtime =
        0; ///< when it was last heard: full date and time at first, then time of day
};

/// Shared, so that a host may keep one. The name is intended.
using RDeviceList = std::shared_ptr<TDevicelist>;

/// Boards that have pinged, in order of their first ping.
class TLivenessTable : public common::TRecordTable<TDevicelist, 16'384>
{
public:
    /// Index of the last entry of a link and board; -1 when there is none.
    int find(QStringView ip, QStringView device) const;

    /// Appends an entry that was heard now. Its time is a full date-time, unlike that of every later refresh,
    /// so that a board counts as silent from its first ping to its next line; intended. When the table is
    /// full, the entry stands alone, for this one ping.
    RDeviceList add(const QString& ip, const QString& device, const QString& deviceType);
};

} // namespace tnv5::connector
