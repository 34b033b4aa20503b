#include "sim/classic_command.h"

namespace tnv5::sim {

namespace {

constexpr qsizetype kFieldsEnd = 7; // "$", three of the address, three digits
constexpr qsizetype kCommandLength = kFieldsEnd + 2;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

int digit(char c)
{
    return c - '0';
}

} // namespace

std::optional<QByteArray> classicChecksum(QByteArrayView command)
{
    if (command.size() != kFieldsEnd) {
        return std::nullopt;
    }
    for (const qsizetype place : {1, 2, 4, 5, 6}) {
        if (!isDigit(command[place])) {
            return std::nullopt;
        }
    }
    const int address = 10 * digit(command[1]) + digit(command[2]);
    const int sum = uchar(command[0]) ^ address ^ uchar(command[3]) ^ digit(command[4]) ^ digit(command[5]) ^
                    digit(command[6]);
    return QByteArray::number(sum, 16).toUpper().rightJustified(2, '0');
}

std::optional<TClassicCommand> parseClassicCommand(QByteArrayView line)
{
    if (line.size() != kCommandLength || line[0] != '$') {
        return std::nullopt;
    }
    const auto checksum = classicChecksum(line.first(kFieldsEnd));
    if (!checksum || line.sliced(kFieldsEnd) != *checksum) {
        return std::nullopt;
    }
    return TClassicCommand{line.sliced(1, 3).toByteArray(), digit(line[4]), digit(line[5]), digit(line[6])};
}

QByteArrayList TClassicFramer::take(const QByteArray& bytes)
{
    QByteArrayList commands;
    for (const char c : bytes) {
        if (c == '$') {
            skip();
            FCommand = QByteArrayLiteral("$");
        } else if (FCommand.isEmpty()) {
            ++FSkipped;
        } else if (c == '\r') {
            commands.append(std::exchange(FCommand, {}));
        } else if (FCommand.size() == kMaxCommand) {
            skip();
            ++FSkipped;
        } else {
            FCommand += c;
        }
    }
    return commands;
}

void TClassicFramer::skip()
{
    FSkipped += FCommand.size();
    FCommand.clear();
}

} // namespace tnv5::sim
