#pragma once

#include <QString>
#include <vector>

namespace tnv5::bank {

/// One version of the terminal's software: everything that sets it apart from the others.
struct TTerminalVersion
{
    QString name;            ///< text in the list of versions
    QString discountTag;     ///< of the `Discount` field; empty: the field is always "0"
    QString discountTypeTag; ///< of the `DiscountType` field; empty: the field is always "CT"
};

/// The versions by their number; 0 stands for none.
const std::vector<TTerminalVersion>& terminalVersions();

/// The version of a number, nullptr for 0 and for numbers that are none.
const TTerminalVersion* versionOf(int posType);

} // namespace tnv5::bank
