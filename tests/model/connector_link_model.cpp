#include "model/connector_link_model.h"

#include "tnv5/platform/errors.h"

#include <algorithm>
#include <array>

namespace tnv5::connector::model {

namespace {

constexpr std::size_t kLongestPacket = 65'536;

// Characters of the bytes 0x80 to 0xFF.
constexpr std::array<char16_t, 128> kCyrillic = {
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021, 0x20AC, 0x2030, 0x0409, 0x2039, 0x040A,
    0x040C, 0x040B, 0x040F, 0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x0098, 0x2122,
    0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F, 0x00A0, 0x040E, 0x045E, 0x0408, 0x00A4, 0x0490, 0x00A6,
    0x00A7, 0x0401, 0x00A9, 0x0404, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x0407, 0x00B0, 0x00B1, 0x0406, 0x0456,
    0x0491, 0x00B5, 0x00B6, 0x00B7, 0x0451, 0x2116, 0x0454, 0x00BB, 0x0458, 0x0405, 0x0455, 0x0457, 0x0410,
    0x0411, 0x0412, 0x0413, 0x0414, 0x0415, 0x0416, 0x0417, 0x0418, 0x0419, 0x041A, 0x041B, 0x041C, 0x041D,
    0x041E, 0x041F, 0x0420, 0x0421, 0x0422, 0x0423, 0x0424, 0x0425, 0x0426, 0x0427, 0x0428, 0x0429, 0x042A,
    0x042B, 0x042C, 0x042D, 0x042E, 0x042F, 0x0430, 0x0431, 0x0432, 0x0433, 0x0434, 0x0435, 0x0436, 0x0437,
    0x0438, 0x0439, 0x043A, 0x043B, 0x043C, 0x043D, 0x043E, 0x043F, 0x0440, 0x0441, 0x0442, 0x0443, 0x0444,
    0x0445, 0x0446, 0x0447, 0x0448, 0x0449, 0x044A, 0x044B, 0x044C, 0x044D, 0x044E, 0x044F};

constexpr std::array kBranches = {
    "# BT",
    "# BT before others",
    "# ET",
    "# ET before others",
    "# GO",
    "# HW",
    "# HW before GO",
    "# nothing known",
    "$ ET",
    "$ PING",
    "$ PING before ET",
    "$ other",
    "GR is too short",
    "GR off",
    "GR on",
    "GX 0",
    "GX N",
    "GX above 0",
    "GX below 0",
    "GX is not a number",
    "GX with x",
    "GX without x",
    "PING asks partner A",
    "PING asks partner B",
    "PING has no partner",
    "PING of a board whose width is known",
    "RL with a relay",
    "RL without a relay",
    "SH centred",
    "SH flag L",
    "SH flag S",
    "SH just fits",
    "SH makes no line",
    "SH too long",
    "SH width not known",
    "SH with a display",
    "SH with a field that is not closed",
    "SH without a display",
    "a command without a colon",
    "a diagnostic value",
    "a key that is not there",
    "a known board",
    "a line finds no consumer",
    "a line is dropped",
    "a line is routed",
    "a line is written",
    "a new board",
    "a packet on a closed port",
    "a piece without an equals sign",
    "a port error",
    "a port error ends a connector",
    "a port error that nobody takes",
    "a port error without a number",
    "a port that cannot be opened or closed",
    "a splitter leaves the port during a read",
    "a value is cut at 100",
    "an abort is silent",
    "an empty key",
    "an empty line",
    "an empty packet",
    "an exception reaches the event loop",
    "an operation ends quietly",
    "an overlong packet is dropped",
    "an unknown command",
    "another first character",
    "attaching throws half a packet away",
    "closed",
    "code page lacks a character",
    "command AL",
    "command GO",
    "command HW",
    "command PH",
    "command RL",
    "command SD",
    "command SH",
    "a port is destroyed inside its own operation",
    "destroyed by a handler",
    "destroyed by a handler that raises",
    "no serial port to ask",
    "no slash behind the key",
    "not opened on demand",
    "nothing to close",
    "opened on demand",
    "relays of no side",
    "relays of side A",
    "relays of side B",
    "the port is taken away while it opens",
    "the slash is too far",
};

} // namespace

TCoverage::TCoverage()
{
    for (const char* const branch : kBranches) {
        FCounts.emplace(branch, 0);
    }
}

QString TModelWorld::text(const QByteArray& bytes) const
{
    QString result;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        result += QChar(cyrillic && value >= 0x80 ? kCyrillic[value - 0x80U] : char16_t(value));
    }
    return result;
}

QByteArray TModelWorld::bytes(const QString& text) const
{
    QByteArray result;
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        const auto* const found = std::find(kCyrillic.begin(), kCyrillic.end(), code);
        if (code < 0x80 || (!cyrillic && code < 0x100)) {
            result += static_cast<char>(code);
        } else if (cyrillic && found != kCyrillic.end()) {
            result += static_cast<char>(0x80 + (found - kCyrillic.begin()));
        } else {
            coverage.reach("code page lacks a character");
            result += '?';
        }
    }
    return result;
}

QString messageOfException()
{
    try {
        throw;
    } catch (const platform::Exception& error) {
        return error.message();
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    } catch (...) {
        return QStringLiteral("Unknown exception");
    }
}

void TModelWorld::report() const
{
    try {
        throw;
    } catch (const platform::EAbort&) {
        coverage.reach("an abort is silent");
    } catch (...) {
        coverage.reach("an exception reaches the event loop");
        unhandled(messageOfException());
    }
}

void TModelSplitter::detach()
{
    if (FPort != nullptr) {
        std::erase(FPort->FSplitters, this);
    }
    FPort = nullptr;
}

void TModelSplitter::attach(TModelPort* port)
{
    if (FInside) {
        FWorld.coverage.reach("attaching throws half a packet away");
    }
    detach();
    FBuffer.clear();
    FInside = false;
    FPort = port;
    if (port != nullptr) {
        port->FSplitters.push_back(this);
    }
}

void TModelSplitter::die()
{
    detach();
    FDead = true;
}

bool TModelSplitter::takePacket(QByteArray& packet)
{
    while (true) {
        if (!FInside) {
            const auto start = FBuffer.find(FStart);
            if (start == std::string::npos) {
                FBuffer.clear();
                return false;
            }
            FBuffer.erase(0, start);
            FInside = true;
        }
        const auto stop = FBuffer.find('\r', 1);
        const std::size_t length = stop == std::string::npos ? FBuffer.size() + 1 : stop + 1;
        if (length > kLongestPacket) {
            FWorld.coverage.reach("an overlong packet is dropped");
            FBuffer.erase(0, kLongestPacket);
            FInside = false;
            continue;
        }
        if (stop == std::string::npos) {
            return false;
        }
        packet = QByteArray(FBuffer.data() + 1, static_cast<qsizetype>(stop - 1));
        FBuffer.erase(0, stop + 1);
        FInside = false;
        return true;
    }
}

void TModelSplitter::append(const QByteArray& bytes)
{
    FBuffer.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    QByteArray packet;
    while (!FDead && takePacket(packet)) {
        try {
            FOnPacket(packet);
        } catch (...) {
            FWorld.report();
        }
    }
}

// False when the hook has destroyed the port: then the operation ends quietly, and what the hook raised
// besides is reported.
template <class Hook, class... Args>
bool TModelPort::outlives(const Hook& hook, Args&&... args)
{
    if (const auto handler = hook) {
        try {
            handler(std::forward<Args>(args)...);
        } catch (...) {
            if (!FDead) {
                throw;
            }
            FWorld.report();
        }
    }
    if (FDead) {
        FWorld.coverage.reach("a port is destroyed inside its own operation");
    }
    return !FDead;
}

void TModelPort::Open()
{
    if (FOpen || !outlives(OnOpening)) {
        return;
    }
    if (OpenFailure) {
        throw platform::EComPort(*OpenFailure);
    }
    FOpen = true;
}

void TModelPort::Close()
{
    if (!outlives(OnClosing)) {
        return;
    }
    if (CloseFailure) {
        throw platform::EComPort(*CloseFailure);
    }
    FOpen = false;
}

void TModelPort::Write(const QByteArray& bytes)
{
    if (!FOpen) {
        throw platform::EComPort(QStringLiteral("Port MEMORY is not open"));
    }
    if (!outlives(OnWriting)) {
        return;
    }
    if (WriteFailure) {
        throw platform::EComPort(*WriteFailure);
    }
    outlives(OnWritten, bytes);
}

void TModelPort::feed(const QByteArray& bytes)
{
    FReads.push_back({bytes, FSplitters});
    // A handler that feeds comes here again: the reads still under way are finished first.
    while (!FDead && !FReads.empty()) {
        TRead& read = FReads.front();
        if (read.next == read.splitters.size()) {
            FReads.pop_front();
            continue;
        }
        TModelSplitter* const splitter = read.splitters[read.next++];
        if (splitter->attachedTo(this)) {
            splitter->append(QByteArray(read.bytes));
        } else {
            FWorld.coverage.reach("a splitter leaves the port during a read");
        }
    }
}

void TModelPort::raiseErrorInside(const QString& message, qint64 osError)
{
    if (!OnException) {
        FWorld.coverage.reach("a port error that nobody takes");
    }
    outlives(OnException, message, osError);
}

void TModelPort::raiseError(const QString& message, qint64 osError)
{
    try {
        raiseErrorInside(message, osError);
    } catch (...) {
        FWorld.report();
    }
}

} // namespace tnv5::connector::model
