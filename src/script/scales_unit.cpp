#include "tnv5/scales/scales_device.h"
#include "tnv5/script/binding.h"
#include "tnv5/script/units.h"

namespace tnv5::script {

using scales::TScalesDevice;

TScriptUnit scalesUnit()
{
    const TScriptClass self = scriptClass<TScalesDevice>();
    return {"scales",
            {std::vector<TScriptEvent>{
                 scriptEvent<platform::TLogEvent>("TLogEvent"),
                 scriptEvent<scales::TWeightEvent>("TWeightEvent"),
             },
             TScriptClasses{self},
             TScriptMethods{self,
                            {
                                scriptMethod<TScalesDevice, &TScalesDevice::IsConnected>("IsConnected"),
                                scriptMethod<TScalesDevice, &TScalesDevice::SetConnection>("SetConnection"),
                                scriptMethod<TScalesDevice, &TScalesDevice::GetScalesList>("GetScalesList"),
                                scriptMethod<TScalesDevice, &TScalesDevice::GetWeight>("GetWeight"),
                                scriptMethod<TScalesDevice, &TScalesDevice::SetUpComport>("SetUpComport"),
                            }}}};
}

} // namespace tnv5::script
