#include "tnv5/testing/memory_library.h"

namespace tnv5::testkit {

using platform::automation::EOleError;
using platform::automation::TArguments;
using platform::automation::TValue;

namespace {

TValue valueIn(const std::map<std::u16string, TValue>& values, const std::u16string& name)
{
    const auto found = values.find(name);
    if (found == values.end()) {
        throw EOleError(u"Unknown name: " + name);
    }
    return found->second;
}

} // namespace

void TMemoryLibrary::raiseEvent(const std::u16string& name, const TArguments& arguments) const
{
    if (const auto handler = FHandler) {
        handler(name, arguments);
    }
}

TValue TMemoryLibrary::call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds limit)
{
    FLastLimit = limit;
    const auto handler = OnCall;
    return handler ? handler(std::u16string(name), arguments) : TValue();
}

TValue TMemoryLibrary::get(std::u16string_view name)
{
    const std::u16string key(name);
    if (const auto handler = OnGet) {
        handler(key);
    }
    return valueIn(Properties, key);
}

void TMemoryLibrary::put(std::u16string_view name, const TValue& value)
{
    const std::u16string key(name);
    if (const auto handler = OnPut) {
        handler(key, value);
    }
    Properties[key] = value;
}

TValue TMemoryLibrary::constant(std::u16string_view name)
{
    return valueIn(Constants, std::u16string(name));
}

void TMemoryLibrary::setEventHandler(platform::automation::TEventHandler handler)
{
    if (const auto listen = OnListen) {
        listen(bool(handler));
    }
    FHandler = std::move(handler);
}

} // namespace tnv5::testkit
