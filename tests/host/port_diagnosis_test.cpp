#include "support/text_printers.h"
#include "tnv5/host/port_diagnosis.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/wait.h>
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

TEST(PortDiagnosis, NobodyIsSentIntoAGroupThatMayMore)
{
    for (const char* group : {"root", "tty", "disk", "sudo", "wheel", "0"}) {
        TPortFacts facts = goodPort();
        facts.permitted = false;
        facts.group = QString::fromLatin1(group);
        EXPECT_FALSE(explanation(facts).contains(QStringLiteral("usermod"))) << group;
        EXPECT_TRUE(explanation(facts).contains(QStringLiteral("a udev rule"))) << group;
    }
}

TEST(PortDiagnosis, HeldByAnotherProgram)
{
    TPortFacts facts = goodPort();
    facts.busy = true;
    facts.users = {{4711, QStringLiteral("minicom")}};
    EXPECT_TRUE(explanation(facts).contains(QStringLiteral("minicom (process 4711)")));
    EXPECT_FALSE(explanation(facts).contains(QStringLiteral("kill")));
    EXPECT_FALSE(explanation(facts).contains(QStringLiteral("fuser")));
}

TEST(PortDiagnosis, AHolderIsNamedOnlyWhenTheDeviceIsBusy)
{
    TPortFacts facts = goodPort();
    facts.users = {{4711, QStringLiteral("minicom")}};
    EXPECT_FALSE(explanation(facts).contains(QStringLiteral("minicom")));
}

TEST(PortDiagnosis, ARateThatDoesNotExist)
{
    TPortFacts facts = goodPort();
    facts.noSuchRate = true;
    EXPECT_TRUE(explanation(facts).startsWith(QStringLiteral("Usual rates are 1200, ")));
}

TEST(PortDiagnosis, HeldBySomethingThatCannotBeSeen)
{
    TPortFacts facts = goodPort();
    facts.busy = true;
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

/// Runs `body` while another process holds a pseudo-terminal, with or without a claim on it.
void whileHeld(bool claimed, const std::function<void(const QString& path, pid_t holder)>& body)
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(grantpt(master), 0);
    ASSERT_EQ(unlockpt(master), 0);
    char path[64] = {};
    ASSERT_EQ(ptsname_r(master, path, sizeof path), 0);
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        const int held = open(path, O_RDWR | O_NOCTTY);
        const char byte = held >= 0 && (!claimed || flock(held, LOCK_EX) == 0) ? 1 : 0;
        [[maybe_unused]] const auto written = write(ready[1], &byte, 1);
        pause();
        _exit(0);
    }
    char byte = 0;
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(byte, 1);
    body(QString::fromLatin1(path), child);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
    close(master);
}

TEST(PortFacts, OfAPseudoTerminalThatAnotherProgramHolds)
{
    whileHeld(true, [](const QString& path, pid_t holder) {
        const TPortFacts facts = portFacts(path);
        EXPECT_TRUE(facts.exists);
        EXPECT_TRUE(facts.isTerminal);
        EXPECT_TRUE(facts.permitted);
        EXPECT_TRUE(facts.busy);
        ASSERT_EQ(facts.users.size(), 1);
        EXPECT_EQ(facts.users[0].pid, holder);
        EXPECT_FALSE(facts.users[0].program.isEmpty());
        EXPECT_FALSE(portFacts(path, EINVAL).busy);
        EXPECT_TRUE(portFacts(path, EINVAL).noSuchRate);
    });
}

TEST(PortFacts, OpenIsNotBusy)
{
    whileHeld(false, [](const QString& path, pid_t) {
        const TPortFacts facts = portFacts(path);
        EXPECT_FALSE(facts.busy);
        EXPECT_TRUE(facts.users.isEmpty());
        EXPECT_TRUE(portFacts(path, EBUSY).busy);
    });
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
