#include "model/connector_words.h"

namespace tnv5::connector::model {

namespace {

constexpr int kLongestPacket = 65'536;

} // namespace

QString TWords::ip()
{
    if (FDice.chance(70)) {
        return "0.0.0.0";
    }
    return FDice.pick<const char*>({"10.0.0.7", "", "0.0.0.0 ", "fe80::1", "шлюз"});
}

QString TWords::address()
{
    if (FDice.chance(70)) {
        return FDice.pick<const char*>({"000A", "000B", "001A"});
    }
    return FDice.pick<const char*>({"001B", "000C", "000a", "00A", "", "0ETA", "BT0B", "HW0A", "GO0B", "PING",
                                    "GX=A", "000AA", "0Ж1B", "0:1A", "0|1A"});
}

QByteArray TWords::damaged(QByteArray line)
{
    if (line.isEmpty()) {
        return line;
    }
    const int at = FDice.below(int(line.size()));
    switch (FDice.below(5)) {
    case 0:
        line[at] = char(FDice.below(256));
        break;
    case 1:
        line.remove(at, 1);
        break;
    case 2:
        line.insert(at, char(FDice.below(256)));
        break;
    case 3:
        line = FDice.chance(50) ? line.toLower() : line.toUpper();
        break;
    default:
        line.truncate(at);
        break;
    }
    return line;
}

QByteArray TWords::dollarBody()
{
    return FDice.pick<const char*>(
        {"PING",     "PING",      "PING",  "PING",  "xPINGx", "PINGET", "ETPING",         "ET",
         "ET01",     "R12345678", "",      "ping",  "PIN",    "E",      "EVENT ET PIN G", "GOBTHW",
         "\xc4\xe0", "PING7F",    " PING", "#PING", "$ET"});
}

QByteArray TWords::displayType()
{
    if (FDice.chance(40)) {
        return FDice.pick<const char*>(
            {"L20x4", "L16x2", "L08x1", "N", "N", "T5x", "L999x9", "L0x0", "L-1x4"});
    }
    return FDice.pick<const char*>({"",      "n",       "NN",      "N ",     "L",      "x",      "Lx",
                                    "L20",   "20x4",    "L2ax4",   "L 8x",   "L8 x",   "L+8x",   "L-5x",
                                    "L+x",   "L--x",    "L+-1x",   "L- 1x",  "L  x",   "L   7x", "L1234x",
                                    "L20X4", "L20x4x9", "\30420x", "L\xb2x", "L\t5x",  "L5\tx",  "L0x10x",
                                    "L$1x",  "L1.x",    "L20=x",   "L00Nx",  "L\2405x"});
}

QByteArray TWords::hardwareReply()
{
    QByteArray gx = "GX=" + displayType() + "/";
    QByteArray gr = "GR=";
    gr += FDice.pick<const char*>({"NN", "YN", "NY", "YY", "NNN", "YNY", "NYN", "N", "Y", "", "NYNY", "nN",
                                   "\xcdN", "1N0", " N", "N N", "=NN", "NN=YY"});
    gr += "/";
    if (FDice.chance(12)) {
        QByteArray& part = FDice.chance(50) ? gx : gr;
        part = FDice.chance(40) ? QByteArray() : damaged(part);
    }
    if (FDice.chance(6)) {
        // the limits of a value and of the way to its end
        gr = "GR=" + QByteArray(FDice.pick<qint64>({99, 100, 101, 995, 996, 997, 998}), 'Y') + "N/";
    }
    QByteArray body = FDice.chance(75) ? "HW" + gx + gr : "HW" + gr + gx;
    if (FDice.chance(20)) {
        body = FDice.pick<const char*>({"GX/", "V=1/", "SGX=N/", "GO", "/", "=", "GR=YY", "\xff"}) + body;
    }
    return FDice.chance(10) ? body + "GX=L33x4/GR=NNN/GO" : body;
}

QByteArray TWords::hashBody()
{
    if (FDice.chance(50)) {
        return hardwareReply();
    }
    return FDice.pick<const char*>({"BT",   "ET",   "GO",   "GO",   "BTET", "ETBT", "ETHW",     "HWET",
                                    "HWGO", "GOHW", "GOBT", "ETGO", "bt",   "et",   "hw",       "go",
                                    "B T",  "",     "PING", "OK",   "BT1F", "GO#",  "\xc2\xd2", "ET0000123"});
}

QByteArray TWords::boardLine()
{
    const QByteArray from = FDice.chance(85) ? address().toLatin1() : noise(5);
    QByteArray line = FDice.chance(50) ? "$" + from + dollarBody() : "#" + from + hashBody();
    return FDice.chance(8) ? damaged(line) : line;
}

QByteArray TWords::stretchOfWire()
{
    if (FDice.below(1200) == 0) {
        // around the longest packet, start and stop included; then a good line
        const auto body = FDice.between(kLongestPacket - 4, kLongestPacket + 1);
        const QByteArray start = FDice.pick<const char*>({"$", "#"});
        return start + "000AET" + QByteArray(body - 6, '$') + "\r" + "$000APING\r";
    }
    const int roll = FDice.below(100);
    if (roll < 4) {
        return noise(12);
    }
    if (roll < 8) {
        return FDice.pick<const char*>(
            {"$\r", "#\r", "$ \t\n\r", "#\x1f\x01\r", "\r", "$#\r", "#$\r", "$$\r"});
    }
    if (roll < 12) {
        return boardLine(); // its end is missing: the next line becomes part of it
    }
    QByteArray line = boardLine();
    if (FDice.chance(10)) {
        line.insert(1, FDice.pick<const char*>({" ", "\t", "\n ", "\x01"}));
    }
    if (FDice.chance(10)) {
        line += FDice.pick<const char*>({" ", "\n", "\t ", "\xa0", "\x7f"});
    }
    line += FDice.chance(90) ? "\r" : "\r\n";
    return FDice.chance(8) ? noise(6) + line : line;
}

QString TWords::hostLine()
{
    if (FDice.chance(6)) {
        return FDice.pick<const char*>({"", "$", "#", "$0", "#00", "#000", "x000APING", "000APING",
                                        " $000APING", "#000ABTЖ中", "$000AET\xf0\x9f\x98\x80", "$中00APING",
                                        "#HW"});
    }
    QByteArray line = boardLine();
    return FDice.chance(20) ? QString::fromLatin1(line) : QString::fromUtf8(line.replace('\xc4', 'Z'));
}

QString TWords::displayField()
{
    if (FDice.chance(25)) {
        return FDice.pick<const char*>(
            {"", " ", "\t \n", "\u00a0", "", "Привет", "中文", " x ", "LS", ":", "0:1A"});
    }
    QString text(FDice.between(1, 24), QChar(char16_t(u'a' + FDice.below(26))));
    if (FDice.chance(30)) {
        text = "  " + text + " ";
    }
    return text;
}

QString TWords::displayCommand()
{
    QString command = "SH" + ip() + ":" + (FDice.chance(80) ? QString("000A") : address()) + "|";
    for (int i = 0; i < 4; ++i) {
        command += displayField() + "|";
    }
    command += FDice.pick<const char*>({"", "L", "S", "LS", "SL", " ", "l", "xLx", "\t", "Б", "L S"});
    command += FDice.chance(90) ? "|" : "";
    if (FDice.chance(8)) {
        command.remove(FDice.below(int(command.size())), 1);
    }
    if (FDice.chance(5)) {
        command.truncate(FDice.below(int(command.size())));
    }
    return FDice.chance(10) ? command + "tail|L|" : command;
}

QString TWords::command()
{
    if (FDice.chance(35)) {
        return displayCommand();
    }
    QString text = FDice.pick<const char*>(
        {"SD", "GO", "RL", "RL", "RL", "PH", "AL", "HW", "SH", "go", "XX", "", "R", "G:", ":O", "Rl", "ЖЖ"});
    text += ip();
    text += FDice.chance(90) ? ":" : "";
    text += address();
    text += FDice.pick<const char*>({"", "1", "2", "5", "12", ":", "Ж", "中", " 3", "\r", "9:"});
    if (FDice.chance(6)) {
        text.truncate(FDice.below(int(text.size()) + 1));
    }
    return text;
}

void TWords::diagnostic(QString& text, QString& key)
{
    key = FDice.pick<const char*>(
        {"GX", "GR", "GX", "GR", "", "G", "/", "=", "gx", "GX=", "Ж", "LONGER THAN ALL"});
    text = QString::fromLatin1(hardwareReply());
    if (FDice.chance(15)) {
        text =
            FDice.pick<const char*>({"", "GX", "GX=", "GX/", "GX=/", "GX=a", "/GX=b/", "a=b/GX", "GX=GX=c/"});
    }
    if (FDice.chance(15)) {
        // the end of the value on either side of the furthest character looked at
        text = "GX" + QString(FDice.between(990, 1000), u'y') + (FDice.chance(50) ? "=N/" : "/=N");
    }
}

} // namespace tnv5::connector::model
