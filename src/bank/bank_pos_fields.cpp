#include "tnv5/bank/bank_pos_fields.h"

#include "tnv5/bank/bank_pos_texts.h"

namespace tnv5::bank {

QString responseField(QStringView text, int number, QChar separator)
{
    const auto separatorAt = [&](qsizetype at) { return at < text.size() && text[at] == separator; };
    QString result;
    int field = 1;
    for (qsizetype at = 0; at < text.size(); ++at) {
        for (int test = 0; test < 2; ++test) { // twice, not as often as there are some; intended
            if (separatorAt(at)) {
                ++field;
                ++at;
            }
        }
        if (field == number && at < text.size() && !separatorAt(at)) {
            result += text[at];
        }
    }
    return result.isEmpty() ? texts::kNone : result;
}

} // namespace tnv5::bank
