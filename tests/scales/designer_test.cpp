// A component in the form designer has no parts and touches nothing.

#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Designer : public TScalesTest
{
protected:
    Designer()
    {
        const platform::TDesignScope scope;
        scales = std::make_unique<TScalesDevice>();
        scales->SetIDLang(2);
        attach();
        scales->SetComport(port.get());
    }
};

TEST_F(Designer, PropertiesAreStored)
{
    EXPECT_TRUE(scales->Designing());
    for (int type = 0; type <= int(samples().size()) + 1; ++type) {
        scales->SetScalesType(type);
        EXPECT_EQ(scales->ScalesType(), type);
    }
    scales->SetSendInterval(500);
    EXPECT_EQ(scales->SendInterval(), 500);
    scales->SetIDLang(1);
    EXPECT_EQ(scales->IDLang(), 1);
    EXPECT_EQ(scales->ComPort(), port.get());
    QStringList list;
    scales->GetScalesList(list);
    EXPECT_EQ(list.size(), qsizetype(samples().size()) + 1);
}

TEST_F(Designer, NothingTicks)
{
    scales->SetScalesType(3);
    scales->SetSendInterval(500);
    clock.advance(10'000);
    trace.expect({});
}

TEST_F(Designer, NothingIsHeard)
{
    for (const TSample& sample : samples()) {
        scales->SetScalesType(sample.type);
        feed(sample.bytes);
        scales->SetUpComport();
        feed(sample.bytes);
    }
    trace.expect({});
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_F(Designer, NothingTouchesTheMissingParts)
{
    for (int type = 0; type <= int(samples().size()) + 1; ++type) {
        scales->SetScalesType(type);
        scales->SetUpComport();
        scales->SetComport(port.get());
        scales->SetSendInterval(type);
        scales->Reset();
        scales->GetWeight(true);
        scales->GetWeight(false);
        clock.advance(5'000);
        scales->GetWeight(true);
        scales->WriteToPort("x");
        scales->SetConnection(false);
        scales->SetConnection(true);
        scales->SetLastWeight(type);
        scales->SetComport(nullptr);
        scales->Reset();
        scales->SetUpComport();
        scales->GetMessage(0);
    }
    scales.reset();
}

TEST_F(Designer, IsInheritedFromTheOwner)
{
    TScalesDevice child(scales.get());
    EXPECT_TRUE(child.Designing());
    child.SetScalesType(8);
    child.Reset();
}

TEST_F(Designer, PortMayGoFirst)
{
    port.reset();
    EXPECT_FALSE(scales->IsConnected());
    scales->Reset();
    scales.reset();
}

} // namespace
