#pragma once

#include "tnv5/platform/automation/value.h"

#include <chrono>
#include <functional>

namespace tnv5::platform::automation {

/// How long a call may take at the most, unless the caller knows better.
constexpr std::chrono::milliseconds kLongestCall{180'000};

/// An event of an object: its name and what comes with it.
using TEventHandler = std::function<void(std::u16string_view name, const TArguments& arguments)>;

/// An object that is spoken to by name, without anything known about it when the program is built.
///
///     const TObjectPtr terminal = CreateOleObject(u"ECRCommX.BPOS1Lib");
///     TArguments arguments{byRef(1250), byRef(0), byRef(1)};
///     terminal->call(u"Purchase", arguments, kLongestCall);
///     const int result = terminal->get(u"LastResult").toInt();
///
/// Everything is called on the main thread. What fails raises `EOleError` with the library's text.
class TAutomationObject
{
public:
    TAutomationObject() = default;
    virtual ~TAutomationObject() = default;
    TAutomationObject(const TAutomationObject&) = delete;
    TAutomationObject& operator=(const TAutomationObject&) = delete;

    /// Calls a method; arguments by reference have their new values afterwards. A name without arguments may
    /// be a property as well: libraries are not of one mind about which of the two a value is.
    /// @param limit how long the library itself may take; where the system has a limit of its own for a call,
    /// it is a little longer than this
    virtual TValue call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds limit) = 0;
    virtual TValue get(std::u16string_view name) = 0;
    virtual void put(std::u16string_view name, const TValue& value) = 0;

    /// A named constant of the library's, such as `RESP_CONFIRM`.
    virtual TValue constant(std::u16string_view name) { return get(name); }

    /// Who hears the object's events, one at a time; an empty handler ends it. An object without events takes
    /// it as well. A handler must not raise.
    virtual void setEventHandler(TEventHandler handler) = 0;
};

/// A way to come by objects. `create` gives none for a ProgID that it does not know, and says why; an object
/// that it knows and that fails to come into being raises `EOleError`.
class TAutomationProvider
{
public:
    virtual ~TAutomationProvider() = default;
    virtual TObjectPtr create(std::u16string_view progId, std::u16string& why) = 0;
};

/// The provider of the system: COM on Windows, D-Bus elsewhere.
TAutomationProvider& systemProvider();

/// Creates an object by its ProgID: the classes registered in this process are asked first, the last one
/// registered before the others, then the system.
/// @throws EOleError when nobody knows it, or what its creation raises
TObjectPtr CreateOleObject(std::u16string_view progId);

/// While one lives, objects of a ProgID are made in this process: by hosts that come with a library of their
/// own, by tests and by simulations.
///
///     const TRegisteredClass ours(u"CardPay.PosApi", [] { return std::make_shared<TOurTerminal>(); });
class TRegisteredClass
{
public:
    using TFactory = std::function<TObjectPtr()>;

    TRegisteredClass(std::u16string progId, TFactory factory);
    ~TRegisteredClass();
    TRegisteredClass(const TRegisteredClass&) = delete;
    TRegisteredClass& operator=(const TRegisteredClass&) = delete;
};

} // namespace tnv5::platform::automation
