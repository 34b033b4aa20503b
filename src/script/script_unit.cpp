#include "tnv5/script/script_unit.h"

#include "tnv5/platform/errors.h"

namespace tnv5::script {

/// Registers a group and keeps its handles.
struct TScriptRegistration::TRegister
{
    TScriptRegistration& to;

    void operator()(const TScriptClasses& classes) const
    {
        to.FEngine.RegisterClassesInScript(classes);
        to.FClasses.push_back(classes);
    }
    void operator()(const std::vector<TScriptConst>& constants) const
    {
        for (const TScriptConst& constant : constants) {
            to.FConsts.push_back(to.FEngine.RegisterConst(constant.Name, constant.Value));
        }
    }
    void operator()(const TScriptProperties& properties) const
    {
        for (const TScriptProperty& property : properties.List) {
            to.FEngine.RegisterProperty(properties.Owner, property);
        }
    }
    void operator()(const TScriptMethods& methods) const
    {
        for (const TScriptMethod& method : methods.List) {
            to.FEngine.RegRegisterMethod(methods.Owner, method);
        }
    }
    void operator()(const std::vector<TScriptProc>& procs) const
    {
        for (const TScriptProc& proc : procs) {
            to.FProcs.push_back(to.FEngine.RegisterProc(proc));
        }
    }
    void operator()(const std::vector<TScriptEvent>& events) const
    {
        for (const TScriptEvent& event : events) {
            to.FEvents.push_back(to.FEngine.RegisterEvent(event));
        }
    }
    void operator()(const std::vector<TScriptRecord>& records) const
    {
        for (const TScriptRecord& record : records) {
            to.FRecords.push_back(to.FEngine.RegisterRecord(record));
        }
    }
};

TScriptRegistration::TScriptRegistration(TScriptEngine& engine, const TScriptUnit& unit) : FEngine(engine)
{
    try {
        for (const TScriptGroup& group : unit.Groups) {
            std::visit(TRegister{*this}, group);
        }
    } catch (...) {
        remove();
        throw;
    }
}

TScriptRegistration::~TScriptRegistration()
{
    remove();
}

void TScriptRegistration::remove() noexcept
{
    const auto last = [](auto& list, const auto& take) {
        while (!list.empty()) {
            const auto entry = std::move(list.back());
            list.pop_back();
            platform::guarded([&] { take(entry); });
        }
    };
    last(FConsts, [this](int handle) { FEngine.UnregisterConst(handle); });
    last(FProcs, [this](int handle) { FEngine.UnregisterProc(handle); });
    last(FRecords, [this](int handle) { FEngine.UnregisterRecord(handle); });
    last(FEvents, [this](int handle) { FEngine.UnregisterEvent(handle); });
    last(FClasses, [this](const TScriptClasses& classes) { FEngine.UnRegisterClassesInScript(classes); });
}

} // namespace tnv5::script
