#pragma once

#include "tnv5/js/script_error.h"
#include "tnv5/script/script_engine.h"

#include <chrono>

namespace tnv5::js {

class TCore;

/// A JavaScript engine that knows the components through what is registered with it.
///
///     TJsEngine engine;
///     registration::load(engine);
///     engine.RegisterObject("port", &port);
///     engine.OnError = [](const TScriptFailure& failure) { log(failure.message()); };
///     engine.evaluate("const gate = new TTurnStylerDevice(); gate.ComPort = port;", "club.js");
///
/// Scripts see published properties, the registered methods, properties, constants, procedures and records,
/// and nothing else of an object. The rules are in docs/scripts.md.
///
/// Components that scripts make live as long as the engine, and are freed in the reverse order of their
/// making. Everything else belongs to the host, except a new object without a parent that a procedure gives
/// and whose class scripts cannot make: it is taken over. The engine may be destroyed by what a script calls;
/// the script then ends where it is. Everything happens on the thread of the engine.
class TJsEngine final : public script::TScriptEngine
{
public:
    static constexpr std::chrono::milliseconds kTimeBudget{2'000};
    static constexpr qint64 kMemoryBudget = qint64(256) << 20;
    static constexpr int kMaxNesting = 40; ///< handlers inside of handlers

    TJsEngine();
    ~TJsEngine() override;

    void RegisterClassesInScript(const script::TScriptClasses& classes) override;
    void UnRegisterClassesInScript(const script::TScriptClasses& classes) override;
    THandle RegisterConst(const QString& name, const QVariant& value) override;
    void UnregisterConst(THandle handle) override;
    void RegisterProperty(const script::TScriptClass& owner,
                          const script::TScriptProperty& property) override;
    void RegRegisterMethod(const script::TScriptClass& owner, const script::TScriptMethod& method) override;
    THandle RegisterProc(const script::TScriptProc& proc) override;
    void UnregisterProc(THandle handle) override;
    THandle RegisterEvent(const script::TScriptEvent& event) override;
    void UnregisterEvent(THandle handle) override;
    THandle RegisterRecord(const script::TScriptRecord& record) override;
    void UnregisterRecord(THandle handle) override;

    /// An object of the host's under a name, with its published properties.
    THandle RegisterObject(const QString& name, QObject* object);
    void UnregisterObject(THandle handle);

    /// Runs a script. @return the value of its last statement; nothing for a value that only scripts have
    /// @throws EScriptError
    QVariant evaluate(const QString& text, const QString& file);

    /// How long a script or a handler may run without a break. What it calls of the components and the host
    /// does not count.
    void setTimeBudget(std::chrono::milliseconds budget);
    /// By how many bytes the process may grow while a script or a handler runs.
    void setMemoryBudget(qint64 bytes);

    /// Every failure of a script that leaves it, before it is raised.
    std::function<void(const TScriptFailure& failure)> OnError;
    /// A line of `print` or `console.log`.
    std::function<void(const QString& text)> OnPrint;

    // What the engine holds, for hosts that watch themselves.
    /// Components made by scripts that are still there.
    int componentCount() const;
    /// Objects that scripts have seen and that are still there.
    int objectCount() const;
    /// Functions that handle events.
    int handlerCount() const;

private:
    std::shared_ptr<TCore> F;
};

} // namespace tnv5::js
