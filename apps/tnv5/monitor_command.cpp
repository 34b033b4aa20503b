#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/platform/sockets.h"
#include "tnv5/platform/timer.h"
#include "tnv5/tools/back_off.h"
#include "tnv5/tools/monitor_report.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <memory>

namespace tnv5::cli {

namespace {

struct TMonitorOptions
{
    std::string host;
    int port = 0;
    tools::TStation station = tools::TStation::Turnstile;
    std::string certificate;
    std::string key;
    std::string authority;
    bool json = false;
    bool plain = false;
    bool all = false;
};

std::optional<platform::TTlsFiles> tlsOf(const TMonitorOptions& options)
{
    if (options.certificate.empty()) {
        return std::nullopt;
    }
    return platform::TTlsFiles{QString::fromStdString(options.certificate),
                               QString::fromStdString(options.key),
                               QString::fromStdString(options.authority)};
}

/// What is shown: lines for a person, or objects for a program.
class TMonitorScreen
{
public:
    explicit TMonitorScreen(const TMonitorOptions& options)
        : FStation(options.station),
          FJson(options.json),
          FColoured(coloured() && !options.plain),
          FAll(options.all)
    {
    }

    void show(const QList<tools::TMonitorPiece>& pieces)
    {
        const QDateTime now = QDateTime::currentDateTime();
        for (const tools::TMonitorPiece& piece : pieces) {
            const tools::TMonitorReport report = tools::monitorReport(FStation, piece);
            if (FJson) {
                print(tools::jsonLine(tools::monitorObject(report, now)));
            } else if (FAll || !FRepeats.has(report)) {
                showLine(now, tools::monitorLine(report), colourOf(report));
            }
        }
    }

    /// What happens to the link. @param state for programs
    void showLink(const QString& state, const QString& text)
    {
        const QDateTime now = QDateTime::currentDateTime();
        if (FJson) {
            tools::TMonitorReport report;
            report.kind = QStringLiteral("link");
            report.text = text;
            QJsonObject object = tools::monitorObject(report, now);
            object.insert(QStringLiteral("state"), state);
            print(tools::jsonLine(object));
        } else {
            showLine(now, QStringLiteral("link   ") + text, TColour::Yellow);
        }
    }

private:
    static TColour colourOf(const tools::TMonitorReport& report)
    {
        switch (report.piece.kind) {
        case tools::TMonitorPiece::Error:
            return TColour::Red;
        case tools::TMonitorPiece::Status:
            return TColour::Green;
        case tools::TMonitorPiece::Rest:
            return TColour::Faint;
        case tools::TMonitorPiece::Log:
            break;
        }
        return TColour::Usual;
    }

    void showLine(const QDateTime& now, const QString& line, TColour colour) const
    {
        const QString text = now.toString(QStringLiteral("HH:mm:ss.zzz")) + u' ' + line;
        print(text, FColoured ? colour : TColour::Usual);
    }

    const tools::TStation FStation;
    const bool FJson;
    const bool FColoured;
    const bool FAll;
    tools::TRepeats FRepeats;
};

/// The link to a server: it is opened again whenever it ends.
class TMonitorLink
{
public:
    explicit TMonitorLink(const TMonitorOptions& options) : FScreen(options)
    {
        const QString host = QString::fromStdString(options.host);
        FServer = QStringLiteral("%1 port %2").arg(host).arg(options.port);
        FSocket->SetServer(host, options.port, true);
        FSocket->SetTls(tlsOf(options));
        FSocket->OnConnect = [this] {
            FScreen.showLink(QStringLiteral("connected"), QStringLiteral("connected to ") + FServer);
        };
        FSocket->OnRead = [this](const QByteArray& bytes) {
            FBackOff.reset(); // a server that lets in and drops at once has not let in
            FScreen.show(FCutter.take(bytes));
        };
        FSocket->OnDisconnect = [this] { onEnd(QStringLiteral("the link has ended")); };
        FSocket->OnError = [this](platform::TSocketFailure& failure) {
            failure.code = 0;
            onEnd(failure.text);
        };
        FAgain.OnTimer = [this](platform::TTimer*) {
            FAgain.SetEnabled(false);
            try {
                FSocket->Open();
            } catch (const platform::ESocketError& error) { // a file of the certificates is away for a moment
                onEnd(error.message());
            }
        };
    }

    /// @throws platform::ESocketError for what cannot become right by waiting
    void open() { FSocket->Open(); }

private:
    void onEnd(const QString& why)
    {
        FScreen.show(FCutter.end());
        const int waitMs = FBackOff.next();
        FScreen.showLink(QStringLiteral("lost"),
                         QStringLiteral("%1: %2; again in %3 s").arg(FServer, why).arg(waitMs / 1000));
        FAgain.SetInterval(waitMs);
        FAgain.SetEnabled(true);
    }

    QString FServer;
    TMonitorScreen FScreen;
    tools::TMonitorCutter FCutter;
    tools::TBackOff FBackOff;
    platform::TTimer FAgain;
    std::unique_ptr<platform::TClientSocket> FSocket = platform::TNetwork::current().makeClient();
};

int monitor(const TMonitorOptions& options)
{
    TMonitorLink link(options);
    const TStopSignal stop(&QCoreApplication::quit);
    link.open();
    QCoreApplication::exec();
    return kDone;
}

} // namespace

void addMonitorCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TMonitorOptions>();
    const std::map<std::string, tools::TStation> stations = {{"turnstile", tools::TStation::Turnstile},
                                                             {"d24", tools::TStation::D24},
                                                             {"switch", tools::TStation::Switch}};
    CLI::App* command =
        app.add_subcommand("monitor", "Show what a server's controllers do, over the network, until Ctrl-C");
    command->add_option("host", options->host, "The server: host name or address")
        ->required()
        ->type_name("HOST");
    command->add_option("port", options->port, "Its port")
        ->required()
        ->type_name("PORT")
        ->check(CLI::Range(1, 65'535).description(""));
    command->add_option("--family", options->station, "Its controllers: turnstile, d24 or switch")
        ->required()
        ->type_name("FAMILY")
        ->transform(CLI::Transformer(stations).description(""));
    CLI::Option* certificate =
        command->add_option("--tls-cert", options->certificate, "This workstation's certificate, PEM")
            ->type_name("FILE");
    CLI::Option* key = command->add_option("--tls-key", options->key, "Its key")->type_name("FILE");
    CLI::Option* authority =
        command->add_option("--tls-ca", options->authority, "Certificate that the server's must come from")
            ->type_name("FILE");
    certificate->needs(key)->needs(authority);
    key->needs(certificate);
    authority->needs(certificate);
    command->add_flag("--json", options->json, "One JSON object a line, for other programs");
    command->add_flag("--all", options->all, "Also what a table repeats unchanged; --json has it all");
    command->add_flag("--plain", options->plain, "No colours");
    command->footer(
        "\nEach line: time; read or sent (lines of controllers), log, error, status, link, or rest (what\n"
        "belongs to no text); the text; the meaning. Nothing is ever sent. A link that ends is opened\n"
        "again, after a second at first, half a minute at most. The server opens its port at the first\n"
        "text that it has to say. With certificates (tnv5 cert) the link is encrypted.");
    command->callback([&chosen, options] { chosen = [options] { return monitor(*options); }; });
}

} // namespace tnv5::cli
