#include "turnstile_fixture.h"

namespace tnv5::tests {

QString read(const QString& line)
{
    return QStringLiteral("log %Считано с порта% ") + line;
}

QString loggedSend(const QString& command)
{
    return QStringLiteral("log %Отправлено на порт% ") + command;
}

QString come(const QString& device, const QString& card, const QString& status)
{
    return QStringLiteral("status COME %1 %2 %3 %3").arg(device, card, status);
}

QString heard(const QString& device, const QString& text)
{
    return come(device, QStringLiteral("NOCARDNUMBER"), text);
}

QString looked(const QString& device, const QString& card, const QString& result)
{
    return QStringLiteral("status CHECK %1 %2 R %3").arg(device, card, result);
}

QString stack(const QString& device, const QString& card, const QString& status)
{
    return QStringLiteral("status STACK %1 %2 %3 %3").arg(device, card, status);
}

QString check(const QString& device, const QString& card, const QString& status, int mode)
{
    return QStringLiteral("check %1 %2 %3 mode %4 preset -1").arg(device, card, status).arg(mode);
}

TTurnstileFixture::TTurnstileFixture()
{
    gate->SetDeviceList({"01A", "01D", "02A"});
    gate->SetComport(port.get());
    attach();
}

void TTurnstileFixture::attach()
{
    trace.attach(*gate);
    gate->SetOnCheckSQL(Host.handler(trace, *gate));
}

turnstile::PRFidInfo TTurnstileFixture::makePass(const QString& device, const QString& card,
                                                 const QString& status)
{
    const turnstile::PRFidInfo pass = gate->StackItem(gate->p_hw_FindDeviceByRelay(device, card));
    pass->Status = status;
    return pass;
}

turnstile::PRFidInfo TTurnstileFixture::openPass(const QString& device)
{
    Answers[0] = 1;
    inject(u'$' + device + "R77");
    const turnstile::PRFidInfo pass = gate->StackItem(gate->p_hw_FindDevice(device));
    if (pass->Status == "NEW") { // the timer was running already: no pass at once
        clock.advance(100);
    }
    inject(u'#' + device + "Relay 1");
    trace.take();
    return pass;
}

QString TTurnstileFixture::statusOf(int index) const
{
    const turnstile::PRFidInfo pass = gate->StackItem(index);
    return pass ? pass->Status : QStringLiteral("no pass");
}

} // namespace tnv5::tests
