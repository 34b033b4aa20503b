#include "pos_fixture.h"

namespace tnv5::tests {

namespace {

const char* const kConstants[] = {
    "POS_SOFT_VER",           "POS_AMOUNT",           "POS_CURRENCY",         "POS_MERCHANT_ID",
    "POS_TRANS_STATUS",       "POS_DEBIT_AMOUNT",     "POS_DEBIT_NUMBER",     "POS_CREDIT_AMOUNT",
    "POS_CREDIT_NUMBER",      "POS_CANCELLED_NUMBER", "POS_CANCELLED_AMOUNT", "POS_REPORT",
    "POS_SERIAL_NUMBER",      "POS_LICENSE",          "POS_HOST_RECORD",      "ACTION_PAYMENT",
    "ACTION_XREPORT_SUMMARY", "ACTION_CLOSE_DAY",     "ACTION_POS_INFO",      "ACTION_HOST_ECHO_TEST",
    "ACTION_HOST_INFO"};
const std::pair<const char*, int> kResponses[] = {
    {"RESP_MESSAGE", rMessage}, {"RESP_IDENTIFIER", rIdentifier}, {"RESP_CONFIRM", rConfirm},
    {"RESP_DECLINE", rDecline}, {"RESP_TIMEOUT", rTimeout},       {"RESP_BREAK", rBreak},
    {"RESP_ERROR", rError}};

QString shown(const TArgument& argument)
{
    const QString text = QString::fromStdU16String(argument.value.toText());
    const QString quoted = argument.value.as<std::u16string>() != nullptr ? u'"' + text + u'"' : text;
    return (argument.byReference ? QStringLiteral("&") : QString()) + quoted;
}

} // namespace

TPosFixture::TPosFixture(int type, bool init)
{
    platform::automation::setAutomationBus("unix:path=/nonexistent/bus");
    for (const std::u16string& progId : kProgIds) {
        FClasses.push_back(std::make_unique<TRegisteredClass>(progId, [this, progId] {
            trace.add(QStringLiteral("create ") + QString::fromStdU16String(progId));
            return library;
        }));
    }
    int number = 100;
    for (const char* const name : kConstants) {
        library->Constants[QString::fromLatin1(name).toStdU16String()] = ++number;
    }
    for (const auto& [name, value] : kResponses) {
        library->Constants[QString::fromLatin1(name).toStdU16String()] = value;
    }
    library->OnCall = [this](const std::u16string& name, TArguments& arguments) {
        return called(name, arguments);
    };
    library->OnPut = [this](const std::u16string& name, const TValue& value) {
        const QString line = QStringLiteral("put %1 = %2").arg(QString::fromStdU16String(name), shown(value));
        trace.add(line);
        if (OnCall) {
            OnCall(line);
        }
    };
    clock.OnWait = [this] { trace.add(kWait); };
    attach();
    pos->SetPosType(type);
    pos->SetComPort(7);
    pos->SetComPortRate(9'600);
    if (init) {
        EXPECT_TRUE(pos->Init());
        trace.take();
    }
}

TPosFixture::~TPosFixture()
{
    trace.OnLine = {};
    OnCall = {};
    pos.reset();
    platform::automation::setAutomationBus({});
}

void TPosFixture::attach()
{
    trace.attach(*pos);
    pos->SetOnStatus(trace.handler(*pos, QStringLiteral("status")));
}

TValue TPosFixture::called(const std::u16string& name, TArguments& arguments)
{
    const QString method = QString::fromStdU16String(name);
    const QString line = lineOf(method, arguments);
    trace.add(line);
    if (OnCall) {
        const auto hook = OnCall;
        hook(line);
    }
    if (const auto found = raises.find(method); found != raises.end()) {
        const QString text = found->second;
        raises.erase(found);
        throw EOleError(text.toStdU16String());
    }
    auto& answers = FAnswers[method];
    if (answers.empty()) {
        return {};
    }
    const TAnswer now = answers.front();
    if (answers.size() > 1) {
        answers.pop_front();
    }
    std::size_t next = 0;
    for (TArgument& argument : arguments) {
        if (argument.byReference && next < now.outs.size()) {
            argument.value = now.outs[next++];
        }
    }
    return now.result;
}

QString TPosFixture::lineOf(const QString& name, const TArguments& arguments) const
{
    QStringList texts;
    for (const TArgument& argument : arguments) {
        texts << shown(argument);
    }
    const bool takesConstant = name == u"pos_get" || name == u"pos_set" || name == u"pos_send";
    for (const auto& [constant, value] : library->Constants) {
        if (takesConstant && value == arguments.at(0).value) {
            texts[0] = QString::fromStdU16String(constant);
        }
    }
    return QStringLiteral("call %1(%2)").arg(name, texts.join(QStringLiteral(", ")));
}

QString error(int code, const QString& text)
{
    return QStringLiteral("error %1 ").arg(code) + text;
}

QString status(int code, const QString& text)
{
    return QStringLiteral("status %1 ").arg(code) + text;
}

QString call(const QString& what)
{
    return QStringLiteral("call ") + what;
}

QStringList times(int count, const QStringList& lines)
{
    QStringList result;
    for (int i = 0; i < count; ++i) {
        result += lines;
    }
    return result;
}

} // namespace tnv5::tests
