#include "tnv5/js/js_values.h"

#include "tnv5/platform/automation/automation.h"
#include "tnv5/platform/errors.h"
#include "tnv5/script/convert.h"

#include <QMetaEnum>
#include <cmath>

namespace tnv5::js {

using platform::EConvertError;
namespace automation = platform::automation;

namespace {

/// The enumeration of a type, if the system knows it.
QMetaEnum enumerationOf(QMetaType type)
{
    const QMetaObject* const scope = type.metaObject();
    const QByteArray name = type.name();
    const int index =
        scope == nullptr ? -1 : scope->indexOfEnumerator(name.mid(name.lastIndexOf(':') + 1).constData());
    return index < 0 ? QMetaEnum() : scope->enumerator(index);
}

QVariant toEnumeration(const QVariant& value, QMetaType type)
{
    const int number = script::ToInteger(value);
    const QMetaEnum all = enumerationOf(type);
    // The components take any number into theirs; those of ports are closed.
    if (all.isValid() && all.isScoped() && all.valueToKey(number) == nullptr) {
        throw EConvertError(QStringLiteral("%1 is not a value of %2").arg(number).arg(all.name()));
    }
    QVariant result(number);
    if (!result.convert(type)) {
        throw EConvertError(QStringLiteral("%1 is not a value of %2").arg(number).arg(type.name()));
    }
    return result;
}

QVariant toPointer(const QVariant& value, QMetaType type)
{
    const QMetaObject* const meta = type.metaObject();
    QObject* const object = script::ToObject(value, meta == nullptr ? QObject::staticMetaObject : *meta);
    return QVariant(type, &object);
}

} // namespace

QVariant toProperty(const QVariant& value, QMetaType type)
{
    if (type.flags().testFlag(QMetaType::PointerToQObject)) {
        return toPointer(value, type);
    }
    if (type.flags().testFlag(QMetaType::IsEnumeration)) {
        return toEnumeration(value, type);
    }
    switch (type.id()) {
    case QMetaType::Bool:
        return script::ToBoolean(value);
    case QMetaType::Int:
        return script::ToInteger(value);
    case QMetaType::Double:
        return script::ToDouble(value);
    case QMetaType::QString:
        return script::ToText(value);
    case QMetaType::QByteArray:
        return script::TScriptValue<QByteArray>::from(value);
    case QMetaType::QStringList:
        return script::ToTextList(value);
    case QMetaType::QImage:
        return script::ToImage(value);
    case QMetaType::QVariant:
        return value;
    default:
        throw EConvertError(QStringLiteral("Scripts have no values of the type ") +
                            QString::fromLatin1(type.name()));
    }
}

automation::TValue toAutomation(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return {};
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
        return std::int32_t(value.toInt());
    case QMetaType::Double:
        return value.toDouble();
    case QMetaType::QString:
        return value.toString().toStdU16String();
    default:
        break;
    }
    if (value.metaType() == QMetaType::fromType<automation::TObjectPtr>()) {
        return value.value<automation::TObjectPtr>();
    }
    throw EConvertError(
        QStringLiteral("Automation objects take numbers, texts, truth values and one another"));
}

QVariant fromAutomation(const automation::TValue& value)
{
    return value.visit([](const auto& held) -> QVariant {
        using T = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
            return {};
        } else if constexpr (std::is_same_v<T, std::u16string>) {
            return QString::fromStdU16String(held);
        } else if constexpr (std::is_same_v<T, std::int64_t>) {
            return double(held);
        } else if constexpr (std::is_same_v<T, std::int32_t>) {
            return int(held);
        } else if constexpr (std::is_same_v<T, automation::TObjectPtr>) {
            return held ? QVariant::fromValue(held) : QVariant();
        } else {
            return held;
        }
    });
}

} // namespace tnv5::js
