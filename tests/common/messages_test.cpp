#include "tnv5/common/messages.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::common;

TEST(Messages, TextsAreLetterForLetter)
{
    EXPECT_EQ(kReadFromPort, QString::fromUtf8("%Считано с порта% "));
    EXPECT_EQ(kSentToPort, QString::fromUtf8("%Отправлено на порт% "));
    EXPECT_EQ(kPortNotOpen, QString::fromUtf8("Порт не открыт или не назначен"));
}

TEST(Messages, MonitorMessagesEndInAnAmpersand)
{
    EXPECT_EQ(LogMessage(u"abc"_qs), u"LOG!abc&"_qs);
    EXPECT_EQ(ErrorMessage(u"[04] x"_qs), u"ERROR![04] x&"_qs);
    EXPECT_EQ(StatusMessage({u"COME"_qs, u"01A"_qs, u"123"_qs, u"NEW"_qs, u"NEW"_qs}),
              u"STATUS!COME!01A!123!NEW!NEW&"_qs);
    EXPECT_EQ(StatusMessage({u"CHECK"_qs, u""_qs, u""_qs, u"R"_qs, u"NEW"_qs}), u"STATUS!CHECK!!!R!NEW&"_qs);
}

TEST(Messages, PseudoCards)
{
    EXPECT_TRUE(IsPseudoCard(u"-1-1-1-1-1"_qs));
    EXPECT_TRUE(IsPseudoCard(u"-2-2-2-2-2"_qs));
    EXPECT_FALSE(IsPseudoCard(u"-3-3-3-3-3"_qs));
    EXPECT_FALSE(IsPseudoCard(u"-1-1-1-1"_qs));
    EXPECT_FALSE(IsPseudoCard(QString()));
}

} // namespace
