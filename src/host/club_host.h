#pragma once

#include "host/journal.h"
#include "turnstile/turnstile_device.h"

#include <QCache>
#include <QPointer>
#include <deque>
#include <map>

namespace tnv5::host {

/// Runs the gates of a club: answers a component's questions from the database and keeps the journal.
///
///     TDatabase club("club.sqlite");
///     TTurnStylerDevice line;
///     line.SetComport(&port);
///     TClubHost host(line, club);
///     host.OnPass = [](const TPass& pass) { print(logLine(pass)); };
///
/// It takes the component's `OnCheckSQL`, `OnGetImg` and `OnError`, and tells it the gates of the database.
/// A card that cannot be decided about, because the database fails, is refused and said so; work goes on.
/// The exit button and an opening by hand always open.
///
/// Everything that takes time happens after the gate has its command: the journal is written and `OnPass` is
/// called from timers. The database must outlive the host; the component may go first.
class TClubHost
{
public:
    /// Interval that the component's passes get, in milliseconds. At its own 100 a card that is read while
    /// another gate is busy would wait up to that long for its turn.
    static constexpr int kPassIntervalMs = 2;

    TClubHost(turnstile::TTurnStylerDevice& device, TDatabase& database);
    /// Closes the host when that has not been done.
    ~TClubHost();
    TClubHost(const TClubHost&) = delete;
    TClubHost& operator=(const TClubHost&) = delete;

    /// Lets go of the component and writes the journal to its end; passes that are still under way are
    /// entered as interrupted. What cannot be written is told through `OnTrouble`, pass by pass.
    void close();

    /// A pass was decided about, and again when it has ended.
    std::function<void(const TPass& pass)> OnPass;
    /// One line for the person in charge: errors of the component and of the database.
    std::function<void(const QString& text)> OnTrouble;

private:
    using TKey = std::pair<QString, QString>; // address and card

    void onCheck(const QString& address, const QString& card, int mode, QVariant& result);
    void onImage(const QString& address, QImage& image);

    void decideNew(const QString& address, const QString& card, QVariant& result);
    void lookUp(TPass& pass);
    bool isInside(const TMember& member, const TPass& pass) const;
    void endPass(const QString& address, const QString& card, TEnding ending);
    PPass takePass(const QString& address, const QString& card);

    void note(const PPass& pass);
    void trouble(const QString& text);
    void tellNews();

    QPointer<turnstile::TTurnStylerDevice> FDevice;
    TDatabase& FDatabase;
    TJournal FJournal;
    std::map<TKey, PPass> FUnderWay;
    QCache<qint64, QImage> FPictures;
    std::deque<std::function<void()>> FNews; // what is to be told, in order
    platform::TTimer FNewsTimer;
    bool FClosed = false;
};

} // namespace tnv5::host
