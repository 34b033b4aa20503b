#include "tnv5/scales/scales_texts.h"

#include "tnv5/common/numbered_messages.h"

namespace tnv5::scales {

QString messageText(int index, int language)
{
    static const common::TMessageTable<4> texts = {{
        {QStringLiteral("[1] Не найден компонент для чтения порта!"), QStringLiteral("[2] Весы перегружены!"),
         QStringLiteral("[3] Отрицательный вес!"), QStringLiteral("[4] Весы не отвечают!")},
        {QStringLiteral("[1] Не знайдено компонент для обробки порта!"),
         QStringLiteral("[2] Вага перевантажена!"), QStringLiteral("[3] Від`ємна вага!"),
         QStringLiteral("[4] Вага не відповідає!")},
        {QStringLiteral("[1] Com port not found!"), QStringLiteral("[2] Scales are overvalue!"),
         QStringLiteral("[3] Weight <0!"), QStringLiteral("[4] Scales does not answer!")},
    }};
    return common::messageOf(texts, index, language);
}

} // namespace tnv5::scales
