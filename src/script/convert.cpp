#include "tnv5/script/convert.h"

#include "tnv5/common/variants.h"
#include "tnv5/platform/clock.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/platform/errors.h"

#include <QDateTime>
#include <QStringList>

namespace tnv5::script {

using platform::EConvertError;

namespace {

double days(QDate date, QTime time)
{
    return double(kDayZero.daysTo(date)) + double(time.msecsSinceStartOfDay()) / platform::kMsPerDay;
}

[[noreturn]] void refuse(const QVariant& value, QStringView wanted)
{
    const QString given = value.isNull() ? QStringLiteral("nothing") : "'" + value.toString() + "'";
    throw EConvertError(given + " is not " + wanted.toString());
}

bool isNumber(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

bool isText(const QVariant& value)
{
    return value.typeId() == QMetaType::QString || value.typeId() == QMetaType::QByteArray;
}

} // namespace

bool ToBoolean(const QVariant& value)
{
    if (isNumber(value)) {
        return value.toDouble() != 0;
    }
    const QString text = isText(value) ? value.toString().trimmed() : QString();
    if (text.compare(u"true", Qt::CaseInsensitive) == 0) {
        return true;
    }
    if (text.compare(u"false", Qt::CaseInsensitive) == 0) {
        return false;
    }
    bool ok = false;
    const double number = text.toDouble(&ok);
    if (!ok) {
        refuse(value, u"a truth value");
    }
    return number != 0;
}

int ToInteger(const QVariant& value)
{
    return common::VariantToInteger(value);
}

double ToDouble(const QVariant& given)
{
    const QVariant value = withoutDates(given);
    bool ok = isNumber(value) || isText(value);
    const double number = ok ? value.toDouble(&ok) : 0;
    if (!ok) {
        refuse(value, u"a number");
    }
    return number;
}

QString ToText(const QVariant& value)
{
    if (!isNumber(value) && !isText(value)) {
        refuse(value, u"a text");
    }
    return common::VariantToText(value);
}

QStringList ToTextList(const QVariant& value)
{
    if (value.typeId() == QMetaType::QStringList) {
        return value.toStringList();
    }
    if (value.typeId() != QMetaType::QVariantList) {
        refuse(value, u"a list of texts");
    }
    QStringList texts;
    for (const QVariant& text : value.toList()) {
        texts += ToText(text);
    }
    return texts;
}

QObject* ToObject(const QVariant& value, const QMetaObject& type)
{
    if (!value.isValid() || value.typeId() == QMetaType::Nullptr) {
        return nullptr;
    }
    const bool isObject = value.metaType().flags().testFlag(QMetaType::PointerToQObject);
    QObject* const object = isObject ? qvariant_cast<QObject*>(value) : nullptr;
    if (isObject && object == nullptr) {
        return nullptr;
    }
    if (object == nullptr || type.cast(object) == nullptr) {
        refuse(value, QStringLiteral("an object of the class ") + TScriptClass{&type, {}}.Name());
    }
    return object;
}

QImage ToImage(const QVariant& value)
{
    if (value.isNull()) {
        return {};
    }
    if (value.typeId() == QMetaType::QImage) {
        return value.value<QImage>();
    }
    const QString file = ToText(value);
    const QImage image = file.isEmpty() ? QImage() : QImage(file);
    if (image.isNull() && !file.isEmpty()) {
        throw EConvertError("'" + file + "' is not a file with a picture");
    }
    return image;
}

QVariant withoutDates(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QDateTime: {
        const QDateTime time = value.toDateTime();
        return days(time.date(), time.time());
    }
    case QMetaType::QDate:
        return days(value.toDate(), QTime(0, 0));
    case QMetaType::QTime:
        return days(kDayZero, value.toTime());
    default:
        return value;
    }
}

QByteArray TScriptValue<QByteArray>::from(const QVariant& value)
{
    return platform::toWire(ToText(value));
}

QVariant TScriptValue<QByteArray>::to(const QByteArray& value)
{
    return platform::fromWire(value);
}

} // namespace tnv5::script
