#pragma once

#include <QObject>
#include <QString>
#include <limits>

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

/// How a client reads the texts of its server.
struct TStreamDialect
{
    bool endsBehindTag; ///< a text ends at the "&" behind its tag, else at the first "&" there is
    int statusFields;   ///< shown of a "STATUS!" text, the name included; 0: it is dropped
    // characters kept behind a text; what exceeds them is dropped
    qsizetype keptBehindLog;
    qsizetype keptBehindError;
    qsizetype keptBehindStatus;
};

/// What differs between the families in their remote roles; every difference is intended.
struct TRemoteFamily
{
    TStreamDialect stream;
    bool newestFirst;       ///< a server serves its connections from the last to the first
    bool clientSendsTexts;  ///< a client sends its own texts (and lines) to the server, link or not
    bool settersClose;      ///< setting address, port or mode closes the sockets concerned
    bool resolvesNames;     ///< `Server` may be a host name
    bool logsVisitors;      ///< clients that come and go are logged
    bool reportsLinkErrors; ///< errors of a socket are reported, "[12] "; else they are silent
};

inline constexpr qsizetype kAll = std::numeric_limits<qsizetype>::max();

// clang-format off
//                                                 kept behind
//                                  behind fields  log   error status   newest client setters names  visitors errors
inline constexpr TRemoteFamily kClassicFamily = {
                                   {false, 5,      2000, 2000, 2000},   true,  false, true,   false, false,   true};
inline constexpr TRemoteFamily kD24Family = {
                                   {false, 7,      2000, kAll, kAll},   false, true,  true,   true,  true,    true};
inline constexpr TRemoteFamily kSwitchFamily = {
                                   {true,  0,      kAll, kAll, kAll},   false, true,  false,  true,  false,   false};
// clang-format on

} // namespace tnv5::controller
