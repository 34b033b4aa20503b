#pragma once

#include "tnv5/platform/automation/value.h"

#include <QString>
#include <QVariant>

/// Values and names as D-Bus has them.
namespace tnv5::platform::automation {

/// The bus name of a ProgID; interface of its object as well.
QString busNameOf(std::u16string_view progId);
/// The path of a bus name's object. Example: "CardPay.PosApi" stands at "/CardPay/PosApi".
QString pathOf(const QString& busName);

/// A value for the bus. There is no empty one; a text without characters stands for it.
/// @throws EOleError for an object
QVariant toBus(const TValue& value);
/// A value of the bus: booleans, numbers, texts, and what stands in a variant.
/// @throws EOleError for anything else
TValue fromBus(const QVariant& value);

inline QString toQt(std::u16string_view text)
{
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace tnv5::platform::automation
