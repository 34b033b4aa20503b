#pragma once

#include "tnv5/host/books/journal.h"
#include "tnv5/host/noise_limit.h"

#include <QCache>
#include <QImage>
#include <deque>
#include <map>

namespace tnv5::host {

/// How an opened pass ended when a controller component asks in this mode; the modes are the same for all of
/// them. Nothing for a mode that ends no pass.
std::optional<TEnding> endingOf(int mode);

/// Where the decisions of a club are made and its journal is kept, whatever controllers stand at the gates.
///
///     TDatabase club("club.sqlite");
///     TClubDesk desk(club);
///     TD24Host gates(device, desk);
///     desk.OnPass = [](const TPass& pass) { print(logLine(pass)); };
///
/// Gates of several components that share a desk share what it knows of who is inside. A card that cannot be
/// decided about, because the database fails, is refused and said so; work goes on. The exit button and an
/// opening by hand always open.
///
/// Noise on a line may look like cards. Of unknown cards at a gate `TNoiseLimit::kPerMinute` a minute are
/// kept and told; the others are refused like any, and only their number is told, when the minute is over.
///
/// It looks after the file: a database that is deleted or replaced while the desk is open is told once.
///
/// Everything that takes time happens later: the journal is written and the hooks are called from timers. The
/// database must outlive the desk.
class TClubDesk
{
public:
    explicit TClubDesk(TDatabase& database);
    /// Closes the desk when that has not been done.
    ~TClubDesk();
    TClubDesk(const TClubDesk&) = delete;
    TClubDesk& operator=(const TClubDesk&) = delete;

    /// Writes the journal to its end; passes that are still under way are entered as interrupted, and outages
    /// end: nobody looks after the line from now on. What cannot be written is told through `OnLost`, one
    /// by one.
    void close();

    static constexpr int kFileMs = 5'000; ///< between looks after the file

    /// Decides about a new pass; a pass that opens is under way from now on.
    TPass decideNew(const QString& address, const QString& card);
    /// A pass under way has ended.
    void endPass(const QString& address, const QString& card, TEnding ending);
    /// The next opening by hand at a gate, within `kByHandMs`, was asked for by `who`, because of `reason`:
    /// the host calls it just before it makes the controller open, and both are kept with the pass.
    void expectByHand(const QString& address, const QString& who, const QString& reason);
    static constexpr int kByHandMs = 10'000;
    /// Whether that opening has not been asked for by a component yet.
    bool expectsByHand(const QString& address) const { return FByHand.contains(address); }
    /// It is not expected any more: the next opening by hand there is somebody else's.
    /// @return whether no component had asked for it yet
    bool forgetByHand(const QString& address) { return FByHand.erase(address) != 0; }

    /// A line cannot be used any more: an outage begins in the journal, unless one is under way on that line.
    void lineLost(const QString& line, const QString& why);
    /// A line can be used again: its outage ends.
    void lineBack(const QString& line);

    /// Whether a pass is under way.
    bool hasPass(const QString& address, const QString& card) const;
    /// Who is passing at a gate, the card when it is nobody's; empty when nobody is.
    QString holderAt(const QString& address) const;
    /// Whoever is passing at a gate is interrupted: nothing will be heard of it any more.
    void interrupt(const QString& address);
    /// The journal could not be written when it was last tried.
    bool journalFails() const { return FJournal.failing(); }
    /// The file of the database is not in its place: a sentence, or empty.
    const QString& misplaced() const { return FMisplaced; }
    /// Passes that wait to be written into the journal.
    qsizetype waiting() const { return FJournal.waiting(); }
    /// Passes and outages that will never be in the journal.
    qint64 lost() const { return FLost; }
    /// Picture of a card's holder, null when there is none or it cannot be found out.
    QImage pictureFor(const QString& card);
    /// Tells the person in charge.
    void trouble(const QString& text);

    /// A pass was decided about, and again when it has ended; noise is left out.
    std::function<void(const TPass& pass)> OnPass;
    /// One line for the person in charge: errors of the components and of the database.
    std::function<void(const QString& text)> OnTrouble;
    /// A pass or outage will never be in the journal; none: it is told through `OnTrouble`.
    std::function<void(const QString& text)> OnLost;

private:
    using TKey = std::pair<QString, QString>; // address and card

    struct TByHand
    {
        platform::TDateTime asked;
        QString who;
        QString reason;
    };

    void lookAfterFile();
    void lookUp(TPass& pass);
    void signByHand(TPass& pass);
    bool isInside(const TMember& member, const TPass& pass) const;
    PPass takePass(const QString& address, const QString& card);
    void note(const PPass& pass);
    bool isNoise(const TPass& pass);
    void tellNoise(const QStringList& lines);
    void lost(const QString& what);
    void tellNews();

    TDatabase& FDatabase;
    TJournal FJournal;
    std::map<TKey, PPass> FUnderWay;
    std::map<QString, TByHand> FByHand;  // by the gate
    std::map<QString, POutage> FOutages; // under way, by the line
    QCache<qint64, QImage> FPictures;
    TNoiseLimit FNoise;
    std::deque<std::function<void()>> FNews; // what is to be told, in order
    platform::TTimer FNewsTimer;
    platform::TTimer FFileTimer;
    QString FMisplaced;
    qint64 FLost = 0;
    bool FClosed = false;
};

} // namespace tnv5::host
