#pragma once

#include "sim/classic_line.h"
#include "tnv5/host/books/database.h"

namespace tnv5::cli {

/// One card held to one reader (or one press of an exit button, with its pseudo card), and what must come of
/// it. Written down by hand, not worked out: the demo compares it with what the gates really do.
struct TStep
{
    QString gate;
    QString card;
    sim::TBehaviour behaviour;
    host::TRefusal refusal; ///< none: the gate opens
    host::TEnding ending;
    QStringList shown = {}; ///< by the gate's display from its first row on; empty: it has none
};

/// Somebody who does these steps one after the other, again and again.
struct TVisitor
{
    QString name;
    QList<TStep> steps;
};

/// Somebody who buys fruit by weight, and what must be charged; written down by hand as well.
struct TPurchase
{
    QString name;
    QString card;
    QString product;
    QList<int> loads; ///< what lies on the scale, in grams, one after the other; the last is what is bought
    qint64 cents;
};

/// Somebody who buys time on a lamp, and what must come of it.
struct TLampVisit
{
    QString name;
    QString card;
    QString lamp;
    int minutes;
    qint64 cents;      ///< what is charged; below 0: refused
    bool more = false; ///< comes while somebody's time is running, and adds to it
};

/// Address of the controller that answers nothing.
extern const QString kSilentGate;
/// Pair of relay boards that the lamps are on.
extern const QString kLampPair;

/// Enters the demo's small club into an empty database.
void fillClub(host::TDatabase& club, QDate today);

/// The gates of the classic line.
QStringList demoGates();
/// The networked gates.
QStringList demoBoards();
QList<TVisitor> demoVisitors();
QList<TPurchase> demoPurchases();
/// Other people than those who buy fruit: each part of the demo looks after its own accounts.
QList<TLampVisit> demoLampVisits();

} // namespace tnv5::cli
