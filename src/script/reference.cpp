#include "tnv5/script/reference.h"

#include "tnv5/script/event_types.h"
#include "tnv5/script/units.h"

#include <QDateTime>
#include <QMetaProperty>

namespace tnv5::script {

namespace {

const QString kHead = QStringLiteral("# Script reference\n\n"
                                     "Made by `tnv5 script-reference` from what the module registers; a test "
                                     "compares. How scripts work is in\n"
                                     "[scripts.md](scripts.md). *var* marks a parameter by reference: an "
                                     "object whose `value` is written back; a\n"
                                     "string list is an array that is filled in place.\n");

QString title(const QString& text)
{
    return text.left(1).toUpper() + text.mid(1);
}

QString paramsText(const TScriptParams& params)
{
    QStringList texts;
    for (const TScriptParam& param : params) {
        texts << (param.Var ? QStringLiteral("*var* ") : QString()) + ScriptTypeName(param.Type);
    }
    return texts.isEmpty() ? QStringLiteral("none") : texts.join(QStringLiteral(", "));
}

QString row(const QStringList& cells)
{
    return QStringLiteral("| ") + cells.join(QStringLiteral(" | ")) + QStringLiteral(" |\n");
}

QString table(const QStringList& heads)
{
    return u'\n' + row(heads) + u'|' + QStringLiteral("---|").repeated(heads.size()) + u'\n';
}

QString code(const QString& name)
{
    return u'`' + name + u'`';
}

/// The type of a published property in words of scripts.
QString typeName(const QMetaProperty& property)
{
    const QMetaType type = property.metaType();
    const QString name = QString::fromLatin1(type.name());
    const QString last = name.mid(name.lastIndexOf(u':') + 1);
    if (type.flags().testFlag(QMetaType::PointerToQObject)) {
        return QStringLiteral("object ") + last.chopped(1);
    }
    if (type.flags().testFlag(QMetaType::IsEnumeration)) {
        return QStringLiteral("integer, ") + last;
    }
    switch (type.id()) {
    case QMetaType::Bool:
        return ScriptTypeName(TScriptType::Boolean);
    case QMetaType::Int:
        return ScriptTypeName(TScriptType::Integer);
    case QMetaType::Double:
        return ScriptTypeName(TScriptType::Double);
    case QMetaType::QString:
        return ScriptTypeName(TScriptType::String);
    case QMetaType::QStringList:
        return ScriptTypeName(TScriptType::StringList);
    case QMetaType::QVariantList:
        return QStringLiteral("array");
    default:
        return last;
    }
}

QString constantText(const QVariant& value)
{
    if (value.typeId() == QMetaType::QDateTime) {
        return QStringLiteral("date-time ") +
               value.toDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    }
    const QString type = value.typeId() == QMetaType::Bool     ? QStringLiteral("boolean ")
                         : value.typeId() == QMetaType::Double ? QStringLiteral("double ")
                                                               : QString();
    return type + value.toString();
}

class TPage
{
public:
    void operator()(const std::vector<TScriptConst>& constants)
    {
        text += table({QStringLiteral("Constant"), QStringLiteral("Value")});
        for (const TScriptConst& constant : constants) {
            text += row({code(constant.Name), constantText(constant.Value)});
        }
    }
    void operator()(const TScriptClasses& classes)
    {
        for (const TScriptClass& each : classes) {
            classText(each);
        }
    }
    void operator()(const TScriptProperties& properties)
    {
        text +=
            table({QStringLiteral("Property of `%1`").arg(properties.Owner.Name()), QStringLiteral("Type")});
        for (const TScriptProperty& property : properties.List) {
            const QString index = property.Indexed ? QStringLiteral("[index]") : QString();
            const QString access = property.Write ? QString() : QStringLiteral(", read-only");
            text += row({code(property.Name + index), ScriptTypeName(property.Type) + access});
        }
    }
    void operator()(const TScriptMethods& methods)
    {
        calls(QStringLiteral("Method of `%1`").arg(methods.Owner.Name()), methods.List);
    }
    void operator()(const std::vector<TScriptProc>& procs) { calls(QStringLiteral("Procedure"), procs); }
    void operator()(const std::vector<TScriptEvent>& events)
    {
        text += table({QStringLiteral("Event type"), QStringLiteral("Parameters")});
        for (const TScriptEvent& event : events) {
            text += row({code(event.Name), paramsText(event.Params)});
        }
    }
    void operator()(const std::vector<TScriptRecord>& records)
    {
        for (const TScriptRecord& record : records) {
            const auto wrapper = record.Create().value<PRecordWrapper>();
            text += QStringLiteral("\nRecord `%1`: `%2`.\n")
                        .arg(record.Name, wrapper->Fields().join(QStringLiteral("`, `")));
        }
    }

    QString text;

private:
    void calls(const QString& what, const std::vector<TScriptMethod>& list)
    {
        text += table({what, QStringLiteral("Parameters"), QStringLiteral("Result")});
        for (const TScriptMethod& method : list) {
            text += row({code(method.Name), paramsText(method.Params), ScriptTypeName(method.Result)});
        }
    }

    void classText(const TScriptClass& each)
    {
        const QString made = each.Create ? QStringLiteral("made with `new %1()`").arg(each.Name())
                                         : QStringLiteral("not made by scripts");
        text += QStringLiteral("\n### %1\n\nClass, %2.\n").arg(each.Name(), made);
        QString events;
        QString properties;
        for (int i = QObject::staticMetaObject.propertyCount(); i < each.Meta->propertyCount(); ++i) {
            const QMetaProperty property = each.Meta->property(i);
            const QString name = code(QString::fromLatin1(property.name()));
            if (const TEventType* const event = FindEventType(property.metaType())) {
                events += row({name, paramsText(event->Params)});
            } else {
                const QString access = property.isWritable() ? QString() : QStringLiteral(", read-only");
                properties += row({name, typeName(property) + access});
            }
        }
        if (!properties.isEmpty()) {
            text += table({QStringLiteral("Published property"), QStringLiteral("Type")}) + properties;
        }
        if (!events.isEmpty()) {
            text += table({QStringLiteral("Event"), QStringLiteral("Parameters")}) + events;
        }
    }
};

} // namespace

QString scriptReference()
{
    TPage page;
    page.text = kHead;
    for (const TScriptUnit& unit : scriptUnits()) {
        page.text += QStringLiteral("\n## %1\n").arg(title(unit.Name));
        for (const TScriptGroup& group : unit.Groups) {
            std::visit([&page](const auto& each) { page(each); }, group);
        }
    }
    return page.text;
}

} // namespace tnv5::script
