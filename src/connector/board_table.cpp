#include "tnv5/connector/board_table.h"

#include "tnv5/platform/errors.h"

namespace tnv5::connector {

DeviceInfo TBoardTable::at(int index) const
{
    return index >= 0 && index < size() ? FBoards[static_cast<std::size_t>(index)].get() : nullptr;
}

DeviceInfo TBoardTable::findOrAdd(const QString& ip, const QString& address)
{
    const auto key = std::make_pair(ip, address);
    if (const DeviceInfo known = FByAddress.value(key)) {
        return known;
    }
    if (FBoards.size() >= kMaxBoards) {
        throw platform::Exception(QStringLiteral("The board table is full"));
    }
    FBoards.push_back(
        std::make_unique<TDeviceInfo>(TDeviceInfo{ip, address, QString(), platform::Now(), -1}));
    const DeviceInfo added = FBoards.back().get();
    FByAddress.insert(key, added);
    return added;
}

} // namespace tnv5::connector
