#include "tnv5/coffee/qr_block.h"
#include "tnv5/coffee/qr_text.h"
#include "tnv5/script/binding.h"
#include "tnv5/script/convert.h"
#include "tnv5/script/units.h"

#include <QDateTime>

namespace tnv5::script {

namespace {

constexpr int kUnixDateDelta = 25'569;
constexpr int kSecPerMin = 60;
constexpr int kSecPerHour = 3'600;
constexpr int kSecPerDay = 86'400;
constexpr double kMinDayFraction = 1.0 / 1'440; // a minute

} // namespace

TScriptUnit coffeeUnit()
{
    const QDateTime start(kDayZero.addDays(qint64(coffee::UnixStartDate)), QTime(0, 0));
    return {"coffee",
            {std::vector<TScriptConst>{
                 {"UnixStartDate", start},
                 {"UnixDateDelta", kUnixDateDelta},
                 {"SecPerMin", kSecPerMin},
                 {"SecPerHour", kSecPerHour},
                 {"SecPerDay", kSecPerDay},
                 {"MinDayFraction", kMinDayFraction},
             },
             std::vector<TScriptProc>{scriptProc("_qrcodestr", &coffee::_qrcodestr)}}};
}

} // namespace tnv5::script
