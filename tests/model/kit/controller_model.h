#pragma once

#include "model/kit/model_world.h"

namespace tnv5::modelkit {

/// The other end of a controller's sockets, in the host's hand. Each may raise.
struct TFarEnd
{
    std::function<void()> listen; ///< its server opens; one client is there at once
    std::function<bool()> dial;   ///< its client opens; false: that takes longer than the scenario
    std::function<void(const QByteArray&)> toClient;
    std::function<void(const QByteArray&)> toServer;
};

/// The remote roles of a controller: what is ready, what is sent where, and what is said when that fails.
class TModelController : public TModel
{
public:
    enum EMode { Alone, Server, Client };

    /// @param clientSends a client's own texts go to its server
    TModelController(TModelWorld& world, bool designing, TFarEnd& farEnd, bool clientSends)
        : TModel(world, designing), FFarEnd(farEnd), FClientSends(clientSends)
    {
    }

    bool Connected()
    {
        return operation([&] { return ready(); }, false);
    }

protected:
    virtual bool lineOpen() = 0;
    virtual void error(const QString& text) = 0;

    int mode() const { return FProperties.at("RemoutDevice").toInt(); }
    bool ready();
    void toMonitor(const QByteArray& text);
    /// @return false when there is no link
    bool toServer(const QByteArray& text);
    void changed(const std::string& property) override;

private:
    TFarEnd& FFarEnd;
    const bool FClientSends;
    bool FListening = false;
    bool FDialling = false;
    bool FLinked = false;
};

} // namespace tnv5::modelkit
