#include "d24_fixture.h"

namespace tnv5::tests {

QString read(const QString& line)
{
    return QStringLiteral("log %Считано с порта*% ") + line;
}

QString loggedSend(const QString& command)
{
    return QStringLiteral("log %Отправлено на порт% ") + command;
}

QString report(const QString& name, const QString& who, const QString& card, const QString& status)
{
    return QStringLiteral("status ") + QStringList{name, who, card, status, status}.join(u'!');
}

QString come(const QString& who, const QString& card, const QString& status)
{
    return report("COME", who, card, status);
}

QString heard(const QString& who, const QString& text)
{
    return come(who, "NOCARDNUMBER", text);
}

QString looked(const QString& who, const QString& card, const QString& result)
{
    return QStringLiteral("status ") + QStringList{"CHECK", who, card, "RQ", result}.join(u'!');
}

QString stack(const QString& who, const QString& card, const QString& status)
{
    return report("STACK", who, card, status);
}

QString noted(const QString& who, const QString& status)
{
    return report("STACK", who, QString(), status);
}

QString check(const QString& who, const QString& card, const QString& status, int mode)
{
    return QStringLiteral("check %1!%2!%3 mode %4 preset -1").arg(who, card, status).arg(mode);
}

QString monitor(const QString& text)
{
    return QStringLiteral("monitor ") + text;
}

QString echoOf(const QString& statusLine)
{
    return monitor(QStringLiteral("STATUS!") + statusLine.mid(7) + u'&');
}

TD24Fixture::TD24Fixture()
{
    trace.Separator = u'!';
    gate->SetConnector(link.get());
    attach();
}

void TD24Fixture::attach()
{
    trace.attach(*gate);
    gate->SetOnCheckSQL(Host.handler(trace, *gate));
}

void TD24Fixture::inject(const QString& line)
{
    if (link) {
        link->GetCommand(line);
    }
}

d24::PRFidInfo TD24Fixture::makePass(const QString& who, const QString& card, const QString& status)
{
    const QStringList parts = who.split(u'!');
    const d24::PRFidInfo pass =
        gate->StackItem(gate->p_hw_FindDeviceByRelay(parts[0], parts[1], parts[2], card));
    pass->Status = status;
    return pass;
}

void TD24Fixture::startTicks()
{
    makePass(QStringLiteral("0!000T!T"), "0", "CLOSE");
    inject("x");
    trace.take();
}

QString TD24Fixture::statusOf(int index) const
{
    const d24::PRFidInfo pass = gate->StackItem(index);
    return pass ? pass->Status : QStringLiteral("no pass");
}

} // namespace tnv5::tests
