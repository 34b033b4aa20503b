#include "tnv5/script/binding.h"
#include "tnv5/script/units.h"
#include "tnv5/switch/switch_device.h"

namespace tnv5::script {

using switching::TSwitchDevice;

TScriptUnit switchUnit()
{
    const TScriptClass self = scriptClass<TSwitchDevice>();
    return {"switch",
            {TScriptClasses{self},
             std::vector<TScriptConst>{
                 {"podNone", int(controller::podNone)},
                 {"podServer", int(controller::podServer)},
                 {"PodClient", int(controller::PodClient)},
                 {"podlog", int(switching::podlog)},
                 {"podError", int(switching::podError)},
                 {"PodState", int(switching::PodState)},
             },
             TScriptMethods{
                 self,
                 {
                     scriptMethod<TSwitchDevice, &TSwitchDevice::p_hw_checktimeout>("p_hw_checktimeout"),
                     scriptMethod<TSwitchDevice, &TSwitchDevice::p_hw_FindDevice>("p_hw_FindDevice"),
                     scriptMethod<TSwitchDevice, &TSwitchDevice::p_hw_SendComCommand>("p_hw_SendComCommand"),
                     scriptMethod<TSwitchDevice, &TSwitchDevice::p_hw_CheckStatus>("p_hw_CheckStatus"),
                     scriptMethod<TSwitchDevice, &TSwitchDevice::p_hw_ProtocolIn>("p_hw_ProtocolIn"),
                     scriptMethod<TSwitchDevice, &TSwitchDevice::p_hw_relay>("p_hw_relay"),
                     scriptMethod<TSwitchDevice, &TSwitchDevice::p_hw_CheckStatusAll>("p_hw_CheckStatusAll"),
                     scriptMethod<TSwitchDevice, &TSwitchDevice::Connected>("Connected"),
                     scriptMethod<TSwitchDevice, &TSwitchDevice::StackItemsCount>("StackItemsCount"),
                 }}}};
}

} // namespace tnv5::script
