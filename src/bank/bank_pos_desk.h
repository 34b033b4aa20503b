#pragma once

#include "tnv5/bank/bank_pos.h"

namespace tnv5::bank {

/// A call of the library that failed, with the library's text; ends the operation. Not an exception of the
/// module's, so that it is not mistaken for one that a handler of the host's raises.
struct TLibraryFailure
{
    QString message;
};

/// What a back-end works at: the component with its settings and results, its library, its host's ear.
/// Whatever calls the host or the library throws `TDestroyed` when the component is gone afterwards.
class TPosDesk
{
public:
    using TValue = platform::automation::TValue;
    using TArguments = platform::automation::TArguments;

    explicit TPosDesk(TBankPOS& APos) : pos(APos) {}

    TBankPOS& pos;

    // ---- the library; all throw TLibraryFailure, without a text when there is no object

    /// Calls a method; arguments by reference have their new values afterwards.
    TValue call(std::u16string_view name, TArguments& arguments,
                std::chrono::milliseconds limit = platform::automation::kLongestCall);
    TValue call(std::u16string_view name, TArguments&& arguments = {}) { return call(name, arguments); }
    int number(std::u16string_view name, TArguments&& arguments = {});
    QString text(std::u16string_view name, TArguments&& arguments = {});
    bool truth(std::u16string_view name, TArguments&& arguments = {});
    void put(std::u16string_view name, const TValue& value);
    /// A named constant.
    TValue constant(std::u16string_view name);
    bool equals(int response, std::u16string_view constantName);

    // what a library gave, as what is wanted of it
    static int toNumber(const TValue& value);
    static QString toText(const TValue& value);
    static bool toTruth(const TValue& value);

    // ---- the host

    void log(const QString& text);
    void status(int code, const QString& text);
    void error(int code, const QString& text);
    void letMessagesRun();

    // ---- what several back-ends do

    /// `_WaitResponse`, but for what becomes of a failing call.
    bool wait();
    /// Logs one of two texts; gives the test's result.
    bool tell(bool done, const QString& ifDone, const QString& ifNot);

private:
    template <class Body>
    auto library(Body&& body);
};

/// A text's number; -1 when it is none.
int codeOf(const QString& text);

/// A text for a library.
inline std::u16string wide(const QString& text)
{
    return text.toStdU16String();
}

} // namespace tnv5::bank
