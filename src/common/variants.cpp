#include "tnv5/common/variants.h"

#include "tnv5/platform/errors.h"

#include <cmath>
#include <limits>

namespace tnv5::common {

int VariantToInteger(const QVariant& value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isNumber || value.isNull() || !std::isfinite(number)) {
        throw platform::EConvertError(
            QStringLiteral("Could not convert variant of type (%1) into type (Integer)")
                .arg(value.isValid() ? QString::fromLatin1(value.typeName()) : QStringLiteral("Null")));
    }
    const double rounded = std::nearbyint(number);
    if (rounded < std::numeric_limits<int>::min() || rounded > std::numeric_limits<int>::max()) {
        throw platform::EConvertError(
            QStringLiteral("Overflow while converting variant of type (%1) into type (Integer)")
                .arg(QString::fromLatin1(value.typeName())));
    }
    return static_cast<int>(rounded);
}

QString VariantToText(const QVariant& value)
{
    constexpr double kExact = 9'007'199'254'740'992; // beyond it not every whole number has a double
    if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float) {
        const double number = value.toDouble();
        if (std::abs(number) <= kExact && number == std::floor(number)) {
            return QString::number(static_cast<qint64>(number));
        }
    }
    return value.toString();
}

} // namespace tnv5::common
