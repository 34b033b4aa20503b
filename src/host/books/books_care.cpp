#include "tnv5/host/books/books_care.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QSqlError>
#include <QUrl>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tnv5::host {

namespace {

struct TPruneRow
{
    TPruned what;
    const char16_t* name;
    const char16_t* table;
    const char16_t* began; // column
    const char16_t* keep;  // which rows stay
};

constexpr std::array kRows = {
    TPruneRow{
        TPruned::Passes, u"passes", u"pass", u"began",
        u"(result = 'opened' AND ending = '') OR id IN (SELECT max(each.id) FROM member JOIN pass AS each"
        u" ON each.member = member.id AND each.ending = 'passed' JOIN gate ON gate.address = each.gate"
        u" AND gate.direction = 'in' WHERE member.inside = 1 GROUP BY member.id)"},
    TPruneRow{TPruned::Outages, u"outages", u"outage", u"began", u"ended = ''"},
    TPruneRow{TPruned::Sales, u"sales", u"sale", u"sold", u"0"},
    TPruneRow{TPruned::LampTimes, u"lamp-times", u"lamp_time", u"ordered", u"ending = ''"},
    TPruneRow{TPruned::Payments, u"payments", u"payment", u"began", u"outcome = ''"},
};

const TPruneRow& rowOf(TPruned what)
{
    return *std::find_if(kRows.begin(), kRows.end(),
                         [what](const TPruneRow& row) { return row.what == what; });
}

QString prunable(const TPruneRow& row)
{
    return QStringLiteral("%1 < ? AND NOT (%2) AND id < (SELECT max(id) FROM %3)")
        .arg(QString::fromUtf16(row.began), QString::fromUtf16(row.keep), QString::fromUtf16(row.table));
}

QString because(const QString& file)
{
    return file + QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(errno));
}

// Read only and as it is: nothing is written into the copy or beside it.
void check(const QString& copy)
{
    const QString name = QStringLiteral("tnv5-backup-%1").arg(getpid());
    const auto removed = qScopeGuard([&name] { QSqlDatabase::removeDatabase(name); });
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    const auto gone = qScopeGuard([&database] { database = {}; });
    database.setDatabaseName(
        QString::fromLatin1(QUrl::fromLocalFile(QFileInfo(copy).absoluteFilePath()).toEncoded()) +
        QStringLiteral("?immutable=1"));
    database.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_OPEN_URI"));
    if (!database.open()) {
        throw EBooks(QStringLiteral("the copy cannot be read: ") + database.lastError().databaseText());
    }
    TStatement statement(database, QStringLiteral("PRAGMA integrity_check"));
    TRows rows = statement.run();
    const QString found = rows.next() ? rows.value(0).toString() : QString();
    if (found != QStringLiteral("ok")) {
        throw EBooks(QStringLiteral("the copy is damaged: ") + found);
    }
}

// An empty file, which a copy may be made into, with the rights that the original has. @return whether it is
// there; else `errno` tells why not
bool makeEmpty(const QString& copy, const QString& original)
{
    constexpr mode_t kRights = 0777;
    constexpr mode_t kOwnerOnly = 0600;
    struct stat like = {};
    const int descriptor =
        ::open(QFile::encodeName(copy).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly);
    if (descriptor < 0) {
        return false;
    }
    if (stat(QFile::encodeName(original).constData(), &like) == 0) {
        fchmod(descriptor, like.st_mode & kRights); // some file systems have no rights
    }
    ::close(descriptor);
    return true;
}

// Gives the copy its name. @return whether it has it now; else `errno` tells why not
bool giveName(const QString& copy, const QString& target, bool force)
{
    const QByteArray from = QFile::encodeName(copy);
    const QByteArray to = QFile::encodeName(target);
    if (force) {
        return rename(from.constData(), to.constData()) == 0;
    }
    if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // Network and user-space file systems do not know RENAME_NOREPLACE; a link takes nobody's place, either.
    return link(from.constData(), to.constData()) == 0 && unlink(from.constData()) == 0;
}

void syncToDisk(const QString& file)
{
    const int descriptor = ::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC);
    const bool good = descriptor >= 0 && fsync(descriptor) == 0;
    const auto closed = qScopeGuard([descriptor] { ::close(descriptor); });
    if (!good) {
        throw EBooks(because(file));
    }
}

bool isSameFile(const QString& one, const QString& other)
{
    struct stat first = {};
    struct stat second = {};
    return stat(QFile::encodeName(one).constData(), &first) == 0 &&
           stat(QFile::encodeName(other).constData(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

void removeWithJournal(const QString& file)
{
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        QFile::remove(file + QLatin1String(suffix));
    }
}

} // namespace

QString toText(TPruned what)
{
    return QString::fromUtf16(rowOf(what).name);
}

std::optional<TPruned> toPruned(const QString& text)
{
    for (const TPruneRow& row : kRows) {
        if (text == QString::fromUtf16(row.name)) {
            return row.what;
        }
    }
    return std::nullopt;
}

qint64 countPrunable(TDatabase& database, TPruned what, platform::TDateTime before)
{
    const TPruneRow& row = rowOf(what);
    TStatement statement(
        database.connection(),
        QStringLiteral("SELECT count(*) FROM %1 WHERE %2").arg(QString::fromUtf16(row.table), prunable(row)));
    return statement.run({toText(before)}).number();
}

int prune(TDatabase& database, TPruned what, platform::TDateTime before, int limit)
{
    const TPruneRow& row = rowOf(what);
    TStatement statement(database.connection(),
                         QStringLiteral("DELETE FROM %1 WHERE id IN (SELECT id FROM %1 WHERE %2 LIMIT ?)")
                             .arg(QString::fromUtf16(row.table), prunable(row)));
    return statement.run({toText(before), limit}).changed();
}

void backUp(TDatabase& database, const QString& target, bool force)
{
    if (isSameFile(database.fileName(), target)) {
        throw EBooks(target + QStringLiteral(": this is the database itself"));
    }
    const auto inTheWay = [&] {
        return EBooks(target + QStringLiteral(": the file is there already; --force takes its place"));
    };
    if (!force && QFileInfo::exists(target)) {
        throw inTheWay();
    }
    const QString copy = QStringLiteral("%1.part-%2").arg(target).arg(getpid());
    const auto removed = qScopeGuard([&copy] { removeWithJournal(copy); });
    removeWithJournal(copy);
    if (!makeEmpty(copy, database.fileName())) {
        throw EBooks(because(target));
    }
    try {
        TStatement statement(database.connection(), QStringLiteral("VACUUM INTO ?"));
        statement.run({copy});
        check(copy);
    } catch (const EDatabase& error) {
        throw EBooks(target + QStringLiteral(": ") + error.message());
    }
    syncToDisk(copy);
    if (!giveName(copy, target, force)) {
        throw errno == EEXIST ? inTheWay() : EBooks(because(target));
    }
    syncToDisk(QFileInfo(target).absolutePath());
}

} // namespace tnv5::host
