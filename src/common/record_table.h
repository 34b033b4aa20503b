#pragma once

#include <algorithm>
#include <deque>
#include <memory>

namespace tnv5::common {

/// Records in order of creation. They are shared, so that a record stays valid for code that holds it while a
/// host handler runs, which may remove it.
///
/// Noise on a line can invent addresses, and a host may never retire a record: no more than `Limit` are kept.
template <class Record, std::size_t Limit>
class TRecordTable
{
public:
    using PRecord = std::shared_ptr<Record>;

    static constexpr std::size_t kMaxRecords = Limit;

    int size() const { return static_cast<int>(FRecords.size()); }
    bool isEmpty() const { return FRecords.empty(); }

    /// The record at `index`; none when there is no such index.
    PRecord at(int index) const
    {
        return index >= 0 && index < size() ? FRecords[static_cast<std::size_t>(index)] : nullptr;
    }

    /// Index of the first record that matches; -1 when there is none.
    template <class Matches>
    int indexOf(Matches matches) const
    {
        const auto found = std::find_if(FRecords.begin(), FRecords.end(),
                                        [&](const PRecord& record) { return matches(*record); });
        return found == FRecords.end() ? -1 : static_cast<int>(found - FRecords.begin());
    }

    /// Index of the last record that matches; -1 when there is none.
    template <class Matches>
    int lastIndexOf(Matches matches) const
    {
        const auto found = std::find_if(FRecords.rbegin(), FRecords.rend(),
                                        [&](const PRecord& record) { return matches(*record); });
        return static_cast<int>(FRecords.rend() - found) - 1;
    }

    /// Appends an empty record. @return the record, none when the table is full
    PRecord append()
    {
        return FRecords.size() < kMaxRecords ? FRecords.emplace_back(std::make_shared<Record>()) : nullptr;
    }

    void remove(int index) { FRecords.erase(FRecords.begin() + index); }

private:
    std::deque<PRecord> FRecords; // records mostly leave where they came in: at the front
};

} // namespace tnv5::common
