#include "support/text_printers.h"
#include "tnv5/turnstile/address_list.h"

#include <gtest/gtest.h>

namespace tnv5::turnstile {
namespace {

TEST(AddressList, KeepsTheOrderAndFindsEach)
{
    TAddressList list;
    list.assign({QStringLiteral("02B"), QStringLiteral("01A")});
    list.add(QStringLiteral("03D"));
    EXPECT_EQ(list.list(),
              QStringList({QStringLiteral("02B"), QStringLiteral("01A"), QStringLiteral("03D")}));
    for (const QString& address : list.list()) {
        EXPECT_TRUE(list.contains(address)) << qPrintable(address);
    }
}

TEST(AddressList, ComparesExactlyWhateverTheLength)
{
    TAddressList list;
    list.assign({QStringLiteral("01A"), QStringLiteral("1"), QStringLiteral("Ж2"), QStringLiteral("0001")});
    for (const auto address :
         {u"01a", u"01", u"01AA", u"", u"A", u"Ж", u"2Ж", u"000", u"001", u"0002", u"A10"}) {
        EXPECT_FALSE(list.contains(QStringView(address))) << qPrintable(QString::fromUtf16(address));
    }
    EXPECT_TRUE(list.contains(u"0001"));
    EXPECT_TRUE(list.contains(u"Ж2"));
    EXPECT_TRUE(list.contains(u"1"));
}

TEST(AddressList, ZeroCharactersAreCharacters)
{
    TAddressList list;
    list.assign({QString(QChar(u'\0'))});
    EXPECT_FALSE(list.contains(u""));
    EXPECT_FALSE(list.contains(QString(2, QChar(u'\0'))));
    EXPECT_TRUE(list.contains(QString(1, QChar(u'\0'))));
}

TEST(AddressList, AnEmptyAddressIsOneToo)
{
    TAddressList list;
    EXPECT_FALSE(list.contains(u""));
    list.add(QString());
    EXPECT_TRUE(list.contains(u""));
}

TEST(AddressList, CanBeAssignedToItself)
{
    TAddressList list;
    list.assign({QStringLiteral("01A")});
    list.assign(list.list());
    EXPECT_EQ(list.list(), QStringList({QStringLiteral("01A")}));
    list.assign({});
    EXPECT_FALSE(list.contains(u"01A"));
}

} // namespace
} // namespace tnv5::turnstile
