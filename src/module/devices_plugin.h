#pragma once

#include "tnv5/module/devices_module.h"

#include <QObject>

namespace tnv5::module {

/// The plugin itself.
class TDevicesPlugin : public QObject, public IDevicesModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "tnv5.DevicesModule/1")
    Q_INTERFACES(tnv5::module::IDevicesModule)

public:
    ~TDevicesPlugin() override;

    void Load(const TModuleHost& host) override;
    void Unload() override;
    void Register(const registration::TPaletteHost& host) override;

private:
    /// What the host gave goes with its last load.
    void forget();

    int FLoads = 0;
};

} // namespace tnv5::module
