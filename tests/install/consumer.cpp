// Built against the installed package: the smallest host that tests its card decision.

#include <cstdio>
#include <tnv5/coffee/qr_text.h>
#include <tnv5/testing/manual_clock.h>
#include <tnv5/testing/memory_port.h>
#include <tnv5/turnstile/turnstile_device.h>

using namespace tnv5;

int main()
{
    testkit::TManualClock clock;
    testkit::TMemoryPort port;
    turnstile::TTurnStylerDevice gate;
    gate.SetComport(&port);
    gate.SetOnCheckSQL([](turnstile::TComponent*, const QVariant&, const QVariant& card, const QVariant&,
                          QImage&, const QVariant&,
                          QVariant& result) { result = card.toString() == "12345678" ? 1 : 0; });
    port.Open();
    port.feed("$01AR12345678\r");
    const bool opened = port.takeWritten() == "$01A10366\r";
    std::puts(opened ? "installed package: the gate opens" : "installed package: the gate stays shut");
    const bool coffee =
        coffee::_qrcodestr(1, 2, 3, 250, 1, QStringLiteral("2b7e151628aed2a6abf7158809cf4f3c")) ==
        "O45931B4A9A54D107AFCD2FC67ED244D9S";
    std::puts(coffee ? "installed package: the coffee machine gets its text"
                     : "installed package: no coffee");
    return opened && coffee ? 0 : 1;
}
