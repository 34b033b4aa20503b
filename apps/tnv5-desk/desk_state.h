#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

/// The desk of a club: what a person at the front desk sees of it and does with it.
namespace tnv5::desk {

struct TLineState
{
    QString name;
    QString port;
    bool open = false;
    QString why; ///< it is not open
};

/// Which way a gate leads, as the host says it.
enum class TWay { In, Out, Inner };

struct TGateState
{
    QString address;
    QString zone;
    TWay way = TWay::In;
    QString line;
    std::optional<bool> answering; ///< none: it says nothing by itself
    bool busy = false;
    QString holder; ///< who is passing
};

struct TBoardState
{
    QString address;
    QString line;
    bool answering = false;
    QString heard; ///< ISO time, empty: never
};

struct TLampState
{
    QString name;
    QString board;
    QString relay;
    bool on = false;
    bool answers = false;
    QString holder;
    qint64 secondsLeft = 0; ///< when the state was made
};

struct TScaleState
{
    QString name;
    std::optional<int> grams;
    bool steady = false;
};

struct TTerminalState
{
    QString name;
    qint64 cents = 0;
    QString stage;
};

/// A club as its host describes it at one moment.
struct TClubState
{
    QString club;
    QString version;
    QList<TLineState> lines;
    QList<TGateState> gates;
    QList<TBoardState> boards;
    QList<TLampState> lamps;
    QList<TScaleState> scales;
    QList<TTerminalState> terminals;
    std::optional<qint64> inside; ///< none: the host cannot say
    qint64 journalWaiting = 0;
    QStringList troubles;
};

/// Reads a state as a host sends it. What is missing or of another kind is empty: a host may be newer or
/// older than the desk.
TClubState toState(const QJsonObject& object);

/// One telling of a pass: it was decided about, or it has ended.
struct TPassNews
{
    QString began; ///< ISO times
    QString ended; ///< empty: under way, or refused
    QString card;
    qint64 member = 0; ///< 0: nobody's card
    QString name;
    qint64 balance = 0; ///< cents
    QString gate;
    QString zone;
    std::optional<TWay> way;
    bool opened = false;
    QString reason; ///< in the host's words, why it did not open
    QString ending; ///< in the host's words, how it ended
    QString who;    ///< opened by hand
    QString note;
    QByteArray picture; ///< PNG

    bool underWay() const { return opened && ending.isEmpty(); }
    bool byButton() const;
    bool byHand() const;
    /// Two tellings of one pass.
    bool sameAs(const TPassNews& other) const;
};

TPassNews toPass(const QJsonObject& object);

/// Seconds that are left of those of a state, so long after the state came. @param elapsedMs 0 or more
qint64 secondsLeft(qint64 secondsThen, qint64 elapsedMs);

/// Example: 299 gives "4:59", 3899 gives "1:04:59".
QString durationText(qint64 seconds);

/// An amount of cents with two decimals, as the host writes it. Example: -5 gives "-0.05".
QString amountText(qint64 cents);

} // namespace tnv5::desk
