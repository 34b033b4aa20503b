#include "model/connector_model.h"

#include "model/connector_text_model.h"
#include "tnv5/platform/errors.h"

namespace tnv5::connector::model {

namespace {

constexpr int kComPort = 1;

// Thrown behind a call to the host that destroyed the connector.
struct TGone
{
};

} // namespace

TModelConnector::TModelConnector(TModelWorld& world, bool designing) : FWorld(world), FDesigning(designing)
{
    if (!designing) {
        const auto splitter = [this](char start) {
            return std::make_unique<TModelSplitter>(
                FWorld, start, [this, start](const QByteArray& packet) { onPacket(start, packet); });
        };
        FDollar = splitter('$');
        FHash = splitter('#');
    }
}

void TModelConnector::die()
{
    if (!FDesigning) {
        if (ComPort() != nullptr && ComPort()->TakenBy == this) {
            ComPort()->OnException = nullptr;
        }
        FDollar->die();
        FHash->die();
    }
    FDead = true;
}

template <class Body>
void TModelConnector::callOut(Body body)
{
    try {
        body();
    } catch (...) {
        if (!FDead) {
            throw;
        }
        reach("destroyed by a handler that raises");
        FWorld.report();
    }
    if (FDead) {
        reach("destroyed by a handler");
        throw TGone();
    }
}

template <class Body>
void TModelConnector::attempt(Body body)
{
    try {
        callOut(body);
    } catch (const TGone&) {
        throw;
    } catch (...) {
        reach("a port that cannot be opened or closed");
        fire(FOnError, "[03] " + messageOfException());
    }
}

template <class Body>
void TModelConnector::operation(Body body)
{
    try {
        body();
    } catch (const TGone&) {
        reach("an operation ends quietly");
    }
}

void TModelConnector::fire(const TEvent& event, const QString& text)
{
    if (const TEvent handler = event) {
        callOut([&] { handler(this, text); });
    }
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
        FDollar->attach(port);
        FHash->attach(port);
    }
    FPort = port;
}

bool TModelConnector::connected()
{
    if (FType != kComPort || ComPort() == nullptr) {
        reach("no serial port to ask");
        return false;
    }
    if (ComPort()->Connected()) {
        return true;
    }
    bool opened = false;
    attempt([&] {
        ComPort()->Open();
        opened = true;
    });
    reach(opened ? "opened on demand" : "not opened on demand");
    return opened;
}

bool TModelConnector::BaseConnected()
{
    return connected();
}

bool TModelConnector::GetConnected()
{
    bool result = false;
    operation([&] { result = ConnectedHook ? ConnectedHook() : connected(); });
    return result;
}

void TModelConnector::SetConnected(bool wanted)
{
    operation([&] {
        if (wanted) {
            ConnectedHook ? ConnectedHook() : connected();
        } else if (FType == kComPort && ComPort() != nullptr) {
            reach("closed");
            attempt([&] { ComPort()->Close(); });
        } else {
            reach("nothing to close");
        }
    });
}

void TModelConnector::direct(const QString&, const QString& line)
{
    if (FType != kComPort || ComPort() == nullptr || !(ConnectedHook ? ConnectedHook() : connected())) {
        reach("a line is dropped");
        return;
    }
    if (ComPort() == nullptr) {
        reach("the port is taken away while it opens");
        return;
    }
    const QString sent = checked(line);
    callOut([&] { ComPort()->Write(FWorld.bytes(sent)); });
    reach("a line is written");
    fire(FOnLog, sent);
}

void TModelConnector::BaseDirect(const QString& ip, const QString& line)
{
    direct(ip, line);
}

void TModelConnector::SendDirectCommand(const QString& ip, const QString& line)
{
    operation([&] { DirectHook ? DirectHook(ip, line) : direct(ip, line); });
}

void TModelConnector::pass(const QString& line)
{
    reach(FOnGetData ? "a line is routed" : "a line finds no consumer");
    fire(FOnGetData, line);
}

void TModelConnector::GetCommand(const QString& line)
{
    operation([&] { pass(line); });
}

TModelBoard* TModelConnector::DeviceItem(int index) const
{
    return index >= 0 && index < DeviceCount() ? FBoards[static_cast<std::size_t>(index)].get() : nullptr;
}

TModelBoard* TModelConnector::GetDeviceFromList(const QString& ip, const QString& address)
{
    for (const auto& board : FBoards) {
        if (board->IP == ip && board->Device == address) {
            reach("a known board");
            return board.get();
        }
    }
    reach("a new board");
    FBoards.push_back(std::make_unique<TModelBoard>());
    *FBoards.back() = {ip, address, {}, double(FWorld.nowMs) / 86'400'000.0, -1};
    return FBoards.back().get();
}

QString TModelConnector::GetDiagnosticValue(const QString& text, const QString& key) const
{
    const qsizetype found = position(key, text);
    if (found == 0) {
        reach(key.isEmpty() ? "an empty key" : "a key that is not there");
        return {};
    }
    const QString piece = part(text, found, 1000);
    const qsizetype slash = position("/", piece);
    if (slash == 0) {
        reach(holds(rest(text, found), "/") ? "the slash is too far" : "no slash behind the key");
        return {};
    }
    const QString pair = part(piece, 1, slash - 1);
    const QString value = rest(pair, position("=", pair) + 1);
    reach(!holds(pair, "=") ? "a piece without an equals sign" : "a diagnostic value");
    if (value.size() > 100) {
        reach("a value is cut at 100");
    }
    return part(value, 1, 100);
}

void TModelConnector::onPortError(const QString& message, qint64 osError)
{
    if (osError == 0) {
        reach("a port error without a number");
        return;
    }
    reach("a port error");
    // what was under way at the port is aborted also when the connector is gone
    operation([&] { fire(FOnError, "[08] " + message); });
    if (FDead) {
        reach("a port error ends a connector");
    }
    throw platform::EAbort();
}

void TModelConnector::onPacket(char start, const QByteArray& packet)
{
    const QString body = trimmed(FWorld.text(packet));
    if (body.isEmpty()) {
        reach("an empty packet");
        return;
    }
    if (ComPort() == nullptr || !ComPort()->Connected()) {
        reach("a packet on a closed port");
        return;
    }
    operation([&] { process("0.0.0.0", QChar(start) + body); });
}

QString TModelConnector::digits(const QString& line) const
{
    unsigned crc = 0xFF;
    for (const char byte : FWorld.bytes(line)) {
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

void TModelConnector::ProcessDataToDevice(const QString& ip, const QString& line)
{
    operation([&] { process(ip, line); });
}

void TModelConnector::process(const QString& ip, const QString& line)
{
    TModelBoard* const board = GetDeviceFromList(ip, part(line, 2, 4));
    board->LastPing = double(FWorld.nowMs) / 86'400'000.0;
    if (part(line, 1, 1) == "#") {
        processHash(ip, line, board);
    } else if (part(line, 1, 1) == "$") {
        processDollar(ip, line, board);
    } else {
        reach(line.isEmpty() ? "an empty line" : "another first character");
    }
}

void TModelConnector::processHash(const QString& ip, const QString& line, TModelBoard* board)
{
    const QString here = "#" + ip + ":" + part(line, 2, 4);
    if (holds(line, "BT")) {
        reach(holds(line, "ET") || holds(line, "HW") || holds(line, "GO") ? "# BT before others" : "# BT");
        pass(checked(here + "BTPH"));
    } else if (holds(line, "ET")) {
        reach(holds(line, "HW") || holds(line, "GO") ? "# ET before others" : "# ET");
        pass("$" + ip + ":" + rest(line, 2));
    } else if (holds(line, "HW")) {
        reach(holds(line, "GO") ? "# HW before GO" : "# HW");
        processHardware(ip, line, board);
    } else if (holds(line, "GO")) {
        reach("# GO");
        pass(checked(here + "CROSS"));
    } else {
        reach("# nothing known");
    }
}

void TModelConnector::learnWidth(const QString& line, TModelBoard* board)
{
    const QString gx = GetDiagnosticValue(line, "GX");
    if (gx == "N") {
        reach("GX N");
        board->DisplayLine = 0;
        return;
    }
    reach(holds(gx, "x") ? "GX with x" : "GX without x");
    const QString width = part(part(gx, 1, position("x", gx) - 1), 2, 3);
    try {
        board->DisplayLine = number(width);
    } catch (...) {
        reach("GX is not a number");
        throw;
    }
    reach(board->DisplayLine > 0 ? "GX above 0" : board->DisplayLine == 0 ? "GX 0" : "GX below 0");
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
        reach(letter.isEmpty() ? "GR is too short" : letter == "N" ? "GR off" : "GR on");
        pass(checked(here + name + (letter == "N" ? "N" : "Y")));
    };
    if (side == "A") {
        reach("relays of side A");
        relay("1", 1);
        relay("2", 2);
    } else if (side == "B") {
        reach("relays of side B");
        relay("3", 1);
        relay("4", 2);
        relay("5", 3);
    } else {
        reach("relays of no side");
    }
    pass(last);
}

void TModelConnector::processDollar(const QString& ip, const QString& line, const TModelBoard* board)
{
    const auto write = [&](const QString& text) { DirectHook ? DirectHook(ip, text) : direct(ip, text); };
    const QString address = part(line, 2, 4);
    const QString side = part(line, 5, 1);
    const QString alive = checked("#" + ip + ":" + address + "PING");
    if (holds(line, "PING")) {
        reach(holds(line, "ET") ? "$ PING before ET" : "$ PING");
        write("$" + address + "ECHO");
        pass(alive);
        if (board->DisplayLine != -1) {
            reach("PING of a board whose width is known");
            return;
        }
        write("$" + address + "HW");
        if (side == "A" || side == "B") {
            reach(side == "A" ? "PING asks partner B" : "PING asks partner A");
            write("$" + part(line, 2, 3) + (side == "A" ? "BHW" : "AHW"));
        } else {
            reach("PING has no partner");
        }
        return;
    }
    if (holds(line, "ET")) {
        reach("$ ET");
        pass(alive);
    } else {
        reach("$ other");
    }
    pass("$" + ip + ":" + rest(line, 2));
}

QString TModelConnector::SendCommand(const QString& command)
{
    QString result;
    operation([&] { result = send(command); });
    return result;
}

} // namespace tnv5::connector::model
