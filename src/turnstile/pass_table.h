#pragma once

#include "tnv5/common/record_table.h"
#include "tnv5/turnstile/turnstile_types.h"

#include <QStringView>

namespace tnv5::turnstile {

/// Passes under way, in order of creation. Lines from the controllers create a record only for an address
/// that has none.
class TPassTable : public common::TRecordTable<TRFidInfo, 4'096>
{
public:
    static constexpr std::size_t kMaxPasses = kMaxRecords;

    /// Index of the first record of an address, exact and case-sensitive; -1 when there is none.
    int find(QStringView device) const;
    /// Index of the first record of an address and card; -1 when there is none.
    int find(QStringView device, QStringView card) const;

    /// Appends a "NEW" record that starts now. @return the record, none when the table is full
    PRFidInfo add(const QString& device, const QString& card);
};

} // namespace tnv5::turnstile
