#include "tnv5/connector/board_table.h"

namespace tnv5::connector {

DeviceInfo TBoardTable::at(int index) const
{
    return index >= 0 && index < size() ? FBoards[static_cast<std::size_t>(index)].get() : nullptr;
}

std::shared_ptr<TDeviceInfo> TBoardTable::forLine(const QString& ip, const QString& address)
{
    const auto key = std::make_pair(ip, address);
    if (const auto known = FByAddress.value(key)) {
        return known;
    }
    const auto heard =
        std::make_shared<TDeviceInfo>(TDeviceInfo{ip, address, QString(), platform::Now(), -1});
    if (FBoards.size() < kMaxBoards) {
        FBoards.push_back(heard);
        FByAddress.insert(key, heard);
    }
    return heard;
}

DeviceInfo TBoardTable::findOrAdd(const QString& ip, const QString& address)
{
    const auto board = forLine(ip, address);
    if (FByAddress.contains({ip, address})) {
        return board.get();
    }
    if (!FSpare || FSpare->IP != ip || FSpare->Device != address) {
        FSpare.emplace(*board);
    }
    return &*FSpare;
}

} // namespace tnv5::connector
