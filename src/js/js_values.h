#pragma once

#include "tnv5/platform/automation/value.h"

#include <QMetaProperty>
#include <QVariant>

/// Values of scripts as properties and automation objects take them.
namespace tnv5::js {

/// The value as a property of this type is written.
/// @throws platform::EConvertError
QVariant toProperty(const QVariant& value, QMetaType type);

/// @throws platform::EConvertError for a value that automation does not have
platform::automation::TValue toAutomation(const QVariant& value);
QVariant fromAutomation(const platform::automation::TValue& value);

} // namespace tnv5::js
