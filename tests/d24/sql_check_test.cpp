// The question to the host.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class SqlCheck : public TD24Test
{
protected:
    /// A handler that only sets the result and the message.
    void answer(const QVariant& result, const QVariant& message = {})
    {
        gate->SetOnCheckSQL([=](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                const QVariant&, const QVariant&, QImage&, const QVariant&, QVariant& Mess,
                                QVariant& AResult) {
            Mess = message;
            AResult = result;
        });
    }
};

TEST_F(SqlCheck, TheHostGetsTheRecord)
{
    const d24::PRFidInfo pass = makePass(kG, "77", "any");
    pass->Img = QImage(3, 2, QImage::Format_RGB32);
    for (const int mode : {0, 1, 2, 3, 5}) {
        gate->p_hw_SQLCheck(0, mode);
        trace.expect({check(kG, "77", "any", mode)});
    }
    QSize seen;
    gate->SetOnCheckSQL([&](TComponent*, const QVariant&, const QVariant&, const QVariant&, const QVariant&,
                            const QVariant&, QImage& Img, const QVariant&, QVariant&, QVariant&) {
        seen = Img.size();
        Img = QImage(5, 4, QImage::Format_RGB32);
    });
    gate->p_hw_SQLCheck(0, 2);
    EXPECT_EQ(seen, QSize(3, 2));
    EXPECT_EQ(pass->Img.size(), QSize(5, 4)); // the record's own picture
}

TEST_F(SqlCheck, WithoutHandlerTheDefaultsHold)
{
    gate->SetOnCheckSQL({});
    makePass(kT, "77");
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 0), -1);
    for (const int mode : {1, 2, 3, 5}) {
        EXPECT_EQ(gate->p_hw_SQLCheck(0, mode), 1) << mode;
    }
    trace.expect({});
}

TEST_F(SqlCheck, AHandlerThatLeavesTheResultSaysMinusOne)
{
    makePass(kT, "77");
    for (const int mode : {0, 1, 2, 3, 5}) {
        EXPECT_EQ(gate->p_hw_SQLCheck(0, mode), -1) << mode;
    }
}

TEST_F(SqlCheck, TheResultIsReturned)
{
    makePass(kT, "77");
    for (const int mode : {0, 1, 2, 3, 5}) {
        for (const int result : {0, 1, 2, -7, 1'000'000}) {
            Answers[mode] = result;
            EXPECT_EQ(gate->p_hw_SQLCheck(0, mode), result) << mode;
        }
    }
}

TEST_F(SqlCheck, OtherModesAskNobody)
{
    makePass(kI, kManualCard);
    for (const int mode : {4, 6, -1, 99}) {
        EXPECT_EQ(gate->p_hw_SQLCheck(0, mode), -1) << mode;
    }
    gate->SetOnCheckSQL({});
    EXPECT_EQ(gate->p_hw_SQLCheck(0, 4), -1);
    EXPECT_EQ(statusOf(0), "NEW");
    trace.expect({});
}

TEST_F(SqlCheck, AnIndexWithoutPassGivesMinusOne)
{
    gate->SetOnCheckSQL({});
    for (const int index : {-1, 0, 1, 1'000}) {
        EXPECT_EQ(gate->p_hw_SQLCheck(index, 2), -1) << index;
    }
}

TEST_F(SqlCheck, TheIndexChoosesTheRecord)
{
    makePass(kT, "77");
    makePass(kG, "78", "OPEN");
    gate->p_hw_SQLCheck(1, 3);
    trace.expect({check(kG, "78", "OPEN", 3)});
}

TEST_F(SqlCheck, TheMessageIsKeptInModeZeroOnly)
{
    const d24::PRFidInfo pass = makePass(kT, "77");
    Message = "|one|";
    gate->p_hw_SQLCheck(0, 0);
    EXPECT_EQ(pass->InfoMess, "|one|");
    Message = "|two|";
    for (const int mode : {1, 2, 3, 5, 4}) {
        gate->p_hw_SQLCheck(0, mode);
        EXPECT_EQ(pass->InfoMess, "|one|") << mode;
    }
    Message = QVariant();
    gate->p_hw_SQLCheck(0, 0); // a handler that leaves the message clears it
    EXPECT_EQ(pass->InfoMess, "");
}

TEST_F(SqlCheck, WithoutHandlerTheMessageStays)
{
    const d24::PRFidInfo pass = makePass(kT, "77");
    pass->InfoMess = "before";
    gate->SetOnCheckSQL({});
    gate->p_hw_SQLCheck(0, 0);
    EXPECT_EQ(pass->InfoMess, "before");
}

TEST_F(SqlCheck, TheMessageIsReadAsText)
{
    const d24::PRFidInfo pass = makePass(kT, "77");
    answer(2, 15);
    gate->p_hw_SQLCheck(0, 0);
    EXPECT_EQ(pass->InfoMess, "15");
    answer(2, 3e9); // with all its digits
    gate->p_hw_SQLCheck(0, 0);
    EXPECT_EQ(pass->InfoMess, "3000000000");
    answer(2, QVariant());
    gate->p_hw_SQLCheck(0, 0);
    EXPECT_EQ(pass->InfoMess, "");
    answer(2, QVariant::fromValue(nullptr));
    gate->p_hw_SQLCheck(0, 0);
    EXPECT_EQ(pass->InfoMess, "");
}

TEST_F(SqlCheck, TheResultIsReadFromNumbersAndNumericTexts)
{
    makePass(kT, "77");
    const QList<std::pair<QVariant, int>> readings{{1, 1},
                                                   {QStringLiteral("1"), 1},
                                                   {QStringLiteral("-7"), -7},
                                                   {1.0, 1},
                                                   {true, 1},
                                                   {false, 0},
                                                   {qint64(12), 12},
                                                   {quint8(3), 3}};
    for (const auto& [value, number] : readings) {
        answer(value);
        EXPECT_EQ(gate->p_hw_SQLCheck(0, 0), number) << value.typeName();
        EXPECT_EQ(gate->p_hw_SQLCheck(0, 2), number) << value.typeName();
    }
}

TEST_F(SqlCheck, AnyOtherResultRaises)
{
    const d24::PRFidInfo pass = makePass(kI, kManualCard);
    for (const QVariant& value :
         {QVariant("yes"), QVariant(""), QVariant(QStringList("1")), QVariant(1e300)}) {
        answer(value, "|text|");
        for (const int mode : {0, 1, 2, 3, 5}) {
            EXPECT_THROW(gate->p_hw_SQLCheck(0, mode), platform::EConvertError) << mode;
        }
        EXPECT_EQ(pass->Status, "NEW");
        EXPECT_EQ(pass->InfoMess, "|text|"); // taken before the result
    }
}

TEST_F(SqlCheck, ModeZeroOpensAPassWithoutCard)
{
    for (const bool handler : {true, false}) {
        for (const QString& card :
             {kManualCard, kButtonCard, QStringLiteral("-1-1-1-1"), QStringLiteral("77")}) {
            for (const char* type : {"T", "G", "D", "X", "I"}) {
                TD24Fixture fixture;
                if (!handler) {
                    fixture.gate->SetOnCheckSQL({});
                }
                const d24::PRFidInfo pass = fixture.makePass(QStringLiteral("1!001x!") + type, card, "any");
                fixture.gate->p_hw_SQLCheck(0, 0);
                const bool pseudo = card == kManualCard || card == kButtonCard;
                EXPECT_EQ(pass->Status, type[0] == 'I' ? "FINISH"
                                        : pseudo       ? "OPEN"
                                                       : "any")
                    << type << ' ' << card.toStdString();
            }
        }
    }
}

TEST_F(SqlCheck, OtherModesLeaveTheState)
{
    const d24::PRFidInfo pass = makePass(kI, kManualCard, "any");
    for (const int mode : {1, 2, 3, 4, 5}) {
        gate->p_hw_SQLCheck(0, mode);
        EXPECT_EQ(pass->Status, "any") << mode;
    }
}

} // namespace
