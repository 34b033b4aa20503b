// The host's permission.

#include "switch_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Check = TSwitchTest;

TEST_F(Check, AsksWithTheJobAndTheMode)
{
    makeJob("000A!1!ON!OFF");
    for (const int mode : {0, 1, 2, 3}) {
        EXPECT_EQ(device->p_hw_SQLCheck(0, mode), 1); // the preset
        trace.expect({check("000A!1!ON!OFF", mode)});
    }
}

TEST_F(Check, GivesTheAnswerAsAnInteger)
{
    makeJob("000A!1!ON!OFF");
    for (const auto& [answer, result] : std::initializer_list<std::pair<QVariant, int>>{
             {0, 0}, {7, 7}, {-1, -1}, {QString("2"), 2}, {true, 1}, {false, 0}, {2.6, 3}}) {
        Answers = {{2, answer}};
        EXPECT_EQ(device->p_hw_SQLCheck(0, 2), result);
    }
}

TEST_F(Check, WithoutAHandlerIsOne)
{
    makeJob("000A!1!ON!OFF");
    device->SetOnCheckSQL({});
    for (const int mode : {0, 1, 2, 3}) {
        EXPECT_EQ(device->p_hw_SQLCheck(0, mode), 1);
    }
}

TEST_F(Check, OtherModesAndJobsAreNotAsked)
{
    makeJob("000A!1!ON!OFF");
    for (const int mode : {-1, 4, 5, 1'000'000}) {
        EXPECT_EQ(device->p_hw_SQLCheck(0, mode), -1);
    }
    EXPECT_EQ(device->p_hw_SQLCheck(1, 0), -1);
    EXPECT_EQ(device->p_hw_SQLCheck(-1, 0), -1);
    trace.expect({});
}

TEST_F(Check, AnAnswerThatIsNoNumberLeavesTheSweep)
{
    makeJob("000A!1!ON!OFF");
    Answers = {{0, QString("yes")}};
    EXPECT_THROW(device->p_hw_SQLCheck(0, 0), platform::EConvertError);
    EXPECT_THROW(sweep(), platform::EConvertError);
    EXPECT_EQ(jobAt(0), "000A!1!ON!OFF");
    Answers = {{0, 0}};
    sweep(); // not busy any more
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

} // namespace
