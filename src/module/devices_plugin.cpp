#include "tnv5/module/devices_plugin.h"

#include "tnv5/platform/code_page.h"
#include "tnv5/registration/load.h"

namespace tnv5::module {

namespace {

const QByteArray kUsualCodePage = QByteArrayLiteral("windows-1251");

} // namespace

TDevicesPlugin::~TDevicesPlugin()
{
    while (FLoads > 0) { // by a host that forgot
        TDevicesPlugin::Unload();
    }
}

void TDevicesPlugin::Load(const TModuleHost& host)
{
    if (host.engine == nullptr) {
        throw platform::Exception("The module needs a script engine");
    }
    if (FLoads == 0) {
        platform::setCodePage(host.codePage.isEmpty() ? kUsualCodePage : host.codePage);
        platform::setExceptionHandler(host.exceptions);
    }
    try {
        registration::load(*host.engine);
    } catch (...) {
        forget();
        throw;
    }
    ++FLoads;
}

void TDevicesPlugin::Unload()
{
    if (FLoads > 0) {
        --FLoads;
        registration::unload();
        forget();
    }
}

void TDevicesPlugin::forget()
{
    if (FLoads == 0) {
        platform::setExceptionHandler({});
        platform::setCodePage(kUsualCodePage);
    }
}

void TDevicesPlugin::Register(const registration::TPaletteHost& host)
{
    const auto former = registration::setPaletteHost(host);
    try {
        registration::Register();
    } catch (...) {
        registration::setPaletteHost(former);
        throw;
    }
    registration::setPaletteHost(former);
}

} // namespace tnv5::module
