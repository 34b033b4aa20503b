#pragma once

#include "model/kit/model_world.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_network.h"
#include "tnv5/testing/memory_port.h"

namespace tnv5::modelkit {

/// What the component stands on; the model's twin is `TModelWorld`.
class TRealWorld
{
public:
    using Port = testkit::TMemoryPort;
    static constexpr bool isModel = false;

    TRealWorld(qint64 startMs, bool cyrillic, std::function<void(const QString&)> unhandled);
    ~TRealWorld() { platform::setExceptionHandler(std::exchange(FBefore, nullptr)); }
    Q_DISABLE_COPY_MOVE(TRealWorld)

    testkit::TManualClock clock;
    testkit::TMemoryNetwork network;

    /// Sockets of the one controller that has some; nullptr: there are none.
    testkit::TMemoryServer* server() const
    {
        return network.serverCount() == 0 ? nullptr : &network.server(0);
    }
    testkit::TMemoryClient* client() const
    {
        return network.clientCount() == 0 ? nullptr : &network.client(0);
    }

    static std::shared_ptr<Port> makePort();
    template <class Component, class... Args>
    static std::shared_ptr<Component> make(bool designing, Args&&... args)
    {
        const auto scope = designing ? std::make_unique<platform::TDesignScope>() : nullptr;
        return std::make_shared<Component>(std::forward<Args>(args)...);
    }
    template <class Thing>
    static void destroy(std::shared_ptr<Thing>& thing)
    {
        thing.reset();
    }

    static void portError(Port& port, const QString& message, qint64 osError, bool inside);
    [[noreturn]] static void raise(ERaise kind, const QString& text);
    static QString caught();

private:
    platform::TExceptionHandler FBefore;
};

} // namespace tnv5::modelkit
