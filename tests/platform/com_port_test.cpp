#include "tnv5/platform/com_port.h"

#include "support/text_printers.h"
#include "tnv5/testing/memory_port.h"

#include <QVariant>
#include <gtest/gtest.h>
#include <utility>

namespace {

using namespace tnv5::platform;
using tnv5::testkit::TMemoryPort;

TEST(ComPort, HasTheUsualSettings)
{
    const TMemoryPort port;
    EXPECT_EQ(port.BaudRate(), 9600);
    EXPECT_EQ(port.DataBits(), 8);
    EXPECT_EQ(port.Parity(), TParity::None);
    EXPECT_EQ(port.StopBits(), TStopBits::One);
    EXPECT_FALSE(port.Connected());
}

TEST(ComPort, OpensAndClosesOnceByEitherName)
{
    TMemoryPort port;
    port.SetConnected(true);
    EXPECT_TRUE(port.Connected());
    port.Open();
    port.Close();
    EXPECT_FALSE(port.Connected());
    port.Close();
    EXPECT_TRUE(port.setProperty("Connected", QVariant(true)));
    EXPECT_TRUE(port.Connected());
}

TEST(ComPort, WritesWhatItIsGiven)
{
    TMemoryPort port;
    port.Open();
    QByteArray answered;
    port.OnWritten = [&](const QByteArray& bytes) { answered = bytes; };
    const QByteArray bytes("\0\xff$\r", 4);
    port.Write(bytes);
    EXPECT_EQ(answered, bytes);
    EXPECT_EQ(port.takeWrites(), QByteArrayList({bytes}));
    EXPECT_EQ(port.takeWrites(), QByteArrayList());
}

TEST(ComPort, RefusesToWriteWhenClosed)
{
    TMemoryPort port;
    EXPECT_THROW(port.Write("x"), EComPort);
    EXPECT_EQ(port.takeWritten(), "");
}

TEST(MemoryPort, FailsAsOrdered)
{
    TMemoryPort port;
    port.OpenFailure = QStringLiteral("no port");
    EXPECT_THROW(port.Open(), EComPort);
    EXPECT_FALSE(port.Connected());
    port.OpenFailure.reset();
    port.Open();
    port.WriteFailure = QStringLiteral("no write");
    EXPECT_THROW(port.Write("x"), EComPort);
    port.CloseFailure = QStringLiteral("no close");
    EXPECT_THROW(port.Close(), EComPort);
    EXPECT_TRUE(port.Connected());
}

TEST(MemoryPort, RaisesAnErrorEventWithTheSystemsNumberAndText)
{
    TMemoryPort port;
    QString seen;
    port.OnException = [&](TComponent* sender, TComExceptionKind kind, const QString& message, qint64 number,
                           const QString& text) {
        EXPECT_EQ(sender, &port);
        EXPECT_EQ(kind, TComExceptionKind::Resource);
        seen = message + QString::number(number) + text;
        throw EAbort(); // must not reach the test
    };
    port.raiseError(TComExceptionKind::Resource, QStringLiteral("gone "), 5, QStringLiteral(" I/O error"));
    EXPECT_EQ(seen, QStringLiteral("gone 5 I/O error"));
}

TEST(MemoryPort, MayBeDestroyedInsideItsOwnOperations)
{
    TMemoryPort* port = nullptr;
    const auto destroy = [&port] { delete std::exchange(port, nullptr); };
    const auto make = [&](bool open) {
        port = new TMemoryPort;
        if (open) {
            port->Open();
        }
    };

    make(false);
    port->OnOpening = destroy;
    EXPECT_NO_THROW(port->Open());
    EXPECT_EQ(port, nullptr);

    make(true);
    port->OnClosing = destroy;
    EXPECT_NO_THROW(port->Close());
    EXPECT_EQ(port, nullptr);

    make(true);
    port->OnWriting = destroy;
    port->WriteFailure = QStringLiteral("not read any more");
    EXPECT_NO_THROW(port->Write("x"));
    EXPECT_EQ(port, nullptr);

    make(true);
    port->OnWritten = [&](const QByteArray&) { destroy(); };
    EXPECT_NO_THROW(port->Write("x"));
    EXPECT_EQ(port, nullptr);
}

TEST(MemoryPort, MayBeDestroyedByItsErrorHandlerDuringAWrite)
{
    auto* port = new TMemoryPort;
    port->Open();
    port->OnException = [&](TComponent*, TComExceptionKind, const QString&, qint64, const QString&) {
        delete std::exchange(port, nullptr);
    };
    port->OnWriting = [&] { port->raiseErrorInside(TComExceptionKind::Resource, QString(), 5, QString()); };
    EXPECT_NO_THROW(port->Write("x"));
    EXPECT_EQ(port, nullptr);
}

TEST(MemoryPort, CountsAndKeepsOnlyWhatItIsAskedTo)
{
    TMemoryPort port;
    port.Open();
    port.KeepWrites = false;
    port.Write("x");
    EXPECT_EQ(port.takeWritten(), "");
    port.feed("abc");
    EXPECT_EQ(port.bytesRead(), 3);
}

} // namespace
