#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/key_file.h"
#include "tnv5/coffee/qr_text.h"
#include "tnv5/common/text.h"
#include "tnv5/tools/coffee_check.h"
#include "tnv5/tools/qr_drawing.h"

#include <CLI/CLI.hpp>
#include <QBuffer>
#include <QSaveFile>
#include <array>
#include <memory>

namespace tnv5::cli {

namespace {

struct TNumber
{
    const char* Name;
    const char* Meaning;
    int Bits;
};

constexpr std::array<TNumber, 5> kNumbers = {{{"P1", "first part, 10 bits", 10},
                                              {"P2", "second part, 6 bits", 6},
                                              {"P3", "third part, 8 bits", 8},
                                              {"V1", "first value, 16 bits", 16},
                                              {"V2", "second value, 16 bits", 16}}};

struct TQrOptions
{
    std::string keyFile;
    std::array<std::string, kNumbers.size()> numbers;
    bool terminal = false;
    std::string png;
    std::string svg;
    std::string check;
};

/// Whole numbers of 32 bits with or without sign, also in hexadecimal digits behind "0x". Says what is cut
/// off.
int numberOf(const TNumber& number, const std::string& argument)
{
    const QString text = QString::fromStdString(argument);
    const QString name = QString::fromLatin1(number.Name);
    bool valid = false;
    const qint64 value = text.toLongLong(&valid, text.startsWith(u"0x", Qt::CaseInsensitive) ? 16 : 10);
    if (!valid || value < std::numeric_limits<qint32>::min() || value > std::numeric_limits<quint32>::max()) {
        throw platform::EConvertError(
            QStringLiteral("%1: \"%2\" is no whole number of 32 bits").arg(name, text));
    }
    const qint64 used = value & ((qint64{1} << number.Bits) - 1);
    if (used != value) {
        complain(QStringLiteral("%1: only the low %2 bits of %3 are used, which are %4")
                     .arg(name)
                     .arg(number.Bits)
                     .arg(text)
                     .arg(used));
    }
    return static_cast<int>(used);
}

QString keyOf(const TQrOptions& options)
{
    constexpr int kDigits = 32;
    const QString key = readKey(QString::fromStdString(options.keyFile));
    if (key.size() < kDigits) {
        complain(QStringLiteral("The key has less than 32 digits; what is missing counts as 0"));
    } else if (key.size() > kDigits) {
        complain(QStringLiteral("The key has more than 32 digits; the first 32 are used"));
    }
    return key;
}

void save(const std::string& fileName, const QByteArray& bytes)
{
    QSaveFile file(QString::fromStdString(fileName));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        throw platform::Exception(file.fileName() + QStringLiteral(": ") + file.errorString());
    }
}

QByteArray pngOf(const tools::TQrCode& code)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    tools::qrImage(code).save(&buffer, "PNG");
    return buffer.data();
}

int make(const TQrOptions& options)
{
    std::array<int, kNumbers.size()> numbers{};
    for (std::size_t i = 0; i < kNumbers.size(); ++i) {
        numbers[i] = numberOf(kNumbers[i], options.numbers[i]);
    }
    const auto [part1, part2, part3, value1, value2] = numbers;
    const QByteArray text = coffee::_qrcodestr(part1, part2, part3, value1, value2, keyOf(options));
    const tools::TQrCode code = tools::qrCode(text);
    if (!options.png.empty()) {
        save(options.png, pngOf(code));
    }
    if (!options.svg.empty()) {
        save(options.svg, tools::qrSvg(code));
    }
    print(QString::fromLatin1(text));
    if (options.terminal) {
        draw(tools::qrForTerminal(code));
    }
    return kDone;
}

int check(const TQrOptions& options)
{
    const QString key = keyOf(options);
    const QString text = QString::fromStdString(options.check);
    const tools::TCoffeeFields fields = tools::checkCoffeeText(common::Trim(text).toString(), key);
    const auto row = [](const QString& name, const QString& value) {
        constexpr int kWidth = 6;
        print(name.leftJustified(kWidth) + value);
    };
    const std::array<int, kNumbers.size()> numbers = {fields.Part1, fields.Part2, fields.Part3, fields.Value1,
                                                      fields.Value2};
    for (std::size_t i = 0; i < kNumbers.size(); ++i) {
        row(QString::fromLatin1(kNumbers[i].Name), QString::number(numbers[i]));
    }
    row(QStringLiteral("time"),
        QStringLiteral("%1, %2").arg(tools::stampText(fields.Stamp),
                                     tools::ageText(fields.Stamp, coffee::UnixStamp(platform::Now()))));
    row(QStringLiteral("fixed"),
        fields.FixedBytes ? QStringLiteral("as they must be") : QStringLiteral("WRONG: bytes 0, 8 or 13"));
    row(QStringLiteral("CRC"),
        fields.Crc ? QStringLiteral("holds") : QStringLiteral("WRONG: another key, or a damaged text"));
    return fields.good() ? kDone : kFailed;
}

void checkUse(const CLI::App& command, const TQrOptions& options)
{
    const bool checking = command.get_option("--check")->count() > 0;
    for (std::size_t i = 0; i < kNumbers.size(); ++i) {
        if (checking && !options.numbers[i].empty()) {
            throw CLI::ExcludesError("--check", kNumbers[i].Name);
        }
        if (!checking && options.numbers[i].empty()) {
            throw CLI::RequiredError("P1 P2 P3 V1 V2, or --check,");
        }
    }
}

} // namespace

void addQrCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TQrOptions>();
    CLI::App* command = app.add_subcommand("qr", "Make or check the QR code that a coffee machine reads");
    for (std::size_t i = 0; i < kNumbers.size(); ++i) {
        command->add_option(kNumbers[i].Name, options->numbers[i], kNumbers[i].Meaning)->type_name("NUMBER");
    }
    command
        ->add_option("--key-file", options->keyFile, "File with the key in 32 hexadecimal digits; - reads it")
        ->required()
        ->type_name("FILE");
    CLI::Option* terminal = command->add_flag("--terminal", options->terminal, "Draw the code here");
    CLI::Option* png = command->add_option("--png", options->png, "Write it as a picture")->type_name("FILE");
    CLI::Option* svg =
        command->add_option("--svg", options->svg, "Write it as a drawing for paper")->type_name("FILE");
    command->add_option("--check", options->check, "Decipher a text and show what is in it")
        ->type_name("TEXT")
        ->excludes(terminal)
        ->excludes(png)
        ->excludes(svg);
    png->excludes(terminal)->excludes(svg);
    svg->excludes(terminal);
    command->footer(
        "\nThe time in the code is this machine's local time. The key never stands on the command line,\n"
        "where others see it: keep it in a file that only you can read, or pipe it in (--key-file -).");
    command->callback([command, &chosen, options] {
        checkUse(*command, *options);
        const bool checking = command->get_option("--check")->count() > 0;
        chosen = [options, checking] { return checking ? check(*options) : make(*options); };
    });
}

} // namespace tnv5::cli
