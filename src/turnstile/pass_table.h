#pragma once

#include "turnstile/turnstile_types.h"

#include <QStringView>
#include <vector>

namespace tnv5::turnstile {

/// Passes under way, in order of creation. Lines from the controllers create a record only for an address
/// that has none.
class TPassTable
{
public:
    /// Noise on a line can invent addresses, and a host may never retire a pass: more records than this are
    /// refused.
    static constexpr std::size_t kMaxPasses = 65'536;

    int size() const { return static_cast<int>(FPasses.size()); }
    bool isEmpty() const { return FPasses.empty(); }

    /// The record at `index`; none when there is no such index.
    PRFidInfo at(int index) const;

    /// Index of the first record of an address, exact and case-sensitive; -1 when there is none.
    int find(QStringView device) const;
    /// Index of the first record of an address and card; -1 when there is none.
    int find(QStringView device, QStringView card) const;

    /// Appends a "NEW" record that starts now. @throws platform::Exception when the table is full.
    PRFidInfo add(const QString& device, const QString& card);

    void remove(int index);

private:
    std::vector<PRFidInfo> FPasses;
};

} // namespace tnv5::turnstile
