#include "tnv5/d24/d24_device.h"
#include "tnv5/script/binding.h"
#include "tnv5/script/d24_record.h"
#include "tnv5/script/units.h"

namespace tnv5::script {

using d24::TTurnStylerDeviceD24;

namespace {

constexpr int kDoorDelay = 2;
constexpr bool kByTimer = false;

template <auto Method>
TScriptMethod method(const char* name)
{
    return scriptMethod<TTurnStylerDeviceD24, Method>(name);
}

} // namespace

TScriptUnit d24Unit()
{
    using T = TTurnStylerDeviceD24;
    const TScriptClass self = scriptClass<T>();
    return {"D24",
            {std::vector<TScriptConst>{
                 {"podNone", int(d24::podNone)},
                 {"podServer", int(d24::podServer)},
                 {"PodClient", int(d24::PodClient)},
                 {"podlog", int(d24::podlog)},
                 {"podError", int(d24::podError)},
                 {"podState", int(d24::podState)},
                 {"DoorDelay", kDoorDelay},
                 {"ByTimer", kByTimer},
             },
             TScriptClasses{self},
             TScriptMethods{self,
                            {
                                method<&T::p_hw_FindDevice>("p_hw_FindDevice"),
                                method<&T::p_hw_FindDeviceByRelay>("p_hw_FindDeviceByRelay"),
                                method<&T::p_hw_SendComCommand>("p_hw_SendComCommand"),
                                method<&T::p_hw_CheckStatus>("p_hw_CheckStatus"),
                                method<&T::p_hw_ProtocolIn>("p_hw_ProtocolIn"),
                                method<&T::p_hw_relay>("p_hw_relay"),
                                method<&T::p_hw_CheckStatusAll>("p_hw_CheckStatusAll"),
                                method<&T::Connected>("Connected"),
                                method<&T::SetTimerInterval>("SetTimerInterval"),
                                method<&T::SendToMonitor>("SendToMonitor"),
                            }},
             std::vector<TScriptRecord>{d24Record()}}};
}

} // namespace tnv5::script
