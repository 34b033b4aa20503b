// The display command "SH".

#include "connector_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

QString blanks(int count)
{
    return QString(count, u' ');
}

class Display : public TConnectorTest
{
protected:
    /// Shows on board 000A with a display of `width`; `fields` is what stands behind the address.
    void show(const QString& fields, int width = 4)
    {
        giveDisplay("000A", width);
        EXPECT_EQ(bus->SendCommand("SH0.0.0.0:000A" + fields), "");
    }
};

TEST_F(Display, FourLinesAndFlags)
{
    show("|one|two|three|four|LS|", 20);
    trace.expect(sent("$000ACS") + sent("$000APSN1001" + blanks(9) + "one" + blanks(8)) +
                 sent("$000APSN1002" + blanks(9) + "two" + blanks(8)) +
                 sent("$000APSN1003" + blanks(8) + "three" + blanks(7)) +
                 sent("$000APSN1004" + blanks(8) + "four" + blanks(8)) + sent("$000BFL1") + sent("$000BES") +
                 linesSent("$000BES"));
}

TEST_F(Display, PairsAreAddressedByTheirGroup)
{
    giveDisplay("123B", 4);
    bus->SendCommand("SH0.0.0.0:123B|||||LS|");
    trace.expect(sent("$123BFL1") + sent("$123BES") + linesSent("$123BES"));
}

TEST_F(Display, BytesOnTheLine)
{
    show("|Hello||||LS|", 20);
    EXPECT_EQ(port->takeWrites(),
              QByteArrayList({"$000ACSF7", "$000APSN1001        Hello       3D", "$000BFL1E5", "$000BES67"}));
}

TEST_F(Display, EachLineHasItsOwnNumber)
{
    const QStringList codes{"PSN1001", "PSN1002", "PSN1003", "PSN1004"};
    for (int i = 0; i < 4; ++i) {
        show(QString(i + 1, u'|') + "text" + QString(5 - i, u'|'));
        trace.expect(sent("$000ACS") + sent("$000A" + codes[i] + "text") +
                     linesSent("$000A" + codes[i] + "text"));
    }
}

TEST_F(Display, BlankLinesAreLeftOut)
{
    show("| \t|two| \x01 |four||");
    trace.expect(sent("$000ACS") + sent("$000APSN1002 two") + sent("$000APSN1004four") +
                 linesSent("$000APSN1004four"));
}

TEST_F(Display, LinesAreTrimmed)
{
    show("|  ab\t |\n|||| ");
    trace.expect(sent("$000ACS") + sent("$000APSN1001 ab ") + linesSent("$000APSN1001 ab "));
    show(QStringLiteral("|\u00a0|||||")); // a no-break space is no blank
    trace.expect(sent("$000ACS") + sent(QStringLiteral("$000APSN1001  \u00a0 ")) +
                 linesSent(QStringLiteral("$000APSN1001  \u00a0 ")));
}

TEST_F(Display, CentringOfEvenAndOddLengths)
{
    const auto expectShown = [this](const QString& text, int width, const QString& shown) {
        show("|" + text + "|||||", width);
        trace.expect(sent("$000ACS") + sent("$000APSN1001" + shown) + linesSent("$000APSN1001" + shown));
    };
    expectShown("Hello", 20, blanks(8) + "Hello" + blanks(7));
    expectShown("Fine", 20, blanks(8) + "Fine" + blanks(8));
    expectShown("Hello", 21, blanks(8) + "Hello" + blanks(8));
    expectShown("Fine", 21, blanks(8) + "Fine" + blanks(9));
    expectShown("abc", 4, " abc");
    expectShown("abcd", 5, "abcd ");
    expectShown("Вход", 8, "  Вход  "); // characters, not bytes
}

TEST_F(Display, LinesAsLongOrLongerAreSentWhole)
{
    for (const int length : {20, 21, 25, 300}) {
        const QString text(length, u'x');
        show("|" + text + "|||||", 20);
        trace.expect(sent("$000ACS") + sent("$000APSN1001" + text) + linesSent("$000APSN1001" + text));
    }
    show("| ab |||||", 1);
    trace.expect(sent("$000ACS") + sent("$000APSN1001ab") + linesSent("$000APSN1001ab"));
}

TEST_F(Display, WidthOfOne)
{
    show("|a||||LS|", 1);
    trace.expect(sent("$000ACS") + sent("$000APSN1001a") + sent("$000BFL1") + sent("$000BES") +
                 linesSent("$000BES"));
}

TEST_F(Display, UnknownOrNoDisplayOnlyLogs)
{
    port->Close();
    for (const int width : {-1, 0, -7}) {
        show("|one|two|three|four|LS|", width);
        trace.expect(kNoLinesSent);
    }
    EXPECT_FALSE(port->Connected()); // nothing to write: not even opened
}

TEST_F(Display, ABoardThatHasNotSpokenIsMade)
{
    EXPECT_EQ(bus->SendCommand("SH10.0.0.7:012B|one|||||"), "");
    trace.expect(kNoLinesSent);
    ASSERT_EQ(bus->DeviceCount(), 1);
    EXPECT_EQ(bus->DeviceItem(0)->IP, "10.0.0.7");
    EXPECT_EQ(bus->DeviceItem(0)->Device, "012B");
    EXPECT_EQ(bus->DeviceItem(0)->DisplayLine, -1);
    EXPECT_DOUBLE_EQ(bus->DeviceItem(0)->LastPing, platform::Now());
}

TEST_F(Display, WidthIsThatOfTheBoardOnItsLink)
{
    giveDisplay("000A", 20, "10.0.0.7");
    giveDisplay("000B", 20);
    bus->SendCommand("SH0.0.0.0:000A|one|||||");
    trace.expect(kNoLinesSent);
}

TEST_F(Display, NoDisplayAfterAnNReply)
{
    inject("#000AHWGX=N/GR=NN/");
    trace.take();
    bus->SendCommand("SH0.0.0.0:000A|one||||L|");
    trace.expect(kNoLinesSent);
    inject("#000AHWGX=G5x1/GR=NN/");
    trace.take();
    bus->SendCommand("SH0.0.0.0:000A|one||||L|");
    trace.expect(sent("$000ACS") + sent("$000APSN1001 one ") + sent("$000BFL1") + linesSent("$000BFL1"));
}

TEST_F(Display, FlagsAloneDoNotClearTheScreen)
{
    show("|||||L|");
    trace.expect(sent("$000BFL1") + linesSent("$000BFL1"));
    show("| | \t ||\n|S|");
    trace.expect(sent("$000BES") + linesSent("$000BES"));
}

TEST_F(Display, FlagsInTheirOrderHoweverWritten)
{
    for (const char* flags : {"LS", "SL", "xSyLz", " S L ", "LLSS"}) {
        show(QString("|||||") + flags + "|");
        trace.expect(sent("$000BFL1") + sent("$000BES") + linesSent("$000BES"));
    }
}

TEST_F(Display, OtherFlagsDoNothing)
{
    for (const char* flags : {"ls", "x", "123", " ", "BES"}) {
        show(QString("|||||") + flags + "|");
        trace.expect(QString(flags).contains(u'S') ? sent("$000BES") + linesSent("$000BES") : kNoLinesSent);
    }
}

TEST_F(Display, AFieldWithoutItsBarIsEmpty)
{
    show("|one|two|three|four|LS"); // flags not closed
    trace.expect(sent("$000ACS") + sent("$000APSN1001 one") + sent("$000APSN1002 two") +
                 sent("$000APSN1003three") + sent("$000APSN1004four") + linesSent("$000APSN1004four"));
    show("|one|two");
    trace.expect(sent("$000ACS") + sent("$000APSN1001 one") + linesSent("$000APSN1001 one"));
    show("|one");
    trace.expect(kNoLinesSent);
    show("|");
    trace.expect(kNoLinesSent);
    show("");
    trace.expect(kNoLinesSent);
    show("one LS");
    trace.expect(kNoLinesSent);
}

TEST_F(Display, WhatStandsBeforeTheFirstBarIsLeftOut)
{
    show("junk LS|one|||||");
    trace.expect(sent("$000ACS") + sent("$000APSN1001 one") + linesSent("$000APSN1001 one"));
}

TEST_F(Display, WhatStandsBehindTheFlagsIsLeftOut)
{
    show("|one||||x|LS|more|");
    trace.expect(sent("$000ACS") + sent("$000APSN1001 one") + linesSent("$000APSN1001 one"));
}

TEST_F(Display, TheFirstBarOfTheWholeCommandCounts)
{
    giveDisplay("000A", 6, "|ip");
    bus->SendCommand("SH|ip:000A||||L|");
    trace.expect(sent("$000ACS") + sent("$000APSN1001ip:000A") + sent("$000BFL1") + linesSent("$000BFL1"));
}

TEST_F(Display, ColonsInTheTextStay)
{
    show("|a:b|||||");
    trace.expect(sent("$000ACS") + sent("$000APSN1001 a:b") + linesSent("$000APSN1001 a:b"));
}

TEST_F(Display, WithoutAColonTheAddressIsTheBeginningOfTheCommand)
{
    giveDisplay("SH00", 4, "");
    bus->SendCommand("SH000A|one||||L|");
    trace.expect(sent("$SH00CS") + sent("$SH00PSN1001 one") + sent("$SH0BFL1") + linesSent("$SH0BFL1"));
    EXPECT_EQ(bus->DeviceCount(), 1);
    bus->SendCommand("SH");
    trace.expect(kNoLinesSent);
    EXPECT_EQ(bus->DeviceItem(1)->Device, "SH");
    EXPECT_EQ(bus->DeviceItem(1)->IP, "");
}

TEST_F(Display, ClosingLogTellsTheLastLineEvenWhenNothingIsWritten)
{
    for (const auto type : {connector::podEmpty, connector::podNet}) {
        bus->SetConnectorType(type);
        show("|one||||L|");
        trace.expect(linesSent("$000BFL1"));
    }
    bus->SetConnectorType(connector::podComPort);
    bus->SetComport(nullptr);
    show("|one|||||");
    trace.expect(linesSent("$000APSN1001 one"));
}

TEST_F(Display, EachLineTriesToOpenThePort)
{
    port->Close();
    port->OpenFailure = "no";
    show("|one||||L|");
    trace.expect(QStringList({"error [03] no", "error [03] no", "error [03] no"}) + linesSent("$000BFL1"));
}

TEST_F(Display, WorksWithoutALog)
{
    bus->SetOnLog({});
    show("|one|||||");
    trace.expect({wroteChecked("$000ACS"), wroteChecked("$000APSN1001 one")});
}

TEST_F(Display, WidthIsReadOnce)
{
    trace.once("log ", [this] { giveDisplay("000A", 0); });
    show("|one|two|||L|");
    trace.expect(sent("$000ACS") + sent("$000APSN1001 one") + sent("$000APSN1002 two") + sent("$000BFL1") +
                 linesSent("$000BFL1"));
    EXPECT_EQ(board("000A")->DisplayLine, 0);
}

TEST_F(Display, ALogSetMeanwhileGetsTheClosingLine)
{
    bus->SetOnLog({});
    trace.once(wroteChecked("$000APSN1001 one"), [this] { bus->SetOnLog(trace.handler(*bus, "log")); });
    show("|one|||||");
    trace.expect({wroteChecked("$000ACS"), wroteChecked("$000APSN1001 one"),
                  "log " + checked("$000APSN1001 one"), "log Lines send " + checked("$000APSN1001 one")});
}

TEST_F(Display, WidestDisplay)
{
    inject("#000AHWGX=G999x1/GR=NN/");
    trace.take();
    bus->SendCommand("SH0.0.0.0:000A|x|||||");
    const QStringList lines = trace.take();
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[2], wroteChecked("$000APSN1001" + blanks(499) + "x" + blanks(499)));
}

} // namespace
