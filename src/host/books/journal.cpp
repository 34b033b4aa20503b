#include "tnv5/host/books/journal.h"

#include <algorithm>
#include <utility>

namespace tnv5::host {

namespace {

constexpr qsizetype kPiece = 500; // passes written in one transaction, some milliseconds

} // namespace

TJournal::TJournal(TDatabase& database) : FDatabase(database)
{
    FTimer.SetInterval(kDelayMs);
    FTimer.OnTimer = [this](platform::TTimer*) { writePiece(); }; // between pieces the gates have their turn
}

TJournal::~TJournal() = default;

void TJournal::add(const PPass& pass)
{
    if (!FQueued.contains(pass.get())) { // one that waits already is written as it is then
        FQueued.insert(pass.get());
        FWaiting.append(pass);
    }
    if (pass->ending == TEnding::Passed && pass->member != 0 && pass->direction &&
        *pass->direction != TDirection::Inner) {
        FInside[pass->member] = *pass->direction == TDirection::In;
    }
    if (FWaiting.size() > kMaxWaiting) {
        const PPass oldest = FWaiting.takeFirst();
        FQueued.remove(oldest.get());
        lose(*oldest);
    }
    FTimer.SetEnabled(true);
}

void TJournal::add(const POutage& outage)
{
    if (!FOutages.contains(outage)) {
        FOutages.append(outage);
    }
    if (FOutages.size() > kMaxOutages) {
        lose(*FOutages.takeFirst());
    }
    FTimer.SetEnabled(true);
}

bool TJournal::flush()
{
    while (writePiece()) {
        if (FWaiting.isEmpty()) {
            return true;
        }
    }
    return false;
}

// What is written waits no longer, whatever becomes of the rest.
bool TJournal::writePiece()
{
    FTimer.SetEnabled(false);
    if (FWaiting.isEmpty() && FOutages.isEmpty()) {
        return true;
    }
    try {
        if (!FWaiting.isEmpty()) {
            const QList<PPass> piece = FWaiting.first(std::min(kPiece, FWaiting.size()));
            FDatabase.writePasses(piece);
            FWaiting.remove(0, piece.size());
            for (const PPass& pass : piece) {
                FQueued.remove(pass.get());
            }
        }
        if (FWaiting.isEmpty() && !FOutages.isEmpty()) {
            FDatabase.writeOutages(FOutages);
            FOutages.clear();
        }
    } catch (...) {
        failed(platform::exceptionMessage());
        return false;
    }
    if (!FWaiting.isEmpty()) {
        FTimer.SetInterval(kDelayMs);
        FTimer.SetEnabled(true);
        return true;
    }
    FInside.clear();
    succeeded();
    return true;
}

void TJournal::close()
{
    platform::guarded([this] { FDatabase.setBusyTimeout(TDatabase::kCloseMs); });
    if (!flush()) {
        FQueued.clear();
        for (const PPass& pass : std::exchange(FWaiting, {})) {
            lose(*pass);
        }
        for (const POutage& outage : std::exchange(FOutages, {})) {
            lose(*outage);
        }
    }
    FTimer.SetEnabled(false);
    platform::guarded([this] { FDatabase.setBusyTimeout(TDatabase::kBusyMs); });
}

std::optional<bool> TJournal::insideOf(qint64 member) const
{
    const auto found = FInside.constFind(member);
    return found == FInside.cend() ? std::nullopt : std::optional(found.value());
}

void TJournal::lose(const TPass& pass)
{
    if (OnLost) {
        platform::guarded([&] { OnLost(pass); });
    }
}

void TJournal::lose(const TOutage& outage)
{
    if (OnOutageLost) {
        platform::guarded([&] { OnOutageLost(outage); });
    }
}

void TJournal::failed(const QString& why)
{
    if (!FFailing) {
        FFailing = true;
        tell(QStringLiteral("the journal cannot be written, it will be tried again: ") + why);
    }
    FTimer.SetInterval(std::min(FTimer.Interval() * 2, kLongestDelayMs));
    FTimer.SetEnabled(true);
}

void TJournal::succeeded()
{
    FTimer.SetInterval(kDelayMs);
    if (std::exchange(FFailing, false)) {
        tell(QStringLiteral("the journal is written again, nothing is missing"));
    }
}

void TJournal::tell(const QString& text)
{
    if (OnTrouble) {
        platform::guarded([&] { OnTrouble(text); });
    }
}

} // namespace tnv5::host
