#include "model/turnstile_player.h"

#include "model/turnstile_model.h"
#include "tnv5/platform/errors.h"

#include <cmath>
#include <stdexcept>

namespace tnv5::turnstile::model {

namespace {

constexpr qint64 kMsPerDay = 86'400'000;
constexpr qint64 kDay = 46'027;
constexpr int kInterval = 100;
constexpr int kDepth = 3;
constexpr int kBudget = 8;
constexpr int kFastTicks = 20; // ms; below that little time passes, or a step would take too long

QString listed(const QStringList& values)
{
    return u'(' + values.join(QStringLiteral(", ")) + u')';
}

} // namespace

qint64 TPlayer::startMs()
{
    const qint64 late = kMsPerDay - between(1, 12'000);
    return kDay * kMsPerDay + (chance(300) ? late : static_cast<qint64>(FRandom() % kMsPerDay));
}

void TPlayer::begin(IGate& gate)
{
    FGate = &gate;
    const int kind = below(10);
    FNested = kind < 5 ? 0 : kind < 8 ? 40 : 80;
    FRaising = kind < 6 ? 0 : kind < 8 ? 10 : 40;
    FDestroying = kind == 9 ? 4 : 0;
    FDesigning = chance(15);
    create();
    noteState();
}

void TPlayer::create()
{
    note(QStringLiteral("create"));
    FGate->create(FDesigning);
    FInterval = kInterval;
    if (!chance(50)) {
        FGate->assignPort(0);
    }
    FGate->setOpen(0, !chance(50));
    if (!chance(300)) {
        FGate->setMode(TMode::Server);
    }
    if (chance(800)) {
        FGate->setDeviceList({QStringLiteral("01A"), QStringLiteral("01D"), QStringLiteral("02B")});
    }
    for (int event = 0; event < kEvents; ++event) {
        FGate->assign(static_cast<TEvent>(event), chance(900) ? 1 : 0);
    }
}

void TPlayer::step()
{
    FBudget = kBudget;
    if (!FGate->alive()) {
        create();
    } else {
        act();
    }
    noteState();
}

void TPlayer::noteState()
{
    if (!FGate->alive()) {
        note(QStringLiteral("gone"));
        return;
    }
    QString state = QStringLiteral("devices ") + listed(FGate->deviceList()) + QStringLiteral(" table");
    for (const TRecord& record : FGate->records()) {
        state += QStringLiteral(" [%1 %2 %3 %4 %5 %6 %7]")
                     .arg(record.card, record.device, record.status, record.statusHard)
                     .arg(record.startMs)
                     .arg(record.image)
                     .arg(record.sys);
    }
    state += QStringLiteral(" at %1 port %2").arg(FGate->nowMs()).arg(FGate->assignedPort());
    for (int which = 0; which < kNumbers; ++which) {
        state += QStringLiteral(" %1").arg(FGate->number(static_cast<TNumber>(which)));
    }
    state += u' ' + FGate->text(TText::DoorIndex) + u' ' + FGate->text(TText::Server);
    note(state + QStringLiteral(" %1").arg(static_cast<int>(FGate->mode())));
}

// ---- the host's handlers

void TPlayer::react(bool mayRaise, bool mayDestroy)
{
    if (!FGate->alive()) {
        return;
    }
    if (FDepth < kDepth && FBudget > 0 && chance(FNested)) {
        --FBudget;
        ++FDepth;
        act();
        --FDepth;
    }
    if (!FGate->alive()) {
        return;
    }
    if (mayDestroy && FVirtual == 0 && chance(FDestroying)) {
        note(QStringLiteral("destroyed by its handler"));
        FGate->destroy();
    } else if (mayRaise && chance(FRaising)) {
        raise();
    }
}

void TPlayer::raise()
{
    note(QStringLiteral("raises"));
    switch (below(6)) {
    case 0:
        throw platform::EAbort();
    case 1:
        throw std::runtime_error("plain failure");
    case 2:
        throw 42; // NOLINT: anything may be thrown
    case 3:
        throw platform::Exception(QString());
    default:
        throw platform::Exception(QStringLiteral("отказ & !"));
    }
}

void TPlayer::log(int handler, const QString& text)
{
    note(QStringLiteral("OnLog%1 ").arg(handler) + text);
    const QString before = text;
    react(true, true);
    if (FGate->alive() && text != before) {
        note(QStringLiteral("the text changed under the handler"));
    }
}

void TPlayer::error(int handler, const QString& text)
{
    note(QStringLiteral("OnError%1 ").arg(handler) + text);
    const QString before = text;
    react(true, true);
    if (FGate->alive() && text != before) {
        note(QStringLiteral("the text changed under the handler"));
    }
}

void TPlayer::status(int handler, TSender sender, const QStringList& values)
{
    note(QStringLiteral("OnCheckStatus%1 %2 ").arg(handler).arg(static_cast<int>(sender)) + listed(values));
    react(true, true);
}

void TPlayer::sql(int handler, const QStringList& pass, int picture, const TDraw& draw, int mode,
                  QVariant& result)
{
    note(QStringLiteral("OnCheckSQL%1 %2 picture %3 mode %4 result %5")
             .arg(handler)
             .arg(listed(pass))
             .arg(picture)
             .arg(mode)
             .arg(result.toString()));
    if (!chance(100)) {
        result = answer(mode);
        note(QStringLiteral("answers %1 %2").arg(QLatin1StringView(result.typeName()), result.toString()));
    }
    if (chance(30)) {
        draw(below(9));
    }
    react(true, true);
}

void TPlayer::image(int handler, const QString& device, int picture, const TDraw& draw)
{
    note(QStringLiteral("OnGetImg%1 ").arg(handler) + device + QStringLiteral(" picture %1").arg(picture));
    const QString before = device;
    draw(below(9));
    react(true, true);
    if (FGate->alive() && device != before) {
        note(QStringLiteral("the address changed under the handler"));
    }
}

void TPlayer::echo(const QString& text)
{
    if (FGate->mode() == TMode::Server) {
        note(QStringLiteral("echo ") + text);
        ++FVirtual;
        react(false, false);
        --FVirtual;
    }
}

bool TPlayer::connected()
{
    note(QStringLiteral("connected?"));
    return FLineUp;
}

void TPlayer::forward(const QString& line)
{
    note(QStringLiteral("forwards ") + line);
    ++FVirtual;
    react(false, false);
    --FVirtual;
    if (chance(200)) {
        raise();
    }
}

void TPlayer::writing(int port)
{
    note(QStringLiteral("port %1 is about to write").arg(port));
    ++FWriting;
    try {
        react(true, true);
    } catch (...) {
        --FWriting;
        throw;
    }
    --FWriting;
}

void TPlayer::written(int port, const QByteArray& bytes)
{
    note(QStringLiteral("port %1 wrote %2").arg(port).arg(QLatin1StringView(bytes.toHex(' '))));
    ++FWriting;
    try {
        react(true, true);
    } catch (...) {
        --FWriting;
        throw;
    }
    --FWriting;
}

void TPlayer::unhandled(const QString& message)
{
    note(QStringLiteral("unhandled ") + message);
}

QVariant TPlayer::answer(int mode)
{
    if (chance(120)) {
        return oneOf<QVariant>({true,
                                false,
                                qlonglong{1},
                                uint{0},
                                1.0,
                                0.0,
                                0.4,
                                0.6,
                                1.4,
                                QStringLiteral("1"),
                                QStringLiteral("0"),
                                QStringLiteral(" 1"),
                                QStringLiteral("+1"),
                                QStringLiteral("-1"),
                                QStringLiteral("01"),
                                QStringLiteral("x"),
                                QStringLiteral(""),
                                QStringLiteral("1 "),
                                QStringLiteral("1x"),
                                QStringLiteral("2147483648"),
                                QStringLiteral("-2147483649"),
                                QStringLiteral("- 1")});
    }
    if (mode == 0) {
        return oneOf<QVariant>({1, 1, 1, 1, 1, 0, 0, 0, -1, 2});
    }
    return oneOf<QVariant>({1, 1, 1, 1, 0, -1, -1, 2});
}

// ---- what to do

void TPlayer::call(const std::function<void()>& body)
{
    try {
        body();
    } catch (...) {
        QString text = QStringLiteral("something");
        try {
            throw;
        } catch (const platform::Exception& error) {
            text = error.message();
        } catch (const std::exception& error) {
            text = QString::fromUtf8(error.what());
        } catch (...) { // NOLINT: the text above stands for it
        }
        note(QStringLiteral("raised to the caller: ") + text);
    }
}

void TPlayer::act()
{
    const int kind = below(1000);
    if (kind < 320) {
        feed();
    } else if (kind < 460) {
        passTime();
    } else if (kind < 560) {
        jump();
    } else if (kind < 620) {
        const QString said = line();
        note(QStringLiteral("> line ") + said);
        call([&] { FGate->protocolIn(said); });
    } else if (kind < 660) {
        note(QStringLiteral("> pass"));
        call([&] { FGate->callStackArray(); });
    } else if (kind < 710) {
        useTable();
    } else if (kind < 770) {
        command();
    } else if (kind < 800) {
        askCheck();
    } else if (kind < 840) {
        lookAround();
    } else if (kind < 885) {
        setProperty();
    } else if (kind < 915) {
        assignHandlers();
    } else if (kind < 950) {
        touchPort();
    } else if (kind < 985) {
        editRecord();
    } else if (kind < 998) {
        switchMode();
    } else if (FDepth == 0) {
        note(QStringLiteral("> destroy"));
        FGate->destroy();
    }
}

void TPlayer::feed()
{
    const QByteArray bytes = stream();
    const int port = chance(950) ? 0 : 1;
    if (chance(400)) {
        note(QStringLiteral("> bytes ") + QString::fromLatin1(bytes.toPercentEncoding(" $#")));
        FGate->feed(port, bytes);
        return;
    }
    const int most = between(1, static_cast<int>(bytes.size()) + 1);
    for (qsizetype at = 0; at < bytes.size();) {
        const QByteArray piece = bytes.mid(at, between(chance(50) ? 0 : 1, most));
        at += piece.size();
        note(QStringLiteral("> piece ") + QString::fromLatin1(piece.toPercentEncoding(" $#")));
        FGate->feed(port, piece);
    }
}

void TPlayer::passTime()
{
    const int ms = oneOf({1, 50, 99, 100, 101, 200, below(350), below(350), below(2'500)});
    note(QStringLiteral("> %1 ms pass").arg(ms));
    const bool fast = FInterval > 0 && FInterval < kFastTicks;
    FGate->advance(FDepth > 0 || fast ? std::min(ms, 2 * std::abs(FInterval)) : ms);
}

void TPlayer::moveTo(qint64 ms)
{
    // far back in the middle of time that passes, it would hardly come to its end
    FGate->jumpTo(FDepth == 0 ? ms : std::max(ms, FGate->nowMs() - 1'000));
}

void TPlayer::jump()
{
    if (FGate->alive() && !FGate->records().empty() && chance(900)) {
        jumpToLimit();
        return;
    }
    const qint64 midnight = (FGate->nowMs() / kMsPerDay + 1) * kMsPerDay;
    const qint64 to = oneOf<qint64>({midnight - below(3'000), midnight + between(-2, 2),
                                     FGate->nowMs() + below(20'000), FGate->nowMs() - below(5'000)});
    note(QStringLiteral("> jump to %1").arg(to));
    moveTo(to);
}

/// To a whole number of seconds after a pass began, or a millisecond beside it, and often a pass at once.
void TPlayer::jumpToLimit()
{
    const auto records = FGate->records();
    const TRecord& record = records[static_cast<std::size_t>(below(static_cast<int>(records.size())))];
    const int limit = FGate->number(TNumber::TimeOut);
    const qint64 seconds = oneOf({1, 2, 2, 3, 4, limit + 2, limit + 3, limit + 3, limit + 10, limit + 11});
    const qint64 today = FGate->nowMs() / kMsPerDay * kMsPerDay;
    const qint64 to = today + record.startMs + seconds * 1'000 + oneOf({-1, 0, 0, 1, 50});
    note(QStringLiteral("> jump to %1, %2 s after the pass began").arg(to).arg(seconds));
    moveTo(to);
    if (chance(600)) {
        call([&] { FGate->callStackArray(); });
    }
}

void TPlayer::useTable()
{
    const QString device = address();
    const QString number = card();
    switch (below(3)) {
    case 0: {
        const int index = FGate->findDevice(device);
        note(QStringLiteral("> find %1: %2").arg(device).arg(index));
        break;
    }
    case 1: {
        const int index = FGate->findDeviceByRelay(device, number);
        note(QStringLiteral("> find by relay %1 %2: %3").arg(device, number).arg(index));
        break;
    }
    default: {
        const QString status = oneOf({QStringLiteral("R"), QString(), QStringLiteral("Ы!")});
        note(QStringLiteral("> check status %1 %2").arg(device, number));
        call([&] {
            const QString result = FGate->checkStatus(device, number, status);
            note(FGate->alive() ? result : QStringLiteral("gone"));
        });
    }
    }
}

void TPlayer::command()
{
    const int yesnot = oneOf({0, 0, 1, 1, 1, 2, -1});
    const int index = between(-1, static_cast<int>(FGate->records().size()));
    const QString device = chance(700) ? address() : oddAddress();
    const QString which = oneOf({QStringLiteral("1"), QStringLiteral("3"), QStringLiteral("12"), QString(),
                                 QStringLiteral("x"), QStringLiteral("٣"), QStringLiteral(" ")});
    switch (below(3)) {
    case 0:
        note(QStringLiteral("> command %1 for %2").arg(yesnot).arg(index));
        call([&] { FGate->sendComCommand(index, yesnot); });
        break;
    case 1:
        note(QStringLiteral("> relay %1 %2 %3").arg(device, which).arg(yesnot));
        call([&] { FGate->relay(device, which, yesnot); });
        break;
    default:
        note(QStringLiteral("> poll"));
        call([&] { FGate->checkStatusAll(); });
    }
}

void TPlayer::askCheck()
{
    const int index = between(-1, static_cast<int>(FGate->records().size()));
    const int mode = between(-1, 4);
    note(QStringLiteral("> ask about %1 with mode %2").arg(index).arg(mode));
    call([&] {
        const int result = FGate->sqlCheck(index, mode);
        note(FGate->alive() ? QString::number(result) : QStringLiteral("gone"));
    });
}

} // namespace tnv5::turnstile::model
