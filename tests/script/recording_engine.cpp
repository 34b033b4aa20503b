#include "recording_engine.h"

#include "tnv5/platform/errors.h"

namespace tnv5::tests {

using namespace script;

namespace {

QString shown(const TScriptParams& params)
{
    QStringList words;
    for (const TScriptParam& param : params) {
        words += (param.Var ? "var " : "") + ScriptTypeName(param.Type);
    }
    return "(" + words.join(", ") + ")";
}

QString names(const TScriptClasses& list)
{
    QStringList words;
    for (const TScriptClass& entry : list) {
        words += entry.Name() + (entry.Create ? "" : " (not made by scripts)");
    }
    return words.join(", ");
}

} // namespace

void TRecordingEngine::note(const QString& line)
{
    if (line == refused) {
        throw platform::Exception("refused");
    }
    lines += line;
}

int TRecordingEngine::hand(const QString& line)
{
    note(line);
    handles[++FLast] = line;
    return FLast;
}

void TRecordingEngine::takeBack(int handle)
{
    const auto found = handles.find(handle);
    lines += "- " + (found == handles.end() ? "?" : found->second);
    handles.erase(handle);
}

void TRecordingEngine::RegisterClassesInScript(const TScriptClasses& list)
{
    note("classes " + names(list));
    for (const TScriptClass& entry : list) {
        classes += entry.Name();
    }
}

void TRecordingEngine::UnRegisterClassesInScript(const TScriptClasses& list)
{
    lines += "- classes " + names(list);
    for (const TScriptClass& entry : list) {
        classes.removeOne(entry.Name());
    }
}

int TRecordingEngine::RegisterConst(const QString& name, const QVariant& value)
{
    return hand(QStringLiteral("const %1 = %2 %3").arg(name, value.typeName(), value.toString()));
}

void TRecordingEngine::UnregisterConst(int handle)
{
    takeBack(handle);
}

void TRecordingEngine::RegisterProperty(const TScriptClass& owner, const TScriptProperty& property)
{
    const QString name = owner.Name() + "." + property.Name;
    note("property " + name + (property.Indexed ? "[integer]" : "") + ": " + ScriptTypeName(property.Type) +
         (property.Write ? "" : ", read-only"));
    calls[name] = property.Read;
    calls[name + ":="] = property.Write;
}

void TRecordingEngine::RegRegisterMethod(const TScriptClass& owner, const TScriptMethod& method)
{
    const QString name = owner.Name() + "." + method.Name;
    note("method " + name + shown(method.Params) + ": " + ScriptTypeName(method.Result));
    calls[name] = method.Call;
}

int TRecordingEngine::RegisterProc(const TScriptProc& proc)
{
    calls[proc.Name] = proc.Call;
    return hand("proc " + proc.Name + shown(proc.Params) + ": " + ScriptTypeName(proc.Result));
}

void TRecordingEngine::UnregisterProc(int handle)
{
    takeBack(handle);
}

int TRecordingEngine::RegisterEvent(const TScriptEvent& event)
{
    return hand("event " + event.Name + shown(event.Params));
}

void TRecordingEngine::UnregisterEvent(int handle)
{
    takeBack(handle);
}

int TRecordingEngine::RegisterRecord(const TScriptRecord& record)
{
    records[record.Name] = record;
    return hand("record " + record.Name);
}

void TRecordingEngine::UnregisterRecord(int handle)
{
    takeBack(handle);
}

} // namespace tnv5::tests
