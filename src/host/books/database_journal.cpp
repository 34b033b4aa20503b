#include "tnv5/host/books/database_parts.h"

#include <QScopeGuard>
#include <unistd.h>

namespace tnv5::host {

namespace {

TPass passFrom(const TRows& row)
{
    TPass pass;
    pass.id = row.value(0).toLongLong();
    pass.began = toDateTime(row.value(1).toString());
    pass.ended = toDateTime(row.value(2).toString());
    pass.card = row.value(3).toString();
    pass.member = row.value(4).toLongLong();
    pass.gate = row.value(5).toString();
    pass.refusal = toRefusal(row.value(6).toString()).value_or(TRefusal::HostFault);
    pass.ending = toEnding(row.value(7).toString()).value_or(TEnding::None);
    pass.who = row.value(8).toString();
    pass.note = row.value(9).toString();
    return pass;
}

TOutage outageFrom(const TRows& row)
{
    return {row.value(0).toLongLong(), row.value(1).toString(), toDateTime(row.value(2).toString()),
            toDateTime(row.value(3).toString()), row.value(4).toString()};
}

} // namespace

void TDatabase::writePasses(const QList<PPass>& passes)
{
    becomeHost();
    QList<qint64> ids;
    TWriteTransaction transaction(F->connection.database());
    for (const PPass& pass : passes) {
        qint64 id = pass->id;
        writePass(*pass, id);
        ids.append(id);
    }
    transaction.commit();
    for (qsizetype index = 0; index < passes.size(); ++index) { // only now: they are in the journal
        passes[index]->id = ids[index];
    }
}

void TDatabase::writePass(const TPass& pass, qint64& id)
{
    const QString ended = notNull(toText(pass.ended));
    const QString ending = notNull(toText(pass.ending));
    if (id == 0) {
        const QString result = pass.opened() ? QStringLiteral("opened") : QStringLiteral("refused");
        id = F->addPass
                 .run({toText(pass.began), ended, notNull(pass.card), pass.member, notNull(pass.gate), result,
                       notNull(toText(pass.refusal)), ending, notNull(pass.who), notNull(pass.note), F->host})
                 .insertedId();
    } else {
        F->endPass.run({ended, ending, id});
    }
    if (pass.ending == TEnding::Passed && pass.member != 0 && pass.direction &&
        *pass.direction != TDirection::Inner) {
        F->setInside.run({int(*pass.direction == TDirection::In), pass.member});
    }
}

QList<TPass> TDatabase::passesAfter(qint64 id, int limit)
{
    return F->passes.run({id, limit}).all(passFrom);
}

qint64 TDatabase::lastPass()
{
    return F->lastPass.run().number();
}

void TDatabase::becomeHost()
{
    if (F->host != 0) {
        return;
    }
    TWriteTransaction transaction(F->connection.database());
    const qint64 number = F->addHost.run({toText(platform::Now()), int(getpid())}).insertedId();
    F->locks.take(number); // before anyone else can read the number
    transaction.commit();
    F->host = number;
    platform::guarded([this] { markFile(); }); // else only a deleted or replaced file is noticed
}

qint64 TDatabase::host() const
{
    return F->host;
}

int TDatabase::closeAbandoned(int patienceMs)
{
    setBusyTimeout(patienceMs);
    const auto usual = qScopeGuard([this] { platform::guarded([this] { setBusyTimeout(kBusyMs); }); });
    becomeHost();
    const QString now = toText(platform::Now());
    int passes = 0;
    TWriteTransaction transaction(F->connection.database());
    const QList<qint64> hosts =
        F->openHosts.run().all([](const TRows& row) { return row.value(0).toLongLong(); });
    for (const qint64 host : hosts) {
        if (host != F->host && !F->locks.alive(host)) {
            passes += F->abandonPasses.run({now, toText(TEnding::Abandoned), host}).changed();
            F->abandonOutages.run({now, host});
        }
    }
    transaction.commit();
    return passes;
}

void TDatabase::writeOutages(const QList<POutage>& outages)
{
    becomeHost();
    QList<qint64> ids;
    TWriteTransaction transaction(F->connection.database());
    for (const POutage& outage : outages) {
        const QString ended = notNull(toText(outage->ended));
        ids.append(outage->id);
        if (outage->id == 0) {
            ids.back() =
                F->addOutage.run({outage->line, toText(outage->began), ended, notNull(outage->why), F->host})
                    .insertedId();
        } else {
            F->endOutage.run({ended, outage->id});
        }
    }
    transaction.commit();
    for (qsizetype index = 0; index < outages.size(); ++index) {
        outages[index]->id = ids[index];
    }
}

QList<TOutage> TDatabase::outagesAfter(qint64 id, int limit)
{
    return F->outages.run({id, limit}).all(outageFrom);
}

qint64 TDatabase::lastOutage()
{
    return F->lastOutage.run().number();
}

} // namespace tnv5::host
