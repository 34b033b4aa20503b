#include "apps/tnv5/demo_kiosk.h"

#include "apps/tnv5/console.h"
#include "apps/tnv5/demo_report.h"
#include "tnv5/host/club.h"

namespace tnv5::cli {

namespace {

constexpr int kLibrary = 1;
constexpr int kMerchant = 1;
constexpr int kCents = 350;
constexpr int kStepMs = 100;
const QString kReport = QStringLiteral("1 x 350"); // the terminal's day, written down by hand

} // namespace

TDemoKiosk::TDemoKiosk()
{
    FPos.SetPosType(kLibrary);
    FPos.SetComPort(1);
    FPos.SetOnError([](platform::TComponent*, int code, const QString& text) {
        print(QStringLiteral("--- kiosk: [%1] %2").arg(code).arg(text.simplified()));
    });
}

void TDemoKiosk::sell()
{
    const TTerminalSimulation terminal({kLibrary, true, QStringLiteral("approve")}, kStepMs);
    FPaid = FPos.Init() && FPos.Connect() && FPos.Purchase(kCents, 0, kMerchant);
    print(QStringLiteral("kiosk  a coffee, %1 by card: %2")
              .arg(host::amountText(kCents), FPaid ? "approved, reference " + FPos.RRN() : "not paid"));
    if (FPaid && FPos.XReport(kMerchant)) {
        FTold = FPos.TotalsDebitNum() + " x " + FPos.TotalsDebitAmt();
    }
    FPos.Disconnect();
}

QStringList TDemoKiosk::compare() const
{
    if (FPaid && FTold == kReport) {
        return {};
    }
    return {QStringLiteral("a coffee at the kiosk must be paid; the terminal's day: ") + FTold};
}

QStringList TDemoKiosk::closingRows() const
{
    return {closingRow(QStringLiteral("coffees at the kiosk"),
                       FPaid ? host::amountText(kCents) : QStringLiteral("0"))};
}

} // namespace tnv5::cli
