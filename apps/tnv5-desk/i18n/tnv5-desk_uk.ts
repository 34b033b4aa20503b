<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="uk" sourcelanguage="en">
<context>
    <name>tnv5::desk::TDeskModel</name>
    <message>
        <source>The desk is connected to the host.</source>
        <translation>Стійку з’єднано з хостом.</translation>
    </message>
    <message>
        <source>Gate %1 was not opened: %2</source>
        <translation>Прохід %1 не відчинено: %2</translation>
    </message>
    <message>
        <source>Gate %1: the command to open was given.</source>
        <translation>Прохід %1: команду відчинити надіслано.</translation>
    </message>
    <message>
        <source>Gate %1: not known whether it was opened, the connection was lost.</source>
        <translation>Прохід %1: невідомо, чи його відчинено, зв’язок утрачено.</translation>
    </message>
    <message>
        <source>no reason given</source>
        <translation>причину не вказано</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TEquipment</name>
    <message>
        <source>Attention</source>
        <translation>Увага</translation>
    </message>
    <message>
        <source>Board %1</source>
        <translation>Плата %1</translation>
    </message>
    <message>
        <source>has stopped answering</source>
        <translation>перестала відповідати</translation>
    </message>
    <message>
        <source>Line %1</source>
        <translation>Лінія %1</translation>
    </message>
    <message>
        <source>is not open: %1</source>
        <translation>не відкрита: %1</translation>
    </message>
    <message>
        <source>Journal</source>
        <translation>Журнал</translation>
    </message>
    <message>
        <source>passes not yet written: %1</source>
        <translation>проходів ще не записано: %1</translation>
    </message>
    <message>
        <source>Card payments</source>
        <translation>Оплата карткою</translation>
    </message>
    <message>
        <source>none under way</source>
        <translation>зараз немає</translation>
    </message>
    <message>
        <source>Scales</source>
        <translation>Ваги</translation>
    </message>
    <message>
        <source>no weight</source>
        <translation>немає ваги</translation>
    </message>
    <message>
        <source>%1 g</source>
        <translation>%1 г</translation>
    </message>
    <message>
        <source>%1 g, moving</source>
        <translation>%1 г, коливається</translation>
    </message>
    <message>
        <source>its board does not answer</source>
        <translation>її плата не відповідає</translation>
    </message>
    <message>
        <source>on, not paid for</source>
        <translation>увімкнено, не оплачено</translation>
    </message>
    <message>
        <source>off</source>
        <translation>вимкнено</translation>
    </message>
    <message>
        <source>Boards</source>
        <translation>Плати</translation>
    </message>
    <message>
        <source>answers</source>
        <translation>відповідає</translation>
    </message>
    <message>
        <source>never heard</source>
        <translation>ще не відповідала</translation>
    </message>
    <message>
        <source>last heard at %1</source>
        <translation>остання відповідь о %1</translation>
    </message>
    <message>
        <source>Lines</source>
        <translation>Лінії</translation>
    </message>
    <message>
        <source>open</source>
        <translation>відкрита</translation>
    </message>
    <message>
        <source>closed</source>
        <translation>закрита</translation>
    </message>
    <message>
        <source>Paid time left</source>
        <translation>Залишилося часу</translation>
    </message>
    <message>
        <source>has not answered yet</source>
        <translation>ще не відповідала</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TEquipmentView</name>
    <message>
        <source>&amp;Equipment</source>
        <translation>&amp;Обладнання</translation>
    </message>
    <message>
        <source>Equipment</source>
        <translation>Обладнання</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TGateView</name>
    <message>
        <source>&amp;Gates</source>
        <translation>П&amp;роходи</translation>
    </message>
    <message>
        <source>Gates</source>
        <translation>Проходи</translation>
    </message>
    <message>
        <source>No gate (%1)</source>
        <translation>Немає проходу (%1)</translation>
    </message>
    <message>
        <source>Open %1 (%2)</source>
        <translation>Відчинити %1 (%2)</translation>
    </message>
    <message>
        <source>There are no gates in the section &quot;Gates&quot; of %1.</source>
        <translation>У файлі %1 немає проходів у розділі «Gates».</translation>
    </message>
    <message>
        <source>%1 cannot be read.</source>
        <translation>Файл %1 не вдається прочитати.</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TLogModel</name>
    <message>
        <source>Time</source>
        <translation>Час</translation>
    </message>
    <message>
        <source>What happened</source>
        <translation>Що сталося</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TLogView</name>
    <message>
        <source>&amp;Information</source>
        <translation>&amp;Відомості</translation>
    </message>
    <message>
        <source>&amp;Warnings</source>
        <translation>Попере&amp;дження</translation>
    </message>
    <message>
        <source>E&amp;rrors</source>
        <translation>Помил&amp;ки</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>&amp;Лог</translation>
    </message>
    <message>
        <source>Search for words (Ctrl+F)</source>
        <translation>Пошук за словами (Ctrl+F)</translation>
    </message>
    <message>
        <source>Search in the log</source>
        <translation>Пошук у лозі</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Лог</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 з %2</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TMainWindow</name>
    <message>
        <source>G&amp;ate</source>
        <translation>&amp;Прохід</translation>
    </message>
    <message>
        <source>&amp;Next gate</source>
        <translation>&amp;Наступний прохід</translation>
    </message>
    <message>
        <source>&amp;Previous gate</source>
        <translation>&amp;Попередній прохід</translation>
    </message>
    <message>
        <source>Open the way &amp;in …</source>
        <translation>Відчинити в&amp;хід …</translation>
    </message>
    <message>
        <source>Open the way &amp;out …</source>
        <translation>Відчинити в&amp;ихід …</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>Ви&amp;гляд</translation>
    </message>
    <message>
        <source>&amp;Search in the log</source>
        <translation>&amp;Пошук у лозі</translation>
    </message>
    <message>
        <source>Next part of the &amp;window</source>
        <translation>Наступна частина &amp;вікна</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>В&amp;ийти</translation>
    </message>
    <message>
        <source>Not connected to the host. Nothing here is live; gates work on, but cannot be opened from the desk. The desk connects again by itself.</source>
        <translation>Немає з’єднання з хостом. Дані тут не поточні; проходи працюють далі, але відчинити їх зі стійки не можна. Стійка з’єднається знову сама.</translation>
    </message>
    <message>
        <source>%1 – desk</source>
        <translation>%1 – стійка</translation>
    </message>
    <message>
        <source>Desk – not connected</source>
        <translation>Стійка – немає з’єднання</translation>
    </message>
    <message>
        <source>Inside: %1</source>
        <translation>Усередині: %1</translation>
    </message>
    <message>
        <source>Gate %1 is not in this club.</source>
        <translation>Проходу %1 немає в цьому клубі.</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TOpenDialog</name>
    <message>
        <source>Open by hand</source>
        <translation>Відчинити вручну</translation>
    </message>
    <message>
        <source>Open gate %1?</source>
        <translation>Відчинити прохід %1?</translation>
    </message>
    <message>
        <source>forgot the card</source>
        <translation>картку забуто</translation>
    </message>
    <message>
        <source>pram or wheelchair</source>
        <translation>візок</translation>
    </message>
    <message>
        <source>guest</source>
        <translation>гість</translation>
    </message>
    <message>
        <source>delivery</source>
        <translation>доставка</translation>
    </message>
    <message>
        <source>the reader does not work</source>
        <translation>не працює зчитувач</translation>
    </message>
    <message>
        <source>required, goes into the journal</source>
        <translation>обов’язково, потрапить до журналу</translation>
    </message>
    <message>
        <source>&amp;Reason</source>
        <translation>&amp;Причина</translation>
    </message>
    <message>
        <source>&amp;Who opens</source>
        <translation>&amp;Хто відчиняє</translation>
    </message>
    <message>
        <source>&amp;Open the gate</source>
        <translation>&amp;Відчинити прохід</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Скасувати</translation>
    </message>
</context>
<context>
    <name>tnv5::desk::TPassingView</name>
    <message>
        <source>&amp;Passing</source>
        <translation>Хто про&amp;ходить</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Час</translation>
    </message>
    <message>
        <source>Gate</source>
        <translation>Прохід</translation>
    </message>
    <message>
        <source>Who</source>
        <translation>Хто</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Що</translation>
    </message>
    <message>
        <source>Latest passes</source>
        <translation>Останні проходи</translation>
    </message>
    <message>
        <source>Nobody yet</source>
        <translation>Поки нікого</translation>
    </message>
    <message>
        <source>Picture of %1</source>
        <translation>Фото: %1</translation>
    </message>
    <message>
        <source>Card %1</source>
        <translation>Картка %1</translation>
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
        <translation>вільний</translation>
    </message>
    <message>
        <source>open</source>
        <translation>відчинено</translation>
    </message>
    <message>
        <source>line closed</source>
        <translation>лінія закрита</translation>
    </message>
    <message>
        <source>does not answer</source>
        <translation>не відповідає</translation>
    </message>
    <message>
        <source>not connected</source>
        <translation>немає зв’язку</translation>
    </message>
    <message>
        <source>unknown gate</source>
        <translation>невідомий прохід</translation>
    </message>
    <message>
        <source>unknown card</source>
        <translation>невідома картка</translation>
    </message>
    <message>
        <source>suspended</source>
        <translation>призупинено</translation>
    </message>
    <message>
        <source>no membership</source>
        <translation>немає абонемента</translation>
    </message>
    <message>
        <source>not yet valid</source>
        <translation>ще не діє</translation>
    </message>
    <message>
        <source>expired</source>
        <translation>термін минув</translation>
    </message>
    <message>
        <source>wrong zone</source>
        <translation>не та зона</translation>
    </message>
    <message>
        <source>already inside</source>
        <translation>вже всередині</translation>
    </message>
    <message>
        <source>the host could not find out</source>
        <translation>хост не зміг перевірити</translation>
    </message>
    <message>
        <source>passed</source>
        <translation>пройшов</translation>
    </message>
    <message>
        <source>nobody passed</source>
        <translation>ніхто не пройшов</translation>
    </message>
    <message>
        <source>the gate did not answer</source>
        <translation>прохід не відповів</translation>
    </message>
    <message>
        <source>the host was ended</source>
        <translation>хост зупинено</translation>
    </message>
    <message>
        <source>the host was killed</source>
        <translation>хост перервано</translation>
    </message>
    <message>
        <source>not known, the connection was lost</source>
        <translation>невідомо, зв’язок утрачено</translation>
    </message>
    <message>
        <source>waits for the terminal</source>
        <translation>чекає на термінал</translation>
    </message>
    <message>
        <source>the amount goes to the terminal</source>
        <translation>сума передається</translation>
    </message>
    <message>
        <source>the card was read, the bank is asked</source>
        <translation>картку прочитано, запит до банку</translation>
    </message>
    <message>
        <source>the bank has answered</source>
        <translation>банк відповів</translation>
    </message>
    <message>
        <source>in</source>
        <translation>вхід</translation>
    </message>
    <message>
        <source>out</source>
        <translation>вихід</translation>
    </message>
    <message>
        <source>door</source>
        <translation>двері</translation>
    </message>
    <message>
        <source>exit button</source>
        <translation>кнопка виходу</translation>
    </message>
    <message>
        <source>opened by hand</source>
        <translation>відчинено вручну</translation>
    </message>
    <message>
        <source>opened by hand: %1</source>
        <translation>відчинено вручну: %1</translation>
    </message>
    <message>
        <source>card %1</source>
        <translation>картка %1</translation>
    </message>
    <message>
        <source>refused: %1</source>
        <translation>відмова: %1</translation>
    </message>
    <message>
        <source>may pass</source>
        <translation>можна пройти</translation>
    </message>
    <message>
        <source>not in this club</source>
        <translation>немає в клубі</translation>
    </message>
    <message>
        <source>No host answers at %1: %2</source>
        <translation>За адресою %1 хост не відповідає: %2</translation>
    </message>
    <message>
        <source>The host at %1 has not answered for %2 seconds.</source>
        <translation>Хост за адресою %1 не відповідає вже %2 с.</translation>
    </message>
    <message>
        <source>The connection to the host is lost.</source>
        <translation>З’єднання з хостом утрачено.</translation>
    </message>
    <message>
        <source>What came from %1 is not from a host.</source>
        <translation>За адресою %1 відповідає не хост.</translation>
    </message>
    <message>
        <source>Too many programs are connected to this host.</source>
        <translation>До цього хоста під’єднано забагато програм.</translation>
    </message>
    <message>
        <source>there is no such socket</source>
        <translation>такого сокета немає</translation>
    </message>
    <message>
        <source>the host that listened there has ended</source>
        <translation>хост, що тут слухав, завершився</translation>
    </message>
    <message>
        <source>permission denied</source>
        <translation>немає доступу</translation>
    </message>
    <message>
        <source>Several hosts are here, choose one with --socket:</source>
        <translation>Тут кілька хостів, оберіть один через --socket:</translation>
    </message>
</context>
</TS>
