#pragma once

#include "tnv5/platform/clock.h"

#include <QList>
#include <QString>
#include <memory>
#include <optional>

/// What the reference host sells by the minute: lamps, lockers and the like, each on a relay.
namespace tnv5::host {

/// One of them; "lamp" for short, whatever it is.
struct TLamp
{
    QString name;
    QString board; ///< four characters, side "A" or "B" of a pair
    QString relay; ///< of the pair: "1" and "2" on side A, "3" to "5" on side B
    qint64 centsPerMinute = 0;

    bool operator==(const TLamp&) const = default;
};

/// How time on a lamp ended; `None`: it has not.
enum class TLampEnding {
    None,
    Over,       ///< it was used up
    Stopped,    ///< somebody at the desk ended it
    Refused,    ///< the host did not let the lamp be switched on: nothing is charged
    Unanswered, ///< the lamp could not be switched on: nothing is charged
};

/// Time sold on a lamp, a row of the books. It is ordered first; it begins, and is charged, when the lamp may
/// be switched on.
struct TLampTime
{
    qint64 id = 0; ///< row of the books, 0: not written yet
    platform::TDateTime ordered = 0;
    QString lamp;
    QString card;
    qint64 member = 0; ///< whose account is charged
    QString name;      ///< of the member
    int minutes = 0;
    qint64 cents = 0;              ///< price of all of them
    platform::TDateTime began = 0; ///< 0: not yet
    platform::TDateTime until = 0; ///< 0: not yet known
    platform::TDateTime ended = 0; ///< 0: not yet
    TLampEnding ending = TLampEnding::None;

    bool open() const { return ending == TLampEnding::None; }
    bool waiting() const { return open() && began == 0; }
    /// Whether the lamp is to be on for it.
    bool running(platform::TDateTime now) const;
};

using PLampTime = std::shared_ptr<TLampTime>;

QString toText(TLampEnding ending);
std::optional<TLampEnding> toLampEnding(QStringView text);

/// Whole seconds from one moment to a later one, begun ones included; 0 when it is not later.
qint64 secondsBetween(platform::TDateTime from, platform::TDateTime to);

/// Example: 299 gives "4:59", 3899 gives "1:04:59".
QString timeLeftText(qint64 seconds);

/// One line of log.
/// Example: "12:00:00.250  Sun 1  Anna Berg (10000001)  5 min for 2.50, until 12:05:00".
QString logLine(const TLampTime& time);

} // namespace tnv5::host
