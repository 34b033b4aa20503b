#pragma once

#include "tnv5/platform/clock.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

/// What the reference host knows of its club: members, memberships, gates and passes.
namespace tnv5::host {

/// Which way a gate leads. `Inner` is a door inside the club: it neither asks nor changes who is inside.
enum class TDirection { In, Out, Inner };

/// A channel of a classic controller (three characters) or a networked one (four): its address and the zone
/// that it leads into or out of.
struct TGate
{
    QString address;
    QString zone;
    TDirection direction = TDirection::In;

    bool operator==(const TGate&) const = default;
};

struct TMember
{
    qint64 id = 0;
    QString name;
    bool suspended = false;
    bool inside = false;
    qint64 balance = 0; ///< of the member's account, in cents; below 0: owed
};

/// A right to enter zones, from the first to the last day, both included.
struct TMembership
{
    QDate from;
    QDate to;
    QStringList zones;
};

/// Whom a card belongs to.
struct THolder
{
    TMember member;
    QList<TMembership> memberships;
};

/// Why a card is refused; `None`: it is not.
enum class TRefusal {
    None,
    UnknownGate,
    UnknownCard,
    Suspended,
    NoMembership,
    NotYetValid,
    Expired,
    WrongZone,
    AlreadyInside,
    HostFault, ///< the host could not find out, for example because the database failed
};

/// How an opened pass ended; `None`: it was refused or is still under way. `Interrupted`: the host was shut
/// down meanwhile. `Abandoned`: the host was killed meanwhile, and the next one found the pass open.
enum class TEnding { None, Passed, TimedOut, Unanswered, Interrupted, Abandoned };

/// One pass, a row of the journal.
struct TPass
{
    qint64 id = 0; ///< row of the journal, 0: not written yet
    platform::TDateTime began = 0;
    platform::TDateTime ended = 0; ///< 0: under way
    QString card;                  ///< card number, or the pseudo card of a button or of an opening by hand
    qint64 member = 0;             ///< 0: none
    QString name;                  ///< of the member; not kept in the journal
    qint64 balance = 0;            ///< of the member, in cents; not kept in the journal
    QString gate;
    std::optional<TDirection> direction; ///< of the gate, if it is known; not kept in the journal
    TRefusal refusal = TRefusal::None;   ///< none: it was opened
    TEnding ending = TEnding::None;
    QString who;  ///< who opened by hand; empty otherwise
    QString note; ///< and why

    bool opened() const { return refusal == TRefusal::None; }
    bool underWay() const { return opened() && ending == TEnding::None; }
};

using PPass = std::shared_ptr<TPass>;

/// A time in which a line could not be used, a row of the outages.
struct TOutage
{
    qint64 id = 0; ///< row of the outages, 0: not written yet
    QString line;  ///< name of the line
    platform::TDateTime began = 0;
    platform::TDateTime ended = 0; ///< 0: it goes on
    QString why;
};

using POutage = std::shared_ptr<TOutage>;

/// Goods sold by weight, a row of the sales.
struct TSale
{
    qint64 id = 0; ///< row of the sales, 0: not written yet
    platform::TDateTime sold = 0;
    QString card;
    qint64 member = 0; ///< whose account is charged
    QString name;      ///< of the member; not kept in the sales
    QString product;
    qint64 centsPerKg = 0;
    int grams = 0;
    qint64 cents = 0; ///< what is charged
};

/// Price of that many grams, rounded to the nearest cent, halves up. @param grams 0 or more
qint64 priceFor(int grams, qint64 centsPerKg);

/// An amount of cents with two decimals. Example: -5 gives "-0.05".
QString amountText(qint64 cents);

// The words below are those of the journal, the gate table and the log.
QString toText(TDirection direction);
QString toText(TRefusal refusal);
QString toText(TEnding ending);
std::optional<TDirection> toDirection(QStringView text);
std::optional<TRefusal> toRefusal(QStringView text);
std::optional<TEnding> toEnding(QStringView text);

/// Whether that is the address of a gate on a line of classic controllers: two digits and a capital letter,
/// such as 01A.
bool isLineAddress(const QString& text);
/// Whether that is the address of a gate on a bus of networked boards: four digits or capital letters, such
/// as 101T. The last is its type; I is a display, which is no gate.
bool isBusAddress(const QString& text);

/// Reads a gate written as address:zone:direction, such as "01A:hall:in". Nothing when it is none.
std::optional<TGate> toGate(const QString& text);

/// The day of a date-time.
QDate dayOf(platform::TDateTime time);
/// Example: "2026-01-05 12:00:00.250". Empty for 0.
QString toText(platform::TDateTime time);
/// The other way round; 0 when the text is no date and time.
platform::TDateTime toDateTime(const QString& text);

/// Who, what and why of a pass. Example: "Anna Berg (12345678)  refused: expired".
QString passText(const TPass& pass);

/// One line of log about a pass: when, where, who, what and why.
/// Example: "12:00:00.250  01A  Anna Berg (12345678)  refused: expired".
QString logLine(const TPass& pass);
/// Example: "12:00:00.250  scale  Anna Berg (10000001)  450 g apples at 3.20/kg: 1.44".
QString logLine(const TSale& sale);

} // namespace tnv5::host
