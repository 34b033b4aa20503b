#include "tnv5/d24/d24_command.h"

namespace tnv5::d24 {

namespace {

QString command(QStringView code, const TRFidInfo& pass)
{
    return code.toString() + pass.IP + u':' + pass.Device + pass.InfoMess;
}

} // namespace

TCommands commandsFor(const TRFidInfo& pass, bool allow)
{
    const QStringView code = allow ? u"GO" : u"PH";
    if (pass.DeviceType == u"G") {
        return {command(code, pass), command(u"SH", pass)};
    }
    if (pass.DeviceType == u"I") {
        return {QString(), command(u"SH", pass)};
    }
    if (pass.DeviceType == u"T") {
        return {command(code, pass), pass.InfoMess.isEmpty() ? QString() : command(u"SH", pass)};
    }
    return {};
}

QString alarmCommand(const QString& ip, const QString& device)
{
    return QStringLiteral("AL") + ip + u':' + device;
}

} // namespace tnv5::d24
