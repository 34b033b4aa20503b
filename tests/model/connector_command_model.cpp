#include "model/connector_model.h"
#include "model/connector_text_model.h"

#include <QStringList>

/// The commands of the model: what they write.
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

QString TModelConnector::send(const QString& command)
{
    const QString code = part(command, 1, 2);
    const qsizetype colon = position(":", command);
    const QString ip = colon == 0 ? QString() : part(command, 3, colon - 3);
    QString body;
    if (colon == 0) {
        reach("a command without a colon");
    }
    if (code == "SD") {
        body = "SDG";
    } else if (code == "GO" || code == "PH" || code == "HW") {
        body = code;
    } else if (code == "AL") {
        body = "RL320N";
    } else if (code == "RL") {
        const QString relay = part(command, colon + 5, 1); // the fifth of all when there is no colon
        reach(relay.isEmpty() ? "RL without a relay" : "RL with a relay");
        body = "RL" + relay + "00N";
    } else if (code == "SH") {
        reach("command SH");
        show(command, ip, part(command, colon + 1, 4));
        return {};
    } else {
        reach("an unknown command");
        return {};
    }
    reach(("command " + code).toLatin1().constData());
    const QString line = "$" + part(command, colon + 1, 4) + body;
    DirectHook ? DirectHook(ip, line) : direct(ip, line);
    return digits(checked(line));
}

QStringList TModelConnector::shown(const QString& command, const QString& address, int width) const
{
    QString argument = rest(command, position("|", command) + 1);
    QStringList fields;
    for (int i = 0; i < 5; ++i) {
        if (!holds(argument, "|")) {
            reach("SH with a field that is not closed");
        }
        fields += takeField(argument);
    }
    reach(width == -1 ? "SH width not known" : width < 1 ? "SH without a display" : "SH with a display");
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
        reach(width > text.size() ? "SH centred" : width == text.size() ? "SH just fits" : "SH too long");
        lines += "$" + address + "PSN100" + QString::number(i) + centred;
    }
    const QString pair = "$" + part(address, 1, 3);
    if (holds(fields[4], "L")) {
        reach("SH flag L");
        lines += pair + "BFL1";
    }
    if (holds(fields[4], "S")) {
        reach("SH flag S");
        lines += pair + "BES";
    }
    return lines;
}

void TModelConnector::show(const QString& command, const QString& ip, const QString& address)
{
    const QStringList lines = shown(command, address, GetDeviceFromList(ip, address)->DisplayLine);
    for (const QString& line : lines) {
        DirectHook ? DirectHook(ip, line) : direct(ip, line);
    }
    if (lines.isEmpty()) {
        reach("SH makes no line");
    }
    fire(FOnLog, "Lines send " + (lines.isEmpty() ? QString() : checked(lines.back())));
}

} // namespace tnv5::connector::model
