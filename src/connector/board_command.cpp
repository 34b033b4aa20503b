#include "tnv5/connector/board_command.h"

#include "tnv5/common/text.h"

#include <algorithm>
#include <array>

namespace tnv5::connector {

using common::Copy;
using common::CopyFrom;
using common::Pos;
using common::Trim;

namespace {

constexpr qsizetype kAddressLength = 4;
constexpr int kDisplayRows = 4;

struct TDisplayText
{
    std::array<QStringView, kDisplayRows> rows;
    QStringView flags;
};

// A field without a closing bar is empty, and so are the ones after it.
QStringView takeField(QStringView& rest)
{
    const qsizetype bar = Pos(u"|", rest);
    const QStringView field = Copy(rest, 1, bar - 1);
    rest = CopyFrom(rest, bar + 1);
    return field;
}

TDisplayText parseDisplay(QStringView command)
{
    QStringView rest = CopyFrom(command, Pos(u"|", command) + 1);
    TDisplayText text;
    for (QStringView& row : text.rows) {
        row = Trim(takeField(rest));
    }
    text.flags = Trim(takeField(rest));
    return text;
}

QString line(QStringView address, QStringView body)
{
    return u'$' + address.toString() + body.toString();
}

} // namespace

TBoardCommand parseCommand(QStringView command)
{
    const qsizetype colon = Pos(u":", command);
    const qsizetype address = colon + 1; // the beginning of the command when there is no colon
    return {Copy(command, 1, 2), Copy(command, 3, colon - 3), Copy(command, address, kAddressLength),
            Copy(command, address + kAddressLength, 1), command};
}

std::optional<QString> boardLine(const TBoardCommand& command)
{
    if (command.code == u"SD") {
        return line(command.address, u"SDG");
    }
    if (command.code == u"GO") {
        return line(command.address, u"GO");
    }
    if (command.code == u"RL") {
        return line(command.address,
                    QString(QStringLiteral("RL") + command.relay.toString() + QStringLiteral("00N")));
    }
    if (command.code == u"PH") {
        return line(command.address, u"PH");
    }
    if (command.code == u"AL") {
        return line(command.address, u"RL320N"); // "20" where relay lines carry "00"; intended
    }
    if (command.code == u"HW") {
        return line(command.address, u"HW");
    }
    return std::nullopt;
}

bool isDisplayCommand(const TBoardCommand& command)
{
    return command.code == u"SH";
}

QStringList displayLines(const TBoardCommand& command, int width)
{
    QStringList lines;
    if (width < 1) {
        return lines;
    }
    const TDisplayText text = parseDisplay(command.whole);
    const auto hasText = [](QStringView row) { return !row.isEmpty(); };
    if (std::any_of(text.rows.begin(), text.rows.end(), hasText)) {
        lines << line(command.address, u"CS");
    }
    for (std::size_t i = 0; i < text.rows.size(); ++i) {
        if (hasText(text.rows[i])) {
            lines << line(command.address,
                          QStringLiteral("PSN100%1").arg(i + 1) + centred(text.rows[i], width));
        }
    }
    // the flags go to the pair of boards; intended
    if (text.flags.contains(u'L')) {
        lines << line(groupOf(command.address), u"BFL1");
    }
    if (text.flags.contains(u'S')) {
        lines << line(groupOf(command.address), u"BES");
    }
    return lines;
}

QString centred(QStringView text, int width)
{
    if (width <= text.size()) {
        return text.toString();
    }
    const QString before(width / 2 - text.size() / 2, u' ');
    return (before + text.toString()).leftJustified(width, u' ');
}

QStringView groupOf(QStringView address)
{
    return Copy(address, 1, 3);
}

} // namespace tnv5::connector
