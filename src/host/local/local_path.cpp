#include "tnv5/host/local/local_path.h"

#include "tnv5/host/local/local_texts.h"
#include "tnv5/platform/errors.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tnv5::host {

namespace {

constexpr mode_t kFolderMode = 0750; // the group may come to the socket
constexpr mode_t kLockMode = 0600;
constexpr int kAnswerMs = 200; // for the system, not for the host

QString usualFolder()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return ::geteuid() == 0 || runtime.isEmpty() ? QStringLiteral("/run/tnv5")
                                                 : runtime + QStringLiteral("/tnv5");
}

[[noreturn]] void cannotListen(const QString& socket, int error)
{
    throw platform::Exception(local_texts::kCannotListen.arg(socket, qt_error_string(error)));
}

bool sameFile(int descriptor, const QByteArray& path)
{
    struct stat opened = {};
    struct stat there = {};
    return ::fstat(descriptor, &opened) == 0 && ::stat(path.constData(), &there) == 0 &&
           opened.st_ino == there.st_ino && opened.st_dev == there.st_dev;
}

} // namespace

QString usualSocket(const QString& club)
{
    QString name = club.trimmed();
    for (QChar& letter : name) {
        if (letter == u'/' || !letter.isPrint()) {
            letter = u'_';
        }
    }
    if (name.isEmpty() || name.startsWith(u'.')) {
        name.prepend(QStringLiteral("club"));
    }
    return QStringLiteral("%1/%2.socket").arg(usualFolder(), name);
}

QStringList usualSockets()
{
    QStringList found;
    for (const QString& folder : {usualFolder(), QStringLiteral("/run/tnv5")}) {
        const auto files = QDir(folder).entryInfoList({QStringLiteral("*.socket")}, QDir::System, QDir::Name);
        for (const QFileInfo& file : files) {
            if (!found.contains(file.absoluteFilePath())) {
                found << file.absoluteFilePath();
            }
        }
    }
    return found;
}

QStringList answeringSockets(const QStringList& sockets)
{
    QStringList answering = sockets;
    answering.removeIf([](const QString& path) {
        QLocalSocket socket;
        socket.connectToServer(path);
        return !socket.waitForConnected(kAnswerMs);
    });
    return answering;
}

void makeSocketFolder(const QString& socket)
{
    const QString folder = QFileInfo(socket).absolutePath();
    if (QFileInfo(folder).isDir()) {
        return;
    }
    if (::mkdir(QFile::encodeName(folder).constData(), kFolderMode) != 0 && errno != EEXIST) {
        cannotListen(socket, errno);
    }
}

QString userName(uid_t user)
{
    std::array<char, 4096> room{};
    passwd entry = {};
    passwd* found = nullptr;
    ::getpwuid_r(user, &entry, room.data(), room.size(), &found);
    return found != nullptr ? QString::fromLocal8Bit(found->pw_name) : QStringLiteral("uid %1").arg(user);
}

QString peerName(qintptr descriptor)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (::getsockopt(static_cast<int>(descriptor), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        return {};
    }
    return userName(peer.uid);
}

TSocketLock::TSocketLock(const QString& socket) : FFile(QFile::encodeName(socket + QStringLiteral(".lock")))
{
    for (;;) {
        FDescriptor = ::open(FFile.constData(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, kLockMode);
        if (FDescriptor < 0) {
            cannotListen(socket, errno);
        }
        if (::flock(FDescriptor, LOCK_EX | LOCK_NB) != 0) {
            const int error = errno;
            ::close(FDescriptor);
            if (error == EWOULDBLOCK) {
                throw platform::Exception(local_texts::kRunning.arg(socket));
            }
            cannotListen(socket, error);
        }
        if (sameFile(FDescriptor, FFile)) {
            return;
        }
        ::close(FDescriptor); // its last owner has just removed it
    }
}

TSocketLock::~TSocketLock()
{
    ::unlink(FFile.constData()); // while it is held, so that nobody else's is removed
    ::close(FDescriptor);
}

} // namespace tnv5::host
