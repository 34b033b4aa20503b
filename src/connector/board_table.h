#pragma once

#include "tnv5/platform/clock.h"

#include <QHash>
#include <QString>
#include <memory>
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
/// lives; finding one takes the same time however many there are.
class TBoardTable
{
public:
    /// Noise on a line can invent addresses: more boards than this are refused.
    static constexpr std::size_t kMaxBoards = 65'536;

    int size() const { return static_cast<int>(FBoards.size()); }
    /// The record at `index`, nullptr when there is no such index.
    DeviceInfo at(int index) const;

    /// The record of a board; a new one, heard now, when there is none.
    /// @throws platform::Exception when the table is full
    DeviceInfo findOrAdd(const QString& ip, const QString& address);

private:
    std::vector<std::unique_ptr<TDeviceInfo>> FBoards;
    QHash<std::pair<QString, QString>, DeviceInfo> FByAddress;
};

} // namespace tnv5::connector
