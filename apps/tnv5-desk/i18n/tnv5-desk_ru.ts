<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru" sourcelanguage="en">
<context>
    <name>tnv5::desk::TDeskModel</name>
    <message>
        <source>The desk is connected to the host.</source>
        <translation>Стойка соединена с хостом.</translation>
    </message>
    <message>
        <source>Gate %1 was not opened: %2</source>
        <translation>Проход %1 не открыт: %2</translation>
    </message>
    <message>
        <source>Gate %1: the command to open was given.</source>
        <translation>Проход %1: команда открыть отправлена.</translation>
    </message>
    <message>
        <source>Gate %1: not known whether it was opened, the connection was lost.</source>
        <translation>Проход %1: неизвестно, открыт ли он, связь потеряна.</translation>
    </message>
    <message>
        <source>no reason given</source>
        <translation>причина не указана</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TEquipment</name>
    <message>
        <source>Attention</source>
        <translation>Внимание</translation>
    </message>
    <message>
        <source>Board %1</source>
        <translation>Плата %1</translation>
    </message>
    <message>
        <source>has stopped answering</source>
        <translation>перестала отвечать</translation>
    </message>
    <message>
        <source>Line %1</source>
        <translation>Линия %1</translation>
    </message>
    <message>
        <source>is not open: %1</source>
        <translation>не открыта: %1</translation>
    </message>
    <message>
        <source>Journal</source>
        <translation>Журнал</translation>
    </message>
    <message>
        <source>passes not yet written: %1</source>
        <translation>проходов ещё не записано: %1</translation>
    </message>
    <message>
        <source>Card payments</source>
        <translation>Оплата картой</translation>
    </message>
    <message>
        <source>none under way</source>
        <translation>сейчас нет</translation>
    </message>
    <message>
        <source>Scales</source>
        <translation>Весы</translation>
    </message>
    <message>
        <source>no weight</source>
        <translation>нет веса</translation>
    </message>
    <message>
        <source>%1 g</source>
        <translation>%1 г</translation>
    </message>
    <message>
        <source>%1 g, moving</source>
        <translation>%1 г, колеблется</translation>
    </message>
    <message>
        <source>its board does not answer</source>
        <translation>её плата не отвечает</translation>
    </message>
    <message>
        <source>on, not paid for</source>
        <translation>включено, не оплачено</translation>
    </message>
    <message>
        <source>off</source>
        <translation>выключено</translation>
    </message>
    <message>
        <source>Boards</source>
        <translation>Платы</translation>
    </message>
    <message>
        <source>answers</source>
        <translation>отвечает</translation>
    </message>
    <message>
        <source>never heard</source>
        <translation>ещё не отвечала</translation>
    </message>
    <message>
        <source>last heard at %1</source>
        <translation>последний ответ в %1</translation>
    </message>
    <message>
        <source>Lines</source>
        <translation>Линии</translation>
    </message>
    <message>
        <source>open</source>
        <translation>открыта</translation>
    </message>
    <message>
        <source>closed</source>
        <translation>закрыта</translation>
    </message>
    <message>
        <source>Paid time left</source>
        <translation>Осталось времени</translation>
    </message>
    <message>
        <source>has not answered yet</source>
        <translation>ещё не отвечала</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TEquipmentView</name>
    <message>
        <source>&amp;Equipment</source>
        <translation>&amp;Оборудование</translation>
    </message>
    <message>
        <source>Equipment</source>
        <translation>Оборудование</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TGateView</name>
    <message>
        <source>&amp;Gates</source>
        <translation>П&amp;роходы</translation>
    </message>
    <message>
        <source>Gates</source>
        <translation>Проходы</translation>
    </message>
    <message>
        <source>No gate (%1)</source>
        <translation>Нет прохода (%1)</translation>
    </message>
    <message>
        <source>Open %1 (%2)</source>
        <translation>Открыть %1 (%2)</translation>
    </message>
    <message>
        <source>There are no gates in the section &quot;Gates&quot; of %1.</source>
        <translation>В файле %1 нет проходов в разделе «Gates».</translation>
    </message>
    <message>
        <source>%1 cannot be read.</source>
        <translation>Файл %1 не удаётся прочитать.</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TLogModel</name>
    <message>
        <source>Time</source>
        <translation>Время</translation>
    </message>
    <message>
        <source>What happened</source>
        <translation>Что произошло</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TLogView</name>
    <message>
        <source>&amp;Information</source>
        <translation>&amp;Сведения</translation>
    </message>
    <message>
        <source>&amp;Warnings</source>
        <translation>Пр&amp;едупреждения</translation>
    </message>
    <message>
        <source>E&amp;rrors</source>
        <translation>О&amp;шибки</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>&amp;Лог</translation>
    </message>
    <message>
        <source>Search for words (Ctrl+F)</source>
        <translation>Поиск по словам (Ctrl+F)</translation>
    </message>
    <message>
        <source>Search in the log</source>
        <translation>Поиск в логе</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Лог</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 из %2</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TMainWindow</name>
    <message>
        <source>G&amp;ate</source>
        <translation>&amp;Проход</translation>
    </message>
    <message>
        <source>&amp;Next gate</source>
        <translation>&amp;Следующий проход</translation>
    </message>
    <message>
        <source>&amp;Previous gate</source>
        <translation>&amp;Предыдущий проход</translation>
    </message>
    <message>
        <source>Open the way &amp;in …</source>
        <translation>Открыть в&amp;ход …</translation>
    </message>
    <message>
        <source>Open the way &amp;out …</source>
        <translation>Открыть в&amp;ыход …</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Вид</translation>
    </message>
    <message>
        <source>&amp;Search in the log</source>
        <translation>&amp;Поиск в логе</translation>
    </message>
    <message>
        <source>Next part of the &amp;window</source>
        <translation>Следующая часть &amp;окна</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>В&amp;ыход</translation>
    </message>
    <message>
        <source>Not connected to the host. Nothing here is live; gates work on, but cannot be opened from the desk. The desk connects again by itself.</source>
        <translation>Нет соединения с хостом. Данные здесь не текущие; проходы продолжают работать, но открыть их со стойки нельзя. Стойка соединится снова сама.</translation>
    </message>
    <message>
        <source>%1 – desk</source>
        <translation>%1 – стойка</translation>
    </message>
    <message>
        <source>Desk – not connected</source>
        <translation>Стойка – нет соединения</translation>
    </message>
    <message>
        <source>Inside: %1</source>
        <translation>Внутри: %1</translation>
    </message>
    <message>
        <source>Gate %1 is not in this club.</source>
        <translation>Прохода %1 нет в этом клубе.</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TOpenDialog</name>
    <message>
        <source>Open by hand</source>
        <translation>Открыть вручную</translation>
    </message>
    <message>
        <source>Open gate %1?</source>
        <translation>Открыть проход %1?</translation>
    </message>
    <message>
        <source>forgot the card</source>
        <translation>карта забыта</translation>
    </message>
    <message>
        <source>pram or wheelchair</source>
        <translation>коляска</translation>
    </message>
    <message>
        <source>guest</source>
        <translation>гость</translation>
    </message>
    <message>
        <source>delivery</source>
        <translation>доставка</translation>
    </message>
    <message>
        <source>the reader does not work</source>
        <translation>не работает считыватель</translation>
    </message>
    <message>
        <source>required, goes into the journal</source>
        <translation>обязательно, попадёт в журнал</translation>
    </message>
    <message>
        <source>&amp;Reason</source>
        <translation>&amp;Причина</translation>
    </message>
    <message>
        <source>&amp;Who opens</source>
        <translation>&amp;Кто открывает</translation>
    </message>
    <message>
        <source>&amp;Open the gate</source>
        <translation>&amp;Открыть проход</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>О&amp;тмена</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TPassingView</name>
    <message>
        <source>&amp;Passing</source>
        <translation>Кто про&amp;ходит</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Время</translation>
    </message>
    <message>
        <source>Gate</source>
        <translation>Проход</translation>
    </message>
    <message>
        <source>Who</source>
        <translation>Кто</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Что</translation>
    </message>
    <message>
        <source>Latest passes</source>
        <translation>Последние проходы</translation>
    </message>
    <message>
        <source>Nobody yet</source>
        <translation>Пока никого</translation>
    </message>
    <message>
        <source>Picture of %1</source>
        <translation>Фото: %1</translation>
    </message>
    <message>
        <source>Card %1</source>
        <translation>Карта %1</translation>
    </message>
    <message>
        <source>Balance %1</source>
        <translation>Баланс %1</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TWords</name>
    <message>
        <source>free</source>
        <translation>свободен</translation>
    </message>
    <message>
        <source>open</source>
        <translation>открыт</translation>
    </message>
    <message>
        <source>line closed</source>
        <translation>линия закрыта</translation>
    </message>
    <message>
        <source>does not answer</source>
        <translation>не отвечает</translation>
    </message>
    <message>
        <source>not connected</source>
        <translation>нет связи</translation>
    </message>
    <message>
        <source>unknown gate</source>
        <translation>неизвестный проход</translation>
    </message>
    <message>
        <source>unknown card</source>
        <translation>неизвестная карта</translation>
    </message>
    <message>
        <source>suspended</source>
        <translation>приостановлен</translation>
    </message>
    <message>
        <source>no membership</source>
        <translation>нет абонемента</translation>
    </message>
    <message>
        <source>not yet valid</source>
        <translation>ещё не действует</translation>
    </message>
    <message>
        <source>expired</source>
        <translation>срок истёк</translation>
    </message>
    <message>
        <source>wrong zone</source>
        <translation>не та зона</translation>
    </message>
    <message>
        <source>already inside</source>
        <translation>уже внутри</translation>
    </message>
    <message>
        <source>the host could not find out</source>
        <translation>хост не смог проверить</translation>
    </message>
    <message>
        <source>passed</source>
        <translation>прошёл</translation>
    </message>
    <message>
        <source>nobody passed</source>
        <translation>никто не прошёл</translation>
    </message>
    <message>
        <source>the gate did not answer</source>
        <translation>проход не ответил</translation>
    </message>
    <message>
        <source>the host was ended</source>
        <translation>хост остановлен</translation>
    </message>
    <message>
        <source>the host was killed</source>
        <translation>хост прерван</translation>
    </message>
    <message>
        <source>not known, the connection was lost</source>
        <translation>неизвестно, связь потеряна</translation>
    </message>
    <message>
        <source>waits for the terminal</source>
        <translation>ждёт терминал</translation>
    </message>
    <message>
        <source>the amount goes to the terminal</source>
        <translation>сумма передаётся</translation>
    </message>
    <message>
        <source>the card was read, the bank is asked</source>
        <translation>карта прочитана, запрос в банк</translation>
    </message>
    <message>
        <source>the bank has answered</source>
        <translation>банк ответил</translation>
    </message>
    <message>
        <source>in</source>
        <translation>вход</translation>
    </message>
    <message>
        <source>out</source>
        <translation>выход</translation>
    </message>
    <message>
        <source>door</source>
        <translation>дверь</translation>
    </message>
    <message>
        <source>exit button</source>
        <translation>кнопка выхода</translation>
    </message>
    <message>
        <source>opened by hand</source>
        <translation>открыт вручную</translation>
    </message>
    <message>
        <source>opened by hand: %1</source>
        <translation>открыл вручную: %1</translation>
    </message>
    <message>
        <source>card %1</source>
        <translation>карта %1</translation>
    </message>
    <message>
        <source>refused: %1</source>
        <translation>отказ: %1</translation>
    </message>
    <message>
        <source>may pass</source>
        <translation>можно пройти</translation>
    </message>
    <message>
        <source>not in this club</source>
        <translation>нет в клубе</translation>
    </message>
    <message>
        <source>No host answers at %1: %2</source>
        <translation>По адресу %1 хост не отвечает: %2</translation>
    </message>
    <message>
        <source>The host at %1 has not answered for %2 seconds.</source>
        <translation>Хост по адресу %1 не отвечает уже %2 с.</translation>
    </message>
    <message>
        <source>The connection to the host is lost.</source>
        <translation>Соединение с хостом потеряно.</translation>
    </message>
    <message>
        <source>What came from %1 is not from a host.</source>
        <translation>По адресу %1 отвечает не хост.</translation>
    </message>
    <message>
        <source>Too many programs are connected to this host.</source>
        <translation>К этому хосту подключено слишком много программ.</translation>
    </message>
    <message>
        <source>there is no such socket</source>
        <translation>такого сокета нет</translation>
    </message>
    <message>
        <source>the host that listened there has ended</source>
        <translation>хост, который здесь слушал, завершился</translation>
    </message>
    <message>
        <source>permission denied</source>
        <translation>нет доступа</translation>
    </message>
    <message>
        <source>Several hosts are here, choose one with --socket:</source>
        <translation>Здесь несколько хостов, выберите один через --socket:</translation>
    </message>
</context>
</TS>
