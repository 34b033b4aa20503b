#include "tnv5/bank/serial_bank_texts.h"

#include "tnv5/common/numbered_messages.h"

namespace tnv5::bank {

QString messageText(int index, int language)
{
    // "Подтверджено" and "терминалу" are written like this; intended
    static const common::TMessageTable<8> texts = {{
        {QStringLiteral("[1] Не найден компонент для чтения порта!"),
         QStringLiteral("[2] Запрос суммы платежа от терминала..."), QStringLiteral("[3] Отмена операции..."),
         QStringLiteral("[4] Отправлена сумма платежа "), QStringLiteral("[5] Ожидание ответа..."),
         QStringLiteral("[6] Ошибка"), QStringLiteral("[7] Подтверджено"),
         QStringLiteral("[8] Ожидание карты...")},
        {QStringLiteral("[1] Не знайдено компонент для обробки порта!"),
         QStringLiteral("[2] Запит на суму платежу від терминалу..."),
         QStringLiteral("[3] Скасування операції..."), QStringLiteral("[4] Відправлена сума платежу "),
         QStringLiteral("[5] Очікування відповіді..."), QStringLiteral("[6] Помилка"),
         QStringLiteral("[7] Підтверджено"), QStringLiteral("[8] Очікування картки...")},
        {QStringLiteral("[1] Com port not found!"), QStringLiteral("[2] Request for payment is coming..."),
         QStringLiteral("[3] Canceling operation..."), QStringLiteral("[4] Payment amount has been sent "),
         QStringLiteral("[5] Waiting answer..."), QStringLiteral("[6] Error"),
         QStringLiteral("[7] Confirmed"), QStringLiteral("[8] Waiting card...")},
    }};
    return common::messageOf(texts, index, language);
}

} // namespace tnv5::bank
