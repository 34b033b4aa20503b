// Files: what is there before, during and after a save, and what cannot be read or written.

#include "core_records.h"
#include "tnv5/panel/gate_ini.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace {

using namespace tnv5;
using namespace tnv5::panel;

const std::vector<TGateRecord> kGates{{"01A", "02A", "Вхід", 1, 2}};

class GateFile : public ::testing::Test
{
protected:
    QString path(const QString& name = "club.ini") const { return folder.filePath(name); }
    void put(const QByteArray& content) const
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QByteArray content() const
    {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    QStringList files() const
    {
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    /// What a save or load says that fails.
    template <class Body>
    static QString failure(Body&& body)
    {
        try {
            body();
        } catch (const EIniFile& error) {
            return error.message();
        }
        return "none";
    }

    QTemporaryDir folder;
};

TEST_F(GateFile, ComesBack)
{
    saveGates(path(), "Gates", kGates);
    EXPECT_EQ(content(),
              QByteArray("[Gates]\nItemsCount=1\nGateA1=01A\nGateB1=02A\nCaption1=Вхід\nEntryA1=1\n"
                         "EntryB1=2\n"));
    EXPECT_EQ(loadGates(path(), "Gates"), kGates);
    EXPECT_EQ(files(), QStringList{"club.ini"});
}

TEST_F(GateFile, ThatIsNotThereHasNoGates)
{
    EXPECT_EQ(loadGates(path(), "Gates"), std::nullopt);
    EXPECT_EQ(loadGates(folder.path(), "Gates"), std::nullopt);
    EXPECT_EQ(loadGates("", "Gates"), std::nullopt);
}

TEST_F(GateFile, WithoutTheSectionHasAnEmptyList)
{
    put("");
    EXPECT_EQ(loadGates(path(), "Gates"), std::vector<TGateRecord>());
}

TEST_F(GateFile, KeepsItsPermissionsAndLinks)
{
    put("; mine\n");
    ASSERT_TRUE(QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
    ASSERT_TRUE(QFile::link(path(), path("link.ini")));
    const auto before = QFile::permissions(path());
    saveGates(path("link.ini"), "Gates", {});
    EXPECT_EQ(content(), "; mine\n\n[Gates]\nItemsCount=0\n");
    EXPECT_EQ(QFile::permissions(path()), before);
    EXPECT_EQ(QFile::symLinkTarget(path("link.ini")), path());
}

TEST_F(GateFile, ReadOnlyStaysAsItIs)
{
    put("; mine\n");
    ASSERT_TRUE(QFile::setPermissions(path(), QFile::ReadOwner | QFile::ReadGroup));
    EXPECT_EQ(failure([this] { saveGates(path(), "Gates", kGates); }),
              QString("Cannot write \"%1\": the file is read-only").arg(path()));
    EXPECT_EQ(content(), "; mine\n");
    EXPECT_EQ(files(), QStringList{"club.ini"});
}

TEST_F(GateFile, FoldersAreNotMade)
{
    EXPECT_TRUE(failure([this] {
                    saveGates(path("no/club.ini"), "Gates", kGates);
                }).startsWith(QString("Cannot write \"%1\": ").arg(path("no/club.ini"))));
    EXPECT_TRUE(files().isEmpty());
    EXPECT_TRUE(failure([] { saveGates("", "Gates", kGates); }).startsWith("Cannot write \"\": "));
}

TEST_F(GateFile, AFolderOrDeviceIsNoFile)
{
    EXPECT_EQ(failure([this] { saveGates(folder.path(), "Gates", kGates); }),
              QString("Cannot write \"%1\": it is no file").arg(folder.path()));
    EXPECT_EQ(failure([] { saveGates("/dev/full", "Gates", kGates); }),
              "Cannot write \"/dev/full\": it is no file");
    ASSERT_EQ(mkfifo(path().toLocal8Bit().constData(), 0600), 0);
    EXPECT_EQ(loadGates(path(), "Gates"), std::nullopt);
    EXPECT_NE(failure([this] { saveGates(path(), "Gates", kGates); }), "none");
}

TEST_F(GateFile, ThatCannotBeReadIsAFailure)
{
    // a file of the system's that opens and then cannot be read, whoever asks
    EXPECT_TRUE(
        failure([] { loadGates("/proc/self/mem", "Gates"); }).startsWith("Cannot read \"/proc/self/mem\": "));
}

TEST_F(GateFile, TooLargeIsAFailure)
{
    put("[Gates]\nItemsCount=1\n");
    ASSERT_TRUE(QFile::resize(path(), kMostIniBytes + 1));
    const QString tooLarge = QString("Cannot read \"%1\": the file is too large").arg(path());
    EXPECT_EQ(failure([this] { loadGates(path(), "Gates"); }), tooLarge);
    EXPECT_EQ(failure([this] { saveGates(path(), "Gates", kGates); }), tooLarge);
    ASSERT_TRUE(QFile::resize(path(), 1'000));
    EXPECT_EQ(loadGates(path(), "Gates")->size(), 1U);
}

TEST_F(GateFile, NothingIsWrittenThatCouldNotBeRead)
{
    put("; mine\n");
    const std::vector<TGateRecord> large{{"", "", QString(kMostIniBytes, u'x'), 0, 0}};
    EXPECT_EQ(failure([&] { saveGates(path(), "Gates", large); }),
              QString("Cannot write \"%1\": the file is too large").arg(path()));
    EXPECT_EQ(content(), "; mine\n");
}

/// Saves much in a process that may write little; what the process tells about its end.
template <class Prepare>
int saveWithoutRoom(const QString& path, Prepare&& prepare)
{
    const pid_t child = fork();
    if (child == 0) {
        rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        rlimit little{10'000, 10'000};
        setrlimit(RLIMIT_FSIZE, &little);
        prepare();
        try {
            saveGates(path, "Gates", std::vector<TGateRecord>(10'000));
        } catch (const EIniFile&) {
            _exit(7);
        }
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

TEST_F(GateFile, FullDiskLeavesTheOldFile)
{
    put("; mine\n");
    const int status = saveWithoutRoom(path(), [] { signal(SIGXFSZ, SIG_IGN); });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(content(), "; mine\n");
    EXPECT_EQ(files(), QStringList{"club.ini"});
}

TEST_F(GateFile, AKillWhileItWritesLeavesTheOldFile)
{
    put("; mine\n");
    const int status = saveWithoutRoom(path(), [] { signal(SIGXFSZ, SIG_DFL); });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGXFSZ);
    EXPECT_EQ(content(), "; mine\n");
    saveGates(path(), "Gates", kGates);
    EXPECT_EQ(loadGates(path(), "Gates"), kGates);
}

} // namespace
