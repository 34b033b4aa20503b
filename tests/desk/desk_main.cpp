// The desk is tested without a screen.

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "*.warning=false");
    const QApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("fusion"));
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
