#include "tnv5/module/devices_module.h"

#include "tnv5/platform/code_page.h"
#include "tnv5/registration/load.h"

#include <QObject>

namespace tnv5::module {

class TDevicesModule : public QObject, public IDevicesModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "tnv5.DevicesModule/1")
    Q_INTERFACES(tnv5::module::IDevicesModule)

public:
    ~TDevicesModule() override
    {
        while (FLoads > 0) { // by a host that forgot
            TDevicesModule::Unload();
        }
    }

    void Load(const TModuleHost& host) override
    {
        if (host.engine == nullptr) {
            throw platform::Exception("The module needs a script engine");
        }
        if (FLoads == 0) {
            platform::setCodePage(host.codePage.isEmpty() ? QByteArray("windows-1251") : host.codePage);
            platform::setExceptionHandler(host.exceptions);
        }
        registration::load(*host.engine);
        ++FLoads;
    }

    void Unload() override
    {
        if (FLoads > 0) {
            --FLoads;
            registration::unload();
        }
    }

    void Register(const registration::TPaletteHost& host) override
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

private:
    int FLoads = 0;
};

} // namespace tnv5::module

#include "devices_module.moc"
