#pragma once

#include "support/fixture.h"
#include "tnv5/bank/bank_pos.h"
#include "tnv5/platform/automation/dbus_provider.h"
#include "tnv5/testing/memory_library.h"

#include <deque>
#include <map>

namespace tnv5::tests {

using bank::TBankPOS;
using platform::automation::EOleError;
using platform::automation::TArgument;
using platform::automation::TArguments;
using platform::automation::TRegisteredClass;
using platform::automation::TValue;
using testkit::TMemoryLibrary;

/// What a call of the library gives: its result, then the new values of the arguments by reference.
struct TAnswer
{
    template <class Value>
    requires std::convertible_to<Value, TValue> TAnswer(Value&& AResult)
        : result(std::forward<Value>(AResult)) // NOLINT: a script reads as a list
    {
    }
    TAnswer(TValue AResult, std::vector<TValue> AOuts) : result(std::move(AResult)), outs(std::move(AOuts)) {}
    TValue result;
    std::vector<TValue> outs;
};

/// What the next calls of a method give; the last one is given for ever.
struct TScript
{
    TScript() = default;
    TScript(std::initializer_list<TAnswer> AAnswers) : answers(AAnswers) {}
    std::deque<TAnswer> answers;
};

/// The five libraries' names, by `PosType`.
inline const std::u16string kProgIds[] = {u"ECRCommX.ECRLibSgn", u"ECRCommX.BPOS1Lib", u"TAxECRClass98",
                                          u"BluePad50v2.Borica", u"CardPay.PosApi"};

/// Responses of back-end 4.
enum TResponse {
    rMessage = 1,
    rIdentifier = 2,
    rConfirm = 3,
    rDecline = 4,
    rTimeout = 5,
    rBreak = 6,
    rError = 7
};

/// One component whose library is in the test's hand. The trace has, beside the component's events, a line
/// for each call, "call PosPurchase(&1250, &0, \"1\")", each property written, "put PosIP = \"a\"", and each
/// turn of the message loop, "wait". Where a method of back-end 4 takes a constant, its name stands there.
struct TPosFixture : TFixture
{
    explicit TPosFixture(int type = 0, bool init = true);
    ~TPosFixture();

    void answer(const QString& method, const TScript& script) { FAnswers[method] = script.answers; }

    /// What the library raises in the next call of a method.
    std::map<QString, QString> raises;
    /// Inside a call, when its line stands in the trace.
    std::function<void(const QString& line)> OnCall;

    std::shared_ptr<TMemoryLibrary> library = std::make_shared<TMemoryLibrary>();
    std::unique_ptr<TBankPOS> pos = std::make_unique<TBankPOS>();

    /// Assigns all events.
    void attach();

private:
    TValue called(const std::u16string& name, TArguments& arguments);
    QString lineOf(const QString& name, const TArguments& arguments) const;

    std::map<QString, std::deque<TAnswer>> FAnswers;
    std::vector<std::unique_ptr<TRegisteredClass>> FClasses;
};

class TPosTest : public ::testing::Test
{
};

// Lines of a transcript.
QString error(int code, const QString& text);
QString status(int code, const QString& text);
QString call(const QString& what);
inline const QString kWait = QStringLiteral("wait");
inline const QString kWaitLoop = QStringLiteral("log Цикл очікування");
inline const QString kOle = QStringLiteral("Помилка OLE об'єкту. ");

/// The same list several times, or lists one behind the other.
QStringList times(int count, const QStringList& lines);

} // namespace tnv5::tests
