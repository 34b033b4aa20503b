#include "tnv5/host/club/club_file.h"

#include "tnv5/bank/terminal_version.h"
#include "tnv5/host/club/toml_section.h"
#include "tnv5/host/shown_text.h"
#include "tnv5/platform/errors.h"
#include "tnv5/scales/families.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QHostAddress>
#include <QRegularExpression>
#include <algorithm>

namespace tnv5::host {

namespace {

constexpr int kMaxTcpPort = 65'535;
constexpr int kMaxCentsPerMinute = 1'000'000; // as the books
constexpr std::array kRates = {300,    600,    1'200,  2'400,   4'800,   9'600,
                               19'200, 38'400, 57'600, 115'200, 230'400, 460'800};
const QStringList kSections = {QStringLiteral("club"),    QStringLiteral("line"), QStringLiteral("bus"),
                               QStringLiteral("gate"),    QStringLiteral("lamp"), QStringLiteral("scale"),
                               QStringLiteral("terminal")};

QString listText(const QStringList& words)
{
    return words.isEmpty() ? QStringLiteral("there is none")
                           : QStringLiteral("there are ") + words.join(QStringLiteral(", "));
}

/// Reads one file, section by section.
class TReader
{
public:
    TReader(const toml::table& root, const QString& folder) : FRoot(root), FFolder(folder) {}

    TClubFile read()
    {
        readSectionNames();
        readClub();
        each("line", [this](TTomlSection& section) { FPlan.lines << line(section); });
        each("bus", [this](TTomlSection& section) { FPlan.buses << bus(section); });
        each("scale", [this](TTomlSection& section) { FPlan.scales << scale(section); });
        each("terminal", [this](TTomlSection& section) { FPlan.terminals << terminal(section); });
        each("gate", [this](TTomlSection& section) { readGate(section); }); // they name lines and buses
        each("lamp", [this](TTomlSection& section) { readLamp(section); });
        std::stable_sort(FErrors.begin(), FErrors.end(),
                         [](const TFileError& a, const TFileError& b) { return a.line < b.line; });
        return {FPlan, FErrors};
    }

private:
    void readSectionNames()
    {
        for (const auto& [key, node] : FRoot) {
            const QString name = QString::fromUtf8(key.str().data(), qsizetype(key.str().size()));
            if (!kSections.contains(name)) {
                const QString meant = nearest(name, kSections);
                FErrors.append({int(key.source().begin.line),
                                QStringLiteral("%1: no such section; %2")
                                    .arg(name, meant.isEmpty() ? listText(kSections)
                                                               : QStringLiteral("is %1 meant?").arg(meant))});
            }
        }
    }

    void readClub()
    {
        const toml::node* const node = FRoot.get("club");
        if (node == nullptr || !node->is_table()) {
            FErrors.append({node == nullptr ? 0 : lineOf(*node).number,
                            QStringLiteral("[club]: is missing; it names the club and its database")});
            return;
        }
        TTomlSection section(*node->as_table(), QStringLiteral("[club]"), FErrors);
        static const QRegularExpression kName(QStringLiteral("^[A-Za-z0-9][A-Za-z0-9._-]{0,63}$"));
        FPlan.name = section.text("name");
        if (!FPlan.name.isEmpty() && !kName.match(FPlan.name).hasMatch()) {
            section.wrong("name",
                          quoted(FPlan.name) + QStringLiteral(" is none of letters, digits, \".\", \"_\" and "
                                                              "\"-\" (files are named after it)"));
        }
        FPlan.database = path(section.text("database"));
        FPlan.databaseAt = section.lineOf("database");
        FPlan.logAt = section.lineOf("log");
        FPlan.log = path(section.textOr("log", {}));
        FPlan.socket = path(section.textOr("socket", {}));
        section.end();
    }

    /// Calls `read` with each table of a section.
    template <class Read>
    void each(const char* name, const Read& read)
    {
        const toml::node* const node = FRoot.get(name);
        if (node == nullptr) {
            return;
        }
        const QString title = QStringLiteral("[[%1]]").arg(QLatin1String(name));
        const toml::array* const list = node->as_array();
        if (list == nullptr || !list->is_homogeneous(toml::node_type::table)) {
            FErrors.append(
                {lineOf(*node).number, QStringLiteral("%1: begin each with %2 on a line of its own")
                                           .arg(QLatin1String(name), title)});
            return;
        }
        for (const toml::node& one : *list) {
            TTomlSection section(*one.as_table(), title, FErrors);
            read(section);
            section.end();
        }
    }

    QString path(const QString& text) const
    {
        return text.isEmpty() || text == u":memory:" ? text : QDir::cleanPath(QDir(FFolder).filePath(text));
    }

    /// A name that nothing else has.
    QString uniqueName(TTomlSection& section)
    {
        const QString name = section.text("name");
        if (FNames.contains(name)) {
            section.wrong(
                "name", QStringLiteral("%1 is the name of line %2, too").arg(quoted(name)).arg(FNames[name]));
        } else if (!name.isEmpty()) {
            FNames.insert(name, section.lineOf("name").number);
        }
        return name;
    }

    QString serialPort(TTomlSection& section)
    {
        const QString port = section.text("port");
        const QFileInfo device(port.startsWith(u'/') ? port : QStringLiteral("/dev/") + port);
        const QString real =
            device.exists() ? device.canonicalFilePath() : QDir::cleanPath(device.filePath());
        if (FPorts.contains(real)) {
            section.wrong(
                "port", QStringLiteral("%1 is the port of line %2, too").arg(quoted(port)).arg(FPorts[real]));
        } else if (!port.isEmpty()) {
            FPorts.insert(real, section.lineOf("port").number);
        }
        return port;
    }

    int baud(TTomlSection& section)
    {
        const int rate = section.numberOr("baud", 1, 10'000'000, 9'600);
        if (std::find(kRates.begin(), kRates.end(), rate) == kRates.end()) {
            QStringList rates;
            for (const int each : kRates) {
                rates << QString::number(each);
            }
            section.wrong("baud", QStringLiteral("%1 is no rate; %2").arg(rate).arg(listText(rates)));
        }
        return rate;
    }

    TLinePlan line(TTomlSection& section)
    {
        TLinePlan plan;
        plan.at = section.line();
        plan.name = uniqueName(section);
        plan.port = serialPort(section);
        plan.baud = baud(section);
        plan.monitor = monitor(section, "monitor");
        return plan;
    }

    TLinePlan bus(TTomlSection& section)
    {
        TLinePlan plan = line(section);
        plan.lampMonitor = monitor(section, "lamp_monitor");
        return plan;
    }

    std::optional<TMonitorPlan> monitor(TTomlSection& section, const char* key)
    {
        const toml::table* const table = section.table(key);
        if (table == nullptr) {
            return std::nullopt;
        }
        TTomlSection part(*table, QLatin1String(key) + QString(), FErrors);
        TMonitorPlan plan;
        plan.at = section.lineOf(key);
        plan.port = part.number("port", 1, kMaxTcpPort);
        plan.access.listenAddress = part.textOr("listen", plan.access.listenAddress);
        plan.access.peers = peers(part, plan.access.listenAddress);
        plan.access.tls = tls(part);
        part.end();
        try {
            platform::check(plan.access);
        } catch (const platform::Exception& error) {
            section.wrong(key, error.message());
        }
        if (FTcpPorts.contains(plan.port)) {
            part.wrong(
                "port",
                QStringLiteral("%1 is the port of line %2, too").arg(plan.port).arg(FTcpPorts[plan.port]));
        }
        FTcpPorts.insert(plan.port, part.lineOf("port").number);
        return plan;
    }

    /// Without a list the programs of this machine may watch, and nobody may feed lines: that would open
    /// gates.
    static QList<platform::TPeerRule> peers(TTomlSection& part, const QString& listen)
    {
        QList<platform::TPeerRule> rules;
        for (const QString& network : part.texts("feed")) {
            rules.append({network, true});
        }
        for (const QString& network : part.texts("allow")) {
            rules.append({network, false});
        }
        if (!part.has("allow") && !part.has("feed")) {
            if (!QHostAddress(listen).isLoopback()) {
                part.wrong("allow",
                           QStringLiteral("is missing; it lists who may watch, such as \"192.168.1.0/24\""));
            }
            rules = {{QStringLiteral("127.0.0.0/8"), false}, {QStringLiteral("::1"), false}};
        }
        return rules;
    }

    std::optional<platform::TTlsFiles> tls(TTomlSection& part) const
    {
        const bool any = part.has("certificate") || part.has("key") || part.has("authority");
        return any ? std::optional(platform::TTlsFiles{path(part.text("certificate")), path(part.text("key")),
                                                       path(part.text("authority"))})
                   : std::nullopt;
    }

    TScalePlan scale(TTomlSection& section)
    {
        TScalePlan plan;
        plan.at = section.line();
        plan.name = uniqueName(section);
        plan.port = serialPort(section);
        plan.baud = baud(section);
        plan.type = section.number("type", 1, int(scales::families().size()) - 1);
        return plan;
    }

    TTerminalPlan terminal(TTomlSection& section)
    {
        TTerminalPlan plan;
        plan.at = section.line();
        plan.name = uniqueName(section);
        plan.port = serialPort(section);
        plan.version = section.number("version", 1, int(bank::terminalVersions().size()) - 1);
        return plan;
    }

    static QStringList namesOf(const QList<TLinePlan>& plans)
    {
        QStringList names;
        for (const TLinePlan& plan : plans) {
            names << plan.name;
        }
        return names;
    }

    QString lineOrBus(TTomlSection& section, const char* key, const QStringList& names)
    {
        const QString name = section.text(key);
        if (!name.isEmpty() && !names.contains(name)) {
            const QString kind =
                names == namesOf(FPlan.buses) ? QStringLiteral("bus") : QStringLiteral("line or bus");
            section.wrong(key, QStringLiteral("%1 is no %2; %3").arg(quoted(name), kind, listText(names)));
            return {};
        }
        return name;
    }

    void readGate(TTomlSection& section)
    {
        TGatePlan plan;
        plan.at = section.lineOf("address");
        plan.zoneAt = section.lineOf("zone");
        plan.line = lineOrBus(section, "line", namesOf(FPlan.lines) + namesOf(FPlan.buses));
        plan.gate.address = section.text("address");
        plan.gate.zone = section.text("zone");
        const QString word = section.text("direction");
        const std::optional<TDirection> direction = toDirection(word);
        if (!direction && !word.isEmpty()) {
            section.wrong("direction", quoted(word) + QStringLiteral(" is none of in, out, inner"));
        }
        plan.gate.direction = direction.value_or(TDirection::In);
        if (!plan.line.isEmpty() && !plan.gate.address.isEmpty()) {
            checkAddress(section, plan);
        }
        FPlan.gates << plan;
    }

    void checkAddress(TTomlSection& section, const TGatePlan& plan)
    {
        const QString& address = plan.gate.address;
        const bool onBus = namesOf(FPlan.buses).contains(plan.line);
        if (!onBus && !isLineAddress(address)) {
            section.wrong("address", quoted(address) +
                                         QStringLiteral(" is no address on a line: two digits and a capital "
                                                        "letter are expected, such as 01A"));
        } else if (onBus && !isBusAddress(address)) {
            section.wrong("address",
                          quoted(address) +
                              QStringLiteral(" is no gate on a bus: four digits or capital letters are "
                                             "expected, such as 001T, and no I at the end (a display)"));
        }
        const auto other = std::find_if(FPlan.gates.begin(), FPlan.gates.end(),
                                        [&](const TGatePlan& each) { return each.gate.address == address; });
        if (other != FPlan.gates.end()) {
            const bool bothWays = other->gate.direction != plan.gate.direction;
            section.wrong("address",
                          bothWays
                              ? QStringLiteral("%1 leads %2 by line %3 already, a gate has one direction")
                                    .arg(quoted(address), toText(other->gate.direction))
                                    .arg(other->at.number)
                              : QStringLiteral("%1 is the gate of line %2 already")
                                    .arg(quoted(address))
                                    .arg(other->at.number));
        }
    }

    void readLamp(TTomlSection& section)
    {
        TLampPlan plan;
        plan.at = section.lineOf("name");
        plan.lamp.name = uniqueName(section);
        plan.bus = lineOrBus(section, "bus", namesOf(FPlan.buses));
        plan.lamp.board = section.text("board");
        plan.lamp.relay = QString::number(section.number("relay", 1, 5));
        plan.lamp.centsPerMinute = section.number("cents_per_minute", 0, kMaxCentsPerMinute);
        checkRelay(section, plan);
        FPlan.lamps << plan;
    }

    void checkRelay(TTomlSection& section, const TLampPlan& plan)
    {
        static const QRegularExpression kBoard(QStringLiteral("^[0-9A-Z]{3}[AB]$"));
        const TLamp& lamp = plan.lamp;
        if (!lamp.board.isEmpty() && !kBoard.match(lamp.board).hasMatch()) {
            section.wrong("board", quoted(lamp.board) +
                                       QStringLiteral(" is no relay board: three digits or capital letters "
                                                      "and A or B are expected, such as 001A"));
            return;
        }
        const bool onA = lamp.relay.toInt() <= 2;
        if (!lamp.board.isEmpty() && onA != lamp.board.endsWith(u'A')) {
            section.wrong("relay", QStringLiteral("%1 is not on side %2, which has %3")
                                       .arg(lamp.relay, lamp.board.right(1),
                                            lamp.board.endsWith(u'A') ? QStringLiteral("1 and 2")
                                                                      : QStringLiteral("3 to 5")));
        }
        for (const TGatePlan& gate : FPlan.gates) {
            if (gate.line == plan.bus && gate.gate.address == lamp.board) {
                section.wrong("board", QStringLiteral("%1 is the gate of line %2 already")
                                           .arg(quoted(lamp.board))
                                           .arg(gate.at.number));
            }
        }
        for (const TLampPlan& other : FPlan.lamps) {
            if (other.lamp.board == lamp.board && other.lamp.relay == lamp.relay) { // of another bus, too
                section.wrong("relay", QStringLiteral("relay %1 of %2 is the lamp of line %3 already")
                                           .arg(lamp.relay, lamp.board)
                                           .arg(other.at.number));
            }
        }
    }

    const toml::table& FRoot;
    QString FFolder;
    TClubPlan FPlan;
    QList<TFileError> FErrors;
    QHash<QString, int> FNames; // and the lines they are in
    QHash<QString, int> FPorts;
    QHash<int, int> FTcpPorts;
};

toml::table parse(const QByteArray& text)
{
    return toml::parse(std::string_view(text.constData(), std::size_t(text.size())));
}

bool isNoToml(const QByteArray& text)
{
    try {
        parse(text);
    } catch (const ENoToml&) {
        return true;
    } catch (const toml::parse_error&) { // in the middle of a list, for example
        return false;
    }
    return false;
}

/// The line that the library does not name: the first with which a file cannot be read.
int lineThatIsNoToml(const QByteArray& text)
{
    const QList<QByteArray> lines = text.split('\n');
    qsizetype good = 0;
    qsizetype bad = lines.size();
    while (bad - good > 1) {
        const qsizetype middle = (good + bad) / 2;
        (isNoToml(lines.mid(0, middle).join('\n')) ? bad : good) = middle;
    }
    return int(bad);
}

} // namespace

bool TGatePlan::operator==(const TGatePlan& other) const
{
    return line == other.line && gate.address == other.gate.address && gate.zone == other.gate.zone &&
           gate.direction == other.gate.direction;
}

bool TLampPlan::operator==(const TLampPlan& other) const
{
    return bus == other.bus && lamp.name == other.lamp.name && lamp.board == other.lamp.board &&
           lamp.relay == other.lamp.relay && lamp.centsPerMinute == other.lamp.centsPerMinute;
}

TClubFile readClub(const QByteArray& text, const QString& folder)
{
    try {
        return TReader(parse(text), folder).read();
    } catch (const ENoToml&) {
        return {{}, {{lineThatIsNoToml(text), QStringLiteral("cannot be read")}}};
    } catch (const toml::parse_error& error) {
        const std::string_view what = error.description();
        return {{},
                {{int(error.source().begin.line), QString::fromUtf8(what.data(), qsizetype(what.size()))}}};
    }
}

QList<TFileError> compareWithBooks(const TClubPlan& plan, const QStringList& zones)
{
    QList<TFileError> errors;
    for (const TGatePlan& each : plan.gates) {
        const QString& zone = each.gate.zone;
        if (!zone.isEmpty() && !zones.contains(zone)) {
            const QString meant = nearest(zone, zones);
            errors.append(
                {each.zoneAt.number,
                 QStringLiteral("[[gate]] zone: %1 is no zone of the books; %2")
                     .arg(quoted(zone),
                          meant.isEmpty() ? listText(zones) : QStringLiteral("is %1 meant?").arg(meant))});
        }
    }
    return errors;
}

QString errorText(const QString& file, const TFileError& error)
{
    return error.line == 0 ? file + QStringLiteral(": ") + error.text
                           : QStringLiteral("%1:%2: %3").arg(file).arg(error.line).arg(error.text);
}

} // namespace tnv5::host
