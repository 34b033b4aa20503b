// The reference page says what is registered.

#include "script_fixture.h"
#include "tnv5/script/reference.h"

#include <QFile>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

TEST(ScriptReference, IsThePageOfTheDocumentation)
{
    QFile file(QStringLiteral(TNV5_DOCS "/script-reference.md"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    // write it anew with: tnv5 script-reference > docs/script-reference.md
    EXPECT_EQ(QString::fromUtf8(file.readAll()).toStdString(), script::scriptReference().toStdString());
}

TEST(ScriptReference, HasEveryKindOfThing)
{
    const QString page = script::scriptReference();
    for (const char* line :
         {"## Connector\n", "| `podComPort` | 1 |\n", "| `ByTimer` | boolean false |\n",
          "| `UnixStartDate` | date-time 1970-01-01 00:00:00 |\n",
          "### TTurnStylerList\n\nClass, not made by scripts.\n", "Class, made with `new TBankPOS()`.\n",
          "| `ComPort` | object TComPort |\n", "| `RemoutDevice` | integer, TConState |\n",
          "| `LastError` | integer, read-only |\n", "| `DeviceList` | array, read-only |\n",
          "| `OnWeight` | object, integer |\n", "| `IsConnected` | boolean |\n",
          "| `Items[index]` | object |\n", "| `IEcrInst` | object, read-only |\n",
          "| `GetScalesList` | string list | nothing |\n", "| `CashAdvance` | integer, integer | boolean |\n",
          "| `Create` | object | object |\n", "| `TStatusEvent` | object, integer, string |\n",
          "Record `TRFidInfo`: `IP`, `DeviceType`"}) {
        EXPECT_TRUE(page.contains(QString::fromUtf8(line))) << line;
    }
    EXPECT_FALSE(page.contains("objectName"));
}

} // namespace
