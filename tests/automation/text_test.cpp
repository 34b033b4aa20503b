#include "tnv5/platform/automation/ole_error.h"
#include "tnv5/platform/errors.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::platform::automation;

struct TRow
{
    std::u16string wide;
    std::string utf8;
};

TEST(Utf8, GoesThereAndBack)
{
    const TRow rows[] = {
        {u"", ""},
        {u"abc\x7F", "abc\x7F"},
        {u"\u0080\u07FF", "\xC2\x80\xDF\xBF"},
        {u"Оплата", "Оплата"},
        {u"\u0800\uFFFF", "\xE0\xA0\x80\xEF\xBF\xBF"},
        {u"\U00010000\U0010FFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
    };
    for (const TRow& row : rows) {
        EXPECT_EQ(toUtf8(row.wide), row.utf8);
        EXPECT_EQ(fromUtf8(row.utf8), row.wide) << row.utf8;
    }
}

TEST(Utf8, HalfPairsAreReplaced)
{
    const std::u16string texts[] = {u"\xD800", u"\xDBFF", u"\xDC00", u"\xDFFF"};
    for (const std::u16string& text : texts) {
        EXPECT_EQ(toUtf8(text), "\xEF\xBF\xBD");
        EXPECT_EQ(toUtf8(text + u"a"), "\xEF\xBF\xBD"
                                       "a");
    }
    EXPECT_EQ(toUtf8(u"\xD800\xD800\xDC00"), "\xEF\xBF\xBD\xF0\x90\x80\x80");
}

TEST(Utf8, BytesThatAreNoneAreReplacedOneByOne)
{
    const TRow rows[] = {
        {u"\uFFFD", "\x80"},
        {u"\uFFFD", "\xC3"},
        {u"\uFFFDa", "\xC3\x61"},
        {u"\uFFFD\uFFFD", "\xC1\xBF"},
        {u"\uFFFD\uFFFD", "\xE2\x82"},
        {u"\uFFFD\uFFFD\uFFFD", "\xE0\x9F\xBF"},
        {u"\uFFFD\uFFFD\uFFFD", "\xED\xA0\x80"},
        {u"\uFFFD\uFFFD\uFFFD\uFFFD", "\xF4\x90\x80\x80"},
        {u"\uFFFD\uFFFD\uFFFD\uFFFD", "\xF0\x8F\xBF\xBF"},
        {u"\uFFFD\uFFFD\uFFFD\uFFFD", "\xF5\x80\x80\x80"},
    };
    for (const TRow& row : rows) {
        EXPECT_EQ(fromUtf8(row.utf8), row.wide) << toUtf8(fromUtf8(row.utf8));
    }
}

TEST(OleError, CarriesTheLibrarysText)
{
    const EOleError error(u"Немає зв'язку");
    EXPECT_EQ(error.message(), u"Немає зв'язку");
    EXPECT_STREQ(error.what(), "Немає зв'язку");
    try {
        throw error;
    } catch (...) {
        EXPECT_EQ(tnv5::platform::exceptionMessage().toStdString(), "Немає зв'язку");
    }
}

} // namespace
