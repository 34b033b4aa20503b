#pragma once

#include <QObject>
#include <QString>

/// The remote roles of the controller components: who owns the line, and who watches.
namespace tnv5::controller {

Q_NAMESPACE

/// Remote mode of a controller component. Any other number acts as `podNone`. The capital P of the third
/// value is intended.
enum TConState : int {
    podNone,   ///< stand-alone
    podServer, ///< owns the line and repeats its messages to the workstations that connect
    PodClient, ///< shows another workstation's line and forwards its own lines to it
};
Q_ENUM_NS(TConState)

/// What differs between the families in their remote roles; every difference is intended.
struct TRemoteFamily
{
    int statusFields;       ///< fields of a "STATUS!" text, the name included
    bool newestFirst;       ///< a server serves its connections from the last to the first
    bool clientSendsTexts;  ///< a client sends its own texts (and lines) to the server, link or not
    bool settersClose;      ///< setting address, port or mode closes the sockets concerned
    bool resolvesNames;     ///< `Server` may be a host name
    bool logsVisitors;      ///< clients that come and go are logged
    bool reportsLinkErrors; ///< errors of a socket are reported, "[12] "
};

//                                               fields newest client setters names  visitors errors
inline constexpr TRemoteFamily kClassicFamily = {5, true, false, true, false, false, true};
inline constexpr TRemoteFamily kD24Family = {7, false, true, true, true, true, true};
inline constexpr TRemoteFamily kSwitchFamily = {7, false, true, false, true, false, false};

} // namespace tnv5::controller
