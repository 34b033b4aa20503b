#pragma once

#include "tnv5/script/script_engine.h"

#include <QStringList>
#include <map>

namespace tnv5::tests {

/// An engine that writes down what is registered and removed, and keeps what is there to be called.
class TRecordingEngine : public script::TScriptEngine
{
public:
    QStringList lines; // since they were last taken
    std::map<int, QString> handles;
    QStringList classes;
    std::map<QString, script::TScriptCall>
        calls; // "class.method", "class.property", "class.property:=", "proc"
    std::map<QString, script::TScriptRecord> records;
    QString refused; // a line that raises

    QStringList take() { return std::exchange(lines, {}); }
    bool isEmpty() const { return handles.empty() && classes.empty(); }
    QVariant call(const QString& name, QObject* self, QVariantList& args) const
    {
        return calls.at(name)(self, args);
    }
    QVariant call(const QString& name, QObject* self, QVariantList&& args = {}) const
    {
        return call(name, self, args);
    }

    void RegisterClassesInScript(const script::TScriptClasses& list) override;
    void UnRegisterClassesInScript(const script::TScriptClasses& list) override;
    int RegisterConst(const QString& name, const QVariant& value) override;
    void UnregisterConst(int handle) override;
    void RegisterProperty(const script::TScriptClass& owner,
                          const script::TScriptProperty& property) override;
    void RegRegisterMethod(const script::TScriptClass& owner, const script::TScriptMethod& method) override;
    int RegisterProc(const script::TScriptProc& proc) override;
    void UnregisterProc(int handle) override;
    int RegisterEvent(const script::TScriptEvent& event) override;
    void UnregisterEvent(int handle) override;
    int RegisterRecord(const script::TScriptRecord& record) override;
    void UnregisterRecord(int handle) override;

private:
    void note(const QString& line);
    int hand(const QString& line);
    void takeBack(int handle);

    int FLast = 0;
};

} // namespace tnv5::tests
