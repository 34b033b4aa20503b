#include "tnv5/script/script_engine.h"

namespace tnv5::script {

QString ScriptTypeName(TScriptType type)
{
    switch (type) {
    case TScriptType::None:
        return QStringLiteral("nothing");
    case TScriptType::Boolean:
        return QStringLiteral("boolean");
    case TScriptType::Integer:
        return QStringLiteral("integer");
    case TScriptType::Double:
        return QStringLiteral("double");
    case TScriptType::String:
        return QStringLiteral("string");
    case TScriptType::WideString:
        return QStringLiteral("wide string");
    case TScriptType::StringList:
        return QStringLiteral("string list");
    case TScriptType::Object:
        return QStringLiteral("object");
    case TScriptType::Variant:
        return QStringLiteral("variant");
    }
    return {};
}

QString TScriptClass::Name() const
{
    const QString name = QString::fromLatin1(Meta->className());
    return name.mid(name.lastIndexOf(u':') + 1);
}

} // namespace tnv5::script
