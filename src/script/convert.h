#pragma once

#include "tnv5/script/script_engine.h"

#include <QDate>
#include <QImage>
#include <concepts>
#include <type_traits>

/// Between the variants of scripts and the types of C++. The type that a script sees follows from the C++
/// type, so that a binding cannot promise another one.
namespace tnv5::script {

// A value that is no truth value, number or text raises platform::EConvertError; so does nothing at all
// (null).
bool ToBoolean(const QVariant& value);
int ToInteger(const QVariant& value);
/// Date-times count as the days since 1899-12-30.
double ToDouble(const QVariant& value);
/// Whole numbers have all their digits, as those of cards do.
QString ToText(const QVariant& value);
QStringList ToTextList(const QVariant& value);
/// The object, none for null.
QObject* ToObject(const QVariant& value, const QMetaObject& type);
/// A picture, or the file of one; an empty picture for null.
QImage ToImage(const QVariant& value);

/// Day 0 of date-times.
inline const QDate kDayZero(1899, 12, 30);
/// Date-times as numbers: days since 1899-12-30. Other values stay as they are.
QVariant withoutDates(const QVariant& value);

template <class T>
concept CObject =
    std::is_pointer_v<T> && std::is_base_of_v<QObject, std::remove_cv_t<std::remove_pointer_t<T>>>;

/// How a C++ type is declared to scripts and converted.
template <class T>
struct TScriptValue;

template <>
struct TScriptValue<void>
{
    static constexpr TScriptType Type = TScriptType::None;
};

template <>
struct TScriptValue<bool>
{
    static constexpr TScriptType Type = TScriptType::Boolean;
    static bool from(const QVariant& value) { return ToBoolean(value); }
    static QVariant to(bool value) { return value; }
};

template <>
struct TScriptValue<int>
{
    static constexpr TScriptType Type = TScriptType::Integer;
    static int from(const QVariant& value) { return ToInteger(value); }
    static QVariant to(int value) { return value; }
};

/// Date-times are doubles as well: days.
template <>
struct TScriptValue<double>
{
    static constexpr TScriptType Type = TScriptType::Double;
    static double from(const QVariant& value) { return ToDouble(value); }
    static QVariant to(double value) { return value; }
};

template <>
struct TScriptValue<QString>
{
    static constexpr TScriptType Type = TScriptType::String;
    static QString from(const QVariant& value) { return ToText(value); }
    static QVariant to(const QString& value) { return value; }
};

/// Text as it stands on the wire.
template <>
struct TScriptValue<QByteArray>
{
    static constexpr TScriptType Type = TScriptType::String;
    static QByteArray from(const QVariant& value);
    static QVariant to(const QByteArray& value);
};

template <>
struct TScriptValue<QStringList>
{
    static constexpr TScriptType Type = TScriptType::StringList;
    static QStringList from(const QVariant& value) { return ToTextList(value); }
    static QVariant to(const QStringList& value) { return value; }
};

template <>
struct TScriptValue<QVariant>
{
    static constexpr TScriptType Type = TScriptType::Variant;
    static QVariant from(const QVariant& value) { return value; }
    static QVariant to(const QVariant& value) { return value; }
};

template <>
struct TScriptValue<QImage>
{
    static constexpr TScriptType Type = TScriptType::Variant;
    static QImage from(const QVariant& value) { return ToImage(value); }
    static QVariant to(const QImage& value) { return value; }
};

template <CObject T>
struct TScriptValue<T>
{
    using TClass = std::remove_cv_t<std::remove_pointer_t<T>>;
    static constexpr TScriptType Type = TScriptType::Object;
    static T from(const QVariant& value) { return static_cast<T>(ToObject(value, TClass::staticMetaObject)); }
    static QVariant to(T value) { return QVariant::fromValue<QObject*>(value); }
};

/// Whether a parameter may be changed by what is called.
template <class T>
inline constexpr bool isReference =
    std::is_lvalue_reference_v<T> && !std::is_const_v<std::remove_reference_t<T>>;

/// Declaration of a parameter.
template <class T>
constexpr TScriptParam scriptParam()
{
    constexpr TScriptType kType = TScriptValue<std::remove_cvref_t<T>>::Type;
    return {kType, isReference<T> && kType != TScriptType::StringList};
}

} // namespace tnv5::script
