#include "tnv5/scales/scales_texts.h"

#include <array>

namespace tnv5::scales {

QString messageText(int index, int language)
{
    static const std::array<std::array<QString, 4>, 3> texts = {{
        {QStringLiteral("[1] Не найден компонент для чтения порта!"), QStringLiteral("[2] Весы перегружены!"),
         QStringLiteral("[3] Отрицательный вес!"), QStringLiteral("[4] Весы не отвечают!")},
        {QStringLiteral("[1] Не знайдено компонент для обробки порта!"),
         QStringLiteral("[2] Вага перевантажена!"), QStringLiteral("[3] Від`ємна вага!"),
         QStringLiteral("[4] Вага не відповідає!")},
        {QStringLiteral("[1] Com port not found!"), QStringLiteral("[2] Scales are overvalue!"),
         QStringLiteral("[3] Weight <0!"), QStringLiteral("[4] Scales does not answer!")},
    }};
    if (language < 0 || language >= static_cast<int>(texts.size()) || index < 0 || index > msgNoAnswer) {
        return {};
    }
    return texts[static_cast<std::size_t>(language)][static_cast<std::size_t>(index)];
}

} // namespace tnv5::scales
