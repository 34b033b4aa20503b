#pragma once

#include "tnv5/host/club/club_file.h"
#include "tnv5/host/club/toml_library.h"

namespace tnv5::host {

/// One table of a club's file while it is read. What is asked for and is not there, or is something else,
/// becomes an error with its line; keys that nobody asked for are errors, too (`end`).
class TTomlSection
{
public:
    /// @param title as it is told, such as "[[gate]]"
    TTomlSection(const toml::table& table, QString title, QList<TFileError>& errors)
        : FTable(table), FTitle(std::move(title)), FErrors(errors)
    {
    }

    bool has(const char* key);
    /// Line of a key, or of the table when it is not there.
    TFileLine lineOf(const char* key) const;
    TFileLine line() const;

    /// A text that must be there and must not be empty.
    QString text(const char* key);
    /// A text that may be missing.
    QString textOr(const char* key, const QString& otherwise);
    QStringList texts(const char* key);
    int number(const char* key, int from, int to);
    int numberOr(const char* key, int from, int to, int otherwise);
    /// A table inside this one; nullptr when it is not there.
    const toml::table* table(const char* key);

    void wrong(const char* key, const QString& what);
    /// Tells the keys that nobody asked for.
    void end();

private:
    const toml::node* find(const char* key);

    const toml::table& FTable;
    QString FTitle;
    QList<TFileError>& FErrors;
    QStringList FKnown;
};

/// Line of a node of the file.
TFileLine lineOf(const toml::node& node);

} // namespace tnv5::host
