#include "model/panel_words.h"

#include "model/kit/texts.h"

namespace tnv5::panel::model {

QString TWords::address() const
{
    return d.text({"01A", "01A", "02A", "01a", "", "", " ", " 03D ", "\t", "ж7", "a\nb", "日"});
}

QString TWords::caption() const
{
    return d.text({"Main", "Staff door", "", "Вхід", "Вход №1", "été", "日本", " x ", "a=b;c", "\"q\"",
                   "[Gates]", "<<<END", "a\r\nb\rc", "=", "\\", "%1"});
}

QString TWords::section() const
{
    return d.text({"Gates", "Gates", "Gates", "gates", " GATES ", "Ворота", "ворота", "", " ", "a]b", "x\ny",
                   "日", "Other"});
}

QString TWords::number() const
{
    return d.text({"0",
                   "1",
                   "2",
                   "2",
                   "3",
                   "3",
                   "5",
                   "007",
                   "-1",
                   "-0",
                   "+1",
                   "x",
                   "",
                   "1 2",
                   "0x2",
                   "2147483647",
                   "-2147483648",
                   "2147483648",
                   "99999999999999999999",
                   " 2 "});
}

QString TWords::key() const
{
    const QString name =
        d.text({"GateA", "GateB", "Caption", "EntryA", "EntryB", "gatea", "CAPTION", "entryB", "IP", "Gate"});
    return name +
           d.text({"1", "1", "2", "2", "3", "4", "7", "10", "01", "0", "", "1x", "99999999999999999999"});
}

QString TWords::line() const
{
    const QString blank = d.text({"", "", "", " ", "\t"});
    const int count = d.below(7);
    switch (d.below(16)) {
    case 0:
        return d.text({"; remark", "# ремарка", "  ; [Gates]", ";"});
    case 1:
        return d.text({"", "", " ", "garbage", "=x", "[open", "]"});
    case 2:
        return blank + "[" + blank + section() + "]" + d.text({"", "", "", " ; here", "x"});
    case 3:
    case 4:
        return blank + d.text({"ItemsCount", "ItemsCount", "itemscount"}) + blank + "=" + blank +
               (d.chance(80) ? QString::number(count) : d.text({"-1", "x", "+2", "007", "", "-0", "0x2"}));
    case 5:
        return d.text({"Mine=1", "Mine = 2", "Своє=так",
                       "\x01"
                       "0=."});
    default:
        return blank + key() + blank + "=" + blank + d.text({"", "x", "01A", "Вхід", "日", "a=b"}) +
               (d.chance(50) ? number() : QString()) + blank;
    }
}

QByteArray TWords::file() const
{
    const QString end = d.text({"\n", "\n", "\n", "\r\n", "\r"});
    QString text;
    if (d.chance(85)) {
        text += "[" + section() + "]" + end;
    }
    for (int left = d.below(14); left > 0; --left) {
        text += line() + (d.chance(96) ? end : d.text({"\n", "\r\n", "\r"}));
    }
    if (d.chance(15)) {
        text.chop(1);
    }
    const int encoding = d.below(4);
    QByteArray bytes = encoding == 0   ? modelkit::bytesOf(text)
                       : encoding == 1 ? "\xef\xbb\xbf" + text.toUtf8()
                                       : text.toUtf8();
    for (int garbage = d.chance(15) ? d.below(6) : 0; garbage > 0; --garbage) {
        bytes.insert(d.below(int(bytes.size()) + 1),
                     d.pick<QByteArray>({QByteArray(1, '\0'), "\xff", "\xd0", "\x80", "\r", "\n", "[", "]",
                                         "=", "\xef\xbb\xbf"}));
    }
    return bytes;
}

} // namespace tnv5::panel::model
