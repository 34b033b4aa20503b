#pragma once

#include "sim/classic_line.h"
#include "sim/memory_stream.h"
#include "support/text_printers.h"
#include "tnv5/testing/manual_clock.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace tnv5::sim {

// What a host sends, with checksums worked out by hand.
inline const QByteArray kOpenTurnstile = QByteArrayLiteral("$01A10366\r");
inline const QByteArray kRefuseTurnstile = QByteArrayLiteral("$01A00064\r");
inline const QByteArray kOpenDoor = QByteArrayLiteral("$02D32360\r");
inline const QByteArray kHoldDoor = QByteArrayLiteral("$02D32063\r");
inline const QByteArray kReleaseDoor = QByteArrayLiteral("$02D30061\r");
inline const QByteArray kPoll = QByteArrayLiteral("$0009001D\r");

inline const QString kTurnstile = QStringLiteral("01A");
inline const QString kDoor = QStringLiteral("02D");
inline const QString kCard = QStringLiteral("12345678");

/// A turnstile and a door on a line in memory, with a diary of what the hooks told.
class TClassicFixture : public ::testing::Test
{
protected:
    TClassicFixture()
    {
        line->addController(kTurnstile);
        line->addController(kDoor);
        line->OnOpened = [this](const QString& address) { diary += QStringLiteral("opened ") + address; };
        line->OnClosed = [this](const QString& address) { diary += QStringLiteral("closed ") + address; };
        line->OnRefused = [this](const QString& address) { diary += QStringLiteral("refused ") + address; };
        line->OnPassed = [this](const QString& address) { diary += QStringLiteral("passed ") + address; };
        line->OnGaveUp = [this](const QString& address) { diary += QStringLiteral("gave up ") + address; };
    }

    /// A command is heard and the controller has had time to answer it.
    QByteArray command(const QByteArray& bytes)
    {
        stream.feed(bytes);
        clock.advance(line->Delays.AcknowledgeMs);
        return stream.takeWritten();
    }

    /// Says what the line says while time passes.
    QByteArray heardIn(int ms)
    {
        clock.advance(ms);
        return stream.takeWritten();
    }

    TFate fate(quint64 reading) const { return line->reading(reading).Fate; }

    testkit::TManualClock clock;
    TMemoryStream stream;
    std::unique_ptr<TClassicLine> line = std::make_unique<TClassicLine>(stream);
    QStringList diary;
};

} // namespace tnv5::sim
