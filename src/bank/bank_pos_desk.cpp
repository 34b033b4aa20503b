#include "tnv5/bank/bank_pos_desk.h"

#include "tnv5/bank/bank_pos_back_end.h"
#include "tnv5/bank/bank_pos_texts.h"
#include "tnv5/common/convert.h"
#include "tnv5/platform/clock.h"

namespace tnv5::bank {

using platform::automation::EOleError;
using platform::automation::TArguments;
using platform::automation::TAutomationObject;
using platform::automation::TObjectPtr;
using platform::automation::TValue;

namespace {

template <class Convert>
auto converted(Convert&& convert)
{
    try {
        return convert();
    } catch (const EOleError& error) {
        throw TLibraryFailure{QString::fromStdU16String(error.message())};
    }
}

} // namespace

template <class Body>
auto TPosDesk::library(Body&& body)
{
    const TObjectPtr object = pos.EcrInst; // the component may go during the call
    if (!object) {
        throw TLibraryFailure{};
    }
    TValue result;
    pos.Attempt([&] { result = body(*object); },
                [](const QString& message) { throw TLibraryFailure{message}; });
    return result;
}

TValue TPosDesk::call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds limit)
{
    return library([&](TAutomationObject& object) { return object.call(name, arguments, limit); });
}

int TPosDesk::number(std::u16string_view name, TArguments&& arguments)
{
    return toNumber(call(name, arguments));
}

QString TPosDesk::text(std::u16string_view name, TArguments&& arguments)
{
    return toText(call(name, arguments));
}

bool TPosDesk::truth(std::u16string_view name, TArguments&& arguments)
{
    return toTruth(call(name, arguments));
}

void TPosDesk::put(std::u16string_view name, const TValue& value)
{
    library([&](TAutomationObject& object) { return object.put(name, value), TValue(); });
}

TValue TPosDesk::constant(std::u16string_view name)
{
    return library([&](TAutomationObject& object) { return object.constant(name); });
}

bool TPosDesk::equals(int response, std::u16string_view constantName)
{
    return response == toNumber(constant(constantName));
}

int TPosDesk::toNumber(const TValue& value)
{
    return converted([&] { return value.toInt(); });
}

QString TPosDesk::toText(const TValue& value)
{
    return QString::fromStdU16String(converted([&] { return value.toText(); }));
}

bool TPosDesk::toTruth(const TValue& value)
{
    return converted([&] { return value.toBool(); });
}

void TPosDesk::log(const QString& text)
{
    pos.Fire(pos.FLogEvent, text);
}

void TPosDesk::status(int code, const QString& text)
{
    pos.FLastStatus = code;
    pos.FLastStatusMsg = text;
    pos.Fire(pos.FStatusEvent, code, text);
}

void TPosDesk::error(int code, const QString& text)
{
    pos.AXErrorCode = code;
    pos.FLastErrorMsg = text;
    pos.Fire(pos.FErrorEvent, code, text);
}

void TPosDesk::letMessagesRun()
{
    pos.CallOut([] { platform::TClock::current().waitForMessages(); });
}

bool TPosDesk::wait()
{
    log(texts::kWaitLoop);
    const TPosBackEnd* const backEnd = pos.EcrInst ? backEndOf(pos.FPosType) : nullptr;
    return backEnd != nullptr && backEnd->waitResponse(*this);
}

bool TPosDesk::tell(bool done, const QString& ifDone, const QString& ifNot)
{
    log(done ? ifDone : ifNot);
    return done;
}

int codeOf(const QString& text)
{
    try {
        return common::StrToInt(text);
    } catch (const platform::EConvertError&) {
        return -1;
    }
}

} // namespace tnv5::bank
