#include "apps/tnv5/book_verbs.h"

namespace tnv5::cli {

namespace {

struct TTableOptions
{
    host::TBookKind kind;
    host::TBookTable (*list)(host::TBooks& books);
    std::string file;
    std::string database;
    TShowOptions show;
};

/// What the file holds; "-" is standard input.
QByteArray readFile(const QString& name)
{
    QFile file(name);
    const bool open =
        name == QStringLiteral("-") ? file.open(0, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!open) {
        throw platform::Exception(name + QStringLiteral(": ") + file.errorString());
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        throw platform::Exception(name + QStringLiteral(": ") + file.errorString());
    }
    return bytes;
}

int list(const TTableOptions& options)
{
    return runJson(options.show.json, [&] {
        host::TDatabase club(databaseFile(options.database), host::TOpening::Existing);
        host::TBooks books(club);
        showTable(options.list(books), options.show.format());
        return kDone;
    });
}

int import(const TTableOptions& options)
{
    const QString name = QString::fromStdString(options.file);
    host::TDatabase club(databaseFile(options.database), host::TOpening::Existing);
    host::TBooks books(club);
    const int lines = host::importCsv(books, options.kind, readFile(name), name);
    print(QStringLiteral("%1 imported from %2.").arg(QString::number(lines), name));
    return kDone;
}

} // namespace

void TBookVerbs::tables(host::TBookKind kind, host::TBookTable (*lister)(host::TBooks& books))
{
    const auto options = std::make_shared<TTableOptions>();
    options->kind = kind;
    options->list = lister;
    CLI::App* const listing = FThing->add_subcommand("list", "Show all; with --csv as \"import\" reads it");
    addDatabaseOption(*listing, options->database);
    addShowOptions(*listing, options->show);
    listing->callback([&chosen = FChosen, options] { chosen = [options] { return list(*options); }; });

    CLI::App* const importing = FThing->add_subcommand(
        "import", "Add what a CSV file holds: all of it, or nothing when a line is wrong");
    const auto imported = std::make_shared<TTableOptions>(*options); // TNV5_DB fills what no --db has filled
    addDatabaseOption(*importing, imported->database);
    importing->add_option("file", imported->file, "The file; \"-\" is standard input")
        ->required()
        ->type_name("FILE");
    importing->footer(
        "\nColumns: " + host::importColumns(kind).names.join(QStringLiteral(", ")).toStdString() +
        "; the first " + std::to_string(host::importColumns(kind).needed) +
        " must be there. Lists are separated by \";\".");
    importing->callback([&chosen = FChosen, imported] { chosen = [imported] { return import(*imported); }; });
}

} // namespace tnv5::cli
