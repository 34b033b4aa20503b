#pragma once

#include "tnv5/platform/clock.h"

#include <QHash>
#include <QString>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tnv5::connector {

/// One board that has spoken.
struct TDeviceInfo
{
    const QString IP;                 ///< link on which it was heard; "0.0.0.0" for the serial port
    const QString Device;             ///< four-character address; the last one is the side letter
    QString DeviceType;               ///< declared, never filled
    platform::TDateTime LastPing = 0; ///< when it was last heard
    int DisplayLine = -1;             ///< width of its display in characters; -1 not known yet, 0 no display
};

using DeviceInfo = TDeviceInfo*;

/// The boards that have spoken, in order of first appearance. A record stays where it is as long as the table
/// lives, and none is ever removed; finding one takes the same time however many there are.
///
/// Noise on a line can invent addresses, so the table is bounded. A board beyond the limit is served like any
/// other, but what it told is forgotten with the line.
class TBoardTable
{
public:
    static constexpr std::size_t kMaxBoards = 65'536;

    int size() const { return static_cast<int>(FBoards.size()); }
    /// The record at `index`, nullptr when there is no such index.
    DeviceInfo at(int index) const;

    /// The record of a board for the time of one line or command; a new one, heard now, when there is none.
    /// When the table is full, the new one belongs to the caller alone.
    std::shared_ptr<TDeviceInfo> forLine(const QString& ip, const QString& address);

    /// The record of a board for callers who keep the address; a new one, heard now, when there is none.
    /// When the table is full, the one spare record: it stays where it is, too, and tells of the board that
    /// was last asked for in this way, until another such board is.
    DeviceInfo findOrAdd(const QString& ip, const QString& address);

private:
    std::vector<std::shared_ptr<TDeviceInfo>> FBoards;
    QHash<std::pair<QString, QString>, std::shared_ptr<TDeviceInfo>> FByAddress;
    std::optional<TDeviceInfo> FSpare;
};

} // namespace tnv5::connector
