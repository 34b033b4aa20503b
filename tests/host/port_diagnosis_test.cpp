#include "support/text_printers.h"
#include "tnv5/host/port_diagnosis.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

namespace tnv5::host {
namespace {

TPortFacts goodPort()
{
    TPortFacts facts;
    facts.name = QStringLiteral("/dev/ttyUSB0");
    facts.exists = true;
    facts.isTerminal = true;
    facts.permitted = true;
    facts.group = QStringLiteral("dialout");
    facts.user = QStringLiteral("anna");
    facts.lookedEverywhere = true;
    return facts;
}

QString explanation(const TPortFacts& facts)
{
    return explainPort(facts).join(u'\n');
}

TEST(PortDiagnosis, NoSuchDeviceListsThoseThatExist)
{
    TPortFacts facts = goodPort();
    facts.exists = false;
    facts.ports = {{QStringLiteral("/dev/ttyS0"), QString(), {}},
                   {QStringLiteral("/dev/ttyUSB1"), QStringLiteral("Line adapter"), {}}};
    const QStringList lines = explainPort(facts);
    EXPECT_EQ(lines[0], QStringLiteral("There is no device /dev/ttyUSB0."));
    EXPECT_EQ(lines[2], QStringLiteral("  /dev/ttyS0"));
    EXPECT_EQ(lines[3], QStringLiteral("  /dev/ttyUSB1  Line adapter"));
}

TEST(PortDiagnosis, NoDeviceAtAll)
{
    TPortFacts facts = goodPort();
    facts.exists = false;
    EXPECT_TRUE(explanation(facts).contains(QStringLiteral("no serial port at the moment")));
}

TEST(PortDiagnosis, NotASerialPort)
{
    TPortFacts facts = goodPort();
    facts.isTerminal = false;
    EXPECT_TRUE(explanation(facts).contains(QStringLiteral("is not a serial port")));
}

TEST(PortDiagnosis, NoPermissionNamesTheGroupAndTheCommand)
{
    TPortFacts facts = goodPort();
    facts.permitted = false;
    EXPECT_TRUE(explanation(facts).contains(QStringLiteral("belongs to the group \"dialout\"")));
    EXPECT_TRUE(explanation(facts).contains(QStringLiteral("sudo usermod -aG dialout anna")));
}

TEST(PortDiagnosis, HeldByAnotherProgram)
{
    TPortFacts facts = goodPort();
    facts.users = {{4711, QStringLiteral("minicom")}};
    EXPECT_TRUE(explanation(facts).contains(QStringLiteral("minicom (process 4711)")));
    EXPECT_TRUE(explanation(facts).contains(QStringLiteral("kill 4711")));
}

TEST(PortDiagnosis, HeldBySomethingThatCannotBeSeen)
{
    TPortFacts facts = goodPort();
    facts.lookedEverywhere = false;
    EXPECT_TRUE(explanation(facts).contains(QStringLiteral("sudo fuser -v /dev/ttyUSB0")));
}

TEST(PortDiagnosis, NothingToBeFound)
{
    EXPECT_TRUE(explanation(goodPort()).contains(QStringLiteral("does not answer")));
}

TEST(PortFacts, OfADeviceThatIsNotThere)
{
    const TPortFacts facts = portFacts(QStringLiteral("/dev/no-such-port"));
    EXPECT_FALSE(facts.exists);
    EXPECT_FALSE(facts.user.isEmpty());
}

TEST(PortFacts, OfAFile)
{
    const QTemporaryDir directory;
    EXPECT_TRUE(portFacts(directory.path()).exists);
    EXPECT_FALSE(portFacts(directory.path()).isTerminal);
}

TEST(PortFacts, OfAPseudoTerminalThatThisProgramHolds)
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(grantpt(master), 0);
    ASSERT_EQ(unlockpt(master), 0);
    char path[64] = {};
    ASSERT_EQ(ptsname_r(master, path, sizeof path), 0);
    EXPECT_TRUE(portFacts(QString::fromLatin1(path)).users.isEmpty());

    const int held = open(path, O_RDWR | O_NOCTTY);
    ASSERT_GE(held, 0);
    const TPortFacts facts = portFacts(QString::fromLatin1(path));
    close(held);
    close(master);
    EXPECT_TRUE(facts.exists);
    EXPECT_TRUE(facts.isTerminal);
    EXPECT_TRUE(facts.permitted);
    ASSERT_EQ(facts.users.size(), 1);
    EXPECT_EQ(facts.users[0].pid, getpid());
    EXPECT_FALSE(facts.users[0].program.isEmpty());
}

TEST(StableNames, LinksThatLeadToTheDevice)
{
    const QTemporaryDir directory;
    const QString device = directory.filePath(QStringLiteral("ttyUSB0"));
    const QString names = directory.filePath(QStringLiteral("by-id"));
    QFile file(device);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(QDir().mkdir(names));
    ASSERT_TRUE(QFile::link(QStringLiteral("../ttyUSB0"), names + QStringLiteral("/usb-adapter")));
    ASSERT_TRUE(QFile::link(QStringLiteral("../ttyUSB1"), names + QStringLiteral("/usb-gone")));

    const QString nowhere = directory.filePath(QStringLiteral("by-path"));
    EXPECT_EQ(stableNamesOf(device, {names, nowhere}), QStringList({names + QStringLiteral("/usb-adapter")}));
    EXPECT_TRUE(stableNamesOf(directory.filePath(QStringLiteral("ttyUSB1")), {names}).isEmpty());
}

} // namespace
} // namespace tnv5::host
