// The books from the command line, as a person keeps them.

#include "integration/program_run.h"
#include "sim/classic_line.h"
#include "sim/pty.h"
#include "support/text_printers.h"
#include "tnv5/host/books/database.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

class BooksProgram : public ::testing::Test
{
protected:
    struct TOutcome
    {
        int code;
        QString output;
        QString complaints;
    };

    TOutcome play(const QString& words)
    {
        QStringList arguments;
        for (const QString& word : words.split(u' ')) {
            arguments.append(QString(word).replace(u'~', u' ')); // "Anna~Berg" is one
        }
        return play(arguments);
    }
    TOutcome play(const QStringList& arguments)
    {
        TProgramRun run(QStringLiteral(TNV5_PROGRAM), arguments + QStringList{QStringLiteral("--db"), file});
        const int code = run.exitCode();
        return {code, run.output(), run.complaints()};
    }

    void init()
    {
        TProgramRun run(QStringLiteral(TNV5_PROGRAM), {QStringLiteral("init"), file});
        ASSERT_EQ(run.exitCode(), 0) << run.complaints().toStdString();
    }

    QString write(const char* name, const QByteArray& text)
    {
        QFile made(folder.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(made.open(QIODevice::WriteOnly));
        made.write(text);
        return made.fileName();
    }

    void fill()
    {
        init();
        ASSERT_EQ(play("zone add hall").code, 0);
        ASSERT_EQ(play("gate add 01A hall in").code, 0);
        ASSERT_EQ(
            play("member add Anna~Berg --card 12345678 --from 2000-01-01 --to 2999-01-01 --zone hall").code,
            0);
    }

    QTemporaryDir folder;
    QString file = folder.filePath(QStringLiteral("club.sqlite"));
};

TEST_F(BooksProgram, OnlyInitMakesADatabase)
{
    const QString sentence =
        QStringLiteral("tnv5: The database %1 is not there; \"tnv5 init %1\" makes one\n").arg(file);
    for (const char* words :
         {"member list", "member add Anna", "member import x.csv", "card list", "membership list",
          "zone add hall", "gate list", "product list", "inside", "journal", "backup x",
          "prune --older-than 3y --yes", "run --port /no/such/port", "run no-script.js",
          "pay --port x --type 1 --amount 1"}) {
        const TOutcome outcome = play(QString::fromLatin1(words));
        EXPECT_EQ(outcome.code, 1) << words;
        EXPECT_EQ(outcome.complaints, sentence) << words;
        EXPECT_FALSE(QFile::exists(file)) << words;
    }
    init();
    EXPECT_TRUE(QFile::exists(file));
    TProgramRun again(QStringLiteral(TNV5_PROGRAM), {QStringLiteral("init"), file});
    EXPECT_EQ(again.exitCode(), 1);
    EXPECT_EQ(again.complaints(),
              QStringLiteral("tnv5: %1: the file is there already; nothing was changed\n").arg(file));
}

TEST_F(BooksProgram, HalfADatabaseIsNotLeft)
{
    for (const char* limit : {"0", "4", "16"}) { // blocks of 1 KiB, as if the disk were full
        TProgramRun run(
            QStringLiteral("bash"),
            {QStringLiteral("-c"), QStringLiteral("ulimit -f %1; exec '%2' init '%3'")
                                       .arg(QLatin1String(limit), QStringLiteral(TNV5_PROGRAM), file)});
        EXPECT_EQ(run.exitCode(), 1) << limit;
        EXPECT_TRUE(run.complaints().contains(QStringLiteral("Cannot open database ") + file)) << limit;
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList()) << limit;
    }
    init();
    TProgramRun nowhere(QStringLiteral(TNV5_PROGRAM),
                        {QStringLiteral("init"), QStringLiteral("/no/such/place")});
    EXPECT_EQ(nowhere.exitCode(), 1);
    EXPECT_EQ(nowhere.complaints(), QStringLiteral("tnv5: /no/such/place: No such file or directory\n"));
}

TEST_F(BooksProgram, TheEnvironmentNamesTheDatabase)
{
    init();
    qputenv("TNV5_DB", file.toUtf8());
    TProgramRun run(QStringLiteral(TNV5_PROGRAM),
                    {QStringLiteral("zone"), QStringLiteral("list"), QStringLiteral("--csv")});
    EXPECT_EQ(run.exitCode(), 0);
    EXPECT_EQ(run.output(), QStringLiteral("name\n"));
    qunsetenv("TNV5_DB");
    TProgramRun none(QStringLiteral(TNV5_PROGRAM), {QStringLiteral("zone"), QStringLiteral("list")});
    EXPECT_EQ(none.exitCode(), 1);
    EXPECT_EQ(none.complaints(), QStringLiteral("tnv5: Which database? Give --db FILE, or set TNV5_DB\n"));
}

TEST_F(BooksProgram, AnOptionIsStrongerThanTheEnvironment)
{
    fill();
    const QString other = folder.filePath(QStringLiteral("other.sqlite"));
    TProgramRun made(QStringLiteral(TNV5_PROGRAM), {QStringLiteral("init"), other});
    ASSERT_EQ(made.exitCode(), 0);
    qputenv("TNV5_DB", file.toUtf8());
    for (const char* thing : {"zone", "gate", "product", "member", "card", "membership"}) {
        const QStringList words = {QString::fromLatin1(thing), QStringLiteral("list"),
                                   QStringLiteral("--csv"), QStringLiteral("--db"), other};
        TProgramRun run(QStringLiteral(TNV5_PROGRAM), words);
        EXPECT_EQ(run.exitCode(), 0) << thing;
        EXPECT_EQ(run.output().count(u'\n'), 1) << thing << ": the other has the first line only";
    }
    qunsetenv("TNV5_DB");
}

TEST_F(BooksProgram, EveryVerb)
{
    init();
    const struct
    {
        const char* words;
        const char* says;
    } steps[] = {
        {"zone add hall pool", ""},
        {"zone change pool --name baths", ""}, // what it says of a club's file is no output
        {"zone add spare", ""},
        {"zone remove spare", ""},
        {"gate add 01A hall in", ""},
        {"gate add 02A hall in", ""},
        {"gate change 02A --zone baths --direction out", ""},
        {"gate add 03A hall in", ""},
        {"gate remove 03A", ""},
        {"gate list --csv", "address,zone,direction\n01A,hall,in\n02A,baths,out\n"},
        {"product add nuts 12.50", ""},
        {"product change nuts --price 13 --name almonds", ""},
        {"product add tea 1", ""},
        {"product remove tea", ""},
        {"product list --csv", "name,price\nalmonds,13.00\n"},
        {"member add --card 7 --card 8 Anna~Berg --balance 5", "1\n"},
        {"member change Anna~Berg --credit -2.50 --suspended yes --inside yes", ""},
        {"member change 1 --name Anna~Klein", ""},
        {"member add Boris", "2\n"},
        {"card add 9 Boris", ""},
        {"card change 9 --number 10 --member 1", ""},
        {"card remove 8", ""},
        {"card list --csv", "number,member,name\n10,1,Anna Klein\n7,1,Anna Klein\n"},
        {"membership add 1 --from 2026-01-01 --to 2026-12-31 --zone hall --zone baths", "1\n"},
        {"membership change 1 --to 2026-06-30 --zone hall", ""},
        {"membership add 1 --from 2026-01-01 --to 2026-12-31 --zone hall", "2\n"},
        {"membership remove 2", ""},
        {"membership list --csv",
         "number,member,name,from,to,zones\n1,1,Anna Klein,2026-01-01,2026-06-30,hall\n"},
        {"member list", "number  name        suspended  inside  balance  cards\n"
                        "     1  Anna Klein  yes        yes        2.50  10; 7\n"
                        "     2  Boris       no         no         0.00\n"},
        {"inside --csv", "member,name,since,gate,zone\n1,Anna Klein,,,\n"},
        {"member remove Boris", ""},
        {"member remove 1 --force", ""},
        {"member list --json", "[\n]\n"},
    };
    for (const auto& step : steps) {
        const TOutcome outcome = play(QString::fromLatin1(step.words));
        EXPECT_EQ(outcome.code, 0) << step.words << outcome.complaints.toStdString();
        EXPECT_EQ(outcome.output, QString::fromLatin1(step.says)) << step.words;
    }
}

TEST_F(BooksProgram, WhatIsRefused)
{
    fill();
    const struct
    {
        const char* words;
        const char* why;
    } steps[] = {
        {"member add ~", "a member needs a name"},
        {"membership add 1 --from 2026-02-30 --to 2026-03-01",
         "\"2026-02-30\" is no day; write it like 2026-01-31"},
        {"member add Boris --from 2026-01-01", "A membership needs --from and --to"},
        {"gate add 02A hal in", "there is no zone \"hal\"; there are hall"},
        {"gate add 2A hall in",
         "\"2A\" is no gate's address: two digits and a capital letter such as 01A, "
         "or four digits or capital letters such as 101T, and no I at the end (a display)"},
        {"member change 1", "Nothing to change was given: see tnv5 member change --help"},
        {"journal --since 12:00", "\"12:00\" is no time; write it like 2026-01-31, \"2026-01-31 12:00\", "
                                  "today, yesterday, or 90m, 24h, 7d, 2w ago"},
        {"prune --older-than 3", "\"3\" is no age; write it like 90d, 8w, 18m (months) or 3y"},
        {"prune --older-than 3y --what members",
         "\"members\" cannot be pruned; there are passes, outages, sales, lamp-times and payments"},
        {"zone remove hall", "zone \"hall\" is in use: gates 1, memberships 1"},
    };
    for (const auto& step : steps) {
        const TOutcome outcome = play(QString::fromLatin1(step.words));
        EXPECT_EQ(outcome.code, 1) << step.words;
        EXPECT_EQ(outcome.complaints, QStringLiteral("tnv5: %1\n").arg(QLatin1String(step.why)))
            << step.words;
    }
    for (const char* option : {"--since", "--until"}) {
        const TOutcome empty = play({QStringLiteral("journal"), QString::fromLatin1(option), QString()});
        EXPECT_EQ(empty.code, 1) << option;
        EXPECT_TRUE(empty.complaints.startsWith(QStringLiteral("tnv5: \"\" is no time; ")))
            << qPrintable(empty.complaints);
    }
    EXPECT_EQ(play("member").code, 2);
    EXPECT_EQ(play("gate add 02A").code, 2);
    EXPECT_EQ(play("member list --csv --json").code, 2);
    EXPECT_EQ(play("member list --help").code, 0);
}

TEST_F(BooksProgram, CsvInAndOut)
{
    init();
    ASSERT_EQ(play("zone import " + write("zones.csv", "name\nhall\n")).code, 0);
    const QString wrong = write("wrong.csv", "name,cards,from,to,zones\nAnna,7,2026-01-01,2026-02-28,hall\n"
                                             "Boris,8,2026-01-01,2026-02-30,hall\n");
    const TOutcome refused = play("member import " + wrong);
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(
        refused.complaints,
        QStringLiteral("tnv5: %1:3:20: \"2026-02-30\" is no day; write it like 2026-01-31\n").arg(wrong));
    EXPECT_EQ(play("member list --csv").output,
              QStringLiteral("number,name,suspended,inside,balance,cards\n"));
    const TOutcome gone = play("member import /no/such.csv");
    EXPECT_EQ(gone.complaints, QStringLiteral("tnv5: /no/such.csv: No such file or directory\n"));

    const QString good = write("good.csv", "\xEF\xBB\xBFname;cards;from;to;zones;balance\r\n"
                                           "\"Berg; Anna\";7;2026-01-01;2026-02-28;hall;-1,50\r\n");
    const TOutcome taken = play("member import " + good);
    EXPECT_EQ(taken.code, 0);
    EXPECT_EQ(taken.output, QStringLiteral("1 imported from %1.\n").arg(good));
    EXPECT_EQ(play("member list --csv").output,
              QStringLiteral("number,name,suspended,inside,balance,cards\n1,\"Berg; Anna\",no,no,-1.50,7\n"));
}

TEST_F(BooksProgram, JsonAlsoOfFailures)
{
    fill();
    const QJsonArray members = QJsonDocument::fromJson(play("member list --json").output.toUtf8()).array();
    ASSERT_EQ(members.size(), 1);
    EXPECT_EQ(members[0][QStringLiteral("name")].toString(), QStringLiteral("Anna Berg"));
    const TOutcome failed = play("journal --json --member Nobody");
    EXPECT_EQ(failed.code, 1);
    EXPECT_EQ(failed.output, QStringLiteral("{\"error\":\"there is no member \\\"Nobody\\\"\"}\n"));
}

TEST_F(BooksProgram, OutputThatCannotBeWrittenIsAFailure)
{
    fill();
    QProcess run;
    run.setStandardOutputFile(QStringLiteral("/dev/full"));
    run.start(QStringLiteral(TNV5_PROGRAM),
              {QStringLiteral("member"), QStringLiteral("list"), QStringLiteral("--db"), file});
    ASSERT_TRUE(run.waitForFinished(60'000));
    EXPECT_EQ(run.exitCode(), 1);
    EXPECT_EQ(run.readAllStandardError(), QByteArray("tnv5: standard output: No space left on device\n"));
}

TEST_F(BooksProgram, TheJournalIsFollowedWhileAHostRuns)
{
    fill();
    sim::TPty pty(QStringLiteral("gates"));
    sim::TClassicLine gates(pty);
    gates.addController(QStringLiteral("01A"));
    gates.Delays.AnswerLimitMs = 3'600'000;
    TProgramRun host(QStringLiteral(TNV5_PROGRAM), {QStringLiteral("run"), QStringLiteral("--port"),
                                                    pty.path(), QStringLiteral("--db"), file});
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    TProgramRun follow(QStringLiteral(TNV5_PROGRAM),
                       {QStringLiteral("journal"), QStringLiteral("--follow"), QStringLiteral("--json"),
                        QStringLiteral("--db"), file});
    gates.readCard(QStringLiteral("01A"), QStringLiteral("12345678"));
    ASSERT_TRUE(follow.says(QStringLiteral("\"ending\":\"passed\""))) << follow.complaints().toStdString();
    EXPECT_TRUE(follow.output().endsWith(u'\n'));
    follow.stop();
    EXPECT_EQ(follow.exitCode(), 0);

    const QString shown = play("journal --gate 01A --member Anna~Berg --ending passed --since 24h").output;
    EXPECT_TRUE(shown.contains(QStringLiteral("  01A   passed  12345678  Anna Berg\n"))) << qPrintable(shown);
    EXPECT_TRUE(play("inside").output.contains(QStringLiteral("Anna Berg")));

    const QString copy = folder.filePath(QStringLiteral("copy.sqlite"));
    EXPECT_EQ(play("backup " + copy).code, 0);
    EXPECT_EQ(play("backup " + copy).complaints,
              QStringLiteral("tnv5: %1: the file is there already; --force takes its place\n").arg(copy));
    EXPECT_EQ(play("backup --force " + copy).code, 0);
    EXPECT_EQ(host::TDatabase(copy, host::TOpening::Existing).passesAfter(0, 10).size(), 1);

    ASSERT_TRUE(QFile::rename(file, file + QStringLiteral(".away")));
    EXPECT_TRUE(host.says(QStringLiteral("the database %1 was deleted").arg(file)));
    host.stop();
    EXPECT_NE(host.exitCode(), -1);
}

TEST_F(BooksProgram, FollowingAnEndingWaitsForIt)
{
    init();
    host::TDatabase club(file);
    const auto add = [&](const QString& gate, host::TEnding ending) {
        const auto pass = std::make_shared<host::TPass>();
        pass->began = platform::Now();
        pass->card = QStringLiteral("7");
        pass->gate = gate;
        pass->ending = ending;
        club.writePasses({pass});
        return pass;
    };
    TProgramRun follow(QStringLiteral(TNV5_PROGRAM),
                       {QStringLiteral("journal"), QStringLiteral("--follow"), QStringLiteral("--json"),
                        QStringLiteral("--ending"), QStringLiteral("passed"), QStringLiteral("--db"), file});
    add(QStringLiteral("09A"), host::TEnding::Passed);
    ASSERT_TRUE(follow.says(QStringLiteral("09A"))) << follow.complaints().toStdString();
    const auto first = add(QStringLiteral("01A"), host::TEnding::None);
    add(QStringLiteral("02A"), host::TEnding::Passed);
    ASSERT_TRUE(follow.says(QStringLiteral("02A")));
    EXPECT_FALSE(follow.output().contains(QStringLiteral("01A")));
    first->ending = host::TEnding::Passed;
    club.writePasses({first});
    EXPECT_TRUE(follow.says(QStringLiteral("01A")));
}

TEST_F(BooksProgram, PruningAsksOrIsTold)
{
    fill();
    {
        host::TDatabase club(file);
        for (const char* began :
             {"2001-01-01 12:00:00.000", "2001-01-02 12:00:00.000", "2999-01-01 12:00:00.000"}) {
            const auto pass = std::make_shared<host::TPass>();
            pass->began = host::toDateTime(QString::fromLatin1(began));
            pass->gate = QStringLiteral("01A");
            pass->card = QStringLiteral("7");
            pass->refusal = host::TRefusal::UnknownCard;
            club.writePasses({pass});
        }
    }
    const auto left = [this] { return play("journal --csv").output.count(u'\n') - 1; };
    EXPECT_TRUE(
        play("prune --older-than 3y --dry-run").output.startsWith(QStringLiteral("2 passes from before ")));
    EXPECT_EQ(left(), 3);
    const TOutcome unasked = play("prune --older-than 3y");
    EXPECT_EQ(unasked.code, 1);
    EXPECT_EQ(unasked.complaints, QStringLiteral("tnv5: Nobody is there to be asked; --yes answers\n"));
    EXPECT_EQ(left(), 3);
    EXPECT_EQ(play("prune --older-than 3y --what sales --yes").code, 0);
    EXPECT_EQ(left(), 3);
    EXPECT_EQ(play("prune --older-than 3y --yes").code, 0);
    EXPECT_EQ(left(), 1);
}

} // namespace
} // namespace tnv5::integration
