// Without a screen, and without what the user of this machine has set in their form designer.

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    const QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path());
    const QApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("fusion"));
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
