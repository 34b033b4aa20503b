#pragma once

#include "tnv5/script/script_engine.h"

#include <variant>

namespace tnv5::script {

struct TScriptConst
{
    QString Name;
    QVariant Value;
};

/// Properties or methods of a class.
struct TScriptProperties
{
    TScriptClass Owner;
    std::vector<TScriptProperty> List;
};
struct TScriptMethods
{
    TScriptClass Owner;
    std::vector<TScriptMethod> List;
};

/// What a unit registers at a time, in the order of registration.
using TScriptGroup =
    std::variant<TScriptClasses, std::vector<TScriptConst>, TScriptProperties, TScriptMethods,
                 std::vector<TScriptProc>, std::vector<TScriptEvent>, std::vector<TScriptRecord>>;

/// All that one unit registers.
struct TScriptUnit
{
    QString Name;
    std::vector<TScriptGroup> Groups;
};

/// A unit in an engine, as long as it lives. It removes exactly what it registered: its constants, the last
/// one first, then procedures, records and events, then its classes.
///
/// @throws what the engine throws; what was registered until then is removed again
class TScriptRegistration
{
public:
    TScriptRegistration(TScriptEngine& engine, const TScriptUnit& unit);
    ~TScriptRegistration();
    TScriptRegistration(const TScriptRegistration&) = delete;
    TScriptRegistration& operator=(const TScriptRegistration&) = delete;

private:
    struct TRegister;
    void remove() noexcept;

    TScriptEngine& FEngine;
    std::vector<TScriptEngine::THandle> FConsts;
    std::vector<TScriptEngine::THandle> FProcs;
    std::vector<TScriptEngine::THandle> FRecords;
    std::vector<TScriptEngine::THandle> FEvents;
    std::vector<TScriptClasses> FClasses;
};

} // namespace tnv5::script
