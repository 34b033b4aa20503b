#pragma once

#include "tnv5/platform/errors.h"
#include "tnv5/script/convert.h"

#include <tuple>

/// Rows of the bindings' tables: what a script calls, made from what it calls in C++. Parameters and results
/// are those of the C++ function; a row says no more than its name.
///
///     scriptMethod<TDeviceConnector, &TDeviceConnector::SendCommand>("SendCommand")
///     scriptMethod<TBankPOS>("CashAdvance", [](TBankPOS& pos, int Amount, int Discount) { ... })
namespace tnv5::script {

/// Result and parameters of a member function, of a function, and of what has one operator ().
template <class F>
struct TSignatureOf : TSignatureOf<decltype(&F::operator())>
{
};
template <class R, class... P>
struct TSignatureOf<R (*)(P...)>
{
    using TResult = R;
    using TParams = std::tuple<P...>;
};
template <class R, class C, class... P>
struct TSignatureOf<R (C::*)(P...)> : TSignatureOf<R (*)(P...)>
{
};
template <class R, class C, class... P>
struct TSignatureOf<R (C::*)(P...) const> : TSignatureOf<R (*)(P...)>
{
};

void checkCount(const QVariantList& args, std::size_t count);

template <class Param>
using TValueOf = TScriptValue<std::remove_cvref_t<Param>>;

template <class Param, class Value>
void writeBack([[maybe_unused]] QVariantList& args, [[maybe_unused]] std::size_t index,
               [[maybe_unused]] const Value& value)
{
    if constexpr (isReference<Param>) {
        args[qsizetype(index)] = TValueOf<Param>::to(value);
    }
}

/// Converts all arguments from left to right, calls, and writes back those by reference.
template <class Result, class... Params, std::size_t... I, class Body>
QVariant callWith(std::tuple<Params...>* /*signature*/, std::index_sequence<I...> /*all*/, QVariantList& args,
                  const Body& body)
{
    checkCount(args, sizeof...(Params));
    std::tuple<std::remove_cvref_t<Params>...> values{TValueOf<Params>::from(args.at(qsizetype(I)))...};
    QVariant result;
    if constexpr (std::is_void_v<Result>) {
        body(static_cast<Params>(std::get<I>(values))...);
    } else {
        result = TValueOf<Result>::to(body(static_cast<Params>(std::get<I>(values))...));
    }
    (writeBack<Params>(args, I, std::get<I>(values)), ...);
    return result;
}

template <class Result, class... Params, class Body>
QVariant callWith(std::tuple<Params...>* signature, QVariantList& args, const Body& body)
{
    return callWith<Result>(signature, std::index_sequence_for<Params...>{}, args, body);
}

template <class... Params>
TScriptParams scriptParams(std::tuple<Params...>* /*signature*/)
{
    return {scriptParam<Params>()...};
}

template <class Owner>
Owner& selfAs(QObject* self)
{
    auto* const owner = qobject_cast<Owner*>(self);
    if (owner == nullptr) {
        throw platform::EConvertError("This is not an object of the class " +
                                      TScriptClass{&Owner::staticMetaObject, {}}.Name());
    }
    return *owner;
}

/// A member function of a class, or of a base of it.
template <class Owner, auto Method>
TScriptMethod scriptMethod(const char* name)
{
    using TSignature = TSignatureOf<decltype(Method)>;
    using TParams = typename TSignature::TParams;
    using TResult = typename TSignature::TResult;
    return {QString::fromLatin1(name), scriptParams(static_cast<TParams*>(nullptr)),
            TScriptValue<std::remove_cvref_t<TResult>>::Type, [](QObject* self, QVariantList& args) {
                return callWith<TResult>(static_cast<TParams*>(nullptr), args,
                                         [&]<class... P>(P&&... params) -> TResult {
                                             return (selfAs<Owner>(self).*Method)(std::forward<P>(params)...);
                                         });
            }};
}

/// A method that is not quite a member function: its first parameter is the object.
template <class Owner, class Result, class... Params>
TScriptMethod scriptMethod(const char* name, Result (*function)(Owner&, Params...))
{
    using TParams = std::tuple<Params...>;
    return {QString::fromLatin1(name), scriptParams(static_cast<TParams*>(nullptr)),
            TScriptValue<std::remove_cvref_t<Result>>::Type, [function](QObject* self, QVariantList& args) {
                return callWith<Result>(static_cast<TParams*>(nullptr), args,
                                        [&]<class... P>(P&&... params) -> Result {
                                            return function(selfAs<Owner>(self), std::forward<P>(params)...);
                                        });
            }};
}

/// A procedure of no object.
template <class Result, class... Params>
TScriptProc scriptProc(const char* name, Result (*function)(Params...))
{
    using TParams = std::tuple<Params...>;
    return {QString::fromLatin1(name), scriptParams(static_cast<TParams*>(nullptr)),
            TScriptValue<std::remove_cvref_t<Result>>::Type,
            [function](QObject* /*self*/, QVariantList& args) {
                return callWith<Result>(static_cast<TParams*>(nullptr), args,
                                        [&]<class... P>(P&&... params) -> Result {
                                            return function(std::forward<P>(params)...);
                                        });
            }};
}

/// The same for a function object, such as a lambda with what it needs of the host.
template <class Body>
requires requires
{
    &Body::operator();
}
TScriptProc scriptProc(const char* name, Body body)
{
    using TSignature = TSignatureOf<Body>;
    using TParams = typename TSignature::TParams;
    using TResult = typename TSignature::TResult;
    return {QString::fromLatin1(name), scriptParams(static_cast<TParams*>(nullptr)),
            TScriptValue<std::remove_cvref_t<TResult>>::Type,
            [body = std::move(body)](QObject* /*self*/, QVariantList& args) {
                return callWith<TResult>(static_cast<TParams*>(nullptr), args, body);
            }};
}

/// A property with a function that reads it and one that writes it; an indexed one has an index before the
/// value.
template <class Owner, auto Read, auto Write>
TScriptProperty scriptProperty(const char* name)
{
    const TScriptMethod read = scriptMethod<Owner, Read>(name);
    return {read.Name, read.Result, false, read.Call, scriptMethod<Owner, Write>(name).Call};
}
template <class Owner, auto Read, auto Write>
TScriptProperty scriptIndexedProperty(const char* name)
{
    TScriptProperty property = scriptProperty<Owner, Read, Write>(name);
    property.Indexed = true;
    return property;
}

/// A class that scripts make with an owner, or none.
template <class Class>
TScriptClass scriptClass()
{
    return {&Class::staticMetaObject, [](QObject* owner) -> QObject* { return new Class(owner); }};
}

/// Parameter types of an event of C++.
template <class Event>
TScriptEvent scriptEvent(const char* name)
{
    using TParams = typename TSignatureOf<Event>::TParams;
    return {QString::fromLatin1(name), scriptParams(static_cast<TParams*>(nullptr))};
}

} // namespace tnv5::script
