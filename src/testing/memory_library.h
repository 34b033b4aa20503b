#pragma once

#include "tnv5/platform/automation/automation.h"

#include <functional>
#include <map>
#include <string>

namespace tnv5::testkit {

/// An automation object in memory, for tests of what speaks to a library. Calls go to `OnCall`, properties
/// and constants are kept.
///
///     const auto library = std::make_shared<TMemoryLibrary>();
///     library->OnCall = [](const std::u16string& name, platform::automation::TArguments&) { return 0; };
///     const platform::automation::TRegisteredClass ours(u"CardPay.PosApi", [=] { return library; });
class TMemoryLibrary final : public platform::automation::TAutomationObject
{
public:
    using TValue = platform::automation::TValue;
    using TArguments = platform::automation::TArguments;

    /// A call; it may change arguments by reference and raise. Without it every call gives an empty value.
    std::function<TValue(const std::u16string& name, TArguments& arguments)> OnCall;
    /// A property was read or is about to be written; either may raise.
    std::function<void(const std::u16string& name)> OnGet;
    std::function<void(const std::u16string& name, const TValue& value)> OnPut;
    /// Called when somebody wants events, or no more; may raise.
    std::function<void(bool wanted)> OnListen;

    std::map<std::u16string, TValue> Properties;
    std::map<std::u16string, TValue> Constants;

    /// An event of the object's.
    void raiseEvent(const std::u16string& name, const TArguments& arguments) const;
    bool listenedTo() const { return bool(FHandler); }
    /// How long the last call was allowed to take.
    std::chrono::milliseconds lastLimit() const { return FLastLimit; }

    TValue call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds limit) override;
    TValue get(std::u16string_view name) override;
    void put(std::u16string_view name, const TValue& value) override;
    TValue constant(std::u16string_view name) override;
    void setEventHandler(platform::automation::TEventHandler handler) override;

private:
    platform::automation::TEventHandler FHandler;
    std::chrono::milliseconds FLastLimit{};
};

} // namespace tnv5::testkit
