#include "tnv5/script/event_types.h"

#include "tnv5/bank/bank_pos.h"
#include "tnv5/d24/d24_types.h"
#include "tnv5/panel/turn_styler.h"
#include "tnv5/scales/scales_device.h"
#include "tnv5/script/event_row.h"
#include "tnv5/switch/switch_types.h"
#include "tnv5/turnstile/turnstile_types.h"

#include <array>

namespace tnv5::script {

const TEventType* FindEventType(QMetaType type)
{
    static const std::array kTypes{
        eventRow<platform::TLogEvent>(),
        eventRow<turnstile::TCheckStatusDevice>(),
        eventRow<turnstile::TCheckSQLDevice>(),
        eventRow<turnstile::TGetImg>(),
        eventRow<d24::TCheckStatusDevice>(),
        eventRow<d24::TCheckSQLDevice>(),
        eventRow<switching::TCheckStatusSwitch>(),
        eventRow<switching::TCheckSQL>(),
        eventRow<switching::TCheckEvent>(),
        eventRow<scales::TWeightEvent>(),
        eventRow<bank::TStatusEvent>(),
        eventRow<panel::TTurnStylerBtnClick>(),
    };
    const auto* const found =
        std::find_if(kTypes.begin(), kTypes.end(), [&](const TEventType& row) { return row.Type == type; });
    return found == kTypes.end() ? nullptr : &*found;
}

} // namespace tnv5::script
