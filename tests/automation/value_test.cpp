#include "tnv5/testing/memory_library.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace tnv5::platform::automation;

const TObjectPtr kObject = std::make_shared<tnv5::testkit::TMemoryLibrary>();

template <class Call>
std::u16string refusal(const Call& call)
{
    try {
        call();
    } catch (const EOleError& error) {
        return error.message();
    }
    return u"none";
}

TEST(Value, KeepsItsType)
{
    EXPECT_TRUE(TValue().isEmpty());
    EXPECT_FALSE(TValue(0).isEmpty());
    EXPECT_NE(TValue(true).as<bool>(), nullptr);
    EXPECT_NE(TValue(7).as<std::int32_t>(), nullptr);
    EXPECT_NE(TValue(std::int64_t{7}).as<std::int64_t>(), nullptr);
    EXPECT_NE(TValue(7.0).as<double>(), nullptr);
    EXPECT_NE(TValue(u"7").as<std::u16string>(), nullptr);
    EXPECT_NE(TValue(std::u16string_view(u"7")).as<std::u16string>(), nullptr);
    EXPECT_NE(TValue(kObject).as<TObjectPtr>(), nullptr);
    EXPECT_EQ(TValue(7).as<bool>(), nullptr);
    EXPECT_EQ(TValue(7), TValue(7));
    EXPECT_NE(TValue(7), TValue(std::int64_t{7}));
    EXPECT_NE(TValue(7), TValue(u"7"));
}

TEST(Value, AsANumber)
{
    const std::pair<TValue, std::int32_t> rows[] = {
        {{}, 0},
        {true, -1},
        {false, 0},
        {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::min()},
        {std::int64_t{2'147'483'647}, 2'147'483'647},
        {2.5, 2},
        {3.5, 4},
        {-2.5, -2},
        {2.51, 3},
        {2'147'483'647.4, 2'147'483'647},
        {u"12", 12},
        {u" -12 ", -12},
        {u"+5", 5},
        {u"\t0012\r\n", 12},
        {u"1.5", 2},
    };
    for (const auto& [value, number] : rows) {
        EXPECT_EQ(value.toInt(), number) << toUtf8(value.toText());
    }
}

TEST(Value, WhatIsNoNumberIsRefused)
{
    for (const char16_t* text : {u"", u" ", u"abc", u"1 2", u"1x", u"0x10", u"nan", u"inf", u"1,5", u"+-5"}) {
        EXPECT_EQ(refusal([&] { TValue(text).toInt(); }),
                  u"The value \"" + std::u16string(text) + u"\" is no number");
    }
    EXPECT_EQ(refusal([] { TValue(std::int64_t{2'147'483'648}).toInt(); }),
              u"The value 2147483648 is no 32-bit number");
    EXPECT_EQ(refusal([] { TValue(-2'147'483'649.0).toInt(); }),
              u"The value -2147483649 is no 32-bit number");
    EXPECT_EQ(refusal([] { TValue(std::numeric_limits<double>::quiet_NaN()).toInt(); }),
              u"The value nan is no 32-bit number");
    EXPECT_EQ(refusal([] { TValue(kObject).toInt(); }), u"The value of an object is no number");
}

TEST(Value, AsABoolean)
{
    const std::pair<TValue, bool> rows[] = {
        {{}, false},
        {true, true},
        {false, false},
        {0, false},
        {-1, true},
        {1, true},
        {std::int64_t{1} << 32, true},
        {0.0, false},
        {0.25, true},
        {u"True", true},
        {u"tRUE", true},
        {u"FALSE", false},
        {u"0", false},
        {u"-1", true},
        {u" 1 ", true},
    };
    for (const auto& [value, truth] : rows) {
        EXPECT_EQ(value.toBool(), truth) << toUtf8(value.toText());
    }
    EXPECT_EQ(refusal([] { TValue(u"yes").toBool(); }), u"The value \"yes\" is no boolean");
    EXPECT_EQ(refusal([] { TValue(u"").toBool(); }), u"The value \"\" is no boolean");
    EXPECT_EQ(refusal([] { TValue(kObject).toBool(); }), u"The value of an object is no boolean");
}

TEST(Value, AsAText)
{
    const std::pair<TValue, std::u16string> rows[] = {
        {{}, u""},
        {true, u"True"},
        {false, u"False"},
        {-7, u"-7"},
        {std::numeric_limits<std::int64_t>::min(), u"-9223372036854775808"},
        {0.1, u"0.1"},
        {2.0, u"2"},
        {100'000.0, u"100000"},
        {-2'000'000.0, u"-2000000"},
        {1e15, u"1000000000000000"},
        {1e-7, u"0.0000001"},
        {-1e22, u"-10000000000000000000000"},
        {5e-324, u"0." + std::u16string(323, u'0') + u"5"},
        {u" x ", u" x "},
    };
    for (const auto& [value, text] : rows) {
        EXPECT_EQ(value.toText(), text);
    }
    EXPECT_EQ(refusal([] { TValue(kObject).toText(); }), u"The value of an object is no text");
}

TEST(Value, AsAnObject)
{
    EXPECT_EQ(TValue(kObject).toObject(), kObject);
    EXPECT_EQ(TValue().toObject(), nullptr);
    EXPECT_EQ(refusal([] { TValue(7).toObject(); }), u"The value \"7\" is no object");
}

TEST(Value, ArgumentsKnowWhetherTheyMayChange)
{
    const TArguments arguments{1, byRef(2), u"3"};
    EXPECT_FALSE(arguments[0].byReference);
    EXPECT_TRUE(arguments[1].byReference);
    EXPECT_FALSE(arguments[2].byReference);
    EXPECT_EQ(arguments[1].value, TValue(2));
    EXPECT_EQ(arguments[2].value, TValue(u"3"));
}

} // namespace
