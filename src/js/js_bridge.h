#pragma once

#include <QJSValue>
#include <QObject>

namespace tnv5::js {

class TCore;

/// What the prelude calls. Failures become errors of the script; nothing is raised through the interpreter.
class TBridge : public QObject
{
    Q_OBJECT

public:
    explicit TBridge(TCore& core) : F(core) {}

    Q_INVOKABLE QJSValue create(int index);
    Q_INVOKABLE QJSValue createRecord(int handle);
    Q_INVOKABLE QJSValue call(int id, int method, const QJSValue& args);
    Q_INVOKABLE QJSValue callProc(int handle, const QJSValue& args);
    Q_INVOKABLE QJSValue read(int id, const QString& name);
    Q_INVOKABLE void write(int id, const QString& name, const QJSValue& value);
    Q_INVOKABLE void assign(int id, const QString& name, const QJSValue& function, const QString& where);
    Q_INVOKABLE QJSValue readItem(int id, const QString& name, int index);
    Q_INVOKABLE void writeItem(int id, const QString& name, int index, const QJSValue& value);
    Q_INVOKABLE QJSValue readField(const QJSValue& holder, const QString& name);
    Q_INVOKABLE void writeField(const QJSValue& holder, const QString& name, const QJSValue& value);
    Q_INVOKABLE QJSValue callAutomation(const QJSValue& holder, const QString& name, const QJSValue& args,
                                        const QJSValue& kinds);
    Q_INVOKABLE QJSValue getAutomation(const QJSValue& holder, const QString& name);
    Q_INVOKABLE void setAutomation(const QJSValue& holder, const QString& name, const QJSValue& value);
    Q_INVOKABLE void print(const QString& text);

private:
    /// Runs `body` and turns what it raises into an error of the script.
    template <class Body>
    QJSValue answer(const Body& body);
    /// Runs code of the components' or the host's while the script's time stands still. Does nothing when the
    /// script has been interrupted.
    template <class Body>
    void outside(const Body& body);

    QVariantList list(const QJSValue& args) const;
    QJSValue answerList(const QVariant& result, const QVariantList& args, bool changed);

    TCore& F;
};

} // namespace tnv5::js
