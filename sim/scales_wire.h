#pragma once

#include <QByteArray>

/// What scales of each family say and hear, as bytes.
namespace tnv5::sim {

/// What lies on a platform at the moment of asking.
struct TLoad
{
    int Weight = 0; ///< in the scale's own units, below zero included
    bool Settled = true;
    bool Over = false; ///< more, or less, than the scale can show
};

/// One family from the scale's side of the wire.
struct TScaleWire
{
    /// What asks the scale; empty: it talks by itself.
    QByteArray Request;
    /// What it says then, or by itself: the weight, or in a dialogue whether there is one.
    QByteArray (*Answer)(const TLoad& load);
    /// What asks for the weight in a dialogue; empty: there is none.
    QByteArray Second;
    QByteArray (*SecondAnswer)(const TLoad& load);
    /// The greatest weight that the packet has room for.
    int Most;
    /// Bytes that begin or end a packet; noise without them can be told from a packet. Empty: no noise can.
    QByteArray Marks;
};

/// The wire of a family, by its number from 1 on; nullptr when there is no such family.
const TScaleWire* scaleWire(int family);

/// The least weight that any family can show.
constexpr int kLeastWeight = -9'999;

} // namespace tnv5::sim
