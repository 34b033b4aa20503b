#include "tnv5/registration/palette.h"

#include "tnv5/bank/bank_pos.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/panel/turn_styler.h"
#include "tnv5/scales/scales_device.h"
#include "tnv5/script/binding.h"
#include "tnv5/switch/switch_device.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <utility>

namespace tnv5::registration {

namespace {

TPaletteHost paletteHost;

} // namespace

TPaletteHost setPaletteHost(TPaletteHost host)
{
    return std::exchange(paletteHost, std::move(host));
}

script::TScriptClasses paletteClasses()
{
    using script::scriptClass;
    return {scriptClass<switching::TSwitchDevice>(),
            scriptClass<panel::TTurnStyler>(),
            scriptClass<turnstile::TTurnStylerDevice>(),
            scriptClass<connector::TDeviceConnector>(),
            scriptClass<d24::TTurnStylerDeviceD24>(),
            scriptClass<scales::TScalesDevice>(),
            scriptClass<bank::TBankPOS>()};
}

void Register()
{
    const TPaletteHost host = paletteHost; // what it calls may set another one
    if (host.palette != nullptr) {
        const QString page = host.pageName ? host.pageName() : QString();
        host.palette->RegisterComponents(page.isEmpty() ? QStringLiteral("Devices") : page, paletteClasses());
    }
}

} // namespace tnv5::registration
