#include "tnv5/connector/device_connector.h"
#include "tnv5/script/binding.h"
#include "tnv5/script/units.h"

namespace tnv5::script {

using connector::TDeviceConnector;

TScriptUnit connectorUnit()
{
    const TScriptClass self = scriptClass<TDeviceConnector>();
    return {"connector",
            {TScriptClasses{self},
             std::vector<TScriptConst>{
                 {"podEmpty", int(connector::podEmpty)},
                 {"podComPort", int(connector::podComPort)},
                 {"podNet", int(connector::podNet)},
             },
             TScriptProperties{self,
                               {scriptProperty<TDeviceConnector, &TDeviceConnector::GetConnected,
                                               &TDeviceConnector::SetConnected>("IsConnected")}},
             TScriptMethods{self,
                            {
                                scriptMethod<TDeviceConnector, &TDeviceConnector::GetCommand>("GetCommand"),
                                scriptMethod<TDeviceConnector, &TDeviceConnector::SendCommand>("SendCommand"),
                                scriptMethod<TDeviceConnector, &TDeviceConnector::SendDirectCommand>(
                                    "SendDirectCommand"),
                                scriptMethod<TDeviceConnector, &TDeviceConnector::CloseAll>("CloseAll"),
                            }}}};
}

} // namespace tnv5::script
