#pragma once

#include "tnv5/js/js_engine.h"
#include "tnv5/js/watchdog.h"
#include "tnv5/script/event_types.h"

#include <QHash>
#include <QJSEngine>
#include <QJSValue>
#include <QPointer>
#include <map>
#include <unordered_map>

namespace tnv5::js {

class TBridge;
class TCore;
using PCore = std::shared_ptr<TCore>;

/// Any value that scripts hold without looking into it; it is theirs and goes when they have forgotten it.
class THolder : public QObject
{
    Q_OBJECT

public:
    explicit THolder(QVariant value) : Value(std::move(value)) {}
    const QVariant Value;
};

/// A function of a script, as long as an event has it.
class THandler
{
public:
    THandler(const PCore& core, QJSValue function, const script::TEventType& type, QString where);
    ~THandler();
    THandler(const THandler&) = delete;
    THandler& operator=(const THandler&) = delete;

    /// @throws EScriptError
    void run(QVariantList& args) const;
    QJSValue function() const;

private:
    std::weak_ptr<TCore> FCore;
    int FFunction;
    const script::TEventType& FType;
    QString FWhere; // stack of its assignment
};

/// What the engine consists of. It outlives the engine until the script that ended it has ended.
class TCore : public std::enable_shared_from_this<TCore>
{
public:
    explicit TCore(TJsEngine& owner);
    ~TCore();
    TCore(const TCore&) = delete;
    TCore& operator=(const TCore&) = delete;

    /// The engine goes: scripts end, and so do the components that they made.
    void close();
    bool closed() const { return FOwner == nullptr; }

    // what is registered

    struct TMember // method or property of a class
    {
        const QMetaObject* Owner;
        script::TScriptMethod Method;
    };
    struct TLayer // one registration of a class
    {
        script::TScriptClass Class;
        TJsEngine::THandle Name;
        std::vector<script::TScriptMethod> Methods;
        std::vector<script::TScriptProperty> Properties;
    };
    struct TClassInfo
    {
        QJSValue Wrap; // of the prelude
        std::vector<TLayer> Layers;
    };

    TJsEngine::THandle newHandle() { return ++FLastHandle; }
    TJsEngine::THandle addName(const QString& name, const QJSValue& value, TJsEngine::THandle handle);
    void removeName(TJsEngine::THandle handle);
    TClassInfo& classInfo(const QMetaObject* meta);
    void addClass(const script::TScriptClass& added);
    void removeClass(const script::TScriptClass& removed);
    TLayer& layerOf(const script::TScriptClass& owner);
    void show(const TClassInfo& info, const TLayer& layer);
    const script::TScriptProperty* findProperty(const QObject& object, const QString& name) const;

    // values

    QJSValue toScript(const QVariant& value);
    QVariant fromScript(const QJSValue& value) const;
    QJSValue wrapperOf(QObject* object);
    /// @throws platform::Exception when it was destroyed
    QObject& objectOf(int id) const;
    QJSValue wrapHolder(const char* wrapper, const QVariant& value, const QJSValueList& more = {});
    QJSValue helper(const char* name) const;
    QJSValue make(const char* name, const QJSValueList& args);
    QJSValue kindsOf(const script::TScriptParams& params);

    // events

    void assign(QObject& object, const QMetaProperty& property, const QJSValue& function, QString where);
    QJSValue assigned(int id, const QString& property) const;
    void runHandler(int function, const script::TEventType& type, const QString& where, QVariantList& args);
    QVariant evaluate(const QString& text, const QString& file);

    void adopt(QObject* object);
    /// Takes over what a procedure has made for a script.
    void adoptIfNobodys(const QVariant& value);
    void print(const QString& text) const;

    struct TObject
    {
        QPointer<QObject> Object;
        QJSValue Wrapper;
        std::map<QString, std::weak_ptr<THandler>> Handlers; // by property
    };

    std::unique_ptr<TBridge> Bridge;
    QJSEngine Engine;
    TWatchdog Watchdog;
    std::chrono::milliseconds TimeBudget = TJsEngine::kTimeBudget;
    qint64 MemoryBudget = TJsEngine::kMemoryBudget;

    std::unordered_map<const QMetaObject*, TClassInfo> Classes;
    std::map<int, TMember> Methods; // by number
    std::map<int, script::TScriptProc> Procs;
    std::map<int, script::TScriptRecord> Records;
    std::map<int, script::TScriptEvent> Events;
    std::unordered_map<int, TObject> Objects;
    std::unordered_map<int, QJSValue> Functions;
    std::vector<QPointer<QObject>> Components; // in the order of their making

private:
    class TRun;
    struct TName
    {
        TJsEngine::THandle handle;
        QJSValue value;
    };

    void refresh(const QString& name);
    void forget(QObject* object);
    [[noreturn]] void fail(const TScriptFailure& failure);
    [[noreturn]] void failInterrupted(TWatchdog::TEnd why, const QString& where);
    QJSValue listToScript(const QVariantList& list);
    void collectHolders();

    TJsEngine* FOwner;
    QObject FContext; // of the connections
    QJSValue FPrelude;
    QJSValue FInvoke;
    std::map<QString, std::vector<TName>> FNames;
    QHash<QObject*, int> FIds;
    QHash<QMetaType, QJSValue> FReferences;
    int FLastHandle = 0;
    int FLastId = 0;
    int FNesting = 0;
    int FNewHolders = 0;
};

} // namespace tnv5::js
