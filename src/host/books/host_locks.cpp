#include "tnv5/host/books/host_locks.h"

#include "tnv5/host/books/statement.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tnv5::host {

namespace {

struct flock lockOf(qint64 host)
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = host;
    lock.l_len = 1;
    return lock;
}

} // namespace

THostLocks::~THostLocks()
{
    if (FDescriptor >= 0) {
        close(FDescriptor);
    }
}

void THostLocks::take(qint64 host)
{
    if (inMemory()) {
        return;
    }
    open();
    struct flock lock = lockOf(host);
    if (fcntl(FDescriptor, F_OFD_SETLK, &lock) != 0) {
        fail();
    }
}

bool THostLocks::alive(qint64 host)
{
    if (inMemory()) {
        return false;
    }
    open();
    struct flock lock = lockOf(host);
    if (fcntl(FDescriptor, F_OFD_GETLK, &lock) != 0) {
        fail();
    }
    return lock.l_type != F_UNLCK;
}

bool THostLocks::inMemory() const
{
    return FDatabase.isEmpty() || FDatabase == QStringLiteral(":memory:");
}

QString THostLocks::fileName() const
{
    return FDatabase + QStringLiteral("-hosts");
}

// Rights and owner are the database's: a host that root started once must not keep the usual one out.
void THostLocks::open()
{
    if (FDescriptor >= 0) {
        return;
    }
    struct stat database = {};
    const bool known = stat(QFile::encodeName(FDatabase).constData(), &database) == 0;
    const mode_t mode = known ? database.st_mode & 0666U : 0644U;
    FDescriptor = ::open(QFile::encodeName(fileName()).constData(), O_RDWR | O_CREAT | O_CLOEXEC, mode);
    if (FDescriptor < 0) {
        fail();
    }
    struct stat own = {};
    if (known && fstat(FDescriptor, &own) == 0 && own.st_uid == geteuid() && (own.st_mode & 0777U) != mode) {
        fchmod(FDescriptor,
               mode); // the mask of who makes the file must not keep out a group that has the database
    }
    if (known && geteuid() == 0 && fchown(FDescriptor, database.st_uid, database.st_gid) != 0) {
        fail();
    }
}

void THostLocks::fail() const
{
    throw EDatabase(QStringLiteral("%1: %2").arg(fileName(), QString::fromLocal8Bit(std::strerror(errno))));
}

} // namespace tnv5::host
