#include "tnv5/platform/automation/dbus_value.h"

#include <QDBusObjectPath>
#include <QDBusVariant>
#include <limits>
#include <type_traits>

namespace tnv5::platform::automation {

namespace {

const QString kNamesWithoutDot = QStringLiteral("tnv5.");

TValue wholeNumber(qint64 number)
{
    if (number >= std::numeric_limits<std::int32_t>::min() &&
        number <= std::numeric_limits<std::int32_t>::max()) {
        return static_cast<std::int32_t>(number);
    }
    return std::int64_t{number};
}

} // namespace

QString busNameOf(std::u16string_view progId)
{
    const QString name = toQt(progId);
    return name.contains(u'.') ? name : kNamesWithoutDot + name;
}

QString pathOf(const QString& busName)
{
    return u'/' + QString(busName).replace(u'.', u'/');
}

QVariant toBus(const TValue& value)
{
    return value.visit([](const auto& held) -> QVariant {
        using Type = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Type, std::monostate>) {
            return QString();
        } else if constexpr (std::is_same_v<Type, std::u16string>) {
            return toQt(held);
        } else if constexpr (std::is_same_v<Type, std::int64_t>) {
            return qlonglong{held};
        } else if constexpr (std::is_same_v<Type, TObjectPtr>) {
            throw EOleError(u"an object cannot be sent over the bus");
        } else {
            return held;
        }
    });
}

TValue fromBus(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return {};
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::Short:
        return std::int32_t{value.toInt()};
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
        return wholeNumber(value.toLongLong());
    case QMetaType::LongLong:
        return std::int64_t{value.toLongLong()};
    case QMetaType::ULongLong:
        if (value.toULongLong() <= quint64(std::numeric_limits<qint64>::max())) {
            return std::int64_t{value.toLongLong()};
        }
        return static_cast<double>(value.toULongLong());
    case QMetaType::Double:
        return value.toDouble();
    case QMetaType::QString:
        return value.toString().toStdU16String();
    default:
        break;
    }
    if (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        return fromBus(value.value<QDBusVariant>().variant());
    }
    if (value.metaType() == QMetaType::fromType<QDBusObjectPath>()) {
        return value.value<QDBusObjectPath>().path().toStdU16String();
    }
    throw EOleError(u"a value of the type " + fromUtf8(value.typeName()) + u" is not understood");
}

} // namespace tnv5::platform::automation
