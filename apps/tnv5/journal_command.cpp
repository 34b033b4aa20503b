#include "apps/tnv5/book_options.h"
#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/host/books/books_journal.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QTimer>
#include <memory>
#include <optional>

namespace tnv5::cli {

namespace {

using host::TTableFormat;

constexpr int kPiece = 1'000;
constexpr int kFollowMs = 300;

struct TInsideOptions
{
    std::string database;
    TShowOptions show;
};

struct TJournalOptions
{
    std::string database;
    std::optional<std::string> since; // an empty one is wrong, not absent
    std::optional<std::string> until;
    std::string member;
    std::string gate;
    std::string ending;
    bool outages = false;
    bool follow = false;
    TShowOptions show;
};

int inside(const TInsideOptions& options)
{
    return runJson(options.show.json, [&] {
        host::TDatabase club(databaseFile(options.database), host::TOpening::Existing);
        showTable(host::TBooks(club).inside(), options.show.format());
        return kDone;
    });
}

/// The journal on its way to standard output.
class TJournalShow
{
public:
    TJournalShow(host::TDatabase& club, const TJournalOptions& options, const host::TJournalQuery& query)
        : FJournal(club, query),
          FPeople(!options.show.json && !options.show.csv),
          FFormat(options.show.json && options.follow ? TTableFormat::JsonLines : options.show.format()),
          FWriter(FFormat,
                  FPeople ? host::TJournalReader::columnsForPeople() : host::TJournalReader::columns(),
                  tableOutput(FFormat))
    {
    }

    /// What has been added since the last time.
    void news()
    {
        for (;;) {
            const auto rows = FJournal.next(kPiece);
            if (rows.isEmpty()) {
                break;
            }
            add(rows);
        }
        flushLines();
    }
    /// And what has ended.
    void ends() { add(FJournal.ended()); }
    void end()
    {
        FWriter.end();
        flushLines();
    }

private:
    void add(const QList<QVariantList>& rows)
    {
        QList<QVariantList> shown = rows;
        if (FPeople) {
            for (QVariantList& row : shown) {
                row = host::TJournalReader::forPeople(row);
            }
        }
        if (!shown.isEmpty()) {
            FWriter.add(shown);
        }
    }

    host::TJournalReader FJournal;
    bool FPeople;
    TTableFormat FFormat;
    host::TTableWriter FWriter;
};

/// Goes on until Ctrl-C, or until the database or the output is gone.
int follow(host::TDatabase& club, TJournalShow& show)
{
    const TStopSignal stop(&QCoreApplication::quit);
    QString trouble;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        try {
            trouble = club.misplaced();
            show.ends();
            show.news();
        } catch (...) {
            trouble = platform::exceptionMessage();
        }
        if (!trouble.isEmpty()) {
            QCoreApplication::quit();
        }
    });
    timer.start(kFollowMs);
    QCoreApplication::exec();
    if (!trouble.isEmpty()) {
        throw platform::Exception(trouble);
    }
    return kDone;
}

int journal(const TJournalOptions& options)
{
    return runJson(options.show.json, [&] {
        host::TDatabase club(databaseFile(options.database), host::TOpening::Existing);
        if (options.outages) {
            showTable(host::outages(club), options.show.format());
            return kDone;
        }
        host::TJournalQuery query;
        query.since = options.since ? host::readMoment(QString::fromStdString(*options.since), false) : 0;
        query.until = options.until ? host::readMoment(QString::fromStdString(*options.until), true) : 0;
        query.member =
            options.member.empty() ? 0 : host::TBooks(club).memberOf(QString::fromStdString(options.member));
        query.gate = QString::fromStdString(options.gate);
        query.ending = QString::fromStdString(options.ending);
        TJournalShow show(club, options, query);
        show.news();
        if (options.follow) {
            return follow(club, show);
        }
        show.end();
        return kDone;
    });
}

} // namespace

void addInsideCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TInsideOptions>();
    CLI::App* const command =
        app.add_subcommand("inside", "Show who is inside, since when and through which gate");
    addDatabaseOption(*command, options->database);
    addShowOptions(*command, options->show);
    command->callback([&chosen, options] { chosen = [options] { return inside(*options); }; });
}

void addJournalCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TJournalOptions>();
    CLI::App* const command = app.add_subcommand("journal", "Show the journal of passes, oldest first");
    addDatabaseOption(*command, options->database);
    addShowOptions(*command, options->show);
    const auto moment = [command](const char* name, std::optional<std::string>& value, const char* what) {
        command
            ->add_option_function<std::string>(
                name, [&value](const std::string& text) { value = text; }, what)
            ->type_name("TIME");
    };
    moment("--since", options->since, "Passes that began then or later");
    moment("--until", options->until, "Passes that began then or before");
    command->add_option("--member", options->member, "Of this member: number or name")->type_name("MEMBER");
    command->add_option("--gate", options->gate, "At this gate")->type_name("ADDRESS");
    command
        ->add_option("--ending", options->ending,
                     "passed, timed-out, unanswered, interrupted, abandoned, refused, or open")
        ->type_name("ENDING");
    CLI::Option* const outages =
        command->add_flag("--outages", options->outages, "Instead of passes: when lines could not be used");
    command
        ->add_flag("--follow", options->follow,
                   "Go on with what comes, until Ctrl-C; a pass is shown again when it has ended,\n"
                   "and JSON is one object a line")
        ->excludes(outages);
    command->footer("\nA TIME is a day (2026-01-31), a day and a time (\"2026-01-31 12:00\", local unless it "
                    "has a zone such as\n"
                    "+01:00), today, yesterday, or so long ago: 90m, 24h, 7d, 2w.");
    command->callback([&chosen, options] { chosen = [options] { return journal(*options); }; });
}

} // namespace tnv5::cli
