#include "tnv5/platform/machine_network.h"

#include "tnv5/platform/machine_client.h"
#include "tnv5/platform/machine_server.h"

namespace tnv5::platform {

std::unique_ptr<TServerSocket> TMachineNetwork::makeServer()
{
    return std::make_unique<TMachineServer>();
}

std::unique_ptr<TClientSocket> TMachineNetwork::makeClient()
{
    return std::make_unique<TMachineClient>();
}

} // namespace tnv5::platform
