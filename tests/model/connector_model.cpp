#include "model/connector_model.h"

#include "model/kit/texts.h"

namespace tnv5::connector::model {

namespace {

// Takes a field off the front of a display command's argument.
QString takeField(QString& argument)
{
    const qsizetype bar = position("|", argument);
    const QString field = part(argument, 1, bar - 1);
    argument = rest(argument, bar + 1);
    return field;
}

} // namespace

TModelConnector::TModelConnector(TModelWorld& world, bool designing)
    : TModel(world, designing),
      FDollar(world, [this](const QByteArray& packet) { onPacket('$', packet); }),
      FHash(world, [this](const QByteArray& packet) { onPacket('#', packet); })
{
    FDollar.Start = "$";
    FHash.Start = "#";
    FProperties = {{"ConnectorType", Empty}};
}

void TModelConnector::die()
{
    if (!FDesigning && ComPort() != nullptr && ComPort()->TakenBy == this) {
        ComPort()->OnException = nullptr;
    }
    FDollar.attach(nullptr);
    FHash.attach(nullptr);
    TModel::die();
}

void TModelConnector::SetComport(TModelPort* port)
{
    TModelPort* const old = ComPort();
    if (port != old && !FDesigning) {
        if (port != nullptr) {
            port->OnException = [this](const QString& message, qint64 osError) {
                onPortError(message, osError);
            };
            port->TakenBy = this;
        }
        if (old != nullptr) {
            old->OnException = nullptr;
        }
        FDollar.attach(port);
        FHash.attach(port);
    }
    FPort = port;
}

template <class Body>
void TModelConnector::reachPort(Body&& body)
{
    attempt(body, [&](const QString& failure) {
        hit<"link: a port that cannot be opened or closed">();
        fire(FOnError, this, "[03] " + failure);
    });
}

bool TModelConnector::BaseConnected()
{
    if (!usesPort()) {
        hit<"link: no serial port to ask">();
        return false;
    }
    if (ComPort()->Connected()) {
        return true;
    }
    bool opened = false;
    reachPort([&] {
        ComPort()->Open();
        opened = true;
    });
    either<"link: opened on demand", "link: not opened on demand">(opened);
    return opened;
}

void TModelConnector::SetConnected(bool wanted)
{
    operation([&] {
        if (wanted) {
            connected();
        } else if (usesPort()) {
            hit<"link: closed">();
            reachPort([&] { ComPort()->Close(); });
        } else {
            hit<"link: nothing to close">();
        }
    });
}

void TModelConnector::direct(const QString&, const QString& line)
{
    if (!usesPort() || !connected()) {
        hit<"link: a line is dropped">();
        return;
    }
    if (ComPort() == nullptr) {
        hit<"link: the port is taken away while it opens">();
        return;
    }
    const QString sent = checked(line);
    callOut([&] { ComPort()->Write(bytesOf(sent, FWorld.cyrillic)); });
    hit<"link: a line is written">();
    fire(FOnLog, this, sent);
}

void TModelConnector::pass(const QString& line)
{
    either<"link: a line is routed", "link: a line finds no consumer">(bool(FOnGetData));
    fire(FOnGetData, this, line);
}

TModelBoard* TModelConnector::DeviceItem(int index) const
{
    return index >= 0 && index < DeviceCount() ? FBoards[static_cast<std::size_t>(index)].get() : nullptr;
}

TModelBoard* TModelConnector::GetDeviceFromList(const QString& ip, const QString& address)
{
    const int known =
        firstIndex(FBoards, [&](const auto& board) { return board->IP == ip && board->Device == address; });
    if (known >= 0) {
        hit<"link: a known board">();
        return DeviceItem(known);
    }
    hit<"link: a new board">();
    FBoards.push_back(std::make_unique<TModelBoard>());
    *FBoards.back() = {ip, address, {}, double(FWorld.clock.nowMs()) / kMsPerDay, -1};
    return FBoards.back().get();
}

QString TModelConnector::GetDiagnosticValue(const QString& text, const QString& key) const
{
    const qsizetype found = position(key, text);
    if (found == 0) {
        either<"link: an empty key", "link: a key that is not there">(key.isEmpty());
        return {};
    }
    const QString piece = part(text, found, 1000);
    const qsizetype slash = position("/", piece);
    if (slash == 0) {
        either<"link: the slash is too far", "link: no slash behind the key">(holds(rest(text, found), "/"));
        return {};
    }
    const QString pair = part(piece, 1, slash - 1);
    const QString value = rest(pair, position("=", pair) + 1);
    either<"link: a diagnostic value", "link: a piece without an equals sign">(holds(pair, "="));
    if (value.size() > 100) {
        hit<"link: a value is cut at 100">();
    }
    return part(value, 1, 100);
}

void TModelConnector::onPortError(const QString& message, qint64 osError)
{
    if (osError == 0) {
        hit<"link: a port error without a number">();
        return;
    }
    hit<"link: a port error">();
    // what was under way at the port is aborted also when the connector is gone
    operation([&] { fire(FOnError, this, "[08] " + message); });
    if (FDead) {
        hit<"link: a port error ends a connector">();
    }
    TModelWorld::raise(ERaise::Abort, {});
}

void TModelConnector::onPacket(char start, const QByteArray& packet)
{
    const QString body = trimmed(textOf(packet, FWorld.cyrillic));
    if (body.isEmpty()) {
        hit<"link: an empty packet">();
        return;
    }
    if (ComPort() == nullptr || !ComPort()->Connected()) {
        hit<"link: a packet on a closed port">();
        return;
    }
    operation([&] { process("0.0.0.0", QChar(start) + body); });
}

QString TModelConnector::digits(const QString& line) const
{
    unsigned crc = 0xFF;
    for (const char byte : bytesOf(line, FWorld.cyrillic)) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            const bool top = (crc & 0x80U) != 0;
            crc = (crc << 1U) & 0xFFU;
            crc = top ? crc ^ 0x31U : crc;
        }
    }
    const QString kFigures = "0123456789ABCDEF";
    return QString(kFigures[crc / 16]) + kFigures[crc % 16];
}

void TModelConnector::process(const QString& ip, const QString& line)
{
    TModelBoard* const board = GetDeviceFromList(ip, part(line, 2, 4));
    board->LastPing = double(FWorld.clock.nowMs()) / kMsPerDay;
    if (part(line, 1, 1) == "#") {
        processHash(ip, line, board);
    } else if (part(line, 1, 1) == "$") {
        processDollar(ip, line, board);
    } else {
        either<"link: an empty line", "link: another first character">(line.isEmpty());
    }
}

void TModelConnector::processHash(const QString& ip, const QString& line, TModelBoard* board)
{
    const QString here = "#" + ip + ":" + part(line, 2, 4);
    if (holds(line, "BT")) {
        either<"link: # BT before others", "link: # BT">(holds(line, "ET") || holds(line, "HW") ||
                                                         holds(line, "GO"));
        pass(checked(here + "BTPH"));
    } else if (holds(line, "ET")) {
        either<"link: # ET before others", "link: # ET">(holds(line, "HW") || holds(line, "GO"));
        pass("$" + ip + ":" + rest(line, 2));
    } else if (holds(line, "HW")) {
        either<"link: # HW before GO", "link: # HW">(holds(line, "GO"));
        processHardware(ip, line, board);
    } else if (holds(line, "GO")) {
        hit<"link: # GO">();
        pass(checked(here + "CROSS"));
    } else {
        hit<"link: # nothing known">();
    }
}

void TModelConnector::learnWidth(const QString& line, TModelBoard* board)
{
    const QString gx = GetDiagnosticValue(line, "GX");
    if (gx == "N") {
        hit<"link: GX N">();
        board->DisplayLine = 0;
        return;
    }
    either<"link: GX with x", "link: GX without x">(holds(gx, "x"));
    const QString figures = part(part(gx, 1, position("x", gx) - 1), 2, 3);
    const TNumber number = numberOf(figures);
    if (!number.valid) {
        hit<"link: GX is not a number">();
        throw TFailure{"'" + figures + "' is not a valid integer value"};
    }
    const int width = board->DisplayLine = number.value;
    way<"link: GX below 0", "link: GX 0", "link: GX above 0">(width < 0 ? 0 : width == 0 ? 1 : 2);
}

void TModelConnector::processHardware(const QString& ip, const QString& line, TModelBoard* board)
{
    const QString last = "#" + ip + ":" + rest(line, 2);
    const QString here = "#" + ip + ":" + part(line, 2, 4) + "RELAY";
    const QString side = part(line, 5, 1);
    learnWidth(line, board);
    const QString gr = GetDiagnosticValue(line, "GR");
    const auto relay = [&](const char* name, qsizetype at) {
        const QString letter = part(gr, at, 1);
        way<"link: GR is too short", "link: GR off", "link: GR on">(letter.isEmpty() ? 0
                                                                    : letter == "N"  ? 1
                                                                                     : 2);
        pass(checked(here + name + (letter == "N" ? "N" : "Y")));
    };
    if (side == "A") {
        hit<"link: relays of side A">();
        relay("1", 1);
        relay("2", 2);
    } else if (side == "B") {
        hit<"link: relays of side B">();
        relay("3", 1);
        relay("4", 2);
        relay("5", 3);
    } else {
        hit<"link: relays of no side">();
    }
    pass(last);
}

void TModelConnector::processDollar(const QString& ip, const QString& line, const TModelBoard* board)
{
    const QString address = part(line, 2, 4);
    const QString side = part(line, 5, 1);
    const QString alive = checked("#" + ip + ":" + address + "PING");
    if (holds(line, "PING")) {
        either<"link: $ PING before ET", "link: $ PING">(holds(line, "ET"));
        write(ip, "$" + address + "ECHO");
        pass(alive);
        if (board->DisplayLine != -1) {
            hit<"link: PING of a board whose width is known">();
            return;
        }
        write(ip, "$" + address + "HW");
        if (side == "A" || side == "B") {
            either<"link: PING asks partner B", "link: PING asks partner A">(side == "A");
            write(ip, "$" + part(line, 2, 3) + (side == "A" ? "BHW" : "AHW"));
        } else {
            hit<"link: PING has no partner">();
        }
        return;
    }
    if (holds(line, "ET")) {
        hit<"link: $ ET">();
        pass(alive);
    } else {
        hit<"link: $ other">();
    }
    pass("$" + ip + ":" + rest(line, 2));
}

// ---- commands: what they write

QString TModelConnector::send(const QString& command)
{
    const QString code = part(command, 1, 2);
    const qsizetype colon = position(":", command);
    const QString ip = colon == 0 ? QString() : part(command, 3, colon - 3);
    if (colon == 0) {
        hit<"link: a command without a colon">();
    }
    const QString relay = part(command, colon + 5, 1); // the fifth of all when there is no colon
    const QStringList codes{"SD", "GO", "RL", "PH", "AL", "HW", "SH"};
    const QStringList bodies{"SDG", "GO", "RL" + relay + "00N", "PH", "RL320N", "HW"};
    const int known = int(codes.indexOf(code));
    if (known < 0) {
        hit<"link: an unknown command">();
        return {};
    }
    way<"link: command SD", "link: command GO", "link: command RL", "link: command PH", "link: command AL",
        "link: command HW", "link: command SH">(known);
    if (code == "SH") {
        show(command, ip, part(command, colon + 1, 4));
        return {};
    }
    if (code == "RL") {
        either<"link: RL without a relay", "link: RL with a relay">(relay.isEmpty());
    }
    const QString line = "$" + part(command, colon + 1, 4) + bodies[known];
    write(ip, line);
    return digits(checked(line));
}

QStringList TModelConnector::display(const QString& command, const QString& address, int width) const
{
    QString argument = rest(command, position("|", command) + 1);
    QStringList fields;
    for (int i = 0; i < 5; ++i) {
        if (!holds(argument, "|")) {
            hit<"link: SH with a field that is not closed">();
        }
        fields << takeField(argument);
    }
    way<"link: SH width not known", "link: SH without a display", "link: SH with a display">(width == -1 ? 0
                                                                                             : width < 1 ? 1
                                                                                                         : 2);
    QStringList lines;
    if (width < 1) {
        return lines;
    }
    for (int i = 1; i <= 4; ++i) {
        const QString text = trimmed(fields[i - 1]);
        if (text.isEmpty()) {
            continue;
        }
        if (lines.isEmpty()) {
            lines += "$" + address + "CS";
        }
        QString centred = text;
        if (width > text.size()) {
            centred = QString(width / 2 - text.size() / 2, u' ') + text;
            centred += QString(width - centred.size(), u' ');
        }
        way<"link: SH centred", "link: SH just fits", "link: SH too long">(width > text.size()    ? 0
                                                                           : width == text.size() ? 1
                                                                                                  : 2);
        lines += "$" + address + "PSN100" + QString::number(i) + centred;
    }
    const QString pair = "$" + part(address, 1, 3);
    if (holds(fields[4], "L")) {
        hit<"link: SH flag L">();
        lines += pair + "BFL1";
    }
    if (holds(fields[4], "S")) {
        hit<"link: SH flag S">();
        lines += pair + "BES";
    }
    return lines;
}

void TModelConnector::show(const QString& command, const QString& ip, const QString& address)
{
    const QStringList lines = display(command, address, GetDeviceFromList(ip, address)->DisplayLine);
    for (const QString& line : lines) {
        write(ip, line);
    }
    if (lines.isEmpty()) {
        hit<"link: SH makes no line">();
    }
    fire(FOnLog, this, "Lines send " + (lines.isEmpty() ? QString() : checked(lines.back())));
}

} // namespace tnv5::connector::model
