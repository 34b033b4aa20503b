#include "model/kit/remote_words.h"

#include "model/kit/texts.h"

namespace tnv5::modelkit {

TStep TRemoteWords::any()
{
    if (!server && !linked) {
        return dice.chance(80) ? TStep{Answered} : dice.chance(50) ? ofServer() : ofClient();
    }
    return server && (!linked || dice.chance(50)) ? ofServer() : ofClient();
}

TStep TRemoteWords::ofServer()
{
    TStep say{Say, {}, client()};
    switch (dice.weighted({46, present > 4 ? 2 : 20, present > 3 ? 25 : 12, 14, 8})) {
    case 0:
        say.bytes = linesOfAClient();
        return say;
    case 1:
        return {Visit, {dice.text({"10.0.0.7", "127.0.0.1", "fe80::1", ""})}};
    case 2:
        return {Leave, {}, client()};
    case 3:
        return {Deaf, dice.pick<QStringList>({{}, {"Broken pipe"}, {"обрыв & !"}}), client()};
    default:
        return {ClientError, {"Connection reset"}, client(), code()};
    }
}

TStep TRemoteWords::ofClient()
{
    TStep told{Told};
    switch (dice.weighted({80, 4, 7, 5})) {
    case 0:
        told.bytes = stream();
        if (dice.chance(15)) {
            told.cuts = randomCuts(dice, told.bytes.size());
        }
        return told;
    case 1:
        return {Answered};
    case 2:
        return {LinkError, {dice.text({"Connection refused", ""})}, 0, code()};
    default:
        return {HangUp};
    }
}

/// Mostly one line; what the network joins, and what is none.
QByteArray TRemoteWords::linesOfAClient()
{
    switch (dice.weighted({72, 12, 8, 3, 5})) {
    case 0:
        return bytesOf(line());
    case 1:
        return bytesOf(line() + line());
    case 2:
        return bytesOf(line() + dice.text({"\r", "\r\n", " ", "&"}));
    case 3:
        return {};
    default:
        return dice.noise(12, "$#&!:\r\x80\x98\xE0\xFF\0");
    }
}

QString TRemoteWords::status()
{
    QStringList fields;
    for (int left = dice.pick({5, 5, 5, 7, 7, 7, 4, 6, 8, 1, 2, 0}); left > 0; --left) {
        fields += dice.text({"COME", "STACK", "01A", "10.0.0.5", "001T", "12345678", "NEW", "OPEN", "", "",
                             "карта", "LOG", "x y"});
    }
    QString joined = fields.join(u'!');
    if (dice.chance(4)) {
        joined.insert(dice.below(int(joined.size()) + 1), u'&');
    }
    return joined;
}

QString TRemoteWords::text()
{
    const QString tag = dice.text({"LOG!", "LOG!", "ERROR!", "STATUS!", "STATUS!"});
    const QString end = dice.text({"&", "&", "&", "&", "&", "&", "&", "&", "&", "&", "&", "", "&&"});
    return tag +
           (tag == "STATUS!" ? status()
                             : dice.text({"", "abc", "abc", "x", "[04] порт", "%Считано с порта% $01AR1",
                                          "a!b", "ERROR", "LOG!", "\r\n"})) +
           end;
}

QString TRemoteWords::rubbish()
{
    return dice.chance(80) ? dice.text({"x", "&", "ab&", "abcdefgh&", "!", "LOG", "LOG!", "ERROR!", "STATUS!",
                                        "log!a&", "&&&", "STATUS", "\r\n", "!!!!!!!!"})
                           : textOf(dice.noise(9, "&!\x98\xE0"));
}

/// The fields of a status reach 1000 characters far; behind a text 2000 are kept.
QString TRemoteWords::atALimit()
{
    if (dice.chance(40)) {
        const QString start = QStringLiteral("a!").repeated(dice.pick({0, 1, 3, 4, 4, 5, 6, 6}));
        const int left = 1'000 - int(start.size()) + dice.between(-2, 1);
        const QString last = dice.chance(70) ? QString() : text();
        return "STATUS!" + start + QString(left, u'x') + dice.text({"&", "&", "!", "!b&", "!&"}) + last;
    }
    const QString first = dice.text({"LOG!a&", "ERROR!a&", "STATUS!a!b!c!d!e&", "LOG!a&STATUS!a!b!c!d!e&"});
    const QString tag = first.startsWith(u'L')   ? dice.text({"LOG!", "ERROR!", "STATUS!"})
                        : first.startsWith(u'E') ? dice.text({"ERROR!", "STATUS!"})
                                                 : QStringLiteral("STATUS!");
    const QString last = dice.chance(70) ? QString() : text();
    const int left = 2'000 - int(tag.size() + last.size()) - 1 + dice.between(-1, 2);
    return first + tag + letters(left) + u'&' + last;
}

QByteArray TRemoteWords::stream()
{
    if (dice.chance(10)) {
        return bytesOf(atALimit());
    }
    QString all;
    for (int left = dice.pick({1, 1, 1, 2, 2, 3, 4}); left > 0; --left) {
        all += (dice.chance(12) ? rubbish() : QString()) + text();
    }
    if (dice.chance(14)) {
        all += dice.chance(50) ? rubbish() : text().remove(u'&');
    }
    return bytesOf(all);
}

} // namespace tnv5::modelkit
