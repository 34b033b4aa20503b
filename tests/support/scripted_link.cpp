#include "support/scripted_link.h"

namespace tnv5::tests {

QString commanded(const QString& command)
{
    return QStringLiteral("send ") + command;
}

QString TTestLink::SendCommand(const QString& AMess)
{
    const QString code = AMess.left(2);
    const auto failure = Failures.find(code);
    const auto check = Checks.find(code);
    const QString raised = failure == Failures.end() ? QString() : failure->second;
    const QString result = check == Checks.end() ? QString() : check->second;
    FTrace.add(commanded(AMess)); // the link may be gone after this
    if (!raised.isEmpty()) {
        throw platform::EComPort(raised);
    }
    return result;
}

} // namespace tnv5::tests
