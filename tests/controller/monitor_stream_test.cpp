// How a client cuts what its server sends, family by family.

#include "support/source_line.h"
#include "support/text_printers.h"
#include "tnv5/controller/monitor_stream.h"

#include <gtest/gtest.h>

namespace tnv5::tests {

using controller::kClassicFamily;
using controller::kD24Family;
using controller::kSwitchFamily;
using controller::monitorTexts;
using controller::TMonitorText;
using controller::TRemoteFamily;

namespace {

// A text as the tables show it: a line as it is, a status with its fields in brackets.
QString shownText(const TMonitorText& text)
{
    return text.kind == TMonitorText::Line
               ? text.line
               : QStringLiteral("[") + text.fields.join(u'|') + QStringLiteral("]");
}

QStringList cut(const TRemoteFamily& family, const QString& read)
{
    QStringList texts;
    for (const TMonitorText& text : monitorTexts(read, family.stream)) {
        texts << shownText(text);
    }
    return texts;
}

struct TRow
{
    QString read;
    QStringList classic;
    QStringList d24;
    QStringList relays;
    TSourceLine where = TSourceLine::current();
};

QString letters(int count, char letter = 'x')
{
    return {count, QLatin1Char(letter)};
}

TEST(MonitorStream, Texts)
{
    const QString status5 = QStringLiteral("STATUS!COME!01A!123!NEW!NEW&");
    const QString status7 = QStringLiteral("STATUS!COME!10.0.0.5!001T!T!12345678!NEW!NEW&");
    const TRow rows[] = {
        {"", {}, {}, {}},
        {"anything& else", {}, {}, {}},
        {"log!abc&", {}, {}, {}}, // tags are in capitals
        {"LOG!&", {""}, {""}, {""}},
        {"LOG!abc&", {"abc"}, {"abc"}, {"abc"}},
        {"LOG!abc&LOG!def&", {"abc", "def"}, {"abc", "def"}, {"abc", "def"}},
        {"LOG!a!b&", {"a!b"}, {"a!b"}, {"a!b"}},
        // an error is a line; its "&" stays, but not for relays
        {"ERROR!x&", {"x&"}, {"x&"}, {"x"}},
        {"ERROR![04] x&", {"[04] x&"}, {"[04] x&"}, {"[04] x"}},
        {"ERROR!&", {"&"}, {"&"}, {""}},
        {"ERROR!a&ERROR!b&", {"a&", "b&"}, {"a&", "b&"}, {"a", "b"}},
        {"LOG!a&ERROR!b&LOG!c&", {"a", "b&", "c"}, {"a", "b&", "c"}, {"a", "b", "c"}},
        // a status has the fields of its family, and is nothing to relays
        {"LOG!abc&" + status5,
         {"abc", "[COME|01A|123|NEW|NEW]"},
         {"abc", "[COME|01A|123|NEW|||NEW]"},
         {"abc"}},
        {status7,
         {"[COME|10.0.0.5|001T|T|12345678!NEW!NEW]"},
         {"[COME|10.0.0.5|001T|T|12345678|NEW|NEW]"},
         {}},
        {status5 + status5,
         {"[COME|01A|123|NEW|NEW]", "[COME|01A|123|NEW|NEW]"},
         {"[COME|01A|123|NEW|NEW&STATUS|COME|01A!123!NEW!NEW]", "[COME|01A|123|NEW|||NEW]"},
         {}},
        {"STATUS!&", {"[||||]"}, {"[||||||]"}, {}},
        // a field without its "!" is empty and leaves the rest to the next one
        {"STATUS!a!b&", {"[a||||b]"}, {"[a||||||b]"}, {}},
        {"STATUS!a!b!c!d!e!f!g&", {"[a|b|c|d|e!f!g]"}, {"[a|b|c|d|e|f|g]"}, {}},
        {"STATUS!a!b!c!d!e!f!g!h&", {"[a|b|c|d|e!f!g!h]"}, {"[a|b|c|d|e|f|g!h]"}, {}},
        // the fields may reach into what follows, the buffer goes on behind the first "&"
        {"STATUS!a&b!c!d!e!f!g&", {"[a&b|c|d|e|f!g]"}, {"[a&b|c|d|e|f||g]"}, {}},
        // the order in a round is log, error, status; positions are those of the whole buffer
        {"ERROR!a&LOG!b&", {"b&", "b"}, {"b&", "b"}, {"b"}},
        {"STATUS!a!b!c!d!e&LOG!f&", {"f&", "f"}, {"f&", "f"}, {"f"}},
        {"STATUS!a!b!c!d!e&ERROR!f&", {"f&", "f&"}, {"f&", "f&"}, {"f"}},
        {"LOG!a&LOG!b&ERROR!c&", {"a", "", "c&"}, {"a", "", "c&"}, {"a", "c"}},
        {"xxLOG!abc&", {"abc&"}, {"abc&"}, {"abc"}},
        {"xxLOG!abc&def", {"abc&d"}, {"abc&d"}, {"abc"}},
        {"xxERROR!abc&", {"abc&"}, {"abc&"}, {"abc"}},
        {"xxERROR!abc&defgh", {"abc&de"}, {"abc&de"}, {"abc"}},
        {"&LOG!abc&", {"", "abc"}, {"", "abc"}, {"abc"}},
        {"ab&LOG!abc&", {"", "abc"}, {"", "abc"}, {"abc"}},
        {"abcdef&LOG!ghi&", {"gh", "ghi"}, {"gh", "ghi"}, {"ghi"}},
        {"&ERROR!abc&", {"", "abc&"}, {"", "abc&"}, {"abc"}},
        {"&STATUS!a!b!c!d!e&", {"[a|b|c|d|e]", "[a|b|c|d|e]"}, {"[a|b|c|d|||e]", "[a|b|c|d|||e]"}, {}},
        // a tag without an "&" ends it, and drops the rest
        {"LOG!abc", {}, {}, {}},
        {"LOG!abc&LOG!def", {"abc"}, {"abc"}, {"abc"}},
        {"LOG!abc&ERROR!def", {"abc"}, {"abc"}, {"abc"}},
        {"LOG!abc&STATUS!a!b!c!d!e", {"abc"}, {"abc"}, {"abc"}},
        {"LOG!abc&STATUS!a", {"abc"}, {"abc"}, {"abc"}},
        {"a&LOG!b", {""}, {""}, {}},
        {"ERROR!a&LOG!b", {"b"}, {"b"}, {}},
        {"a&STATUS!b", {"[||||]"}, {"[||||||]"}, {}},
    };
    for (const TRow& row : rows) {
        const testing::ScopedTrace trace(row.where.file_name(), row.where.line(), row.read.toStdString());
        EXPECT_EQ(cut(kClassicFamily, row.read), row.classic);
        EXPECT_EQ(cut(kD24Family, row.read), row.d24);
        EXPECT_EQ(cut(kSwitchFamily, row.read), row.relays);
    }
}

// Behind a text 2000 characters are kept: always by the classic controller, behind a log by the D24, never by
// relays.
TEST(MonitorStream, KeptBehindAText)
{
    const QString fits = "LOG!" + letters(1995) + "&"; // 2000 characters
    const QString exceeds = "LOG!" + letters(1996) + "&";
    const QString x1995 = letters(1995);
    const QString x1996 = letters(1996);

    EXPECT_EQ(cut(kClassicFamily, "LOG!a&" + fits), (QStringList{"a", x1995}));
    EXPECT_EQ(cut(kClassicFamily, "LOG!a&" + exceeds), QStringList{"a"});
    EXPECT_EQ(cut(kClassicFamily, "ERROR!a&ERROR!" + letters(1993) + "&"),
              (QStringList{"a&", letters(1993) + "&"}));
    EXPECT_EQ(cut(kClassicFamily, "ERROR!a&ERROR!" + letters(1994) + "&"), QStringList{"a&"});
    EXPECT_EQ(cut(kClassicFamily, "STATUS!a!b!c!d!e&STATUS!" + letters(1992) + "&").size(), 2);
    EXPECT_EQ(cut(kClassicFamily, "STATUS!a!b!c!d!e&STATUS!" + letters(1993) + "&").size(), 1);

    EXPECT_EQ(cut(kD24Family, "LOG!a&" + fits), (QStringList{"a", x1995}));
    EXPECT_EQ(cut(kD24Family, "LOG!a&" + exceeds), QStringList{"a"});
    EXPECT_EQ(cut(kD24Family, "ERROR!a&ERROR!" + letters(5000) + "&"),
              (QStringList{"a&", letters(5000) + "&"}));
    EXPECT_EQ(cut(kD24Family, "STATUS!a!b!c!d!e!f!g&STATUS!h" + letters(5000) + "&").size(), 2);

    EXPECT_EQ(cut(kSwitchFamily, "LOG!a&" + exceeds), (QStringList{"a", x1996}));
    EXPECT_EQ(cut(kSwitchFamily, "ERROR!a&ERROR!" + letters(5000) + "&"), (QStringList{"a", letters(5000)}));
    EXPECT_EQ(cut(kSwitchFamily, "LOG!a&STATUS!b&" + exceeds), (QStringList{"a", x1996}));

    // the first text may be longer
    EXPECT_EQ(cut(kClassicFamily, "LOG!" + letters(100'000) + "&"), QStringList{letters(100'000)});
}

// A status looks 1000 characters far.
TEST(MonitorStream, ReachOfAStatus)
{
    const QString name = letters(999);
    EXPECT_EQ(cut(kClassicFamily, "STATUS!" + name + "!b&"), (QStringList{"[" + name + "||||]"}));
    EXPECT_EQ(cut(kClassicFamily, "STATUS!" + name + "x!b&"), QStringList{"[||||]"});
    EXPECT_EQ(cut(kD24Family, "STATUS!a!b!c!d!e!f!" + letters(987) + "&"),
              (QStringList{"[a|b|c|d|e|f|" + letters(987) + "]"}));
    EXPECT_EQ(cut(kD24Family, "STATUS!a!b!c!d!e!f!" + letters(988) + "&"), (QStringList{"[a|b|c|d|e|f|]"}));
}

// Many texts and long ones cost no more than their length.
TEST(MonitorStream, ReadsOfAMegabyte)
{
    const int count = 1 << 18;
    EXPECT_EQ(cut(kSwitchFamily, QString("LOG!&").repeated(count)).size(), count);
    EXPECT_EQ(cut(kSwitchFamily, QString("STATUS!&").repeated(count)).size(), 0);
    EXPECT_EQ(cut(kD24Family, QString("ERROR!&").repeated(count)).size(), count);
    EXPECT_EQ(cut(kD24Family, QString("&").repeated(count) + "ERROR!").size(), count);
    EXPECT_EQ(cut(kSwitchFamily, QString("LOG!").repeated(count)).size(), 0);
}

} // namespace

} // namespace tnv5::tests
