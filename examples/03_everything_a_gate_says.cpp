// All events of a gate in plain words, for one card from reading to passage.

#include <cstdio>
#include <tnv5/testing/manual_clock.h>
#include <tnv5/testing/memory_port.h>
#include <tnv5/turnstile/turnstile_device.h>

using namespace tnv5;
using turnstile::TComponent;

namespace {

void say(const char* event, const QString& text)
{
    std::printf("%-14s %s\n", event, qUtf8Printable(text));
}

void listen(turnstile::TTurnStylerDevice& gate)
{
    gate.SetOnLog([](TComponent*, const QString& text) { say("OnLog", text); });
    gate.SetOnError([](TComponent*, const QString& text) { say("OnError", text); });
    gate.SetOnGetImg([](TComponent*, const QString& device, QImage& picture) {
        picture = QImage(96, 96, QImage::Format_RGB32);
        picture.fill(Qt::white); // here a real host draws the holder
        say("OnGetImg", device);
    });
    gate.SetOnCheckStatus([](TComponent*, const QVariant& name, const QVariant& device, const QVariant& card,
                             const QVariant& status, const QVariant&) {
        say("OnCheckStatus",
            QStringLiteral("%1 %2 card %3: %4")
                .arg(name.toString(), device.toString(), card.toString(), status.toString()));
    });
    gate.SetOnCheckSQL([](TComponent*, const QVariant& device, const QVariant& card, const QVariant&, QImage&,
                          const QVariant& mode, QVariant& result) {
        say("OnCheckSQL",
            QStringLiteral("%1 card %2, mode %3").arg(device.toString(), card.toString(), mode.toString()));
        result = 1;
    });
}

} // namespace

int main()
{
    testkit::TManualClock clock;
    testkit::TMemoryPort port;
    turnstile::TTurnStylerDevice gate;
    gate.SetDeviceList({QStringLiteral("01A")});
    gate.SetComport(&port);
    listen(gate);
    port.Open();
    for (const char* line : {"$01AR12345678\r", "#01ARelay 1\r", "$01AP\r", "$01AG\r"}) {
        port.feed(line);
        clock.advance(100);
    }
    return gate.StackItemsCount() == 0 ? 0 : 1;
}
