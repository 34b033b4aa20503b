#pragma once

#include "apps/tnv5/book_options.h"
#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "tnv5/host/books/books.h"
#include "tnv5/host/books/books_import.h"

#include <CLI/CLI.hpp>
#include <QFile>
#include <memory>

namespace tnv5::cli {

/// A command about one thing of the books, such as "member", and its verbs, such as "add". What a verb does
/// is given the open books; the options of a verb live as long as the command line.
class TBookVerbs
{
public:
    TBookVerbs(CLI::App& app, TCommand& chosen, const char* thing, const char* description)
        : FChosen(chosen), FThing(app.add_subcommand(thing, description))
    {
        FThing->require_subcommand(1);
    }

    CLI::App& thing() { return *FThing; }

    /// Adds a verb. @param options shared by what sets and what uses them
    template <class Options>
    CLI::App& verb(const char* name, const char* description, const std::shared_ptr<Options>& options,
                   void (*act)(host::TBooks& books, const Options& options))
    {
        CLI::App* const command = FThing->add_subcommand(name, description);
        const auto file = std::make_shared<std::string>();
        addDatabaseOption(*command, *file);
        command->callback([&chosen = FChosen, file, options, act] {
            chosen = [file, options, act] {
                host::TDatabase club(databaseFile(*file), host::TOpening::Existing);
                host::TBooks books(club);
                act(books, *options);
                return kDone;
            };
        });
        return *command;
    }

    /// Adds "list", "export" and "import".
    void tables(host::TBookKind kind, host::TBookTable (*list)(host::TBooks& books));

private:
    TCommand& FChosen;
    CLI::App* FThing;
};

/// Text of an option that was given.
inline std::optional<QString> given(const std::optional<std::string>& text)
{
    return text ? std::optional(QString::fromStdString(*text)) : std::nullopt;
}

inline QStringList texts(const std::vector<std::string>& values)
{
    QStringList list;
    for (const std::string& value : values) {
        list.append(QString::fromStdString(value));
    }
    return list;
}

} // namespace tnv5::cli
