#include "support/text_printers.h"
#include "tnv5/tools/recording.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>

namespace tnv5::tools {

namespace {

QByteArray allBytes()
{
    QByteArray bytes;
    for (int value = 0; value < 256; ++value) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

QByteArray recording(const QByteArray& lines)
{
    return kRecordingHeader + '\n' + lines;
}

std::string failure(const QByteArray& text)
{
    try {
        parseRecording(text);
        return "none";
    } catch (const ERecording& error) {
        return error.what();
    }
}

} // namespace

TEST(Recording, ReadsAsItIsDocumented)
{
    const auto entries = parseRecording(recording("# a remark\n\n"
                                                  "+0.000000 < $01AR12345678\\r\n"
                                                  "+12.001250 > $01A10366\\r\r\n"
                                                  "+0.000001 ? \\x00\\xfF\\\\\\n\\t"));
    ASSERT_EQ(entries.size(), 3);
    EXPECT_EQ(entries[0].Direction, TDirection::FromEquipment);
    EXPECT_EQ(entries[0].Bytes, "$01AR12345678\r");
    EXPECT_EQ(entries[1].WaitUs, 12'001'250);
    EXPECT_EQ(entries[1].Direction, TDirection::ToEquipment);
    EXPECT_EQ(entries[1].Bytes, "$01A10366\r");
    EXPECT_EQ(entries[2].Direction, TDirection::Unknown);
    EXPECT_EQ(entries[2].Bytes, QByteArray("\0\xFF\\\n\t", 5));
}

TEST(Recording, EveryByteSurvives)
{
    for (int value = 0; value < 256; ++value) {
        const QByteArray byte(1, static_cast<char>(value));
        for (const QByteArray& bytes : {byte, byte + byte, "a" + byte, byte + "a", "a" + byte + "a"}) {
            const auto back = parseRecording(formatRecording({{value, TDirection::FromEquipment, bytes}}));
            ASSERT_EQ(back.size(), 1);
            EXPECT_EQ(back[0].Bytes, bytes) << value;
        }
    }
    EXPECT_EQ(parseRecording(formatRecording({{0, TDirection::Unknown, allBytes()}}))[0].Bytes, allBytes());
    EXPECT_TRUE(parseRecording(formatRecording({{0, TDirection::Unknown, {}}}))[0].Bytes.isEmpty());
}

TEST(Recording, IsPlainTextWithoutBlanksAtTheEnd)
{
    const QByteArray text = formatRecording({{1, TDirection::ToEquipment, " " + allBytes() + " "}});
    for (const char c : text) {
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));
    }
    EXPECT_FALSE(text.contains(" \n"));
}

TEST(Recording, WaitIsKeptInMicroseconds)
{
    for (const qint64 us : {0LL, 1LL, 999'999LL, 1'000'000LL, 86'400'000'000LL}) {
        EXPECT_EQ(parseRecording(formatRecording({{us, TDirection::Unknown, "x"}}))[0].WaitUs, us);
    }
    EXPECT_EQ(formatEntry({-5, TDirection::Unknown, "x"}), "+0.000000 ? x");
    EXPECT_EQ(formatEntry({kMaxWaitUs + 1, TDirection::Unknown, "x"}), "+86400.000000 ? x");
}

TEST(Recording, BrokenFilesSayWhereAndWhat)
{
    const auto at = [](const char* line, const char* what) {
        EXPECT_EQ(failure(recording("+0.000000 < ok\n") + line), std::string("line 3: ") + what) << line;
    };
    const char* const time = "an entry begins with its time, such as +0.012345";
    at("0.000000 < x", time);
    at("+0.5 < x", time);
    at("+ < x", time);
    at("+123456.000000 < x", time);
    at("+86400.000001 < x", "nothing waits longer than a day");
    at("+0.000000< x", "a blank is missing between time, direction and bytes");
    at("+0.000000 <x", "a blank is missing between time, direction and bytes");
    at("+0.000000 ! x", "the direction must be <, > or ?");
    at("+0.000000 ", "the direction must be <, > or ?");
    const char* const escape =
        "after a backslash only \\, r, n, t or x and two hexadecimal digits may follow";
    at("+0.000000 < a\\", escape);
    at("+0.000000 < \\q", escape);
    at("+0.000000 < \\x0", escape);
    at("+0.000000 < \\x0g", escape);
    at("+0.000000 < \xC3\xA4", "a byte outside plain ASCII must be written as \\x and two digits");
}

TEST(Recording, WhatIsNoneIsRefusedAtOnce)
{
    const std::string none = "line 1: this is no recording; it must begin with \"# tnv5 recording 1\"";
    EXPECT_EQ(failure(""), none);
    EXPECT_EQ(failure("# tnv5 recording 2\n"), none);
    EXPECT_EQ(failure(QByteArray(1'000, '\0')), none);
}

TEST(Recording, IsBounded)
{
    EXPECT_NE(failure(QByteArray(kMaxRecording + 1, 'x')).find("longer than"), std::string::npos);
    QByteArray many = recording({});
    const QByteArray entry = "+0.000000 < \n";
    many += entry.repeated(kMaxEntries + 1);
    EXPECT_EQ(failure(many), "line 1000002: the recording has more than 1000000 entries");
}

TEST(Recording, RandomTextNeverDoesHarm)
{
    std::mt19937 random(7);
    const QByteArray letters = "+0123456789. <>?\\xrnt#$\n\rAF\x80";
    for (int i = 0; i < 20'000; ++i) {
        QByteArray text = random() % 8 != 0 ? recording({}) : QByteArray();
        for (unsigned length = random() % 60; length > 0; --length) {
            text += letters[static_cast<qsizetype>(random() % static_cast<unsigned>(letters.size()))];
        }
        try {
            const auto entries = parseRecording(text);
            EXPECT_EQ(parseRecording(formatRecording(entries)).size(), entries.size());
        } catch (const ERecording& error) {
            EXPECT_TRUE(error.message().startsWith(QStringLiteral("line ")));
        }
    }
}

TEST(Recording, FilesNameThemselvesInErrors)
{
    EXPECT_THROW(readRecording(QStringLiteral("/does/not/exist")), ERecording);
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write("nonsense");
    file.flush();
    try {
        readRecording(file.fileName());
        FAIL();
    } catch (const ERecording& error) {
        EXPECT_TRUE(error.message().startsWith(file.fileName() + QStringLiteral(": line 1: ")));
    }
}

namespace {

QStringList shown(const TEntrySource& source)
{
    QStringList entries;
    while (const auto entry = source()) {
        entries << QString::fromLatin1(formatEntry(*entry));
    }
    return entries;
}

QList<TEntry> atSeconds(std::initializer_list<int> seconds)
{
    QList<TEntry> entries;
    int before = 0;
    for (const int second : seconds) {
        entries.append({(second - before) * 1'000'000LL, TDirection::Unknown, QByteArray::number(second)});
        before = second;
    }
    return entries;
}

} // namespace

TEST(RecordingPart, FromAndTo)
{
    const auto cut = [](qint64 from, qint64 to) {
        return shown(part(entriesOf(atSeconds({0, 1, 3, 3, 6})), from * 1'000'000, to * 1'000'000));
    };
    EXPECT_EQ(cut(0, -1).size(), 5);
    EXPECT_EQ(cut(1, 3), QStringList({QStringLiteral("+0.000000 ? 1"), QStringLiteral("+2.000000 ? 3"),
                                      QStringLiteral("+0.000000 ? 3")}));
    EXPECT_EQ(cut(2, -1), QStringList({QStringLiteral("+1.000000 ? 3"), QStringLiteral("+0.000000 ? 3"),
                                       QStringLiteral("+3.000000 ? 6")}));
    EXPECT_EQ(cut(0, 0), QStringList({QStringLiteral("+0.000000 ? 0")}));
    EXPECT_EQ(cut(7, -1), QStringList());
    EXPECT_EQ(cut(4, 5), QStringList());
}

class TRecordingFiles : public ::testing::Test
{
protected:
    QString write(const char* name, const QByteArray& text)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return file.fileName();
    }
    QString path(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }
    QStringList read(const QStringList& files)
    {
        TRecordingReader reader(files);
        return shown([&] { return reader.next(); });
    }
    QString failure(const QStringList& files)
    {
        try {
            read(files);
        } catch (const ERecording& error) {
            return error.message();
        }
        return {};
    }

    QTemporaryDir folder;
};

TEST_F(TRecordingFiles, SeveralAreReadAsOne)
{
    const QString one = write("a", recording("# x\n+0.000000 < a\n\n+1.000000 < b\r\n"));
    const QString empty = write("empty", recording({}));
    const QString two = write("b", recording("+2.000000 < c"));
    EXPECT_EQ(read({one, empty, two}),
              QStringList({QStringLiteral("+0.000000 < a"), QStringLiteral("+1.000000 < b"),
                           QStringLiteral("+2.000000 < c")}));
}

TEST_F(TRecordingFiles, WhatIsWrongAndWhere)
{
    const QString good = write("good", recording("+0.000000 < a\n"));
    const QString bad = write("bad", recording("+0.000000 < a\nnonsense\n"));
    EXPECT_TRUE(failure({good, bad}).startsWith(bad + QStringLiteral(": line 3: ")))
        << qPrintable(failure({bad}));
    EXPECT_TRUE(failure({write("none", "x\n")})
                    .startsWith(path("none") + QStringLiteral(": line 1: this is no recording")));
    EXPECT_EQ(failure({path("gone")}), path("gone") + QStringLiteral(": No such file or directory"));
    EXPECT_EQ(failure({write("long", recording("+0.000000 < " + QByteArray(2'000'000, 'x')))}),
              path("long") + QStringLiteral(": line 2: the line is longer than a mebibyte"));
}

TEST_F(TRecordingFiles, HalfALineIsTheEndOfItsFile)
{
    const QString more = write("more", recording("+1.000000 < b\n"));
    for (const char* half : {"+", "+0.1", "+0.100000 <#", "+0.100000 < x\\x0"}) {
        const QString cut = write("cut", recording(QByteArray("+0.000000 < a\n") + half));
        TRecordingReader reader({cut, more});
        QStringList remarks;
        reader.OnHalfLine = [&](const QString& text) { remarks.append(text); };
        EXPECT_EQ(shown([&] { return reader.next(); }),
                  QStringList({QStringLiteral("+0.000000 < a"), QStringLiteral("+1.000000 < b")}))
            << half;
        EXPECT_EQ(remarks,
                  QStringList({cut + QStringLiteral(": line 3 is only half there and is left out")}));
    }
}

TEST_F(TRecordingFiles, MoreThanFitsIntoMemoryAtOnceIsRead)
{
    const QByteArray entry = "+0.000001 < " + QByteArray(990, 'x') + '\n';
    QFile file(path("big"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(kRecordingHeader + '\n');
    const int count = int(kMaxRecording / entry.size()) + 10;
    for (int each = 0; each < count; ++each) {
        file.write(entry);
    }
    file.close();
    TRecordingReader reader({file.fileName()});
    int read = 0;
    while (reader.next()) {
        ++read;
    }
    EXPECT_EQ(read, count);
}

TEST_F(TRecordingFiles, NothingIsOverwritten)
{
    const QString name = write("gate.rec", "mine");
    try {
        const TRecordFile file(name, {}, false, 0);
        FAIL();
    } catch (const ERecording& error) {
        EXPECT_EQ(error.message(),
                  name + QStringLiteral(": the file is there already; --force overwrites it"));
    }
    EXPECT_EQ(QFile(name).size(), 4);
    {
        TRecordFile file(name, QStringLiteral("x"), true, 0);
        file.add(TDirection::FromEquipment, "a");
    }
    EXPECT_EQ(read({name}).size(), 1);
}

TEST_F(TRecordingFiles, RotatedFilesAreWholeAndTakeNobodysPlace)
{
    write("gate.rec.2", "mine");
    {
        TRecordFile file(path("gate.rec"), QStringLiteral("x"), false, 40);
        for (int each = 0; each < 5; ++each) {
            file.add(TDirection::FromEquipment, QByteArray::number(each));
        }
    }
    EXPECT_EQ(QFile(path("gate.rec.2")).size(), 4);
    QStringList names = {path("gate.rec"), path("gate.rec.3"), path("gate.rec.4")};
    QStringList bytes;
    for (const QString& each : read(names)) {
        bytes << each.section(u' ', 2);
    }
    EXPECT_EQ(bytes.join(u' '), QStringLiteral("0 1 2 3 4"));
    for (const QString& each : names) {
        EXPECT_LT(QFile(each).size(), 40 + 20) << qPrintable(each);
        EXPECT_GE(read({each}).size(), 1);
    }
    EXPECT_FALSE(QFile::exists(path("gate.rec.5")));
}

TEST_F(TRecordingFiles, AFullDiskIsToldWithTheName)
{
    try {
        TRecordFile file(QStringLiteral("/dev/full"), {}, true, 0);
        FAIL();
    } catch (const ERecording& error) {
        EXPECT_EQ(error.message(),
                  QStringLiteral("/dev/full: the recording cannot be written: No space left on device"));
    }
}

TEST_F(TRecordingFiles, HalfAnEntryIsTakenBack)
{
    struct rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    struct rlimit small = before;
    small.rlim_cur = 100;
    const auto old = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    QString why;
    try {
        TRecordFile file(path("gate.rec"), QStringLiteral("x"), false, 0);
        for (int each = 0; each < 100; ++each) {
            file.add(TDirection::FromEquipment, "0123456789");
        }
    } catch (const ERecording& error) {
        why = error.message();
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, old);
    EXPECT_EQ(why, path("gate.rec") + QStringLiteral(": the recording cannot be written: File too large"));
    EXPECT_EQ(read({path("gate.rec")}).size(), 3);
}

TEST(Recorder, WritesWhatCanBeRead)
{
    QBuffer buffer;
    ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
    TRecorder recorder(buffer, QStringLiteral("two\nlines"));
    recorder.add(TDirection::FromEquipment, "a\r");
    recorder.add(TDirection::ToEquipment, "b\r");
    const auto entries = parseRecording(buffer.data());
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0].WaitUs, 0);
    EXPECT_EQ(entries[0].Bytes, "a\r");
    EXPECT_EQ(entries[1].Direction, TDirection::ToEquipment);
    EXPECT_TRUE(buffer.data().contains("# two lines\n"));
}

TEST(Recorder, FullDiskIsToldNotHidden)
{
    QBuffer closed;
    EXPECT_THROW(TRecorder(closed, QString()), ERecording);
}

} // namespace tnv5::tools
