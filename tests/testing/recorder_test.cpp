// The kit of the tests itself: what it writes down, and that it fails when it must.

#include "support/answers.h"
#include "support/fixture.h"
#include "support/published.h"
#include "support/wait.h"

#include <gtest/gtest-spi.h>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

TEST(Shown, ControlCharactersAndWhatIsNotAscii)
{
    EXPECT_EQ(shown(QByteArray("$01A\r\n\x00\x1F~\x7F\xFF", 11)), "$01A\\r\\n\\x00\\x1f~\\x7f\\xff");
}

TEST(Recorder, WritesTheWordAndTheValuesOfAnyEvent)
{
    TRecorder trace;
    TComponent sender;
    const auto status = trace.handler(sender, "status");
    status(&sender, QVariant("01A"), QString("OPEN"), 7, QImage());
    trace.Separator = u'!';
    status(&sender, QVariant("01A"), QString(), 7);
    EXPECT_EQ(trace.countOf("status"), 2);
    trace.expect({"status 01A OPEN 7", "status 01A!!7"});
    EXPECT_EQ(trace.count(), 0);
}

TEST(Recorder, FailsAtTheWrongSenderAndAtAValueThatIsNoText)
{
    static TRecorder trace;
    static TComponent sender;
    EXPECT_NONFATAL_FAILURE(trace.handler(sender, "log")(nullptr, QString("x")), "wrong sender: log x");
    EXPECT_NONFATAL_FAILURE(trace.handler(sender, "status")(&sender, QVariant(5)), "typeId");
}

TEST(Recorder, FailsAtALineMoreLessOrOther)
{
    static TRecorder trace;
    for (const QStringList& lines : {QStringList{"log a"}, {"log a", "log b", "log c"}, {"log b", "log a"}}) {
        static QStringList expected;
        expected = lines;
        trace.note("log a");
        trace.note("log b");
        EXPECT_NONFATAL_FAILURE(trace.expect(expected), "transcript");
    }
}

TEST(Recorder, ActsInsideTheLine)
{
    TRecorder trace;
    trace.once("log", [&] { trace.note("once"); });
    trace.add("error");
    trace.add("log a");
    trace.add("log b");
    trace.each("log", [&] { trace.note("each"); });
    trace.add("log a");
    trace.add("log b");
    trace.raiseOnce("log", "no");
    EXPECT_THROW(trace.add("log a"), std::runtime_error);
    trace.add("log b");
    trace.expect({"error", "log a", "once", "log b", "log a", "each", "log b", "each", "log a", "log b"});
}

TEST(Fixture, RecordsWhatReachesTheExceptionHandler)
{
    TFixture fixture;
    platform::guarded([] { throw std::runtime_error("x"); });
    platform::guarded([] { throw platform::EConvertError("wording"); });
    platform::guarded([] { throw platform::EAbort(); });
    fixture.trace.expect({raised("x"), raised("EConvertError")});
}

TEST(Fixture, GivesBackTheExceptionHandler)
{
    TFixture outer;
    {
        const TFixture inner;
    }
    platform::guarded([] { throw std::runtime_error("x"); });
    outer.trace.expect({raised("x")});
}

TEST(Fixture, APortIsOpenAndMayGo)
{
    TPortFixture fixture;
    fixture.port->Write("a\r");
    fixture.trace.expect({wrote("a\r")});
    fixture.port.reset();
    fixture.inject("nobody hears");
}

TEST(Answers, AreGivenByMode)
{
    TRecorder trace;
    TAnswers host;
    TComponent sender;
    using TQuestion = std::function<void(TComponent*, const QVariant& card, QImage&, const QVariant& mode,
                                         QVariant& message, QVariant& result)>;
    const TQuestion ask = host.handler(trace, sender);
    QVariant message = QString();
    QVariant result = -1;
    QImage image;
    host.ByMode = {{2, 1}};
    ask(&sender, "77", image, 0, message, result);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(message, QString());
    host.Message = "hello";
    ask(&sender, "77", image, 2, message, result);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(message, "hello");
    trace.expect({"check 77 mode 0 preset -1", "check 77 mode 2 preset -1"});
}

TEST(Wait, EndsWhenTheConditionHoldsOrAtTheLimit)
{
    int looks = 0;
    EXPECT_TRUE(eventually([&] { return ++looks == 3; }));
    EXPECT_EQ(looks, 3);
    EXPECT_FALSE(eventually([] { return false; }, std::chrono::milliseconds(20)));
}

TEST(Published, FailsAtAnotherOrderTypeAccessOrDefault)
{
    static const TMemoryPort port;
    static const QMetaObject& meta = platform::TComPort::staticMetaObject;
    static const TPublishedTable whole = {{"Port", QStringLiteral("MEMORY")},
                                          {"BaudRate", 9600},
                                          {"DataBits", 8},
                                          {"Parity", platform::TParity::None},
                                          {"StopBits", platform::TStopBits::One},
                                          {"ReadGap", 0},
                                          {"Connected", false}};
    expectPublished(meta, whole);
    expectTypes(meta, whole);
    expectDefaults(port, whole);
    static TPublishedTable table;
    table = whole;
    std::swap(table[1], table[2]);
    EXPECT_NONFATAL_FAILURE(expectPublished(meta, table), "DataBits BaudRate");
    table = whole;
    table.pop_back();
    EXPECT_NONFATAL_FAILURE(expectPublished(meta, table), "Connected");
    table = whole;
    table[1] = {"BaudRate", 9600, TPublished::ReadOnly};
    EXPECT_NONFATAL_FAILURE(expectPublished(meta, table), "BaudRate");
    table[1] = {"BaudRate", qint64(9600)};
    EXPECT_NONFATAL_FAILURE(expectTypes(meta, table), "BaudRate");
    table[1] = {"BaudRate", 4800};
    EXPECT_NONFATAL_FAILURE(expectDefaults(port, table), "BaudRate: 9600");
}

} // namespace
