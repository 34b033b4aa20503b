#include "turnstile/pass_table.h"

#include "common/messages.h"

#include <algorithm>

namespace tnv5::turnstile {

namespace {

template <class Matches>
int indexOf(const std::vector<PRFidInfo>& passes, Matches matches)
{
    const auto found = std::find_if(passes.begin(), passes.end(), matches);
    return found == passes.end() ? -1 : static_cast<int>(found - passes.begin());
}

} // namespace

PRFidInfo TPassTable::at(int index) const
{
    return index >= 0 && index < size() ? FPasses[static_cast<std::size_t>(index)] : nullptr;
}

int TPassTable::find(QStringView device) const
{
    return indexOf(FPasses, [device](const PRFidInfo& pass) { return pass->Device == device; });
}

int TPassTable::find(QStringView device, QStringView card) const
{
    return indexOf(FPasses, [device, card](const PRFidInfo& pass) {
        return pass->Device == device && pass->CardNumber == card;
    });
}

PRFidInfo TPassTable::add(const QString& device, const QString& card)
{
    if (FPasses.size() >= kMaxPasses) {
        throw platform::Exception(QStringLiteral("The pass table is full"));
    }
    auto pass = std::make_shared<TRFidInfo>();
    pass->CardNumber = card;
    pass->Device = device;
    pass->Status = common::kNew;
    pass->Starttime = platform::TimeOfDay();
    FPasses.push_back(pass);
    return pass;
}

void TPassTable::remove(int index)
{
    FPasses.erase(FPasses.begin() + index);
}

} // namespace tnv5::turnstile
