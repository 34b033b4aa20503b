#pragma once

#include "tnv5/common/record_table.h"
#include "tnv5/d24/d24_types.h"

#include <QStringView>

namespace tnv5::d24 {

/// Pending passes, in order of creation.
class TPassTable : public common::TRecordTable<TRFidInfo, 4'096>
{
public:
    /// Index of the first pass of a controller, whatever its link; intended. -1 when there is none.
    int findDevice(QStringView device) const;
    /// Index of the first pass of a link; -1 when there is none.
    int findIP(QStringView ip) const;
    /// Index of the first pass of a controller and card, whatever its link; -1 when there is none.
    int findCard(QStringView device, QStringView card) const;

    /// Appends a "NEW" record that starts now. @return the record, none when the table is full
    PRFidInfo add(const QString& ip, const QString& device, const QString& deviceType, const QString& card);
};

} // namespace tnv5::d24
