#pragma once

#include "model/kit/model_sockets.h"
#include "model/kit/model_world.h"

namespace tnv5::modelkit {

/// In what the remote roles of a family of controllers differ, apart from how a client reads.
struct TManners
{
    bool lastFirst;    ///< a server serves its clients from the last to the first
    bool clientSends;  ///< a client's own texts go to its server
    bool settersClose; ///< address, port and mode close sockets
    bool names;        ///< the server may be a name
    bool logsVisitors; ///< they come and go in the log
    bool tellsErrors;  ///< those of sockets, "[12] "
};

/// The remote roles of a controller: what is ready, what is sent where, what is said when that fails, and who
/// is told what comes.
class TModelController : public TModel
{
public:
    enum EMode { Alone, Server, Client };

    TModelController(TModelWorld& world, bool designing, const TManners& manners);
    void die() override;

    virtual void p_hw_ProtocolIn(QString text) = 0;

    bool Connected()
    {
        return operation([&] { return ready(); }, false);
    }

protected:
    virtual bool lineOpen() = 0;
    virtual void error(const QString& text) = 0;
    /// What reaches the host's log handler only.
    virtual void tell(const QString& text) = 0;
    virtual bool hearsErrors() const = 0;
    /// The server's texts.
    virtual void clientRead(QString buffer) = 0;

    int mode() const { return FProperties.at("RemoutDevice").toInt(); }
    bool ready();
    void toMonitor(const QByteArray& text);
    /// @return false when there is no link
    bool toServer(const QByteArray& text);
    void changed(const std::string& property) override;

private:
    void socketError(int& code);
    void sendToAll(const QByteArray& text);

    const TManners FManners;
    TModelServer FServer;
    TModelClient FClient;
};

} // namespace tnv5::modelkit
