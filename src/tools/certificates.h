#pragma once

#include "tnv5/platform/errors.h"
#include "tnv5/platform/socket_access.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

/// Certificates for the protected links of a club: an authority of its own, and with it a certificate for the
/// server and one for each workstation. All keys are EC P-256, all files PEM.
namespace tnv5::tools {

/// What cannot be made, or read; the message is one line for people.
class ECertificate : public platform::Exception
{
public:
    using Exception::Exception;
};

struct TCertificateOrder
{
    static constexpr int kUsualDays = 3'650;
    static constexpr int kMaxDays = 36'500;

    QString directory;       ///< made when it is not there
    QStringList serverNames; ///< what clients call the server: host names and addresses; empty: no server
    QStringList clients;     ///< names of workstations, which are names of files, too
    int days = kUsualDays;   ///< how long they are good, but no longer than the authority
};

/// One certificate of a directory.
struct TMadeCertificate
{
    QString name;  ///< "authority", "server" or that of the workstation
    bool isNew;    ///< else it was there already and stays as it is
    QDateTime end; ///< it is good until then
};

/// Makes what is missing, each a file NAME.crt and a file NAME.key: the authority, "server", and the
/// workstations. Nothing is ever overwritten, so that the same authority signs all that is added later; a key
/// without a certificate gets one. Keys can be read by their owner alone. A file is there whole or not at
/// all.
///
/// A server's certificate is good for a server alone, a workstation's for a client alone. A new authority is
/// good for twice the days.
///
///     makeCertificates({.directory = "club", .serverNames = {"desk.club", "192.168.1.5"}, .clients =
///     {"bar"}});
///
/// @return the authority, then what was asked for
/// @throws ECertificate
QList<TMadeCertificate> makeCertificates(const TCertificateOrder& order);

/// The files of one end of a link, as the sockets want them. @param name "server" or a workstation's
platform::TTlsFiles tlsFiles(const QString& directory, const QString& name);

} // namespace tnv5::tools
