#include "tnv5/js/js_bridge.h"

#include "tnv5/js/js_core.h"
#include "tnv5/js/js_values.h"
#include "tnv5/platform/automation/automation.h"

#include <QMetaProperty>

namespace tnv5::js {

using platform::EConvertError;
using platform::Exception;
using platform::automation::TObjectPtr;

namespace {

/// The script was interrupted: what follows is of no interest any more.
struct TInterrupted
{
};

QString nameOf(const QObject& object)
{
    return script::TScriptClass{object.metaObject(), {}}.Name();
}

/// A published property; what every object of Qt has is none.
QMetaProperty published(const QObject& object, const QString& name)
{
    const QMetaObject* const meta = object.metaObject();
    const int index = meta->indexOfProperty(name.toUtf8().constData());
    if (index < QObject::staticMetaObject.propertyCount()) {
        throw EConvertError(QStringLiteral("%1 has no property '%2'").arg(nameOf(object), name));
    }
    return meta->property(index);
}

[[noreturn]] void refuseWriting(const QObject& object, const QString& name)
{
    throw EConvertError(QStringLiteral("%1.%2 is read-only").arg(nameOf(object), name));
}

const QVariant& held(const QJSValue& holder)
{
    const auto* const object = qobject_cast<THolder*>(holder.toQObject());
    if (object == nullptr) {
        throw Exception(QStringLiteral("The object is gone"));
    }
    return object->Value;
}

script::TRecordWrapper& recordIn(const QJSValue& holder)
{
    return *held(holder).value<script::PRecordWrapper>();
}

TObjectPtr automationIn(const QJSValue& holder)
{
    return held(holder).value<TObjectPtr>();
}

} // namespace

template <class Body>
QJSValue TBridge::answer(const Body& body)
{
    QString text;
    QJSValue::ErrorType type = QJSValue::GenericError;
    try {
        return body();
    } catch (const TInterrupted&) {
        return {};
    } catch (const EConvertError& error) {
        text = error.message();
        type = QJSValue::TypeError;
    } catch (...) {
        text = platform::exceptionMessage();
    }
    F.Engine.throwError(type, text);
    return {};
}

template <class Body>
void TBridge::outside(const Body& body)
{
    if (!F.Watchdog.pause()) {
        throw TInterrupted();
    }
    struct TResume
    {
        TWatchdog& watchdog;
        ~TResume() { watchdog.resume(); }
    } const resume{F.Watchdog};
    body();
}

QVariantList TBridge::list(const QJSValue& args) const
{
    QVariantList values;
    const int count = args.property(QStringLiteral("length")).toInt();
    values.reserve(count);
    for (int i = 0; i < count; ++i) {
        values << F.fromScript(args.property(quint32(i)));
    }
    return values;
}

QJSValue TBridge::answerList(const QVariant& result, const QVariantList& args, bool changed)
{
    QJSValue all = F.Engine.newArray(changed ? uint(args.size() + 1) : 1);
    all.setProperty(0, F.toScript(result));
    for (int i = 0; changed && i < args.size(); ++i) {
        all.setProperty(quint32(i + 1), F.toScript(args[i]));
    }
    return all;
}

namespace {

bool anyByReference(const script::TScriptParams& params)
{
    return std::any_of(params.begin(), params.end(), [](const auto& param) {
        return param.Var || param.Type == script::TScriptType::StringList;
    });
}

} // namespace

QJSValue TBridge::create(int index)
{
    return answer([&] {
        const auto found = std::find_if(F.Classes.begin(), F.Classes.end(), [&](const auto& each) {
            const auto& layers = each.second.Layers;
            return std::any_of(layers.begin(), layers.end(),
                               [&](const TCore::TLayer& layer) { return layer.Name == index; });
        });
        if (found == F.Classes.end()) {
            throw Exception(QStringLiteral("The class is not registered any more"));
        }
        const auto& made = found->second.Layers.back().Class;
        if (!made.Create) {
            throw EConvertError(made.Name() + " is not made by scripts");
        }
        QObject* object = nullptr;
        outside([&] { object = made.Create(nullptr); });
        F.adopt(object);
        return F.wrapperOf(object);
    });
}

QJSValue TBridge::createRecord(int handle)
{
    return answer([&] {
        const auto found = F.Records.find(handle);
        if (found == F.Records.end()) {
            throw Exception(QStringLiteral("The record is not registered any more"));
        }
        return F.toScript(found->second.Create());
    });
}

QJSValue TBridge::call(int id, int method, const QJSValue& args)
{
    return answer([&] {
        const auto found = F.Methods.find(method);
        if (found == F.Methods.end()) {
            throw Exception(QStringLiteral("The method is not registered any more"));
        }
        const script::TScriptMethod called = found->second.Method; // may be unregistered meanwhile
        QObject& object = F.objectOf(id);
        if (found->second.Owner->cast(&object) == nullptr) {
            throw EConvertError(QStringLiteral("%1 has no method '%2'").arg(nameOf(object), called.Name));
        }
        QVariantList values = list(args);
        QVariant result;
        outside([&] { result = called.Call(&object, values); });
        return F.closed() ? QJSValue() : answerList(result, values, anyByReference(called.Params));
    });
}

QJSValue TBridge::callProc(int handle, const QJSValue& args)
{
    return answer([&] {
        const auto found = F.Procs.find(handle);
        if (found == F.Procs.end()) {
            throw Exception(QStringLiteral("The procedure is not registered any more"));
        }
        const script::TScriptProc called = found->second;
        QVariantList values = list(args);
        QVariant result;
        outside([&] { result = called.Call(nullptr, values); });
        if (F.closed()) {
            return QJSValue();
        }
        F.adoptIfNobodys(result);
        return answerList(result, values, anyByReference(called.Params));
    });
}

QJSValue TBridge::read(int id, const QString& name)
{
    return answer([&] {
        QObject& object = F.objectOf(id);
        QVariant value;
        if (const script::TScriptProperty* const own = F.findProperty(object, name)) {
            const script::TScriptCall get = own->Read;
            QVariantList none;
            outside([&] { value = get(&object, none); });
            return F.toScript(value);
        }
        const QMetaProperty property = published(object, name);
        if (script::FindEventType(property.metaType()) != nullptr) {
            return F.assigned(id, name);
        }
        outside([&] { value = property.read(&object); });
        return F.toScript(value);
    });
}

void TBridge::write(int id, const QString& name, const QJSValue& value)
{
    answer([&] {
        QObject& object = F.objectOf(id);
        const QVariant written = F.fromScript(value);
        if (const script::TScriptProperty* const own = F.findProperty(object, name)) {
            if (!own->Write) {
                refuseWriting(object, name);
            }
            const script::TScriptCall set = own->Write;
            QVariantList args{written};
            outside([&] { set(&object, args); });
            return QJSValue();
        }
        const QMetaProperty property = published(object, name);
        if (!property.isWritable()) {
            refuseWriting(object, name);
        }
        if (const auto* const event = script::FindEventType(property.metaType())) {
            if (written.isValid() && written.typeId() != QMetaType::Nullptr) {
                throw EConvertError(
                    QStringLiteral("%1.%2 takes a function or null").arg(nameOf(object), name));
            }
            F.Objects.at(id).Handlers.erase(name);
            outside([&] { property.write(&object, event->Make({})); });
            return QJSValue();
        }
        QVariant converted;
        try {
            converted = toProperty(written, property.metaType());
        } catch (const EConvertError& error) {
            throw EConvertError(QStringLiteral("%1.%2: %3").arg(nameOf(object), name, error.message()));
        }
        outside([&] { property.write(&object, converted); });
        return QJSValue();
    });
}

void TBridge::assign(int id, const QString& name, const QJSValue& function, const QString& where)
{
    answer([&] {
        QObject& object = F.objectOf(id);
        const auto* const own = F.findProperty(object, name);
        const QMetaProperty property = own == nullptr ? published(object, name) : QMetaProperty();
        if (!property.isValid() || script::FindEventType(property.metaType()) == nullptr) {
            throw EConvertError(
                QStringLiteral("%1.%2 is no event: it takes no function").arg(nameOf(object), name));
        }
        outside([&] { F.assign(object, property, function, where); });
        return QJSValue();
    });
}

QJSValue TBridge::readItem(int id, const QString& name, int index)
{
    return answer([&] {
        QObject& object = F.objectOf(id);
        const auto* const own = F.findProperty(object, name);
        if (own == nullptr) {
            throw EConvertError(QStringLiteral("%1 has no property '%2'").arg(nameOf(object), name));
        }
        const script::TScriptCall get = own->Read;
        QVariantList args{index};
        QVariant value;
        outside([&] { value = get(&object, args); });
        return F.toScript(value);
    });
}

void TBridge::writeItem(int id, const QString& name, int index, const QJSValue& value)
{
    answer([&] {
        QObject& object = F.objectOf(id);
        const auto* const own = F.findProperty(object, name);
        if (own == nullptr || !own->Write) {
            refuseWriting(object, name);
        }
        const script::TScriptCall set = own->Write;
        QVariantList args{index, F.fromScript(value)};
        outside([&] { set(&object, args); });
        return QJSValue();
    });
}

QJSValue TBridge::readField(const QJSValue& holder, const QString& name)
{
    return answer([&] { return F.toScript(recordIn(holder).Value(name)); });
}

void TBridge::writeField(const QJSValue& holder, const QString& name, const QJSValue& value)
{
    answer([&] {
        recordIn(holder).SetValue(name, F.fromScript(value));
        return QJSValue();
    });
}

QJSValue TBridge::callAutomation(const QJSValue& holder, const QString& name, const QJSValue& args,
                                 const QJSValue& kinds)
{
    namespace automation = platform::automation;
    return answer([&] {
        const TObjectPtr object = automationIn(holder);
        QVariantList values = list(args);
        automation::TArguments arguments;
        for (int i = 0; i < values.size(); ++i) {
            const bool byReference = kinds.property(quint32(i)).toString() == QLatin1String("reference");
            arguments.emplace_back(toAutomation(values[i]), byReference);
        }
        automation::TValue result;
        outside([&] { result = object->call(name.toStdU16String(), arguments, automation::kLongestCall); });
        if (F.closed()) {
            return QJSValue();
        }
        for (int i = 0; i < values.size(); ++i) {
            values[i] = fromAutomation(arguments[std::size_t(i)].value);
        }
        return answerList(fromAutomation(result), values, true);
    });
}

QJSValue TBridge::getAutomation(const QJSValue& holder, const QString& name)
{
    return answer([&] {
        const TObjectPtr object = automationIn(holder);
        QVariant value;
        outside([&] { value = fromAutomation(object->get(name.toStdU16String())); });
        return F.toScript(value);
    });
}

void TBridge::setAutomation(const QJSValue& holder, const QString& name, const QJSValue& value)
{
    answer([&] {
        const TObjectPtr object = automationIn(holder);
        const auto put = toAutomation(F.fromScript(value));
        outside([&] { object->put(name.toStdU16String(), put); });
        return QJSValue();
    });
}

void TBridge::print(const QString& text)
{
    answer([&] {
        outside([&] { F.print(text); });
        return QJSValue();
    });
}

} // namespace tnv5::js
