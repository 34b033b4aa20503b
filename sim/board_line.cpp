#include "sim/board_line.h"

#include <algorithm>

namespace tnv5::sim {

namespace {

constexpr qsizetype kChecksum = 2;
constexpr qsizetype kPairEnd = 4;      // "$" and three characters
constexpr qsizetype kAddressEnd = 5;   // "$" and four
constexpr qsizetype kShortest = 9;     // "$000AGO" and its checksum
constexpr qsizetype kLongestForm = 13; // "$000ARL320N" and its checksum
constexpr qsizetype kRelayBody = 6;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool startsWith(QByteArrayView text, const char* beginning)
{
    return text.startsWith(QByteArrayView(beginning));
}

bool isRelayBody(QByteArrayView body)
{
    return body.size() == kRelayBody && startsWith(body, "RL") && isDigit(body[2]) && isDigit(body[3]) &&
           isDigit(body[4]) && body[5] == 'N';
}

bool isRowBody(QByteArrayView body)
{
    constexpr qsizetype kPrefix = 6; // "PSN100"
    return body.size() > kPrefix && startsWith(body, "PSN100") && body[kPrefix] >= '1' &&
           body[kPrefix] <= '4';
}

TBoardOrder plainOrder(QByteArrayView body)
{
    struct TForm
    {
        const char* body;
        TBoardOrder order;
    };
    static constexpr TForm kForms[] = {{"ECHO", TBoardOrder::Echo}, {"HW", TBoardOrder::Hardware},
                                       {"GO", TBoardOrder::Open},   {"PH", TBoardOrder::Refuse},
                                       {"SDG", TBoardOrder::Guard}, {"CS", TBoardOrder::ClearRows}};
    const auto* const found = std::find_if(std::begin(kForms), std::end(kForms), [&](const TForm& form) {
        return body == QByteArrayView(form.body);
    });
    return found != std::end(kForms) ? found->order : TBoardOrder::Unknown;
}

TBoardCommand readBody(QByteArrayView line)
{
    TBoardCommand command;
    const QByteArrayView toPair = line.sliced(kPairEnd);
    if (toPair == QByteArrayView("BFL1") || toPair == QByteArrayView("BES")) {
        command.Address = line.sliced(1, kPairEnd - 1).toByteArray();
        command.Order = toPair.size() == 4 ? TBoardOrder::Light : TBoardOrder::Sound;
        return command;
    }
    const QByteArrayView body = line.sliced(kAddressEnd);
    command.Address = line.sliced(1, kAddressEnd - 1).toByteArray();
    command.Order = plainOrder(body);
    if (isRelayBody(body)) {
        command.Order = TBoardOrder::Relay;
        command.Number = body[2] - '0';
        command.Time = (body[3] - '0') * 10 + (body[4] - '0');
    } else if (isRowBody(body)) {
        command.Order = TBoardOrder::ShowRow;
        command.Number = body[6] - '0';
        command.Text = body.sliced(7).toByteArray();
    }
    return command;
}

} // namespace

QByteArray boardChecksum(QByteArrayView line)
{
    constexpr unsigned kTopBit = 0x80;
    constexpr unsigned kByte = 0xFF;
    unsigned crc = kByte;
    for (const char byte : line) {
        crc ^= static_cast<uchar>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & kTopBit) != 0 ? ((crc << 1U) ^ 0x31U) & kByte : (crc << 1U) & kByte;
        }
    }
    return QByteArray(1, static_cast<char>(crc)).toHex().toUpper();
}

std::optional<TBoardCommand> parseBoardCommand(QByteArrayView line)
{
    if (line.size() < kShortest || line.front() != '$') {
        return std::nullopt;
    }
    const QByteArrayView checked = line.chopped(kChecksum);
    if (line.last(kChecksum) != boardChecksum(checked)) {
        return std::nullopt;
    }
    return readBody(checked);
}

QList<TBoardFramer::TFramed> TBoardFramer::take(const QByteArray& bytes)
{
    QList<TFramed> found;
    for (const char byte : bytes) {
        if (byte == '$') {
            begin(found);
        } else if (FPending.isEmpty()) {
            ++FSkipped;
        } else {
            FPending += byte;
            if (completeByForm()) {
                accept(FStarts.last(), found);
            } else if (FPending.size() > kMaxCommand) {
                refuse(FPending.size(), found);
            }
        }
    }
    return found;
}

QList<TBoardFramer::TFramed> TBoardFramer::pause()
{
    QList<TFramed> found;
    if (!settle(found)) {
        refuse(FPending.size(), found);
    }
    return found;
}

void TBoardFramer::begin(QList<TFramed>& found)
{
    settle(found);
    if (FStarts.size() >= kMaxStarts) {
        refuse(FStarts[1], found);
    }
    FStarts.append(FPending.size());
    FPending += '$';
}

bool TBoardFramer::completeByForm() const
{
    const QByteArrayView last = from(FStarts.last());
    if (last.size() > kLongestForm) {
        return false;
    }
    const auto command = parseBoardCommand(last);
    return command && command->Order != TBoardOrder::Unknown && command->Order != TBoardOrder::ShowRow;
}

// A checksum of eight bits is right by chance once in 256 times: a command that a board knows is believed
// before one that none does, and the one that begins last before those that it would be part of.
std::optional<qsizetype> TBoardFramer::rightStart() const
{
    std::optional<qsizetype> unknown;
    for (auto start = FStarts.rbegin(); start != FStarts.rend(); ++start) {
        const auto command = parseBoardCommand(from(*start));
        if (command && command->Order != TBoardOrder::Unknown) {
            return *start;
        }
        if (command) {
            unknown = *start;
        }
    }
    return unknown;
}

/// @return whether everything that was waiting has been settled.
bool TBoardFramer::settle(QList<TFramed>& found)
{
    if (const auto start = rightStart()) {
        accept(*start, found);
    }
    return FPending.isEmpty();
}

void TBoardFramer::accept(qsizetype start, QList<TFramed>& found)
{
    const QByteArray line = FPending.sliced(start);
    refuse(start, found);
    found.append({line, true});
    FPending.clear();
    FStarts.clear();
}

void TBoardFramer::refuse(qsizetype upTo, QList<TFramed>& found)
{
    while (!FStarts.isEmpty() && FStarts.first() < upTo) {
        const qsizetype end = FStarts.size() > 1 ? FStarts[1] : FPending.size();
        found.append({FPending.sliced(FStarts.first(), end - FStarts.first()), false});
        FStarts.removeFirst();
    }
    FPending.remove(0, upTo);
    for (qsizetype& start : FStarts) {
        start -= upTo;
    }
}

} // namespace tnv5::sim
