// The ini file's rules told once more: a file is a list of lines, and each line is judged by itself.

#include "model/kit/branches.h"
#include "model/panel_model.h"

#include <QRegularExpression>

namespace tnv5::panel::model {

namespace {

struct TLine
{
    QByteArray bytes;
    QByteArray end;
};

struct TFile
{
    bool marked = false;
    bool singleByte = false;
    bool cyrillic = true;
    std::vector<TLine> lines;
    QByteArray newEnd = "\n";
    int first = -1; // line of our section behind its header
    int last = -1;  // the line behind its last that is neither blank nor a remark

    QString text(const QByteArray& bytes) const
    {
        return singleByte ? textOf(bytes, cyrillic)
                          : QString::fromUtf8("x" + bytes).mid(1); // a mark is a character
    }
    QByteArray bytes(const QString& text) const
    {
        return singleByte ? bytesOf(text, cyrillic) : text.toUtf8();
    }
};

QString nameOf(const QString& line)
{
    static const QRegularExpression whole(QStringLiteral("^\\[(.*)\\]$"),
                                          QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression begins(QStringLiteral("^\\[([^\\]]*)\\]"));
    const QString text = trimmed(line);
    const auto match = whole.match(text);
    const auto other = begins.match(text);
    if (match.hasMatch()) {
        return "[" + trimmed(match.captured(1)).toCaseFolded();
    }
    return other.hasMatch() ? "[" + trimmed(other.captured(1)).toCaseFolded() : QString();
}

TFile parsed(const QByteArray& content, const QString& section, bool cyrillic)
{
    TFile file;
    file.cyrillic = cyrillic;
    file.marked = content.startsWith("\xef\xbb\xbf");
    file.singleByte = !file.marked && QString::fromUtf8(content).toUtf8() != content;
    static const QRegularExpression cut(QStringLiteral("([^\\r\\n]*)(\\r\\n|\\r|\\n|$)"));
    const QString latin = QString::fromLatin1(content);
    for (auto match = cut.globalMatch(latin); match.hasNext();) {
        const auto line = match.next();
        if (line.capturedLength(0) > 0) {
            file.lines.push_back({line.captured(1).toLatin1(), line.captured(2).toLatin1()});
        }
    }
    if (!file.lines.empty() && !file.lines[0].end.isEmpty()) {
        file.newEnd = file.lines[0].end;
        if (file.newEnd == "\r" && content.contains('\n')) {
            file.newEnd = "\n";
        }
    }
    const QString wanted = "[" + trimmed(section).toCaseFolded();
    for (int i = 0; i < int(file.lines.size()); ++i) {
        const QByteArray& bytes = file.lines[std::size_t(i)].bytes;
        const QString name = nameOf(file.text(i == 0 && file.marked ? bytes.mid(3) : bytes));
        if (file.first >= 0 && !name.isEmpty()) {
            break;
        }
        if (file.first < 0 && name == wanted) {
            file.first = i + 1;
            file.last = i + 1;
        } else if (file.first >= 0) {
            const QByteArray text = bytes.trimmed();
            if (!text.isEmpty() && text[0] != ';' && text[0] != '#') {
                file.last = i + 1;
            }
        }
    }
    return file;
}

struct TKey
{
    QString name; // in capitals, nothing: not one of ours
    qsizetype digits = 0;
    int number = 0; // 0 for the count
    QString value;
};

TKey keyOf(const QString& line)
{
    static const QRegularExpression ours(
        QStringLiteral("^(ItemsCount|(GateA|GateB|Caption|EntryA|EntryB)([1-9][0-9]*))$"),
        QRegularExpression::CaseInsensitiveOption);
    const qsizetype equals = line.indexOf(u'=');
    const auto match = ours.match(trimmed(line.left(equals < 0 ? 0 : equals)));
    if (!match.hasMatch()) {
        return {};
    }
    QString value = trimmed(line.mid(equals + 1));
    value.replace(QChar(0), u' ');
    const QString digits = match.captured(3);
    return {match.captured(1).toUpper(), digits.size(), digits.toInt(), value};
}

int numberIn(const QString& text)
{
    static const QRegularExpression decimal(QStringLiteral("^-?[0-9]+$"));
    return either<"a number", "no number">(decimal.match(text).hasMatch()) ? text.toInt() : 0;
}

QString flat(QString text)
{
    static const QRegularExpression breaks(QStringLiteral("\\r\\n|\\r|\\n|\\x{0}"));
    return text.replace(breaks, QStringLiteral(" "));
}

bool fits(const TFile& file, const QString& text)
{
    return !file.singleByte || file.text(file.bytes(text)) == text;
}

QByteArray joined(const std::vector<TLine>& lines, const QByteArray& newEnd)
{
    QByteArray all;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        all += lines[i].bytes;
        all += lines[i].end.isEmpty() && i + 1 < lines.size() ? newEnd : lines[i].end;
    }
    return all;
}

} // namespace

std::vector<TKept> gatesIn(const QByteArray& content, const QString& section, bool cyrillic)
{
    const TFile file = parsed(content, section, cyrillic);
    std::map<QString, QString> values;
    for (int i = file.first; i < file.last; ++i) {
        const TKey key = keyOf(file.text(file.lines[std::size_t(i)].bytes));
        if (!key.name.isEmpty() && !values.contains(key.name)) {
            values[key.name] = key.value;
        }
    }
    std::vector<TKept> gates;
    const int count = qBound(0, numberIn(values["ITEMSCOUNT"]), 100'000);
    for (int i = 1; i <= count; ++i) {
        const QString n = QString::number(i);
        gates.push_back({values["GATEA" + n], values["GATEB" + n], values["CAPTION" + n],
                         numberIn(values["ENTRYA" + n]), numberIn(values["ENTRYB" + n])});
    }
    return gates;
}

QByteArray fileWith(const QByteArray& before, const QString& untold, const std::vector<TKept>& gates,
                    bool cyrillic)
{
    const QString section = flat(untold);
    std::vector<std::pair<QString, QString>> wanted{{"ItemsCount", QString::number(gates.size())}};
    for (std::size_t i = 0; i < gates.size(); ++i) {
        const QString n = QString::number(i + 1);
        wanted.emplace_back("GateA" + n, flat(gates[i].GateA));
        wanted.emplace_back("GateB" + n, flat(gates[i].GateB));
        wanted.emplace_back("Caption" + n, flat(gates[i].Caption));
        wanted.emplace_back("EntryA" + n, QString::number(gates[i].EntryA));
        wanted.emplace_back("EntryB" + n, QString::number(gates[i].EntryB));
    }
    TFile file = parsed(before, section, cyrillic);
    bool fit = fits(file, section);
    for (const TKept& gate : gates) {
        fit = fit && fits(file, gate.GateA) && fits(file, gate.GateB) && fits(file, gate.Caption);
    }
    if (!either<"the file can hold the texts", "the file becomes UTF-8">(fit)) {
        return fileWith("\xef\xbb\xbf" + textOf(before, cyrillic).toUtf8(), untold, gates, cyrillic);
    }
    std::vector<TLine> lines(file.lines.begin(),
                             file.lines.begin() + (file.first < 0 ? int(file.lines.size()) : file.first));
    if (either<"a new section", "a section that is there">(file.first < 0)) {
        if (!lines.empty() && !lines.back().bytes.trimmed().isEmpty()) {
            lines.push_back({{}, file.newEnd});
        }
        lines.push_back({file.bytes("[" + section + "]"), file.newEnd});
    }
    const auto line = [&](const auto& pair) {
        return TLine{file.bytes(pair.first + "=" + pair.second), file.newEnd};
    };
    for (int i = qMax(0, file.first); i < file.last; ++i) {
        const TLine& old = file.lines[std::size_t(i)];
        const TKey key = keyOf(file.text(old.bytes));
        const auto found = std::find_if(wanted.begin(), wanted.end(), [&](const auto& pair) {
            return pair.first.compare(key.name, Qt::CaseInsensitive) == 0;
        });
        if (key.name.isEmpty()) {
            hit<"a foreign line">();
            lines.push_back(old);
        } else if (either<"a key is changed", "a key goes">(found != wanted.end())) {
            lines.push_back(line(*found));
            wanted.erase(found);
        }
    }
    for (const auto& pair : wanted) {
        lines.push_back(line(pair));
    }
    if (file.first >= 0) {
        lines.insert(lines.end(), file.lines.begin() + file.last, file.lines.end());
    }
    const QByteArray after = joined(lines, file.newEnd);
    QString ours = section;
    for (const TKept& gate : gates) {
        ours += gate.GateA + gate.GateB + gate.Caption;
    }
    const bool taken = file.singleByte && QString::fromUtf8(after).toUtf8() == after;
    return taken && ours.toLatin1().size() < ours.toUtf8().size()
               ? "\xef\xbb\xbf" + textOf(after, cyrillic).toUtf8()
               : after;
}

} // namespace tnv5::panel::model
