#include "tnv5/platform/errors.h"

#include "support/fixture.h"

#include <stdexcept>

namespace {

using namespace tnv5::platform;

using ErrorsTest = tnv5::tests::TTestOn<tnv5::tests::TFixture>;

TEST_F(ErrorsTest, GuardHandsEscapedExceptionsToTheHandler)
{
    EXPECT_FALSE(guarded([] { throw Exception(QStringLiteral("дверь")); }));
    EXPECT_FALSE(guarded([] { throw std::runtime_error("std"); }));
    EXPECT_FALSE(guarded([] { throw 5; }));
    trace.expect({"raised дверь", "raised std", "raised Unknown exception"});
}

TEST_F(ErrorsTest, GuardIsSilentAboutAbortsAndDestroyedComponents)
{
    EXPECT_FALSE(guarded([] { throw EAbort(); }));
    EXPECT_FALSE(guarded([] { throw TDestroyed(); }));
    EXPECT_TRUE(guarded([] {}));
    trace.expect({});
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
