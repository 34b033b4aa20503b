#include "tnv5/turnstile/line.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::turnstile;

TEST(EventLine, IsCutIntoAddressCommandAndData)
{
    const TEventLine line = parseEvent(u"$01AR12345678");
    EXPECT_EQ(line.address, u"01A");
    EXPECT_EQ(line.command, u"R");
    EXPECT_EQ(line.data, u"12345678");
}

TEST(EventLine, TooShortYieldsEmptyFields)
{
    for (const QStringView text : {QStringView(u""), QStringView(u"$")}) {
        EXPECT_EQ(parseEvent(text).address, u"");
        EXPECT_EQ(parseEvent(text).command, u"");
        EXPECT_EQ(parseEvent(text).data, u"");
    }
    EXPECT_EQ(parseEvent(u"$0").address, u"0");
    EXPECT_EQ(parseEvent(u"$01").address, u"01");
    EXPECT_EQ(parseEvent(u"$01A").address, u"01A");
    EXPECT_EQ(parseEvent(u"$01A").command, u"");
    EXPECT_EQ(parseEvent(u"$01AR").command, u"R");
    EXPECT_EQ(parseEvent(u"$01AR").data, u"");
    EXPECT_EQ(parseEvent(u"$01AR1").data, u"1");
}

TEST(MessageLine, IsCutIntoAddressAndText)
{
    const TMessageLine line = parseMessage(u"#05ARelay 2");
    EXPECT_EQ(line.address, u"05A");
    EXPECT_EQ(line.text, u"Relay 2");
}

TEST(MessageLine, TooShortYieldsEmptyFields)
{
    EXPECT_EQ(parseMessage(u"").address, u"");
    EXPECT_EQ(parseMessage(u"#").address, u"");
    EXPECT_EQ(parseMessage(u"#").text, u"");
    EXPECT_EQ(parseMessage(u"#05").address, u"05");
    EXPECT_EQ(parseMessage(u"#05A").text, u"");
    EXPECT_EQ(parseMessage(u"#05Ax").text, u"x");
}

struct TFormCase
{
    TMessageForm form;
    QString text;
};

const TFormCase kForms[] = {
    {TMessageForm::HardReset, "HardReset"},    {TMessageForm::WaitCard, "Wait-Card"},
    {TMessageForm::CrcError, "CRC-ERROR"},     {TMessageForm::GateOpen, "Gate-Open"},
    {TMessageForm::ButtonActive, "Btn-Activ"}, {TMessageForm::InGateActive, "InG-Activ"},
};

TEST(MessageForm, IsTheWholeTextWhateverItsCase)
{
    for (const TFormCase& row : kForms) {
        EXPECT_TRUE(isMessage(row.text, row.form)) << row.text.toStdString();
        EXPECT_TRUE(isMessage(row.text.toLower(), row.form)) << row.text.toStdString();
        EXPECT_TRUE(isMessage(row.text.toUpper(), row.form)) << row.text.toStdString();
        EXPECT_FALSE(isMessage(QString(row.text + u' '), row.form)) << row.text.toStdString();
        EXPECT_FALSE(isMessage(QString(u' ' + row.text), row.form)) << row.text.toStdString();
        EXPECT_FALSE(isMessage(row.text.chopped(1), row.form)) << row.text.toStdString();
        EXPECT_FALSE(isMessage(u"", row.form)) << row.text.toStdString();
    }
}

TEST(MessageForm, IsNoOtherForm)
{
    for (const TFormCase& row : kForms) {
        for (const TFormCase& other : kForms) {
            EXPECT_EQ(isMessage(row.text, other.form), row.form == other.form);
        }
        EXPECT_FALSE(isMessage(row.text, TMessageForm::Relay));
        EXPECT_FALSE(isMessage(u"Relay 2", row.form));
    }
}

TEST(MessageForm, RelayIsAnyTextThatBeginsWithIt)
{
    for (const QStringView text : {QStringView(u"Relay"), QStringView(u"relay"), QStringView(u"RELAY-1"),
                                   QStringView(u"Relay 2"), QStringView(u"relayed")}) {
        EXPECT_TRUE(isMessage(text, TMessageForm::Relay)) << text.toString().toStdString();
    }
    for (const QStringView text :
         {QStringView(u"Rela"), QStringView(u" Relay"), QStringView(u"Re-lay"), QStringView(u"")}) {
        EXPECT_FALSE(isMessage(text, TMessageForm::Relay)) << text.toString().toStdString();
    }
}

TEST(Channel, IsTheThirdCharacter)
{
    EXPECT_EQ(channelOf(u"01A"), u"A");
    EXPECT_EQ(channelOf(u"01DX"), u"D");
    EXPECT_EQ(channelOf(u"01"), u"");
    EXPECT_EQ(channelOf(u""), u"");
}

TEST(Channel, OnlyTheCapitalLetterIsATurnstile)
{
    EXPECT_TRUE(isTurnstileChannel(u"01A"));
    EXPECT_TRUE(isTurnstileChannel(u"01AX"));
    EXPECT_FALSE(isTurnstileChannel(u"01a"));
    EXPECT_FALSE(isTurnstileChannel(u"01D"));
    EXPECT_FALSE(isTurnstileChannel(u"A"));
    EXPECT_FALSE(isTurnstileChannel(u"01"));
    EXPECT_FALSE(isTurnstileChannel(u""));
}

} // namespace
