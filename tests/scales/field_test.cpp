// Decoding of the six families whose packets carry the weight at once.

#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QString kNoNumber = raised("EConvertError");

class Field : public TScalesTest
{
protected:
    void expectAfter(int type, const QByteArray& bytes, const QByteArray& packet, const QStringList& lines,
                     TSourceLine where = TSourceLine::current())
    {
        use(type);
        feed(bytes);
        trace.expect(received(packet) + lines, where);
    }

    /// Families 3 and 4: the field as it stands on the wire, the least significant digit first.
    void expectReversed(const QByteArray& field, const QStringList& lines,
                        TSourceLine where = TSourceLine::current())
    {
        const QByteArray ba = field + "777777777777";
        expectAfter(3, ba, ba, QStringList{logged("Ask  " + QString::fromLatin1(ba))} + lines, where);
        const QByteArray bp = field + "77777777777";
        expectAfter(4, bp, bp, lines, where);
    }

    void expectBh(const QByteArray& packet, const QStringList& lines,
                  TSourceLine where = TSourceLine::current())
    {
        expectAfter(5, '<' + packet + '>', packet, lines, where);
    }

    void expectDigi(const QByteArray& packet, const QStringList& lines,
                    TSourceLine where = TSourceLine::current())
    {
        expectAfter(6, packet + "\r\n", packet + '\r', lines + QStringList{kStart}, where);
    }

    void expectAxis(const QByteArray& packet, const QStringList& lines,
                    TSourceLine where = TSourceLine::current())
    {
        expectAfter(7, '\x02' + packet + "\r\n", packet, lines, where);
    }

    void expectUpa(const QByteArray& packet, const QStringList& lines,
                   TSourceLine where = TSourceLine::current())
    {
        expectAfter(8, 'W' + packet + "kg", packet, lines, where);
    }
};

TEST_F(Field, ReversedDigits)
{
    expectReversed("000000", {"log 000000", "log 0"});
    expectReversed("100000", {"log 000001", "log 1"});
    expectReversed("654321", {"log 123456", "log 123456"});
    EXPECT_EQ(scales->LastWeight(), 123'456);
    expectReversed("999999", {"log 999999", "log 999999"});
    expectReversed("21    ", {"log     12", "log 12"});
    expectReversed("21   -", {"log -   12", kNoNumber});
    expectReversed("21-   ", {"log    -12", "log -12"});
    EXPECT_EQ(scales->LastWeight(), -12);
    expectReversed("21+   ", {"log    +12", "log 12"});
}

TEST_F(Field, ReversedFieldsThatAreBlank)
{
    scales->SetLastWeight(55);
    trace.take();
    expectReversed("      ", {});
    expectReversed("\x00\x00\x00\x00\x00\x00"_b, {});
    expectReversed("\x01\x1F \r\n\t", {});
    EXPECT_EQ(scales->LastWeight(), 55);
}

TEST_F(Field, ReversedFieldsThatAreNoNumbers)
{
    scales->SetLastWeight(55);
    trace.take();
    expectReversed(" 12345", {"log 54321 ", kNoNumber}); // blanks behind the digits
    expectReversed("12.345", {"log 543.21", kNoNumber});
    expectReversed("A00000", {"log 00000A", kNoNumber});
    expectReversed("-21   ", {"log    12-", kNoNumber});
    expectReversed("+-1   ", {"log    1-+", kNoNumber});
    expectReversed("1--   ", {"log    --1", kNoNumber});
    expectReversed("-     ", {"log      -", kNoNumber});
    expectReversed("\xA0\xA0\xA0\xA0\xA0\xA0", {logged(QString(6, QChar(0xA0))), kNoNumber});
    EXPECT_EQ(scales->LastWeight(), 55);
}

TEST_F(Field, ReversedFieldIsTheFirstSixOfALongerPacket)
{
    const QByteArray packet = "543210" + QByteArray(40, '9');
    expectAfter(3, packet, packet, {logged("Ask  " + packet), "log 012345", "log 12345"});
    expectAfter(4, packet, packet, {"log 012345", "log 12345"});
}

TEST_F(Field, BhHasItInTheCharactersThreeToSeven)
{
    expectBh("1234567890", {"log 34567", "log 34567"});
    expectBh("\x00!00000"_b, {"log 00000", "log 0"});
    expectBh("xx00001", {"log 00001", "log 1"});
    expectBh("xx  750yy", {"log   750", "log 750"});
    expectBh("xx-0012", {"log -0012", "log -12"});
    EXPECT_EQ(scales->LastWeight(), -12);
    expectBh("xx99", {"log 99", "log 99"}); // shorter: what there is
}

TEST_F(Field, BhFieldsThatAreBlank)
{
    scales->SetLastWeight(55);
    trace.take();
    for (const QByteArray& packet :
         {""_b, "1"_b, "12"_b, "12     "_b, "12     99"_b, "12\x00\x00\x00\x00\x00"_b}) {
        expectBh(packet, {});
    }
    EXPECT_EQ(scales->LastWeight(), 55);
}

TEST_F(Field, BhFieldsThatAreNoNumbers)
{
    scales->SetLastWeight(55);
    trace.take();
    expectBh("xx750  y", {"log 750  ", kNoNumber});
    expectBh("xx0.750", {"log 0.750", kNoNumber});
    expectBh("xx7 500", {"log 7 500", kNoNumber});
    EXPECT_EQ(scales->LastWeight(), 55);
}

TEST_F(Field, DigiHasAllDigitsOfThePacket)
{
    expectDigi("B00.850", {"log 00850", "log 850"});
    expectDigi("B 1 2k3g4", {"log 1234", "log 1234"});
    expectDigi("B-000010", {"log 000010", "log 10"}); // a sign is no digit
    expectDigi("B0", {"log 0", "log 0"});
    expectDigi("B2147483647", {"log 2147483647", "log 2147483647"});
    EXPECT_EQ(scales->LastWeight(), 2'147'483'647);
}

TEST_F(Field, DigiPacketsWithoutDigits)
{
    scales->SetLastWeight(55);
    trace.take();
    expectDigi("B", {});
    expectDigi("B  kg \xB2", {});
    EXPECT_EQ(scales->LastWeight(), 55);
}

TEST_F(Field, DigiNumbersThatAreTooLong)
{
    scales->SetLastWeight(55);
    trace.take();
    expectDigi("B2147483648", {"log 2147483648", kNoNumber});
    expectDigi("B" + QByteArray(60, '9'), {logged(QString(60, u'9')), kNoNumber});
    EXPECT_EQ(scales->LastWeight(), 55);
}

TEST_F(Field, AxisHasItInTheCharactersFiveToNine)
{
    expectAxis("ST+ 01250 g  US", {"log 01250", "log ST+ 01250 g  US 1250%"});
    EXPECT_EQ(scales->LastWeight(), 1250);
    expectAxis("123456789012345", {"log 56789", "log 123456789012345 56789%"});
    expectAxis("ST -  -12 g  US", {"log   -12", "log ST -  -12 g  US -12%"});
    EXPECT_EQ(scales->LastWeight(), -12);
}

TEST_F(Field, AxisTrimsThePacketButLogsItAsItCame)
{
    expectAxis("  ST+ 01250 g  US \t", {"log 01250", logged("  ST+ 01250 g  US \t 1250%")});
    expectAxis("\x02ST+ 00008 g  US", {"log 00008", logged("\x02ST+ 00008 g  US 8%")});
    EXPECT_EQ(scales->LastWeight(), 8);
}

TEST_F(Field, AxisFieldsThatAreNoNumbersAreZero)
{
    for (const char* field : {"012.5", "125  ", "OVERL", "1 234", "--123", "12-34"}) {
        scales->SetLastWeight(55);
        trace.take();
        const QByteArray packet = QByteArray("ST+ ") + field + " g  US";
        expectAxis(packet, {logged(field), logged(QString(packet) + " 0%")});
        EXPECT_EQ(scales->LastWeight(), 0) << field;
    }
}

TEST_F(Field, AxisBlankFieldsChangeNothing)
{
    scales->SetLastWeight(55);
    trace.take();
    expectAxis("ST+       g  US", {});
    EXPECT_EQ(scales->LastWeight(), 55);
}

TEST_F(Field, AxisPacketsOfOtherLengthsAreIgnored)
{
    scales->SetLastWeight(55);
    trace.take();
    for (const QByteArray& packet : {""_b, "ST+ 01250 g US"_b, "ST+ 01250 g   US"_b, "  01250 g  US  "_b,
                                     QByteArray(15, ' '), QByteArray(1000, '5')}) {
        expectAxis(packet, {});
    }
    EXPECT_EQ(scales->LastWeight(), 55);
}

TEST_F(Field, UpaHasAllDigitsOfThePacket)
{
    expectUpa("  002.340", {"log   002.340 2340%"});
    EXPECT_EQ(scales->LastWeight(), 2340);
    expectUpa("1", {"log 1 1%"});
    expectUpa(" -0.5 ", {"log  -0.5  5%"});
    expectUpa("2147483647", {"log 2147483647 2147483647%"});
}

TEST_F(Field, UpaWithoutANumberIsZero)
{
    for (const char* packet : {"-", "ab c", " . ", "2147483648", "99999999999999999999999"}) {
        scales->SetLastWeight(55);
        trace.take();
        expectUpa(packet, {logged(QString(packet) + " 0%")});
        EXPECT_EQ(scales->LastWeight(), 0) << packet;
    }
}

TEST_F(Field, UpaBlankPacketsChangeNothing)
{
    scales->SetLastWeight(55);
    trace.take();
    for (const QByteArray& packet : {""_b, "   "_b, "\x00\x01\r\n"_b}) {
        expectUpa(packet, {});
    }
    EXPECT_EQ(scales->LastWeight(), 55);
}

TEST_F(Field, SmallChangesAreStoredToo)
{
    for (const int weight : {1, 2, 3, 2}) {
        expectUpa(QByteArray::number(weight), {logged(QStringLiteral("%1 %1%").arg(weight))});
        EXPECT_EQ(scales->LastWeight(), weight);
    }
}

TEST_F(Field, AnyPacketEndsTheHandshake)
{
    for (int type = 3; type <= 8; ++type) {
        scales->Reset();
        scales->SetScalesType(1);
        feed("\x05\x01"_b);
        EXPECT_EQ(scales->LastWeight(), 0) << type; // a handshake is expected
        scales->SetScalesType(type);
        feed(sampleOf(type).blank);
        EXPECT_EQ(trace.countOf("log [03]"), 2) << type;
        scales->SetScalesType(1);
        scales->SetComport(port.get());
        feed("\x05\x01"_b);
        EXPECT_EQ(scales->LastWeight(), 0x105) << type; // a weight is expected
        scales->SetLastWeight(0);
        trace.take();
    }
}

TEST_F(Field, ThePacketAfterALostOneIsServed)
{
    use(5);
    feed("<xxERROR><xx00100>");
    trace.expect(received("xxERROR") + QStringList{"log ERROR", kNoNumber} + received("xx00100") +
                 QStringList{"log 00100", "log 100"});
    EXPECT_EQ(scales->LastWeight(), 100);
}

} // namespace
