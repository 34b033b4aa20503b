// The host's decision: what it is asked, and how its answer is read.

#include "turnstile_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using tnv5::turnstile::PRFidInfo;

class SqlCheck : public TTurnstileTest
{
protected:
    PRFidInfo pass = makePass("01A", "77");
};

TEST_F(SqlCheck, AsksAboutThePass)
{
    for (int mode = 0; mode <= 3; ++mode) {
        for (const QString status : {"NEW", "OPEN", "TIMEOUT", "x"}) {
            pass->Status = status;
            gate->p_hw_SQLCheck(0, mode);
            trace.expect({check("01A", "77", status, mode)});
            EXPECT_EQ(pass->Status, status);
        }
    }
}

TEST_F(SqlCheck, PassesVariants)
{
    gate->SetOnCheckSQL([](TComponent*, const QVariant& Device, const QVariant& Cardnumber,
                           const QVariant& Status, QImage&, const QVariant& AIndex, QVariant& AResult) {
        EXPECT_EQ(Device.typeId(), int(QMetaType::QString));
        EXPECT_EQ(Cardnumber.typeId(), int(QMetaType::QString));
        EXPECT_EQ(Status.typeId(), int(QMetaType::QString));
        EXPECT_EQ(AIndex.typeId(), int(QMetaType::Int));
        EXPECT_EQ(AResult, QVariant(-1));
        AResult = 1;
    });
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 0), 1);
}

TEST_F(SqlCheck, HandsOverThePictureThatTheHostDrew)
{
    gate->SetOnGetImg([](TComponent*, const QString& Device, QImage& Img) {
        EXPECT_EQ(Device, "02A");
        EXPECT_TRUE(Img.isNull());
        Img = QImage(3, 5, QImage::Format_RGB32);
        Img.fill(Qt::red);
    });
    QSize size;
    gate->SetOnCheckSQL([&](TComponent*, const QVariant&, const QVariant&, const QVariant&, QImage& Img,
                            const QVariant&, QVariant&) {
        size = Img.size();
        Img = QImage(9, 9, QImage::Format_RGB32); // the host may draw on
    });
    gate->p_hw_CheckStatus("02A", "1", "R");
    gate->p_hw_SQLCheck(1, 0);
    EXPECT_EQ(size, QSize(3, 5));
    EXPECT_EQ(gate->StackItem(1)->Img.size(), QSize(9, 9));
    EXPECT_TRUE(pass->Img.isNull());
}

TEST_F(SqlCheck, ReturnsTheAnswer)
{
    for (int mode = 0; mode <= 3; ++mode) {
        for (const int answer : {-5, -1, 0, 1, 2, 1'000}) {
            Answers[mode] = answer;
            EXPECT_EQ(gate->p_hw_SQLCheck(0, mode), answer);
        }
    }
}

TEST_F(SqlCheck, HandlerThatLeavesTheResultAnswersMinusOne)
{
    for (int mode = 0; mode <= 3; ++mode) {
        EXPECT_EQ(gate->p_hw_SQLCheck(0, mode), -1);
    }
}

TEST_F(SqlCheck, WithoutAHandlerNewIsUnansweredAndTheRestIsRetired)
{
    gate->SetOnCheckSQL({});
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 0), -1);
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 1), 1);
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 2), 1);
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 3), 1);
}

TEST_F(SqlCheck, OtherModesAreNotAsked)
{
    Answers = {{4, 1}, {-1, 1}, {100, 1}};
    for (const int mode : {4, -1, 100}) {
        EXPECT_EQ(gate->p_hw_SQLCheck(0, mode), -1);
    }
    trace.expect({});
    pass->CardNumber = kButtonCard;
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 4), -1);
    EXPECT_EQ(pass->Status, "NEW");
}

TEST_F(SqlCheck, InvalidIndexIsNotAsked)
{
    for (const int index : {-1, 1, 100, std::numeric_limits<int>::min()}) {
        for (int mode = 0; mode <= 4; ++mode) {
            EXPECT_EQ(gate->p_hw_SQLCheck(index, mode), -1);
        }
    }
    trace.expect({});
}

TEST_F(SqlCheck, PseudoCardIsOpenAfterModeZeroWhateverTheAnswer)
{
    for (const QString& card : {kManualCard, kButtonCard}) {
        pass->CardNumber = card;
        for (const int answer : {-1, 0, 1, 2}) {
            pass->Status = "NEW";
            Answers[0] = answer;
            EXPECT_EQ(gate->p_hw_SQLCheck(0, 0), answer);
            EXPECT_EQ(pass->Status, "OPEN");
        }
        pass->Status = "NEW";
        for (int mode = 1; mode <= 3; ++mode) {
            gate->p_hw_SQLCheck(0, mode);
            EXPECT_EQ(pass->Status, "NEW");
        }
        gate->SetOnCheckSQL({});
        gate->p_hw_SQLCheck(0, 0);
        EXPECT_EQ(pass->Status, "OPEN");
        attach();
    }
}

TEST_F(SqlCheck, PseudoCardIsNotYetOpenWhenTheHostIsAsked)
{
    pass->CardNumber = kButtonCard;
    gate->p_hw_SQLCheck(0, 0);
    trace.expect({check("01A", kButtonCard, "NEW", 0)});
}

TEST_F(SqlCheck, ReadsWhateverAHostAnswersWithAsAnInteger)
{
    const std::pair<QVariant, int> answers[] = {
        {QVariant(true), 1},
        {QVariant(false), 0},
        {QVariant(qlonglong(1)), 1},
        {QVariant(1.0), 1},
        {QVariant("1"), 1},
        {QVariant("0"), 0},
        {QVariant(QVariant(uint(1))), 1},
        {QVariant(QString("-1")), -1},
    };
    for (const auto& [answer, expected] : answers) {
        Answers[0] = answer;
        EXPECT_EQ(gate->p_hw_SQLCheck(0, 0), expected) << answer.toString().toStdString();
    }
    EXPECT_EQ(trace.countOf("error"), 0);
}

TEST_F(SqlCheck, AnswerThatIsNoIntegerCountsAsAFailure)
{
    const QVariant answers[] = {QVariant("yes"), QVariant(""),
                                QVariant("1x"),  QVariant(QStringList{"1", "2"}),
                                QVariant(1e20),  QVariant()};
    for (const QVariant& answer : answers) {
        for (int mode = 0; mode <= 3; ++mode) {
            Answers[mode] = answer;
            EXPECT_EQ(gate->p_hw_SQLCheck(0, mode), mode == 0 ? -1 : 1) << answer.toString().toStdString();
            const QStringList lines = trace.take();
            ASSERT_EQ(lines.size(), 2);
            EXPECT_TRUE(lines[1].startsWith("error [05] ")) << lines[1].toStdString();
            EXPECT_GT(lines[1].size(), QString("error [05] ").size());
        }
    }
}

TEST_F(SqlCheck, RaisingHandlerIsReportedAndTheResultKept)
{
    Answers = {{0, 0}, {1, 0}, {2, 0}, {3, 0}}; // set before it raises: does not count
    trace.each("check", [] { throw std::runtime_error("database is gone"); });
    for (int mode = 0; mode <= 3; ++mode) {
        EXPECT_EQ(gate->p_hw_SQLCheck(0, mode), mode == 0 ? -1 : 1);
        trace.expect({check("01A", "77", "NEW", mode), "error [05] database is gone"});
    }
    gate->SetOnError({});
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 0), -1);
    trace.expect({check("01A", "77", "NEW", 0)});
}

TEST_F(SqlCheck, FailureIsNotEchoed)
{
    serve();
    gate->SetOnCheckSQL([](auto&&...) { throw platform::Exception("x"); });
    gate->p_hw_SQLCheck(0, 0);
    trace.expect({"error [05] x"});
}

TEST_F(SqlCheck, AnyKindOfExceptionIsCaught)
{
    gate->SetOnCheckSQL([](auto&&...) { throw platform::EAbort(); });
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 1), 1);
    trace.expect({"error [05] Operation aborted"});
    gate->SetOnCheckSQL([](auto&&...) { throw 42; });
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 1), 1);
    EXPECT_EQ(trace.countOf("error [05] "), 1);
}

TEST_F(SqlCheck, RaisingHandlerLeavesACardNewAndAPseudoCardOpen)
{
    gate->SetOnCheckSQL([](auto&&...) { throw std::runtime_error("x"); });
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", "77", "NEW"), "error [05] x"});
    EXPECT_EQ(pass->Status, "NEW");
    pass->CardNumber = kButtonCard;
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", kButtonCard, "NEW"), "error [05] x", stack("01A", kButtonCard, "OPEN")});
    EXPECT_EQ(pass->Status, "OPEN");
}

TEST_F(SqlCheck, UnreadableAnswerLeavesAPseudoCardOpen)
{
    Answers[0] = "maybe";
    pass->CardNumber = kButtonCard;
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 0), -1);
    EXPECT_EQ(pass->Status, "OPEN");
}

TEST_F(SqlCheck, RaisingHandlerRetiresPassesThatAreOver)
{
    for (const QString status : {"NOANSWER", "CRC-ERROR", "TIMEOUT", "FINISH"}) {
        TTurnstileFixture fixture;
        fixture.makePass("01A", "77", status);
        fixture.gate->SetOnCheckSQL([](auto&&...) { throw std::runtime_error("x"); });
        fixture.gate->p_hw_CallStackArray();
        fixture.trace.expect({stack("01A", "77", status), "error [05] x"});
        EXPECT_EQ(fixture.gate->StackItemsCount(), 0);
    }
}

TEST_F(SqlCheck, TheHostsChangesOfThePassAreSeen)
{
    // a host may take a decision into its own hands while it is asked
    Answers[0] = 1;
    trace.each("check", [&] { pass->CardNumber = kManualCard; });
    gate->p_hw_CallStackArray();
    EXPECT_EQ(pass->Status, "OPEN");
    EXPECT_EQ(trace.countOf("write $01A10366"), 1);
}

} // namespace
