#include "apps/tnv5/book_options.h"

#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "tnv5/host/shown_text.h"
#include "tnv5/platform/errors.h"

#include <CLI/CLI.hpp>
#include <QJsonDocument>
#include <QJsonObject>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace tnv5::cli {

CLI::Option* addDatabaseOption(CLI::App& command, std::string& file)
{
    return command.add_option("--db", file, "The club's database; else the one that TNV5_DB names")
        ->envname("TNV5_DB")
        ->type_name("FILE");
}

QString databaseFile(const std::string& file)
{
    if (file.empty()) {
        throw platform::Exception(QStringLiteral("Which database? Give --db FILE, or set TNV5_DB"));
    }
    return QString::fromStdString(file);
}

host::TTableFormat TShowOptions::format() const
{
    return json ? host::TTableFormat::Json : csv ? host::TTableFormat::Csv : host::TTableFormat::Aligned;
}

void addShowOptions(CLI::App& command, TShowOptions& options)
{
    CLI::Option* const json = command.add_flag("--json", options.json, "As one JSON array; amounts in cents");
    command.add_flag("--csv", options.csv, "As comma-separated values")->excludes(json);
    command.add_flag_callback("--plain", setPlain, "No colours");
}

namespace {

[[noreturn]] void failOutput()
{
    throw platform::Exception(QStringLiteral("standard output: ") +
                              QString::fromLocal8Bit(std::strerror(errno)));
}

} // namespace

std::function<void(const QString&)> tableOutput(host::TTableFormat format)
{
    const bool forPeople = format == host::TTableFormat::Aligned;
    return [forPeople, faint = forPeople && coloured()](const QString& line) mutable {
        QString text = forPeople ? host::harmless(line) : line;
        if (std::exchange(faint, false)) {
            text = QStringLiteral("\033[2m%1\033[0m").arg(text);
        }
        const QByteArray bytes = (text + u'\n').toUtf8();
        const auto size = static_cast<std::size_t>(bytes.size());
        if (std::fwrite(bytes.constData(), 1, size, stdout) != size) {
            failOutput();
        }
    };
}

void flushLines()
{
    if (std::fflush(stdout) != 0) {
        failOutput();
    }
}

void showTable(const host::TBookTable& table, host::TTableFormat format)
{
    host::TTableWriter writer(format, table.columns, tableOutput(format));
    writer.add(table.rows);
    writer.end();
    flushLines();
}

int runJson(bool json, const std::function<int()>& body)
{
    if (!json) {
        return body();
    }
    try {
        return body();
    } catch (...) {
        const QString why = platform::exceptionMessage();
        complain(QStringLiteral("tnv5: ") + why);
        std::puts(QJsonDocument(QJsonObject{{QStringLiteral("error"), why}})
                      .toJson(QJsonDocument::Compact)
                      .constData());
        return kFailed;
    }
}

} // namespace tnv5::cli
