#pragma once

#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QVariant>
#include <functional>
#include <memory>
#include <vector>

namespace tnv5::script {

/// What a value is to a script. Integers have 32 bits; date-times are doubles, days since 1899-12-30; wide
/// and plain strings are the same here, the bindings keep the words of their lists.
enum class TScriptType { None, Boolean, Integer, Double, String, WideString, StringList, Object, Variant };

/// A parameter; one by reference (`Var`) is written back to the script after the call. A string list is an
/// object, which is filled in place.
struct TScriptParam
{
    TScriptType Type = TScriptType::None;
    bool Var = false;

    bool operator==(const TScriptParam&) const = default;
};

using TScriptParams = std::vector<TScriptParam>;

/// Name of a type as the script reference shows it: "integer", "string list"; "nothing" for `None`.
QString ScriptTypeName(TScriptType type);

/// Calls into C++: the object (none for a procedure) and the arguments, as many as are declared; those by
/// reference have their new values afterwards.
/// @throws platform::EConvertError when an argument cannot be converted, before anything is called; else what
/// is called throws
using TScriptCall = std::function<QVariant(QObject* Self, QVariantList& Args)>;

/// A class: its properties and events are reached through its reflection.
struct TScriptClass
{
    const QMetaObject* Meta;
    /// Makes one; empty for a class that scripts do not make.
    std::function<QObject*(QObject* Owner)> Create;

    /// The name without its namespace.
    QString Name() const;
};

using TScriptClasses = std::vector<TScriptClass>;

struct TScriptMethod
{
    QString Name;
    TScriptParams Params;
    TScriptType Result;
    TScriptCall Call;
};

/// A property that reflection does not show. An indexed one has an integer as its first argument; the value
/// to write is the last one.
struct TScriptProperty
{
    QString Name;
    TScriptType Type;
    bool Indexed;
    TScriptCall Read;
    TScriptCall Write; ///< empty: read-only
};

/// A procedure of no object.
using TScriptProc = TScriptMethod;

/// Parameter types of an event.
struct TScriptEvent
{
    QString Name;
    TScriptParams Params;
};

/// A copy of a record, whose fields scripts read and write by name.
class TRecordWrapper
{
public:
    TRecordWrapper() = default;
    virtual ~TRecordWrapper() = default;
    TRecordWrapper(const TRecordWrapper&) = delete;
    TRecordWrapper& operator=(const TRecordWrapper&) = delete;

    virtual QStringList Fields() const = 0;
    /// @throws platform::EConvertError for a name that is no field
    virtual QVariant Value(const QString& field) const = 0;
    /// @throws platform::EConvertError for a name that is no field, or a value that cannot be converted
    virtual void SetValue(const QString& field, const QVariant& value) = 0;
};

using PRecordWrapper = std::shared_ptr<TRecordWrapper>;

/// A record and its converters. A wrapper in a variant is a `PRecordWrapper`.
struct TScriptRecord
{
    QString Name;
    /// A variant with a wrapper of a new, empty record.
    std::function<QVariant()> Create;
    /// A variant with a wrapper of a copy of the record that is pointed to.
    std::function<QVariant(const void* Rec)> ToVariant;
    /// Copies the record of a wrapper; does nothing for a variant without one of this record.
    std::function<void(const QVariant& V, void* Rec)> FromVariant;
};

/// What the bindings need of a host's script engine. A host makes its own, or takes the JavaScript engine of
/// `tnv5::js`.
///
/// What is registered under one name by several units stands side by side: each is removed by its handle.
/// Handles are never used again.
class TScriptEngine
{
public:
    using THandle = int;

    TScriptEngine() = default;
    virtual ~TScriptEngine() = default;
    TScriptEngine(const TScriptEngine&) = delete;
    TScriptEngine& operator=(const TScriptEngine&) = delete;

    virtual void RegisterClassesInScript(const TScriptClasses& classes) = 0;
    /// Also removes the methods and properties of the classes.
    virtual void UnRegisterClassesInScript(const TScriptClasses& classes) = 0;

    virtual THandle RegisterConst(const QString& name, const QVariant& value) = 0;
    virtual void UnregisterConst(THandle handle) = 0;

    virtual void RegisterProperty(const TScriptClass& owner, const TScriptProperty& property) = 0;
    virtual void RegRegisterMethod(const TScriptClass& owner, const TScriptMethod& method) = 0;

    virtual THandle RegisterProc(const TScriptProc& proc) = 0;
    virtual void UnregisterProc(THandle handle) = 0;

    virtual THandle RegisterEvent(const TScriptEvent& event) = 0;
    virtual void UnregisterEvent(THandle handle) = 0;

    virtual THandle RegisterRecord(const TScriptRecord& record) = 0;
    virtual void UnregisterRecord(THandle handle) = 0;
};

} // namespace tnv5::script

Q_DECLARE_METATYPE(tnv5::script::PRecordWrapper)
