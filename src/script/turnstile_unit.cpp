#include "tnv5/script/binding.h"
#include "tnv5/script/units.h"
#include "tnv5/turnstile/turnstile_device.h"

namespace tnv5::script {

using turnstile::TTurnStylerDevice;

TScriptUnit turnstileUnit()
{
    const TScriptClass self = scriptClass<TTurnStylerDevice>();
    return {
        "turnstile",
        {std::vector<TScriptConst>{
             {"podNone", int(controller::podNone)},
             {"podServer", int(controller::podServer)},
             {"PodClient", int(controller::PodClient)},
             {"podlog", int(turnstile::podlog)},
             {"podError", int(turnstile::podError)},
             {"PodState", int(turnstile::PodState)},
         },
         TScriptClasses{self},
         TScriptMethods{
             self,
             {
                 scriptMethod<TTurnStylerDevice, &TTurnStylerDevice::p_hw_FindDevice>("p_hw_FindDevice"),
                 scriptMethod<TTurnStylerDevice, &TTurnStylerDevice::p_hw_FindDeviceByRelay>(
                     "p_hw_FindDeviceByRelay"),
                 scriptMethod<TTurnStylerDevice, &TTurnStylerDevice::p_hw_CheckStatus>("p_hw_CheckStatus"),
                 scriptMethod<TTurnStylerDevice, &TTurnStylerDevice::p_hw_ProtocolIn>("p_hw_ProtocolIn"),
                 scriptMethod<TTurnStylerDevice, &TTurnStylerDevice::p_hw_SendComCommand>(
                     "p_hw_SendComCommand"),
                 scriptMethod<TTurnStylerDevice, &TTurnStylerDevice::p_hw_relay>("p_hw_relay"),
                 scriptMethod<TTurnStylerDevice, &TTurnStylerDevice::p_hw_CheckStatusAll>(
                     "p_hw_CheckStatusAll"),
                 scriptMethod<TTurnStylerDevice, &TTurnStylerDevice::Connected>("Connected"),
             }}}};
}

} // namespace tnv5::script
