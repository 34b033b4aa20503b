// From the bytes on the line to the boards' lines, however the stream is cut.

#include "connector_fixture.h"

#include <random>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Framing = TConnectorTest;

TEST_F(Framing, StartCharacterTellsTheKindOfLine)
{
    port->feed("$000AGO\r#000AGO\r");
    trace.expect(routed("$0.0.0.0:000AGO") + routedChecked("#0.0.0.0:000ACROSS"));
}

TEST_F(Framing, OneReadGoesToTheDollarLinesFirst)
{
    port->feed("#000AGO\r$000AX\r");
    trace.expect(routed("$0.0.0.0:000AX") + routedChecked("#0.0.0.0:000ACROSS"));
    port->feed("#000AGO\r");
    port->feed("$000AX\r");
    trace.expect(routedChecked("#0.0.0.0:000ACROSS") + routed("$0.0.0.0:000AX"));
}

TEST_F(Framing, NoiseBetweenLinesIsDropped)
{
    port->feed("noise\r\n$000AX\rmore\r");
    trace.expect(routed("$0.0.0.0:000AX"));
}

TEST_F(Framing, OnlyACarriageReturnEndsALine)
{
    port->feed("$000AX\n$000BY\r");
    trace.expect(routed("$0.0.0.0:000AX\n$000BY"));
    port->feed("$000A");
    port->feed("X");
    trace.expect({});
    port->feed("\r");
    trace.expect(routed("$0.0.0.0:000AX"));
}

TEST_F(Framing, EachSplitterSeesTheWholeStream)
{
    port->feed("$000AX#001BGO\r");
    trace.expect(routed("$0.0.0.0:000AX#001BGO") + routedChecked("#0.0.0.0:001BCROSS"));
    port->feed("#000ABT$001BX\r");
    trace.expect(routed("$0.0.0.0:001BX") + routedChecked("#0.0.0.0:000ABTPH"));
}

TEST_F(Framing, StartCharacterInsideALineIsContent)
{
    port->feed("$000A$000B\r");
    trace.expect(routed("$0.0.0.0:000A$000B"));
    port->feed("$$000AX\r");
    trace.expect(routed("$0.0.0.0:$000AX"));
    EXPECT_EQ(bus->DeviceItem(1)->Device, "$000");
}

TEST_F(Framing, LinesAreTrimmed)
{
    port->feed("$ \t\n 000AX \n\t\x01\x1f \r");
    trace.expect(routed("$0.0.0.0:000AX"));
    EXPECT_EQ(bus->DeviceItem(0)->Device, "000A");
    port->feed("#\n000ABT\n\r");
    trace.expect(routedChecked("#0.0.0.0:000ABTPH"));
    port->feed(QByteArray("$\0\0"
                          "000AX\0\r",
                          10));
    trace.expect(routed("$0.0.0.0:000AX"));
}

TEST_F(Framing, OnlyCharactersUpTo32AreTrimmed)
{
    port->feed("$\xa0"
               "000AX\xa0\r"); // a no-break space
    trace.expect(routed(QStringLiteral("$0.0.0.0:\u00a0") + "000AX" + QChar(0xA0)));
    port->feed("$\x7f"
               "00AX\x7f\r");
    trace.expect(routed(QStringLiteral("$0.0.0.0:\x7f") + "00AX\x7f"));
}

TEST_F(Framing, ALineGivenDirectlyIsNotTrimmed)
{
    hear("$ 000AX ");
    trace.expect(routed("$10.0.0.7: 000AX "));
    EXPECT_EQ(bus->DeviceItem(0)->Device, " 000");
}

TEST_F(Framing, EmptyLinesAreDroppedUnheard)
{
    for (const char* stream : {"$\r", "#\r", "$ \t\n\r", "# \r", "$\x01\r", "\r\r\r"}) {
        port->feed(stream);
    }
    trace.expect({});
    EXPECT_EQ(bus->DeviceCount(), 0);
}

TEST_F(Framing, WhatComesOnAClosedPortIsDroppedUnheard)
{
    port->Close();
    port->feed("$000APING\r#000ABT\r");
    trace.expect({});
    EXPECT_EQ(bus->DeviceCount(), 0);
    EXPECT_FALSE(port->Connected()); // and opens nothing
}

TEST_F(Framing, APortThatClosesBetweenTwoLinesOfOneReadDropsTheSecond)
{
    trace.once("route ", [this] { port->Close(); });
    port->feed("$000AX\r$001AX\r#002AGO\r");
    trace.expect(routed("$0.0.0.0:000AX"));
    EXPECT_EQ(bus->DeviceCount(), 1);
}

TEST_F(Framing, ReceivingDoesNotLookAtTheType)
{
    for (const auto type : {connector::podEmpty, connector::podNet, connector::podComPort}) {
        bus->SetConnectorType(type);
        port->feed("$000AX\r#000AGO\r");
        trace.expect(routed("$0.0.0.0:000AX") + routedChecked("#0.0.0.0:000ACROSS"));
    }
}

TEST_F(Framing, BytesAreCharactersOfTheCodePage)
{
    port->feed("$000A\xcf\xf0\xe8\xe2\xe5\xf2\r");
    trace.expect(routed("$0.0.0.0:000AПривет"));
}

TEST_F(Framing, LongLinesArrive)
{
    const QByteArray text(30'000, 'x');
    port->feed("$000A" + text + "\r");
    trace.expect(routed("$0.0.0.0:000A" + QString::fromLatin1(text)));
}

// Random streams. Every "$" is followed by "D" and every "#" by "H", so that the address of a routed line
// tells which splitter it came through.

QByteArray randomStream(std::mt19937& random)
{
    static const QByteArrayList words{"$D00A", "$D01B", "#H00A",     "#H01B",  "$D\r", "#H\r", "\r", "\r",
                                      "PING",  "BT",    "ET",        "HW",     "GO",   " ",    "\n", "x",
                                      "\xcf",  "GX=N/", "GX=G20x4/", "GR=NY/", "/",    "=",    "$D", "#H"};
    QByteArray stream;
    for (int i = 0; i < 120; ++i) {
        stream += words[qsizetype(random() % std::size_t(words.size()))];
    }
    return stream;
}

/// What came through each splitter, in its order.
struct TRouted
{
    QStringList dollar;
    QStringList hash;
    bool operator==(const TRouted&) const = default;
};

class CutStream : public TConnectorTest
{
protected:
    /// Routed lines of a stream, fed in pieces that `pieceSize` gives.
    static TRouted routedLines(const QByteArray& stream, const std::function<qsizetype()>& pieceSize)
    {
        TRouted lines;
        TMemoryPort port;
        TDeviceConnector bus;
        bus.SetConnectorType(connector::podComPort);
        bus.SetComport(&port);
        port.Open();
        bus.SetOnGetData([&lines](TComponent*, const QString& line) {
            const QString prefix = line.left(9);
            EXPECT_TRUE(prefix == "$0.0.0.0:" || prefix == "#0.0.0.0:") << prefix.toStdString();
            (line[9] == u'D' ? lines.dollar : lines.hash) << line;
        });
        for (qsizetype at = 0; at < stream.size();) {
            const qsizetype size = pieceSize();
            port.feed(stream.mid(at, size));
            at += size;
        }
        return lines;
    }
};

TEST_F(CutStream, GivesTheSameLinesHoweverItIsCut)
{
    std::mt19937 random(7);
    qsizetype lines = 0;
    for (int round = 0; round < 40; ++round) {
        const QByteArray stream = randomStream(random);
        const TRouted whole = routedLines(stream, [&] { return stream.size(); });
        lines += whole.dollar.size() + whole.hash.size();
        ASSERT_EQ(routedLines(stream, [] { return 1; }), whole) << stream.toPercentEncoding().toStdString();
        for (int cut = 0; cut < 5; ++cut) {
            ASSERT_EQ(routedLines(stream, [&] { return qsizetype(1 + random() % 40); }), whole)
                << stream.toPercentEncoding().toStdString();
        }
    }
    EXPECT_GT(lines, 300);
}

TEST_F(CutStream, OneCutAnywhere)
{
    const QByteArray stream = "x$D00APING\r#H00AHWGX=G20x4/GR=NY/\r$D01BET5\r# H01BBT \r$D#H00AGO\r";
    const TRouted whole = routedLines(stream, [&] { return stream.size(); });
    EXPECT_EQ(whole.dollar.join(u' '),
              QStringList({checked("#0.0.0.0:D00APING"), checked("#0.0.0.0:D01BPING"), "$0.0.0.0:D01BET5",
                           "$0.0.0.0:D#H00AGO"})
                  .join(u' '));
    EXPECT_EQ(whole.hash.size(), 5);
    for (qsizetype cut = 1; cut < stream.size(); ++cut) {
        qsizetype next = cut;
        ASSERT_EQ(routedLines(stream, [&] { return std::exchange(next, stream.size()); }), whole) << cut;
    }
}

} // namespace
