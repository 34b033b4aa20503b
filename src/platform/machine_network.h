#pragma once

#include "tnv5/platform/sockets.h"

namespace tnv5::platform {

/// The machine's own sockets: TCP, on request under TLS.
class TMachineNetwork final : public TNetwork
{
public:
    std::unique_ptr<TServerSocket> makeServer() override;
    std::unique_ptr<TClientSocket> makeClient() override;
};

} // namespace tnv5::platform
