#pragma once

#include "sim/byte_stream.h"
#include "sim/later.h"
#include "sim/scales_wire.h"
#include "tnv5/platform/timer.h"

namespace tnv5::sim {

/// A scale of one of the families with something on its platform.
///
///     TPty pty(QStringLiteral("scale"));
///     TSimulatedScale scale(pty, 2);
///     scale.put(1'250);       // settled at once
///     scale.put(2'500, 800);  // settles after 0.8 s
///     scale.put(-40);         // the tare is gone
///     scale.put(0);           // the platform is empty
///
/// For broken packets and noise put a `TLineFaults` between, with `NoiseAvoids` set to `marks()`.
/// The stream must outlive it.
class TSimulatedScale final
{
public:
    /// @param family number of the family, from 1 on
    /// @throws platform::Exception when there is no such family.
    TSimulatedScale(TByteStream& stream, int family);
    ~TSimulatedScale();
    TSimulatedScale(const TSimulatedScale&) = delete;
    TSimulatedScale& operator=(const TSimulatedScale&) = delete;

    int family() const { return FFamily; }
    bool talksByItself() const { return FWire.Request.isEmpty(); }
    /// Bytes that noise must not contain to stay outside the packets. Families 1, 3 and 4 have none: noise
    /// before their answers spoils them.
    QByteArray marks() const { return FWire.Marks; }

    /// Puts that much on the platform, in the scale's own units.
    /// @param settleMs how long it moves before it settles; until then the scale shows the middle between
    /// before and after.
    void put(int weight, int settleMs = 0);
    /// What the scale shows now.
    TLoad load() const;

    /// The greatest weight before the scale is overloaded; no more than the packets of the family have room
    /// for.
    int capacity() const { return FCapacity; }
    void setCapacity(int weight);

    /// Off: the scale says nothing, and what it was about to say is never said.
    void setAnswering(bool answering);
    bool answering() const { return FAnswering; }

    /// How long each answer takes; nothing by default.
    int DelayMs = 0;

    /// How often a scale that talks by itself does; 100 ms at first.
    void setPeriodMs(int ms);

    /// Requests understood, those that were not answered included.
    qint64 requests() const { return FRequests; }
    /// Packets and handshakes said.
    qint64 answers() const { return FAnswers; }

private:
    void receive(const QByteArray& bytes);
    bool heard(const QByteArray& request);
    void say(QByteArray (*answer)(const TLoad&));

    TByteStream& FStream;
    int FFamily;
    const TScaleWire& FWire;
    int FCapacity;
    int FWeight = 0;
    int FBefore = 0;
    bool FSettled = true;
    bool FAnswering = true;
    QByteArray FHeard; // the last bytes that may belong to a request
    qint64 FRequests = 0;
    qint64 FAnswers = 0;
    TLater FSettling;
    TLater FAnswersToCome;
    platform::TTimer FTalk;
};

} // namespace tnv5::sim
