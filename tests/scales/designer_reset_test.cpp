// Reset of a component in the form designer, which listens to no port.

#include "wire_samples.h"

#include "support/text_printers.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QString kResetNone = QStringLiteral("log [07] Reset port ");

class DesignerReset : public TScalesTest
{
protected:
    DesignerReset()
    {
        const platform::TDesignScope scope;
        scales = std::make_unique<TScalesDevice>();
        scales->SetIDLang(2);
        trace.attach(*scales);
        scales->SetComport(port.get());
    }
};

TEST_F(DesignerReset, LogsAnEmptyPortName)
{
    scales->Reset();
    trace.expect({kResetNone});
}

TEST_F(DesignerReset, LogsItForEveryFamily)
{
    for (int type = 0; type <= int(samples().size()) + 1; ++type) {
        scales->SetScalesType(type);
        scales->SetUpComport();
        scales->Reset();
        trace.expect({kResetNone});
    }
}

TEST_F(DesignerReset, LogsItInARequestThatFollowsSilence)
{
    scales->SetScalesType(3);
    clock.advance(5'000);
    scales->GetWeight(true);
    trace.expect(sent("\x00\x00\x03"_b) + QStringList{kResetNone});
}

TEST_F(DesignerReset, WithoutAPortReportsThenLogs)
{
    scales->SetComport(nullptr);
    scales->Reset();
    trace.expect({kNoPort, kResetNone});
}

class ResetPort : public TScalesTest
{
};

TEST_F(ResetPort, IsTheOneThatIsListenedToAtTheEnd)
{
    TMemoryPort other;
    other.SetPort(QStringLiteral("COM9"));
    port->Close();
    port->OnOpening = [&] { scales->SetComport(&other); };
    scales->Reset();
    trace.expect({QStringLiteral("log [07] Reset port COM9")});
}

TEST_F(ResetPort, IsNoneWhenItGoesMeanwhile)
{
    port->Close();
    port->OnOpening = [&] { port.reset(); };
    scales->Reset();
    trace.expect({kResetNone});
}

} // namespace
