#include "tnv5/answers/relay_caution.h"

#include "tnv5/switch/switch_texts.h"

#include <algorithm>

namespace tnv5::answers {

void TRelayCaution::seen(const QString& status)
{
    if (status == switching::kNone || FStatus == status) {
        return;
    }
    if (!FStatus.isEmpty()) {
        doubt();
    }
    FStatus = status;
}

bool TRelayCaution::unsure(int command) const
{
    return FDoubt > 0 || (FCommand == command && FSettling > 0);
}

void TRelayCaution::commanded(int command)
{
    FCommand = command;
    FSettling = kSettleLooks;
}

void TRelayCaution::tick()
{
    FDoubt = std::max(FDoubt - 1, 0);
    FSettling = std::max(FSettling - 1, 0);
}

} // namespace tnv5::answers
