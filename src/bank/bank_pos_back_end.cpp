#include "tnv5/bank/bank_pos_back_end.h"

#include "tnv5/bank/bank_pos_texts.h"

#include <array>

namespace tnv5::bank {

QString TPosBackEnd::merchantId(TPosDesk&, int /*index*/) const
{
    return texts::kNone;
}

const TPosBackEnd* backEndOf(int posType)
{
    static const std::array backEnds = {&ecrLibBackEnd(), &bpos1BackEnd(), &controlBackEnd(),
                                        &bluePadBackEnd(), &cardPayBackEnd()};
    return posType >= 0 && posType < static_cast<int>(backEnds.size())
               ? backEnds.at(static_cast<std::size_t>(posType))
               : nullptr;
}

} // namespace tnv5::bank
