#include "tnv5/js/js_core.h"

#include "tnv5/js/js_bridge.h"
#include "tnv5/js/js_values.h"
#include "tnv5/js/prelude.h"
#include "tnv5/platform/automation/automation.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/script/convert.h"

#include <QImage>
#include <QMetaProperty>
#include <QRegularExpression>
#include <QUrl>
#include <cmath>

namespace tnv5::js {

using platform::Exception;
using platform::automation::TObjectPtr;

namespace {

constexpr int kShownCalls = 20; // of a stack
constexpr int kHolders = 200;   // until those that are forgotten are looked for

struct TPlace
{
    QString file;
    int line = 0;
    QString stack;
};

/// The script's own calls of a stack, and where the innermost one is.
TPlace placeIn(const QString& stack)
{
    TPlace place;
    QStringList shown;
    for (const QString& call : stack.split(u'\n', Qt::SkipEmptyParts)) {
        const qsizetype at = call.lastIndexOf(u'@');
        const qsizetype colon = call.lastIndexOf(u':');
        if (call.contains(QLatin1String(kPreludeFile)) || at < 0 || colon < at) {
            continue;
        }
        QString file = call.mid(at + 1, colon - at - 1);
        if (file.startsWith(QLatin1String("file:"))) {
            file = file.startsWith(QLatin1String("file:///")) ? QUrl(file).toLocalFile() : file.mid(5);
        }
        const QString function = at == 0 || call[0] == u'%' ? QStringLiteral("script") : call.left(at);
        if (shown.isEmpty()) {
            place.file = file;
            place.line = call.mid(colon + 1).toInt();
        }
        if (shown.size() == kShownCalls) {
            shown << QStringLiteral("...");
            break;
        }
        shown << function + u'@' + file + call.mid(colon);
    }
    place.stack = shown.join(u'\n');
    return place;
}

/// A call of a method that is not there: the interpreter tells it behind the wrapper's own error.
QString tidied(const QString& text)
{
    static const QRegularExpression kTwice(QStringLiteral(
        "^TypeError: Property '.*' of object (TypeError: .* has no property '.*') is not a function$"));
    const QRegularExpressionMatch match = kTwice.match(text);
    return match.hasMatch() ? match.captured(1) : text;
}

/// @param otherwise a stack for an error that has none of its own
TScriptFailure failureAt(const QString& text, const QString& stack, const QString& otherwise = {})
{
    TPlace place = placeIn(stack);
    if (place.file.isEmpty()) {
        place = placeIn(otherwise);
    }
    return {tidied(text), place.file, place.line, place.stack};
}

} // namespace

THandler::THandler(const PCore& core, QJSValue function, const script::TEventType& type, QString where)
    : FCore(core), FFunction(core->newHandle()), FType(type), FWhere(std::move(where))
{
    core->Functions.emplace(FFunction, std::move(function));
}

THandler::~THandler()
{
    if (const PCore core = FCore.lock()) {
        core->Functions.erase(FFunction);
    }
}

void THandler::run(QVariantList& args) const
{
    if (const PCore core = FCore.lock(); core && !core->closed()) {
        core->runHandler(FFunction, FType, FWhere, args);
    }
}

QJSValue THandler::function() const
{
    const PCore core = FCore.lock();
    return core ? core->Functions.at(FFunction) : QJSValue(QJSValue::NullValue);
}

/// A script or handler under way.
class TCore::TRun
{
public:
    explicit TRun(TCore& core) : FCore(core)
    {
        if (FCore.FNesting >= TJsEngine::kMaxNesting) {
            FCore.fail({QStringLiteral("RangeError: %1 handlers are under way, one inside the other")
                            .arg(FCore.FNesting),
                        {},
                        0,
                        {}});
        }
        ++FCore.FNesting;
        FCore.Watchdog.begin(FCore.TimeBudget, FCore.MemoryBudget);
    }
    ~TRun() { end(); }
    TRun(const TRun&) = delete;
    TRun& operator=(const TRun&) = delete;

    /// It has ended. @return how
    TWatchdog::TEnd end()
    {
        if (!FEnded) {
            FEnded = true;
            --FCore.FNesting;
            FEnd = FCore.Watchdog.end();
            if (FCore.closed()) {
                FCore.Engine.setInterrupted(FCore.FNesting > 0); // those around it end, too
            }
        }
        return FEnd;
    }

private:
    TCore& FCore;
    bool FEnded = false;
    TWatchdog::TEnd FEnd = TWatchdog::TEnd::Normal;
};

TCore::TCore(TJsEngine& owner)
    : Bridge(std::make_unique<TBridge>(*this)),
      Watchdog([this](bool interrupted) { Engine.setInterrupted(interrupted || closed()); }),
      FOwner(&owner)
{
    QJSEngine::setObjectOwnership(Bridge.get(), QJSEngine::CppOwnership);
    QJSValue prelude = Engine.evaluate(preludeText(), QString::fromLatin1(kPreludeFile));
    FPrelude = prelude.call({Engine.newQObject(Bridge.get()), Engine.globalObject()});
    if (FPrelude.isError()) {
        throw Exception(FPrelude.toString());
    }
    FInvoke = helper("invoke");
}

TCore::~TCore() = default;

void TCore::close()
{
    FOwner = nullptr;
    Engine.setInterrupted(FNesting > 0);
    while (!Components.empty()) {
        const QPointer<QObject> last = Components.back();
        Components.pop_back();
        delete last;
    }
}

QJSValue TCore::helper(const char* name) const
{
    return FPrelude.property(QString::fromLatin1(name));
}

QJSValue TCore::make(const char* name, const QJSValueList& args)
{
    const QJSValue made = helper(name).call(args);
    if (made.isError()) {
        throw Exception(made.toString());
    }
    return made;
}

// What is registered.

TJsEngine::THandle TCore::addName(const QString& name, const QJSValue& value, TJsEngine::THandle handle)
{
    FNames[name].push_back({handle, value});
    refresh(name);
    return handle;
}

void TCore::removeName(TJsEngine::THandle handle)
{
    for (auto& [name, all] : FNames) {
        if (std::erase_if(all, [&](const TName& each) { return each.handle == handle; }) > 0) {
            refresh(name);
            return;
        }
    }
}

void TCore::refresh(const QString& name)
{
    const auto& all = FNames[name];
    if (all.empty()) {
        make("remove", {name});
        FNames.erase(name);
    } else {
        make("define", {name, all.back().value});
    }
}

TCore::TClassInfo& TCore::classInfo(const QMetaObject* meta)
{
    if (const auto found = Classes.find(meta); found != Classes.end()) {
        return found->second;
    }
    const QJSValue parent =
        meta->superClass() == nullptr ? QJSValue(QJSValue::NullValue) : classInfo(meta->superClass()).Wrap;
    const QJSValue wrap = make("makeClass", {script::TScriptClass{meta, {}}.Name(), parent});
    return Classes.emplace(meta, TClassInfo{wrap, {}}).first->second;
}

void TCore::addClass(const script::TScriptClass& added)
{
    TClassInfo& info = classInfo(added.Meta);
    const int handle = newHandle();
    info.Layers.push_back({added, handle, {}, {}});
    addName(added.Name(), make("makeConstructor", {info.Wrap, handle}), handle);
}

void TCore::removeClass(const script::TScriptClass& removed)
{
    TClassInfo& info = classInfo(removed.Meta);
    if (info.Layers.empty()) {
        return;
    }
    removeName(info.Layers.back().Name);
    info.Layers.pop_back();
    std::erase_if(Methods, [&](const auto& each) { return each.second.Owner == removed.Meta; });
    make("clearClass", {info.Wrap});
    for (const TLayer& layer : info.Layers) {
        show(info, layer);
    }
}

TCore::TLayer& TCore::layerOf(const script::TScriptClass& owner)
{
    TClassInfo& info = classInfo(owner.Meta);
    if (info.Layers.empty()) {
        throw Exception(QStringLiteral("The class %1 is not registered").arg(owner.Name()));
    }
    return info.Layers.back();
}

void TCore::show(const TClassInfo& info, const TLayer& layer)
{
    for (const script::TScriptMethod& method : layer.Methods) {
        const int index = newHandle();
        Methods.emplace(index, TMember{layer.Class.Meta, method});
        make("addMethod", {info.Wrap, method.Name, index, kindsOf(method.Params)});
    }
    for (const script::TScriptProperty& property : layer.Properties) {
        if (property.Indexed) {
            make("addIndexed", {info.Wrap, property.Name});
        }
    }
}

const script::TScriptProperty* TCore::findProperty(const QObject& object, const QString& name) const
{
    for (const QMetaObject* meta = object.metaObject(); meta != nullptr; meta = meta->superClass()) {
        const auto found = Classes.find(meta);
        if (found == Classes.end()) {
            continue;
        }
        const auto& layers = found->second.Layers;
        for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) {
            for (const script::TScriptProperty& property : layer->Properties) {
                if (property.Name == name) {
                    return &property;
                }
            }
        }
    }
    return nullptr;
}

QJSValue TCore::kindsOf(const script::TScriptParams& params)
{
    QJSValue kinds = Engine.newArray(uint(params.size()));
    quint32 i = 0;
    for (const script::TScriptParam& param : params) {
        const bool isList = param.Type == script::TScriptType::StringList;
        const char* const kind = isList ? "list" : param.Var ? "reference" : "value";
        kinds.setProperty(i++, QString::fromLatin1(kind));
    }
    return kinds;
}

// Values.

QJSValue TCore::toScript(const QVariant& given)
{
    const QVariant value = script::withoutDates(given);
    const QMetaType type = value.metaType();
    if (type.flags().testFlag(QMetaType::PointerToQObject)) {
        return wrapperOf(qvariant_cast<QObject*>(value));
    }
    if (type.flags().testFlag(QMetaType::IsEnumeration)) {
        return value.toInt();
    }
    switch (type.id()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return QJSValue(QJSValue::NullValue);
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
        return value.toInt();
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return value.toDouble();
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QByteArray:
        return platform::fromWire(value.toByteArray());
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return listToScript(value.toList());
    case QMetaType::QVariantMap: {
        QJSValue object = Engine.newObject();
        const QVariantMap fields = value.toMap();
        for (auto field = fields.begin(); field != fields.end(); ++field) {
            object.setProperty(field.key(), toScript(field.value()));
        }
        return object;
    }
    default:
        break;
    }
    if (type == QMetaType::fromType<script::PRecordWrapper>()) {
        const auto record = value.value<script::PRecordWrapper>();
        return wrapHolder("wrapRecord", value,
                          {QStringLiteral("record"), Engine.toScriptValue(record->Fields())});
    }
    if (type == QMetaType::fromType<TObjectPtr>()) {
        return value.value<TObjectPtr>() ? wrapHolder("wrapAutomation", value)
                                         : QJSValue(QJSValue::NullValue);
    }
    if (type.id() == QMetaType::QImage && value.value<QImage>().isNull()) {
        return QJSValue(QJSValue::NullValue);
    }
    return wrapHolder("wrapOpaque", value);
}

QJSValue TCore::listToScript(const QVariantList& list)
{
    QJSValue array = Engine.newArray(uint(list.size()));
    for (qsizetype i = 0; i < list.size(); ++i) {
        array.setProperty(quint32(i), toScript(list[i]));
    }
    return array;
}

QJSValue TCore::wrapHolder(const char* wrapper, const QVariant& value, const QJSValueList& more)
{
    ++FNewHolders;
    return make(wrapper, QJSValueList{Engine.newQObject(new THolder(value))} + more);
}

/// The interpreter sees only how little memory a holder takes, not what hangs on it, such as a picture.
void TCore::collectHolders()
{
    if (FNesting == 0 && FNewHolders >= kHolders) {
        FNewHolders = 0;
        Engine.collectGarbage();
    }
}

QVariant TCore::fromScript(const QJSValue& value) const
{
    if (value.isBool()) {
        return value.toBool();
    }
    if (value.isNumber()) {
        const double number = value.toNumber();
        const bool isInteger = number == std::floor(number) && std::abs(number) <= 2'147'483'647;
        return isInteger ? QVariant(int(number)) : QVariant(number);
    }
    if (value.isString()) {
        return value.toString();
    }
    if (value.isArray()) {
        QVariantList list;
        const int count = value.property(QStringLiteral("length")).toInt();
        for (int i = 0; i < count; ++i) {
            list << fromScript(value.property(quint32(i)));
        }
        return list;
    }
    if (!value.isObject()) {
        return {};
    }
    const QJSValue id = value.property(QStringLiteral("id"));
    if (id.isNumber()) {
        return QVariant::fromValue(&objectOf(id.toInt()));
    }
    const auto* const holder = qobject_cast<THolder*>(value.property(QStringLiteral("holder")).toQObject());
    return holder == nullptr ? QVariant() : holder->Value;
}

QJSValue TCore::wrapperOf(QObject* object)
{
    if (object == nullptr) {
        return QJSValue(QJSValue::NullValue);
    }
    if (const auto known = FIds.constFind(object); known != FIds.constEnd()) {
        return Objects.at(*known).Wrapper;
    }
    const QMetaObject* const meta = object->metaObject();
    QStringList names;
    for (int i = QObject::staticMetaObject.propertyCount(); i < meta->propertyCount(); ++i) {
        names << QString::fromLatin1(meta->property(i).name());
    }
    const int id = ++FLastId;
    const QJSValue wrapper = make("wrapObject", {id, classInfo(meta).Wrap, Engine.toScriptValue(names)});
    Objects.emplace(id, TObject{object, wrapper, {}});
    FIds.insert(object, id);
    QObject::connect(object, &QObject::destroyed, &FContext, [this](QObject* gone) { forget(gone); });
    return wrapper;
}

void TCore::forget(QObject* object)
{
    Objects.erase(FIds.take(object));
    std::erase_if(Components, [](const QPointer<QObject>& each) { return each.isNull(); });
}

QObject& TCore::objectOf(int id) const
{
    const auto found = Objects.find(id);
    if (found == Objects.end() || found->second.Object.isNull()) {
        throw Exception(QStringLiteral("The object has been destroyed"));
    }
    return *found->second.Object;
}

void TCore::adopt(QObject* object)
{
    Components.emplace_back(object);
}

void TCore::adoptIfNobodys(const QVariant& value)
{
    if (!value.metaType().flags().testFlag(QMetaType::PointerToQObject)) {
        return;
    }
    auto* const object = qvariant_cast<QObject*>(value);
    if (object == nullptr || object->parent() != nullptr || FIds.contains(object)) {
        return;
    }
    const auto found = Classes.find(object->metaObject());
    if (found != Classes.end() && !found->second.Layers.empty() &&
        !found->second.Layers.back().Class.Create) {
        adopt(object);
    }
}

// Events.

void TCore::assign(QObject& object, const QMetaProperty& property, const QJSValue& function, QString where)
{
    const script::TEventType& type = *script::FindEventType(property.metaType());
    const auto handler = std::make_shared<THandler>(shared_from_this(), function, type, std::move(where));
    const QPointer<QObject> alive(&object);
    property.write(&object, type.Make([handler](QVariantList& args) { handler->run(args); }));
    if (alive) {
        Objects.at(FIds.value(&object)).Handlers[QString::fromLatin1(property.name())] = handler;
    }
}

QJSValue TCore::assigned(int id, const QString& property) const
{
    const auto& handlers = Objects.at(id).Handlers;
    const auto found = handlers.find(property);
    const auto handler = found == handlers.end() ? nullptr : found->second.lock();
    return handler ? handler->function() : QJSValue(QJSValue::NullValue);
}

void TCore::runHandler(int function, const script::TEventType& type, const QString& where, QVariantList& args)
{
    const PCore alive = shared_from_this();
    const QJSValue handler = Functions.at(function);
    QJSValue& references = FReferences[type.Type];
    if (references.isUndefined()) {
        references = Engine.newArray();
        quint32 count = 0;
        for (std::size_t i = 0; i < type.Params.size(); ++i) {
            if (type.Params[i].Var) {
                references.setProperty(count++, int(i));
            }
        }
    }
    collectHolders();
    const QJSValue given = listToScript(args);
    TRun run(*this);
    const QJSValue result = FInvoke.call({handler, given, references});
    const TWatchdog::TEnd end = run.end();
    if (closed()) {
        return;
    }
    if (end != TWatchdog::TEnd::Normal) {
        failInterrupted(end, where);
    }
    if (!result.isArray()) {
        const bool described = result.hasProperty(QStringLiteral("failed"));
        const QString stack = result.property(QStringLiteral("stack")).toString();
        const QString text =
            described ? result.property(QStringLiteral("text")).toString() : result.toString();
        fail(failureAt(text, stack, where));
    }
    quint32 count = 0;
    for (std::size_t i = 0; i < type.Params.size(); ++i) {
        if (type.Params[i].Var) {
            args[qsizetype(i)] = fromScript(result.property(count++));
        }
    }
}

QVariant TCore::evaluate(const QString& text, const QString& file)
{
    const PCore alive = shared_from_this();
    TRun run(*this);
    QStringList calls;
    const QJSValue result = Engine.evaluate(text, file, 1, &calls);
    const TWatchdog::TEnd end = run.end();
    if (closed()) {
        return {};
    }
    if (end != TWatchdog::TEnd::Normal) {
        failInterrupted(end, QStringLiteral("@%1:0").arg(file));
    }
    if (!calls.isEmpty()) {
        QString stack = result.property(QStringLiteral("stack")).toString();
        if (!result.isError()) { // thrown, but no error: "function:line:column:file"
            const QStringList parts = calls.first().split(u':');
            stack = QStringLiteral("@%1:%2").arg(file, parts.value(1));
        }
        fail(failureAt(result.toString(), stack));
    }
    if (result.isObject() && !result.isArray()) {
        return {};
    }
    try {
        return fromScript(result);
    } catch (const Exception&) { // a list of what only scripts have; the script itself has done its work
        return {};
    }
}

void TCore::failInterrupted(TWatchdog::TEnd why, const QString& where)
{
    const QString text =
        why == TWatchdog::TEnd::TooLong
            ? QStringLiteral("interrupted after %1 ms").arg(TimeBudget.count())
            : QStringLiteral("interrupted, it took more than %1 MB of memory").arg(MemoryBudget >> 20);
    fail(failureAt(text, where));
}

void TCore::fail(const TScriptFailure& failure)
{
    if (!closed() && FOwner->OnError) {
        const auto tell = FOwner->OnError; // it may be replaced meanwhile, or the engine destroyed
        platform::guarded([&] { tell(failure); });
    }
    throw EScriptError(failure);
}

void TCore::print(const QString& text) const
{
    if (!closed() && FOwner->OnPrint) {
        const auto tell = FOwner->OnPrint;
        tell(text);
    }
}

} // namespace tnv5::js
