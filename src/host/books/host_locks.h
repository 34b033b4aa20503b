#pragma once

#include <QString>

namespace tnv5::host {

/// Tells the hosts of one database that live from those that were killed.
///
/// Each host has a number and holds a lock on the byte of that number in a file beside the database, such as
/// "club.sqlite-hosts". The system releases it however the host ends, and knows it in every container that
/// sees the file, which process numbers do not do. The file stays empty.
class THostLocks
{
public:
    /// @param database path of the database's file; ":memory:" has no other hosts
    explicit THostLocks(QString database) : FDatabase(std::move(database)) {}
    ~THostLocks();
    THostLocks(const THostLocks&) = delete;
    THostLocks& operator=(const THostLocks&) = delete;

    /// Takes the lock of a number until this object ends. @throws EDatabase
    void take(qint64 host);
    /// Whether some other object, of any process, holds the lock of a number. @throws EDatabase
    bool alive(qint64 host);

private:
    bool inMemory() const;
    void open();
    [[noreturn]] void fail() const;
    QString fileName() const;

    QString FDatabase;
    int FDescriptor = -1;
};

} // namespace tnv5::host
