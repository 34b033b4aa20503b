// Values of a diagnostic reply.

#include "tnv5/connector/device_connector.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

QString value(const QString& line, const QString& key)
{
    return tnv5::connector::TDeviceConnector::GetDiagnosticValue(line, key);
}

TEST(DiagnosticValue, StandsBetweenEqualsSignAndSlash)
{
    const QString line = "#000AHWGX=G20x4/GR=NY/";
    EXPECT_EQ(value(line, "GX"), "G20x4");
    EXPECT_EQ(value(line, "GR"), "NY");
}

TEST(DiagnosticValue, IsEmptyWithoutTheKey)
{
    EXPECT_EQ(value("#000AHWGX=G20x4/", "GR"), "");
    EXPECT_EQ(value("#000AHWGX=G20x4/", "gx"), ""); // case counts
    EXPECT_EQ(value("", "GX"), "");
    EXPECT_EQ(value("GX=1/", ""), "");
    EXPECT_EQ(value("=1/", ""), "");
    EXPECT_EQ(value("", ""), "");
}

TEST(DiagnosticValue, IsEmptyWithoutASlashBehindTheKey)
{
    EXPECT_EQ(value("#000AHWGX=G20x4", "GX"), "");
    EXPECT_EQ(value("#0/0AHW/GX=G20x4", "GX"), ""); // slashes before it do not count
    EXPECT_EQ(value("GX", "GX"), "");
}

TEST(DiagnosticValue, MayBeEmpty)
{
    EXPECT_EQ(value("GX=/GR=N/", "GX"), "");
}

TEST(DiagnosticValue, EndsAtTheFirstSlash)
{
    EXPECT_EQ(value("GX=a/b/GR=c/", "GX"), "a");
}

TEST(DiagnosticValue, BeginsBehindTheFirstEqualsSign)
{
    EXPECT_EQ(value("GX=a=b/", "GX"), "a=b");
    EXPECT_EQ(value("GXtra=a/", "GX"), "a");
    EXPECT_EQ(value("GX==/", "GX"), "=");
    EXPECT_EQ(value("a=b GX=c/", "GX"), "c"); // not one that stands before the key
}

TEST(DiagnosticValue, WithoutAnEqualsSignIsThePieceFromTheKeyOn)
{
    EXPECT_EQ(value("#000AHWGX20/GR=N/", "GX"), "GX20");
    EXPECT_EQ(value("GX/", "GX"), "GX");
}

TEST(DiagnosticValue, BelongsToTheFirstOccurrenceOfTheKey)
{
    EXPECT_EQ(value("GXX=1/GX=2/", "GX"), "1");
    EXPECT_EQ(value("GX=1/GX=2/", "GX"), "1");
    EXPECT_EQ(value("#GX0AHWGX=3/", "GX"), "3"); // in the address: the same piece
    EXPECT_EQ(value("#GX=AHWGX=3/", "GX"), "AHWGX=3");
}

TEST(DiagnosticValue, HasAtMostAHundredCharacters)
{
    EXPECT_EQ(value("GX=" + QString(99, u'v') + "/", "GX"), QString(99, u'v'));
    EXPECT_EQ(value("GX=" + QString(100, u'v') + "/", "GX"), QString(100, u'v'));
    EXPECT_EQ(value("GX=" + QString(101, u'v') + "/", "GX"), QString(100, u'v'));
    EXPECT_EQ(value("GX" + QString(120, u'v') + "/", "GX"), "GX" + QString(98, u'v'));
}

TEST(DiagnosticValue, IsLookedForInAThousandCharactersFromTheKeyOn)
{
    EXPECT_EQ(value("GX=1" + QString(995, u' ') + "/", "GX").left(3), "1  "); // slash is number 1000
    EXPECT_EQ(value("GX=1" + QString(996, u' ') + "/", "GX"), "");            // slash is number 1001
    EXPECT_EQ(value(QString(5'000, u'-') + "GX=1/", "GX"), "1");
    // an equals sign far away, but within the piece
    EXPECT_EQ(value("GX" + QString(900, u' ') + "=1/", "GX"), "1");
}

TEST(DiagnosticValue, TakesAnyKey)
{
    EXPECT_EQ(value("GX=1/", "GX="), "1");
    EXPECT_EQ(value("GX=1/", "GX=1/"), "1");
    EXPECT_EQ(value("a/GX=1/", "/GX"), ""); // the piece before its first slash is empty
    EXPECT_EQ(value("Ключ=да/", "Ключ"), "да");
}

} // namespace
