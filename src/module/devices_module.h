#pragma once

#include "tnv5/platform/errors.h"
#include "tnv5/registration/palette.h"
#include "tnv5/script/script_engine.h"

#include <QtPlugin>

namespace tnv5::module {

/// What a host gives the module, which shares no code with it: the module has its own copy of everything.
struct TModuleHost
{
    /// Where the bindings are registered; must live until the last `Unload`.
    script::TScriptEngine* engine = nullptr;
    /// Receives what no handler caught; without one it goes to the Qt log.
    platform::TExceptionHandler exceptions;
    /// Code page of ports and sockets; empty: windows-1251.
    QByteArray codePage;
};

/// The loadable module of all components, for hosts that do not link them.
///
///     QPluginLoader loader("/usr/lib/tnv5/libtnv5_devices_module.so");
///     if (auto* const module = qobject_cast<tnv5::module::IDevicesModule*>(loader.instance())) {
///         module->Load({&engine, handler, {}});
///         ...
///         module->Unload();
///     }
class IDevicesModule
{
public:
    virtual ~IDevicesModule() = default;

    /// Registers the script bindings of all units. Calls are counted: only the first one does anything.
    /// @throws what the engine throws, platform::EConvertError for an unknown code page, platform::Exception
    /// without an engine; nothing stays registered then
    virtual void Load(const TModuleHost& host) = 0;
    /// Undoes a `Load`; the last one removes exactly what was registered.
    virtual void Unload() = 0;

    /// Offers the components to a form designer or another tool (`registration::Register`).
    virtual void Register(const registration::TPaletteHost& host) = 0;
};

} // namespace tnv5::module

Q_DECLARE_INTERFACE(tnv5::module::IDevicesModule, "tnv5.DevicesModule/1")
