#include "local_fixture.h"

#include <gtest/gtest.h>

using namespace tnv5;
using namespace tnv5::host;

namespace {

QList<QByteArray> linesOf(TLineBuffer& buffer)
{
    QList<QByteArray> lines;
    while (const auto line = buffer.take()) {
        lines << *line;
    }
    return lines;
}

TEST(LocalLine, SameLinesHoweverTheyAreCut)
{
    const QByteArray stream = "one\n\ntwo\r\nthree\nrest";
    for (qsizetype first = 0; first <= stream.size(); ++first) {
        for (qsizetype second = first; second <= stream.size(); ++second) {
            TLineBuffer buffer;
            QList<QByteArray> lines;
            for (const QByteArray& part :
                 {stream.left(first), stream.mid(first, second - first), stream.mid(second)}) {
                buffer.add(part);
                lines += linesOf(buffer);
            }
            ASSERT_EQ(lines, QList<QByteArray>({"one", "", "two", "three"}));
            ASSERT_FALSE(buffer.overlong());
            ASSERT_FALSE(buffer.ready());
        }
    }
}

TEST(LocalLine, AMebibyteIsALineAndOneByteMoreIsNone)
{
    TLineBuffer buffer;
    buffer.add(QByteArray(kMaxLocalLine, 'x') + '\n');
    EXPECT_TRUE(buffer.ready());
    EXPECT_EQ(linesOf(buffer).size(), 1);
    buffer.add(QByteArray(kMaxLocalLine, 'x') + "\r\n");
    EXPECT_EQ(linesOf(buffer).size(), 1);
    buffer.add(QByteArray(kMaxLocalLine + 1, 'x') + '\n');
    EXPECT_EQ(linesOf(buffer).size(), 0);
    EXPECT_TRUE(buffer.overlong());
    EXPECT_FALSE(buffer.add("next\n"));
    EXPECT_EQ(linesOf(buffer).size(), 0);
}

TEST(LocalLine, ALineWithoutEndIsNotWaitedForForEver)
{
    TLineBuffer buffer;
    for (int i = 0; i < 20 && buffer.add(QByteArray(100'000, 'x')); ++i) {
        EXPECT_EQ(linesOf(buffer).size(), 0);
    }
    EXPECT_TRUE(buffer.overlong());
}

TEST(LocalLine, OnlyObjectsAreRead)
{
    EXPECT_TRUE(fromLine("{}"));
    EXPECT_EQ(tests::text(*fromLine(R"( {"a":1} )")), R"({"a":1})");
    for (const char* junk : {"", "[1]", "1", "null", "{", "{}{}", "\xff\xfe", R"({"a":})"}) {
        EXPECT_FALSE(fromLine(junk)) << junk;
    }
    EXPECT_EQ(toLine(tests::json(R"({"a":"\n"})")), "{\"a\":\"\\n\"}\n");
}

} // namespace
