#pragma once

#include "tnv5/answers/relay_caution.h"
#include "tnv5/host/books/lamp_books.h"
#include "tnv5/platform/timer.h"
#include "tnv5/switch/switch_device.h"

#include <QHash>
#include <QPointer>
#include <QStringList>
#include <map>

namespace tnv5::host {

/// A lamp as a person at the desk sees it.
struct TLampState
{
    TLamp lamp;
    bool on = false;        ///< as its board said last, or as it was commanded since
    bool answers = false;   ///< its board has pinged lately
    QString name;           ///< whose time is running
    qint64 secondsLeft = 0; ///< of all the time bought for it; 0: nobody's
};

/// Sells time on the relays of a switch component.
///
///     TDatabase club("club.sqlite");
///     TSwitchDevice relays;
///     relays.SetConnector(&connector);
///     TSwitchHost lamps(relays, club);
///     lamps.OnTime = [](const TLampTime& time) { print(logLine(time)); };
///     lamps.sell("10000001", "Sun 1", 10); // minutes
///
/// What the books say is what the relays must be: on from the moment in which time begins until its end, and
/// off otherwise, whatever the component, the boards or people at them say meanwhile. The time left is the
/// books', not the component's, whose own end of a job moves on by a minute again and again. Relays that are
/// no lamps are never commanded, and lamps only while it is sure what state they are in (`TRelayCaution`).
///
/// It takes the component's `OnCheckSQL`, `OnNewItem`, `OnCheckStatus` and `OnError`. The database must
/// outlive the host; the component may go first. The hooks must not destroy the host.
class TSwitchHost
{
public:
    /// How often the ends of times are looked for.
    static constexpr int kLookMs = answers::TRelayCaution::kLookMs;
    static constexpr int kReloadMs = 1'000;    ///< how often the books are read: others may write them, too
    static constexpr int kPatienceMs = 10'000; ///< how long an order waits for its lamp

    /// @param names of the lamps of the books that are on the component's boards; none: all of them
    /// @throws EDatabase
    TSwitchHost(switching::TSwitchDevice& device, TDatabase& database,
                const std::optional<QStringList>& names = std::nullopt);
    /// Closes the host when that has not been done.
    ~TSwitchHost();
    TSwitchHost(const TSwitchHost&) = delete;
    TSwitchHost& operator=(const TSwitchHost&) = delete;

    /// Lets go of the component. Lamps stay as they are, and times run on in the books.
    void close();

    /// Orders time. It begins when the lamp is switched on, at once as a rule, or right behind the time that
    /// is bought for it already. @param minutes 1 to `TLampBooks::kMaxMinutes`
    /// @return false, told through `OnTrouble` or `OnTime`, when nothing comes of it.
    /// @throws EDatabase
    bool sell(const QString& card, const QString& lamp, int minutes);
    /// Ends all time on a lamp now; nothing is paid back. @return false when there was none.
    /// @throws EDatabase
    bool stop(const QString& lamp);

    /// All lamps, in the order of their boards and relays.
    QList<TLampState> lamps();

    /// Length of a minute; demonstrations have shorter ones.
    int MinuteMs = 60'000;

    /// Time has begun or ended.
    std::function<void(const TLampTime& time)> OnTime;
    /// One line for the person in charge. What stays wrong is told once.
    std::function<void(const QString& text)> OnTrouble;

private:
    /// A lamp and what was done about it.
    struct TPlace
    {
        TLamp lamp;
        switching::PRFidInfo job; // the component's; none until it has one, never removed afterwards
        QList<PLampTime> times;   // what has not ended
        answers::TRelayCaution caution;
        bool gone = false; // its board: told

        /// When the time that is running on it will be over; 0: none is.
        platform::TDateTime end() const;
        bool running() const { return end() > 0; }
        PLampTime order() const;
    };

    void attach();
    void load();

    // what the component asks
    int onCheck(const QString& board, const QString& relay, const QString& status, int mode);
    QString onNewItem(const QString& board, const QString& relay, const QString& statusDevice);
    void onStatus(const QString& board, const QString& status);
    bool maySwitchOn(TPlace& place);
    bool maySwitchOff(TPlace& place);

    // what the books say
    void tick();
    void look();
    bool direct(TPlace& place);
    void setWanted(TPlace& place, const QString& wanted);
    void sweep();
    void endOver(TPlace& place);
    void watchBoard(TPlace& place);
    bool begin(TPlace& place, const PLampTime& time);
    void end(TPlace& place, const PLampTime& time, TLampEnding ending);
    void booksFailed(const QString& why);

    TPlace* placeOf(const QString& board, const QString& relay);
    TPlace* placeOf(const QString& lamp);
    const switching::PRFidInfo& jobOf(TPlace& place);
    bool answers(const QString& board) const;
    qint64 patienceLooks() const;
    bool hasGone(const QString& board) const;
    void tell(const QString& text);
    void tellTime(const TLampTime& time);

    QPointer<switching::TSwitchDevice> FDevice;
    TDatabase& FDatabase;
    TLampBooks FBooks;
    platform::TTimer FTimer;
    std::map<QString, TPlace> FPlaces; // by board and relay
    QHash<QString, qint64> FHeard;     // look of the last ping of a board
    qint64 FLooks = 0;                 // boards are judged by them, not by a clock that may be set
    int FKnownJobs = 0;                // of the component
    qint64 FLoadedAt = 0;
    qint64 FFailedAt = 0;  // the books; they are left alone for a moment
    bool FFailing = false; // told, and not over yet
    bool FLooking = false;
};

} // namespace tnv5::host
