#include "tnv5/platform/errors.h"

#include "support/text_printers.h"

#include <QStringList>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace tnv5::platform;

class ErrorsTest : public testing::Test
{
protected:
    ErrorsTest()
    {
        FPrevious = setExceptionHandler(
            [this](const QString& message, const std::exception_ptr&) { reported.append(message); });
    }
    ~ErrorsTest() override { setExceptionHandler(FPrevious); }

    QStringList reported;

private:
    TExceptionHandler FPrevious;
};

TEST_F(ErrorsTest, GuardHandsEscapedExceptionsToTheHandler)
{
    EXPECT_FALSE(guarded([] { throw Exception(QStringLiteral("дверь")); }));
    EXPECT_FALSE(guarded([] { throw std::runtime_error("std"); }));
    EXPECT_FALSE(guarded([] { throw 5; }));
    EXPECT_EQ(reported, QStringList({QStringLiteral("дверь"), "std", "Unknown exception"}));
}

TEST_F(ErrorsTest, GuardIsSilentAboutAbortsAndDestroyedComponents)
{
    EXPECT_FALSE(guarded([] { throw EAbort(); }));
    EXPECT_FALSE(guarded([] { throw TDestroyed(); }));
    EXPECT_TRUE(guarded([] {}));
    EXPECT_EQ(reported, QStringList());
}

TEST_F(ErrorsTest, AHandlerThatRaisesEndsThere)
{
    setExceptionHandler([](const QString&, const std::exception_ptr&) { throw std::runtime_error("again"); });
    EXPECT_FALSE(guarded([] { throw Exception(QStringLiteral("first")); }));
}

TEST_F(ErrorsTest, TheExceptionItselfIsHandedOver)
{
    bool isPortError = false;
    setExceptionHandler([&](const QString&, const std::exception_ptr& error) {
        try {
            std::rethrow_exception(error);
        } catch (const EComPort& port) {
            isPortError = port.osError() == 13;
        }
    });
    guarded([] { throw EComPort(QStringLiteral("no permission"), 13); });
    EXPECT_TRUE(isPortError);
}

TEST(Exceptions, CarryTheirTextAsUtf8Too)
{
    EXPECT_STREQ(Exception(QStringLiteral("Порт")).what(), "Порт");
    EXPECT_EQ(EAbort().message(), QStringLiteral("Operation aborted"));
    EXPECT_EQ(EComPort(QStringLiteral("x")).osError(), 0);
}

} // namespace
