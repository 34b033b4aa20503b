#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "tnv5/tools/certificates.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace tnv5::cli {

namespace {

struct TCertOptions
{
    std::string directory;
    std::vector<std::string> serverNames;
    std::vector<std::string> clients;
    int days = tools::TCertificateOrder::kUsualDays;
};

QStringList texts(const std::vector<std::string>& given)
{
    QStringList list;
    for (const std::string& text : given) {
        list << QString::fromStdString(text);
    }
    return list;
}

int makeCertificates(const TCertOptions& options)
{
    const tools::TCertificateOrder order = {QString::fromStdString(options.directory),
                                            texts(options.serverNames), texts(options.clients), options.days};
    for (const tools::TMadeCertificate& each : tools::makeCertificates(order)) {
        const platform::TTlsFiles files = tools::tlsFiles(order.directory, each.name);
        print(QStringLiteral("%1  %2, good until %3")
                  .arg(each.isNew ? QStringLiteral("made ") : QStringLiteral("there"), files.certificate,
                       each.end.toLocalTime().toString(QStringLiteral("yyyy-MM-dd"))));
    }
    return kDone;
}

} // namespace

void addCertCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TCertOptions>();
    CLI::App* command = app.add_subcommand("cert", "Make certificates for protected links of a club");
    command->add_option("directory", options->directory, "Where they are, or shall be")
        ->required()
        ->type_name("DIR");
    command
        ->add_option("--server", options->serverNames,
                     "What workstations call the server: host names, addresses")
        ->type_name("NAME...");
    command->add_option("--client", options->clients, "Names of workstations")->type_name("NAME...");
    command->add_option("--days", options->days, "How long new ones are good; an authority twice as long")
        ->capture_default_str()
        ->check(CLI::Range(1, tools::TCertificateOrder::kMaxDays));
    command->footer(
        "\nMakes what is missing and overwrites nothing: authority.crt and authority.key, server.crt\n"
        "and server.key, NAME.crt and NAME.key for each workstation. A computer gets its own two\n"
        "files and authority.crt. Whoever has authority.key can make certificates that the club's\n"
        "stations trust: keep it where nobody else reads it.");
    command->callback([&chosen, options] { chosen = [options] { return makeCertificates(*options); }; });
}

} // namespace tnv5::cli
