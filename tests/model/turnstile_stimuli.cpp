#include "model/turnstile_model.h"
#include "model/turnstile_player.h"

// The vocabulary of the scenarios: addresses, cards, lines, streams, and the rarer stimuli.

namespace tnv5::turnstile::model {

namespace {

constexpr double kMsPerDay = 86'400'000;

const QStringList kMessages{QStringLiteral("HardReset"), QStringLiteral("Wait-Card"),
                            QStringLiteral("Relay"),     QStringLiteral("CRC-ERROR"),
                            QStringLiteral("Gate-Open"), QStringLiteral("Btn-Activ"),
                            QStringLiteral("InG-Activ")};

} // namespace

QString TPlayer::address()
{
    if (chance(550)) {
        const auto records = FGate->records();
        if (!records.empty()) {
            return records[static_cast<std::size_t>(below(static_cast<int>(records.size())))].device;
        }
    }
    return chance(850) ? oneOf({QStringLiteral("01A"), QStringLiteral("01A"), QStringLiteral("01D"),
                                QStringLiteral("02A"), QStringLiteral("02B"), QStringLiteral("99D")})
                       : oddAddress();
}

QString TPlayer::oddAddress()
{
    return oneOf({QStringLiteral("00A"), QStringLiteral("01a"), QStringLiteral("01d"), QStringLiteral("A1D"),
                  QStringLiteral("0xA"), QStringLiteral("01Я"), QStringLiteral("Яж№"), QStringLiteral("01 "),
                  QStringLiteral("01"), QStringLiteral("1"), QString(), QStringLiteral("01AA"),
                  QStringLiteral("01漢"), QStringLiteral("-1D")});
}

QString TPlayer::card()
{
    return oneOf({QStringLiteral("12345678"), QStringLiteral("87654321"), QStringLiteral("0"), QString(),
                  QStringLiteral("-1-1-1-1-1"), QStringLiteral("-2-2-2-2-2"), QStringLiteral("-1-1-1-1-1 "),
                  QStringLiteral("карта"), QStringLiteral("A!B&C"), QStringLiteral("$7#")});
}

QString TPlayer::mixedCase(QString text)
{
    const int kind = below(4);
    for (QChar& character : text) {
        if (kind == 0 || (kind == 1 && chance(500))) {
            character = character.toUpper();
        } else if (kind == 2 || (kind == 1 && chance(500))) {
            character = character.toLower();
        }
    }
    return text;
}

QString TPlayer::event()
{
    const QString letter = oneOf({QStringLiteral("R"), QStringLiteral("R"), QStringLiteral("R"),
                                  QStringLiteral("R"), QStringLiteral("P"), QStringLiteral("P"),
                                  QStringLiteral("G"), QStringLiteral("G"), QStringLiteral("F"),
                                  QStringLiteral("r"), QStringLiteral("X"), QStringLiteral("Я"), QString()});
    return u'$' + address() + letter + (letter == u"R" || chance(200) ? card() : QString());
}

QString TPlayer::message()
{
    const QString text = kMessages[below(static_cast<int>(kMessages.size()))];
    const QString said = mixedCase(text);
    const QString near =
        oneOf({said + QStringLiteral(" "), said.chopped(1), u' ' + said, said + QStringLiteral(" 2"),
               QString(), QStringLiteral("Ready"), QStringLiteral("ошибка")});
    return u'#' + address() + (chance(800) ? said : near);
}

QString TPlayer::line()
{
    const int kind = below(100);
    if (kind < 55) {
        return event();
    }
    if (kind < 90) {
        return message();
    }
    return oneOf({QStringLiteral("$000900"), QStringLiteral("$000900"), QStringLiteral("$000900 "),
                  QStringLiteral("$00090"), QStringLiteral("$0009001D"), QString(), QStringLiteral("$"),
                  QStringLiteral("#"), QStringLiteral("$0"), QStringLiteral("#01"), QStringLiteral("$01A"),
                  QStringLiteral("#01D"), QStringLiteral("*01AR1"), QStringLiteral("Я"),
                  QStringLiteral("01AR1"), QStringLiteral("##01DBtn-Activ"), QStringLiteral("$$01AR1"),
                  QStringLiteral("#漢字") + QChar(0) + QStringLiteral("Relay")});
}

QByteArray TPlayer::noise()
{
    QByteArray bytes;
    for (int left = below(6); left > 0; --left) {
        bytes += static_cast<char>(chance(700) ? between(0x80, 0xFF) : below(0x80));
    }
    return bytes;
}

QByteArray TPlayer::stream()
{
    QByteArray bytes;
    for (int lines = oneOf({1, 1, 1, 2, 3, 4}); lines > 0; --lines) {
        if (chance(100)) {
            bytes += noise();
        }
        bytes += bytesOf(line());
        if (chance(80)) {
            bytes += noise();
        }
        bytes += oneOf<const char*>({"\r", "\r", "\r", "\r", "\r", "\r", "\r", "\r", "\r\n", ""});
    }
    if (chance(1)) { // around the longest packet
        bytes += QByteArray(oneOf<const char*>({"$", "#"})) + QByteArray(between(65'528, 65'538), 'x') + '\r';
    }
    return bytes;
}

QString TPlayer::word()
{
    return oneOf({QStringLiteral("NEW"), QStringLiteral("OPEN"), QStringLiteral("CLOSE"),
                  QStringLiteral("PROGRESS"), QStringLiteral("FINISH"), QStringLiteral("TIMEOUT"),
                  QStringLiteral("NOANSWER"), QStringLiteral("CRC-ERROR"), QStringLiteral("CRC-ERROR"),
                  QStringLiteral("open"), QString()});
}

void TPlayer::lookAround()
{
    switch (below(6)) {
    case 0:
    case 1: {
        const qint64 first = 46'027 * static_cast<qint64>(kMsPerDay) + below(86'400'000);
        const int limit = between(-1, 12);
        const qint64 second = first + oneOf({-1, 1}) * (limit + below(2)) * 1'000 + between(-1, 1);
        note(QStringLiteral("> %1 and %2 are more than %3 s apart").arg(first).arg(second).arg(limit));
        const bool late = FGate->checkTimeout(static_cast<double>(first) / kMsPerDay,
                                              static_cast<double>(second) / kMsPerDay, limit);
        note(QString::number(late));
        break;
    }
    case 2: {
        const QString said = chance(500) ? line() : QString::number(below(1'000));
        note(QStringLiteral("> check the checksum of ") + said);
        call([&] { note(QString::number(FGate->checkCrc(said))); });
        break;
    }
    case 3: {
        const QStringList values{QStringLiteral("COME"), address(), card(), word(), QStringLiteral("a!&b")};
        note(QStringLiteral("> show status"));
        call([&] { FGate->showStatus(oneOf({TSender::Self, TSender::None, TSender::Other}), values); });
        break;
    }
    case 4:
        note(QStringLiteral("> echo"));
        call([&] { FGate->serverEcho(QStringLiteral("LOG!x&")); });
        break;
    default: {
        note(QStringLiteral("> connected"));
        const bool ready = FGate->connected();
        note(QString::number(ready));
    }
    }
}

void TPlayer::setProperty()
{
    const int kind = below(10);
    if (kind < 6) {
        const auto which = static_cast<TNumber>(below(kNumbers));
        const int value = oneOf({0, 1, 2, 3, 4, 5, 9, 12, -1, below(30)});
        note(QStringLiteral("> number %1 is %2").arg(static_cast<int>(which)).arg(value));
        FGate->setNumber(which, value);
    } else if (kind < 8) {
        const QString letter =
            oneOf({QStringLiteral("D"), QStringLiteral("D"), QStringLiteral("A"), QStringLiteral("B"),
                   QStringLiteral("d"), QString(), QStringLiteral("DD"), QStringLiteral("Я")});
        note(QStringLiteral("> door letter ") + letter);
        FGate->setText(TText::DoorIndex, letter);
    } else if (kind < 9) {
        QStringList list;
        for (int left = below(5); left > 0; --left) {
            list.append(address());
        }
        note(QStringLiteral("> devices"));
        FGate->setDeviceList(list);
    } else {
        const int ms = oneOf({100, 100, 100, 1, 10, 1'000, 0, -5, FGate->number(TNumber::TimeOut) * 10});
        note(QStringLiteral("> interval %1").arg(ms));
        FInterval = ms;
        FGate->setTimerInterval(ms);
    }
}

void TPlayer::assignHandlers()
{
    const auto event = static_cast<TEvent>(below(kEvents));
    const int handler = oneOf({0, 1, 1, 2});
    note(QStringLiteral("> handler %1 of event %2").arg(handler).arg(static_cast<int>(event)));
    FGate->assign(event, handler);
}

void TPlayer::touchPort()
{
    const int port = chance(800) ? 0 : 1;
    const int kind = below(10);
    if (kind < 5) {
        const bool open = chance(700);
        note(QStringLiteral("> port %1 open %2").arg(port).arg(open));
        FGate->setOpen(port, open);
    } else if (kind < 7) {
        note(QStringLiteral("> writes on port %1 fail or not").arg(port));
        FGate->setWriteFailure(port,
                               oneOf({QString(), QString(), QStringLiteral("обрыв"), QStringLiteral("")}));
    } else if (kind < 9 || FWriting > 0) {
        const int assigned = oneOf({0, 0, 0, 1, kNoPort});
        note(QStringLiteral("> port %1 assigned").arg(assigned));
        FGate->assignPort(assigned);
    } else {
        note(QStringLiteral("> port %1 destroyed").arg(port));
        FGate->renewPort(port);
        if (chance(800)) {
            FGate->setOpen(port, true);
            FGate->assignPort(port);
        }
    }
}

void TPlayer::editRecord()
{
    const auto records = FGate->records();
    if (records.empty()) {
        return;
    }
    const int index = below(static_cast<int>(records.size()));
    switch (below(5)) {
    case 0:
        note(QStringLiteral("> record %1: another start").arg(index));
        FGate->editStart(index, FGate->nowMs() % static_cast<qint64>(kMsPerDay) - below(20'000));
        break;
    case 1:
        note(QStringLiteral("> record %1: another card").arg(index));
        FGate->edit(index, TField::Card, card());
        break;
    case 2:
        note(QStringLiteral("> record %1: another address").arg(index));
        FGate->edit(index, TField::Device, address());
        break;
    case 3:
        note(QStringLiteral("> record %1: another report").arg(index));
        FGate->edit(index, TField::StatusHard,
                    oneOf({QString(), QStringLiteral("RELAY"), QStringLiteral("x")}));
        break;
    default:
        note(QStringLiteral("> record %1: another state").arg(index));
        FGate->edit(index, TField::Status, word());
    }
}

void TPlayer::switchMode()
{
    const TMode mode = oneOf({TMode::Alone, TMode::Server, TMode::Server, TMode::Server, TMode::Client});
    FLineUp = chance(700);
    note(QStringLiteral("> mode %1, line up %2").arg(static_cast<int>(mode)).arg(FLineUp));
    FGate->setMode(mode);
}

} // namespace tnv5::turnstile::model
