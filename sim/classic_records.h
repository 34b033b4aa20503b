#pragma once

#include "tnv5/platform/clock.h"

#include <QByteArray>
#include <QString>

namespace tnv5::sim {

/// What a person does once the gate is opened for them.
enum class TBehaviour {
    PassesThrough, // the controller reports the passage
    GivesUp,       // stays, and the controller reports that nobody came
    WalksAway      // leaves before the controller can tell; nothing is reported
};

/// What became of a person who asked to pass, as seen at the gate.
enum class TFate {
    Waiting,
    Opened,
    Refused,
    NoCommand // nothing came within the time that a person waits
};

/// One person who asked to pass with a card, at a button or at an in-gate sensor.
struct TReading
{
    quint64 Id = 0; // 1, 2, 3 ... for each line
    QString Address;
    QString Card; // empty for a button or in-gate sensor
    TBehaviour Behaviour = TBehaviour::PassesThrough;
    TFate Fate = TFate::Waiting;
    bool Passed = false;
    platform::TDateTime Asked = 0;
    platform::TDateTime Answered = 0; // 0 while waiting
};

/// One command heard on the line.
struct TReceivedCommand
{
    platform::TDateTime Time = 0;
    QByteArray Line; // without carriage return
    bool Right = false;
};

/// What happened at one gate, or at all of them.
struct TGateCounts
{
    qint64 Asked = 0;
    qint64 Commands = 0;    // right ones
    qint64 BadCommands = 0; // wrong ones that were addressed here
    qint64 Opened = 0;
    qint64 Refused = 0;
    qint64 NoCommand = 0;
    qint64 Passed = 0;
    qint64 GaveUp = 0;

    TGateCounts& operator+=(const TGateCounts& other);
};

/// How a controller misbehaves.
struct TControllerFaults
{
    bool Silent = false;     // obeys commands and reports passages but answers no command
    bool Dead = false;       // hears nothing and says nothing
    bool HearsWrong = false; // takes every command for a wrong one
    int LateAnswerMs = 0;    // answers commands so much later; the gate moves in time
};

/// How long things take, in milliseconds; 0 happens at once.
struct TClassicDelays
{
    int AcknowledgeMs = 20;   // command heard: relay set and answer sent
    int ProgressMs = 700;     // gate opened: the person is in it ("P", or a door's "Gate-Open")
    int PassageMs = 800;      // the person is in the gate: through it ("G")
    int GiveUpMs = 1500;      // gate opened: reported that nobody came ("F"), at the latest when it closes
    int AnswerLimitMs = 5000; // asked: the person no longer waits for a command
    int RestartMs = 50;       // "HardReset": ready for cards again
};

} // namespace tnv5::sim
