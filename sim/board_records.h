#pragma once

#include <QStringList>
#include <QtGlobal>

namespace tnv5::sim {

/// What one board heard and did.
struct TBoardCounts
{
    qint64 Pings = 0;    // said
    qint64 Echoes = 0;   // heard
    qint64 Hardware = 0; // asked for what it is
    qint64 Opened = 0;
    qint64 Refused = 0;
    qint64 Guards = 0; // "SDG" heard
    qint64 RelayOrders = 0;
    qint64 RelayReports = 0; // "SS" said
    qint64 Alarms = 0;       // orders to relay 3 for a time
    qint64 RowsShown = 0;
    qint64 Lights = 0;
    qint64 Sounds = 0;
    qint64 Passed = 0;
    qint64 GaveUp = 0;
};

/// How a board misbehaves.
struct TBoardFaults
{
    bool Silent = false;  // hears and obeys but says nothing
    bool Dead = false;    // hears nothing and says nothing
    bool Babbles = false; // says noise instead of its lines
    int LateAnswerMs = 0; // says everything so much later
};

/// How long things take, in milliseconds; 0 happens at once.
struct TBoardDelays
{
    int AnswerMs = 5;     // command heard: answered
    int PauseMs = 20;     // nothing followed: the command is over
    int OpenMs = 3'000;   // a gate stays open when nobody passes
    int ProgressMs = 400; // gate opened: the person is in it ("PR")
    int PassageMs = 500;  // the person is in the gate: through it ("GR")
    int GiveUpMs = 1'500; // gate opened: reported that nobody came ("FK")
    int RelayPulseMs = 0; // a relay without a time of its own is on so long; 0: it changes over
    int TimeUnitMs = 100; // one unit of a relay's time
};

} // namespace tnv5::sim
