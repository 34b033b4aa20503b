#include "model/scales_player.h"

#include "model/scales_readable.h"

#include <limits>

namespace tnv5::scales::model {

namespace {

constexpr qint64 kDay = 86'400'000;
constexpr qint64 kSecond = 1'000;

int anyType(TRandom& random)
{
    return random.chance(90) ? random.between(1, 8) : random.pick({0, 0, 9, -1, 10, 255, 2'147'483'647});
}

qint64 anyDelay(TRandom& random)
{
    return random.chance(60) ? random.pick({0, 1, 10, 100, 999, 1'000, 2'999, 3'000, 3'001, 3'998, 3'999,
                                            4'000, 4'001, 4'500, 5'000, 8'000})
                             : random.below(6'000);
}

TAction timeAction(TRandom& random)
{
    if (random.chance(90)) {
        return {.what = TDo::Advance, .ms = anyDelay(random)};
    }
    const qint64 days = random.pick({0, 0, 1, -1, 30}) * kDay;
    return {.what = TDo::Jump, .ms = days + random.pick({-1, 1}) * anyDelay(random)};
}

TAction portAction(TRandom& random)
{
    const int port = random.chance(80) ? 0 : 1;
    switch (random.below(10)) {
    case 0:
    case 1:
        return {.what = TDo::HostOpen, .number = port};
    case 2:
    case 3:
        return {.what = TDo::HostClose, .number = port};
    case 4:
    case 5:
    case 6:
        return {.what = TDo::Fault,
                .number = port,
                .other = random.below(3),
                .text = random.chance(40) ? QStringLiteral("trouble %1").arg(random.below(9)) : QString()};
    case 7:
        return {.what = TDo::Name,
                .number = port,
                .text = random.pick<QString>({QStringLiteral("COM1"), QStringLiteral("COM2"), {}})};
    case 8:
        return {.what = TDo::Settings,
                .number = port,
                .settings = {random.pick({300, 4'800, 19'200}), random.between(5, 8), random.below(5),
                             random.below(3), random.pick({0, 5, 10, 50}), false}};
    default:
        return {.what = TDo::RenewPort, .number = port};
    }
}

/// A host that asks again and again about when the time for an answer is over.
TAction unansweredAction(TRandom& random)
{
    if (random.chance(5)) {
        return {.what = TDo::Handler, .number = int(TEvent::Error), .other = random.below(2)};
    }
    return random.chance(50)
               ? TAction{.what = TDo::GetWeight}
               : TAction{.what = TDo::Advance, .ms = random.pick({3'999, 4'000, 4'000, 4'001, 5'000})};
}

TAction handlerAction(TRandom& random)
{
    return {.what = TDo::Handler,
            .number = random.below(3),
            .other = random.chance(70) ? random.between(1, 3) : 0};
}

TAction helperAction(TRandom& random)
{
    if (random.chance(20)) {
        return {.what = TDo::List};
    }
    if (random.chance(30)) {
        return {.what = TDo::Message, .number = random.between(-1, 4)};
    }
    TAction action{.what = TDo::Helpers, .number = random.below(1 << 30), .other = random.between(-1, 4)};
    action.text = sampleText(random);
    action.more = random.chance(50) ? sampleText(random).left(random.below(3))
                                    : action.text.mid(random.below(4), random.below(3));
    const qint64 now = 46'027 * kDay + random.below(int(kDay));
    const qint64 ago = random.pick<qint64>(
        {0, 1, 999, 1'000, 1'001, 2'999, 3'000, 3'999, 4'000, 4'001, kDay, random.below(int(kDay))});
    const bool timeOfDay = random.chance(50);
    action.first = double(timeOfDay ? now % kDay : now) / double(kDay);
    action.second = double((timeOfDay ? now % kDay : now) + random.pick({-1, 1}) * ago) / double(kDay);
    return action;
}

int beside(int weight, int difference)
{
    return qBound(-1'000'000, weight, 1'000'000) + difference;
}

TAction propertyAction(TRandom& random, const TView& view)
{
    switch (random.below(11)) {
    case 0:
    case 1:
        return {.what = TDo::Interval,
                .number =
                    random.pick({-1, -1, 0, -2, 200, 500, 1'000, 2'500, 3'000, 3'999, 4'000, 4'001, 5'000})};
    case 2:
    case 3:
        return {.what = TDo::LastWeight,
                .number = random.chance(60) ? beside(view.lastWeight, random.between(-1, 1))
                                            : random.pick({0, 1, -1, 2, 500, std::numeric_limits<int>::min(),
                                                           std::numeric_limits<int>::max()})};
    case 4:
        return {.what = TDo::Lang, .number = random.pick({0, 1, 2, 2, 3, -1})};
    case 5:
    case 6:
        return handlerAction(random);
    case 7:
        return {.what = TDo::SetComport, .number = random.pick({-1, 0, 0, 0, 1})};
    case 8:
        return {.what = TDo::SetUp};
    default:
        return {.what = TDo::SetType, .number = anyType(random)};
    }
}

} // namespace

TAction anyFeed(TRandom& random, const TView& view, const TTemper& temper)
{
    TAction action{.what = TDo::Feed, .number = random.chance(95) ? 0 : 1};
    action.bytes = sampleBytes(random, view.type, view.asked, view.lastWeight);
    if (random.chance(temper.restless ? 50 : 10)) {
        action.bytes.truncate(random.below(int(action.bytes.size()) + 1)); // the rest may never come
    }
    if (random.chance(35)) {
        const int largest = random.pick({1, 2, 5, 17});
        for (qsizetype at = 0; at < action.bytes.size() && action.cuts.size() < 50;) {
            action.cuts.push_back(random.chance(3) ? 0 : random.between(1, largest));
            at += action.cuts.back();
        }
    }
    return action;
}

TAction anyAction(TRandom& random, const TView& view, const TTemper& temper)
{
    TAction action;
    if (!view.exists && random.chance(50)) {
        action = {.what = TDo::Create};
    } else if (temper.silent && random.chance(70)) {
        action = unansweredAction(random);
    } else if (temper.restless && random.chance(15)) {
        action = {.what = TDo::SetType, .number = random.pick({5, 7, 8, anyType(random)})};
    } else if (random.chance(temper.typeChanges)) {
        action = propertyAction(random, view);
    } else {
        const int kind = random.below(1'000);
        action = kind < 380   ? anyFeed(random, view, temper)
                 : kind < 600 ? TAction{.what = TDo::GetWeight}
                 : kind < 660 ? TAction{.what = TDo::WeighAndWait}
                 : kind < 820 ? timeAction(random)
                 : kind < 850 ? TAction{.what = TDo::Reset}
                 : kind < 880 ? TAction{.what = TDo::Connect, .number = random.pick({0, 1, 1})}
                 : kind < 910 ? portAction(random)
                 : kind < 930 ? helperAction(random)
                 : kind < 945 ? TAction{.what = TDo::Write, .text = sampleText(random)}
                 : kind < 950 ? TAction{.what = TDo::Destroy}
                 : kind < 970 ? TAction{.what = TDo::Raise,
                                        .number = random.below(4),
                                        .text = QStringLiteral("host trouble")}
                              : propertyAction(random, view);
    }
    action.careless = action.what == TDo::Raise || random.chance(20);
    return action;
}

TTemper anyTemper(TRandom& random)
{
    TTemper temper;
    temper.design = random.chance(3);
    temper.silent = random.chance(10);
    temper.restless = random.chance(15);
    temper.typeChanges = random.pick({0, 5, 5, 30});
    temper.interference = random.pick({0, 0, 2, 10, 60});
    temper.raising = random.pick({0, 0, 0, 0, 2, 40});
    temper.answers = random.pick({0, 30, 80});
    temper.start = 46'027 * kDay +
                   (random.chance(70) ? random.below(int(kDay)) : kDay - random.below(30 * int(kSecond)));
    return temper;
}

std::vector<TAction> beginning(TRandom& random, const TTemper& temper)
{
    const std::vector<TAction> steps = {{.what = TDo::Handler, .number = 0, .other = 1},
                                        {.what = TDo::Handler, .number = 1, .other = 1},
                                        {.what = TDo::Handler, .number = 2, .other = 1},
                                        {.what = TDo::Lang, .number = random.below(3)},
                                        {.what = TDo::SetType, .number = anyType(random)},
                                        {.what = TDo::SetComport, .number = 0},
                                        {.what = TDo::SetUp},
                                        {.what = TDo::Connect, .number = 1}};
    std::vector<TAction> chosen = {{.what = TDo::Create}};
    for (const TAction& step : steps) {
        if (!random.chance(temper.design ? 0 : 6)) {
            chosen.push_back(step);
        }
    }
    return chosen;
}

std::string describe(const TAction& action)
{
    static constexpr const char* kNames[] = {
        "feed",        "advance", "jump",    "weigh",   "weigh and wait", "set type", "set up",
        "set comport", "reset",   "connect", "open",    "close",          "interval", "weight",
        "language",    "handler", "write",   "fault",   "name",           "settings", "renew port",
        "destroy",     "create",  "raise",   "message", "list",           "helpers"};
    std::string text = kNames[size_t(action.what)];
    text += ' ' + std::to_string(action.number) + ' ' + std::to_string(action.other) + ' ' +
            std::to_string(action.ms) + " ms";
    if (!action.bytes.isEmpty()) {
        text += ' ' + readable(QString::fromLatin1(action.bytes)) + " in";
        for (const int size : action.cuts) {
            text += ' ' + std::to_string(size);
        }
    }
    if (!action.text.isEmpty()) {
        text += ' ' + readable(action.text) + ' ' + readable(action.more);
    }
    return text + (action.careless ? " carelessly" : "");
}

} // namespace tnv5::scales::model
