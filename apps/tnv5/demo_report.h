#pragma once

#include "apps/tnv5/demo_street.h"

namespace tnv5::cli {

/// Compares every visit with what had to come of it, at the gate and in the journal.
/// @return one line for each difference; none: everything is as it must be.
QStringList compare(const QList<TVisit>& visits, const QList<host::TPass>& journal);

/// A row of the closing table.
QString closingRow(const QString& name, const QString& value);
/// The closing table.
QStringList closingTable(const QList<TVisit>& visits);

} // namespace tnv5::cli
