// The example of docs/panel.md is what is read and written.

#include "core_records.h"
#include "tnv5/panel/gate_ini.h"

#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

using namespace tnv5::panel;

TEST(PanelPage, ExampleIsWhatIsReadAndWritten)
{
    QFile file(QStringLiteral(TNV5_DOCS "/panel.md"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(file.readAll()).section("## The file", 1);
    static const QRegularExpression row("^\\| ([A-Za-z]+[0-9]?) \\| (.*?) ?\\|$",
                                        QRegularExpression::MultilineOption);
    QString text = "[Gates]\n";
    for (auto match = row.globalMatch(page.section("Reading:", 0, 0)); match.hasNext();) {
        const auto key = match.next();
        if (key.captured(1) != "Key") {
            text += key.captured(1) + '=' + key.captured(2) + '\n';
        }
    }
    const auto gates = readGates(text.toUtf8(), "Gates");
    EXPECT_EQ(shown(gates), "01A|02A|Main entrance|1|2; 03D||Staff door|3|0");
    EXPECT_EQ(writtenGates({}, "Gates", gates), text.toUtf8());
}

} // namespace
