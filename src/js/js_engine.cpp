#include "tnv5/js/js_engine.h"

#include "tnv5/js/js_core.h"

#include <QJSEngine>

namespace tnv5::js {

TJsEngine::TJsEngine() : F(std::make_shared<TCore>(*this)) {}

TJsEngine::~TJsEngine()
{
    F->close();
}

void TJsEngine::RegisterClassesInScript(const script::TScriptClasses& classes)
{
    for (const script::TScriptClass& each : classes) {
        F->addClass(each);
    }
}

void TJsEngine::UnRegisterClassesInScript(const script::TScriptClasses& classes)
{
    for (const script::TScriptClass& each : classes) {
        F->removeClass(each);
    }
}

TJsEngine::THandle TJsEngine::RegisterConst(const QString& name, const QVariant& value)
{
    return F->addName(name, F->toScript(value), F->newHandle());
}

void TJsEngine::UnregisterConst(THandle handle)
{
    F->removeName(handle);
}

void TJsEngine::RegisterProperty(const script::TScriptClass& owner, const script::TScriptProperty& property)
{
    F->layerOf(owner).Properties.push_back(property);
    if (property.Indexed) {
        F->make("addIndexed", {F->classInfo(owner.Meta).Wrap, property.Name});
    }
}

void TJsEngine::RegRegisterMethod(const script::TScriptClass& owner, const script::TScriptMethod& method)
{
    TCore::TLayer& layer = F->layerOf(owner);
    layer.Methods.push_back(method);
    F->show(F->classInfo(owner.Meta), {layer.Class, layer.Name, {method}, {}});
}

TJsEngine::THandle TJsEngine::RegisterProc(const script::TScriptProc& proc)
{
    const THandle handle = F->newHandle();
    F->Procs.emplace(handle, proc);
    return F->addName(proc.Name, F->make("makeProc", {proc.Name, handle, F->kindsOf(proc.Params)}), handle);
}

void TJsEngine::UnregisterProc(THandle handle)
{
    F->Procs.erase(handle);
    F->removeName(handle);
}

TJsEngine::THandle TJsEngine::RegisterEvent(const script::TScriptEvent& event)
{
    const THandle handle = F->newHandle();
    F->Events.emplace(handle, event);
    return handle;
}

void TJsEngine::UnregisterEvent(THandle handle)
{
    F->Events.erase(handle);
}

TJsEngine::THandle TJsEngine::RegisterRecord(const script::TScriptRecord& record)
{
    const THandle handle = F->newHandle();
    F->Records.emplace(handle, record);
    return F->addName(record.Name, F->make("makeRecord", {record.Name, handle}), handle);
}

void TJsEngine::UnregisterRecord(THandle handle)
{
    F->Records.erase(handle);
    F->removeName(handle);
}

TJsEngine::THandle TJsEngine::RegisterObject(const QString& name, QObject* object)
{
    return F->addName(name, F->wrapperOf(object), F->newHandle());
}

void TJsEngine::UnregisterObject(THandle handle)
{
    F->removeName(handle);
}

QVariant TJsEngine::evaluate(const QString& text, const QString& file)
{
    return F->evaluate(text, file);
}

void TJsEngine::setTimeBudget(std::chrono::milliseconds budget)
{
    F->TimeBudget = budget;
}

void TJsEngine::setMemoryBudget(qint64 bytes)
{
    F->MemoryBudget = bytes;
}

int TJsEngine::componentCount() const
{
    return int(F->Components.size());
}

int TJsEngine::objectCount() const
{
    return int(F->Objects.size());
}

int TJsEngine::handlerCount() const
{
    return int(F->Functions.size());
}

} // namespace tnv5::js
