#include "tnv5/panel/gate_ini.h"

#include "tnv5/common/text.h"
#include "tnv5/panel/ini_lines.h"
#include "tnv5/panel/panel_texts.h"

#include <QList>
#include <array>

#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>

namespace tnv5::panel {

using common::Trim;

namespace {

// The lines of our section in memory: our keys as they are, so that they are found, changed and removed
// there; every other line stands under a key that no file can have, and comes out where it stood.
constexpr char kSection[] = "s";
constexpr char kForeign = '\x01';

const std::array<QString, 5> kNumbered{kGateA, kGateB, kCaption, kEntryA, kEntryB};

/// A decimal without leading zeros behind one of the five names: its digits; nothing for any other key.
QStringView numberOfKey(QStringView key)
{
    for (const QString& name : kNumbered) {
        if (!key.startsWith(name, Qt::CaseInsensitive)) {
            continue;
        }
        const QStringView digits = key.sliced(name.size());
        const bool decimal = std::all_of(digits.begin(), digits.end(),
                                         [](QChar digit) { return digit >= u'0' && digit <= u'9'; });
        if (!digits.isEmpty() && decimal && digits.front() != u'0') {
            return digits;
        }
    }
    return {};
}

bool isOurs(QStringView key)
{
    return key.compare(kItemsCount, Qt::CaseInsensitive) == 0 || !numberOfKey(key).isEmpty();
}

bool isAbove(QStringView digits, std::size_t count)
{
    const QString most = QString::number(count);
    return digits.size() > most.size() || (digits.size() == most.size() && digits.compare(most) > 0);
}

/// What a line can hold: no line break, nothing that would end the text.
QString inOneLine(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    for (QChar& character : text) {
        if (character == u'\n' || character == u'\r' || character.isNull()) {
            character = u' ';
        }
    }
    return text;
}

int number(QStringView text)
{
    const QStringView digits = text.startsWith(u'-') ? text.sliced(1) : text;
    const bool decimal =
        std::all_of(digits.begin(), digits.end(), [](QChar digit) { return digit >= u'0' && digit <= u'9'; });
    return decimal ? text.toInt() : 0; // of what does not fit in, too
}

bool isPlain(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) { return character < QChar(0x80); });
}

template <class Holds>
bool everyText(const QString& section, const std::vector<TGateRecord>& gates, const Holds& holds)
{
    return holds(section) && std::all_of(gates.begin(), gates.end(), [&holds](const TGateRecord& gate) {
               return holds(gate.GateA) && holds(gate.GateB) && holds(gate.Caption);
           });
}

class TGateSection
{
public:
    explicit TGateSection(const TIniLines& file)
    {
        FIni.SetMultiKey();
        FIni.SetSpaces(false);
        QByteArray text = QByteArrayLiteral("[") + kSection + "]\n";
        for (std::size_t i = file.begin; i < file.end; ++i) {
            text += shielded(file, i) + '\n';
        }
        check(FIni.LoadData(text.constData(), std::size_t(text.size())));
    }

    QString text(const QString& name, int gate) const { return value(name + QString::number(gate)); }
    int integer(const QString& name, int gate) const { return number(text(name, gate)); }
    int count() const { return number(value(kItemsCount)); }

    void set(const QString& key, const QString& value)
    {
        check(FIni.SetValue(kSection, key.toUtf8(), value.toUtf8(), nullptr, true));
    }

    void removeAbove(std::size_t count)
    {
        std::vector<std::string> leftOver;
        if (const auto* const keys = FIni.GetSection(kSection)) {
            for (const auto& [key, value] : *keys) {
                if (isAbove(numberOfKey(QString::fromUtf8(key.pItem)), count)) {
                    leftOver.emplace_back(key.pItem);
                }
            }
        }
        for (const std::string& key : leftOver) {
            FIni.Delete(kSection, key.c_str());
        }
    }

    /// The section's lines; what was foreign is the file's own line again.
    std::vector<TIniLine> lines(const TIniLines& file) const
    {
        std::string saved;
        check(FIni.Save(saved));
        std::vector<TIniLine> result;
        const QList<QByteArray> all = QByteArray::fromStdString(saved).split('\n');
        for (const QByteArray& line : all) {
            if (line.startsWith(kForeign)) {
                result.push_back(file.lines[line.mid(1, line.indexOf('=') - 1).toULongLong()]);
            } else if (line.contains('=')) {
                result.push_back({iniBytes(QString::fromUtf8(line), file.encoding), file.lineEnd});
            }
        }
        return result;
    }

private:
    static QByteArray shielded(const TIniLines& file, std::size_t index)
    {
        const QString line = iniText(file.lines[index].text, file.encoding);
        const qsizetype equals = line.indexOf(u'=');
        const QStringView key = Trim(QStringView(line).left(qMax<qsizetype>(equals, 0)));
        if (!isOurs(key)) {
            return kForeign + QByteArray::number(qulonglong(index)) + "=.";
        }
        return (key.toString() + u'=' + inOneLine(Trim(QStringView(line).mid(equals + 1)).toString()))
            .toUtf8();
    }

    static void check(SI_Error result)
    {
        if (result < 0) {
            throw EIniFile(QStringLiteral("The ini file's section cannot be held in memory"));
        }
    }

    QString value(const QString& key) const
    {
        return Trim(textOfUtf8(FIni.GetValue(kSection, key.toUtf8(), ""))).toString();
    }

    CSimpleIniA FIni{true};
};

} // namespace

std::vector<TGateRecord> readGates(const QByteArray& content, const QString& section)
{
    TIniLines file(content);
    if (!file.find(section)) {
        return {};
    }
    const TGateSection keys(file);
    const int count = std::clamp(keys.count(), 0, kMostGates);
    std::vector<TGateRecord> gates;
    gates.reserve(std::size_t(count));
    for (int i = 1; i <= count; ++i) {
        gates.push_back({keys.text(kGateA, i), keys.text(kGateB, i), keys.text(kCaption, i),
                         keys.integer(kEntryA, i), keys.integer(kEntryB, i)});
    }
    return gates;
}

QByteArray writtenGates(const QByteArray& content, const QString& section,
                        const std::vector<TGateRecord>& gates)
{
    const QString name = inOneLine(section);
    const TIniEncoding encoding = iniEncoding(content);
    const bool held =
        everyText(name, gates, [encoding](const QString& text) { return holdsText(encoding, text); });
    TIniLines file(held ? content : codePageInUtf8(content));
    if (!file.find(name)) {
        file.append(name);
    }
    TGateSection keys(file);
    keys.set(kItemsCount, QString::number(gates.size()));
    for (std::size_t i = 0; i < gates.size(); ++i) {
        const QString number = QString::number(i + 1);
        keys.set(kGateA + number, inOneLine(gates[i].GateA));
        keys.set(kGateB + number, inOneLine(gates[i].GateB));
        keys.set(kCaption + number, inOneLine(gates[i].Caption));
        keys.set(kEntryA + number, QString::number(gates[i].EntryA));
        keys.set(kEntryB + number, QString::number(gates[i].EntryB));
    }
    keys.removeAbove(gates.size());
    const std::vector<TIniLine> lines = keys.lines(file);
    const auto first = file.lines.begin() + std::ptrdiff_t(file.begin);
    const auto at = file.lines.erase(first, file.lines.begin() + std::ptrdiff_t(file.end));
    file.lines.insert(at, lines.begin(), lines.end());
    const QByteArray result = file.content();
    // bytes of the code page may happen to be valid UTF-8
    const bool misread =
        file.encoding == TIniEncoding::CodePage && iniEncoding(result) != TIniEncoding::CodePage;
    return misread && !everyText(name, gates, isPlain) ? codePageInUtf8(result) : result;
}

} // namespace tnv5::panel
