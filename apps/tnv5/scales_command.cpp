#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "tnv5/scales/families.h"
#include "tnv5/tools/recording.h"

#include <CLI/CLI.hpp>

namespace tnv5::cli {

namespace {

/// Such as "4800 8E1".
QString settingsText(const scales::TFamily& family)
{
    if (!family.settings) {
        return QStringLiteral("your own");
    }
    constexpr const char* kParities = "NOEMS"; // in the order of TParity
    const QLatin1Char parity(kParities[static_cast<std::size_t>(family.settings->parity)]);
    return QString::number(family.settings->baudRate) + QStringLiteral(" 8") + parity + u'1';
}

QString requestText(const scales::TFamily& family)
{
    return family.continuous()
               ? QStringLiteral("talks by itself")
               : QStringLiteral("asked with ") + QString::fromLatin1(tools::escaped(family.request));
}

int listFamilies()
{
    constexpr int kSettingsWidth = 9;
    constexpr int kRequestWidth = 44;
    const std::vector<scales::TFamily>& table = scales::families();
    for (int number = 1; scales::familyOf(number) != nullptr; ++number) {
        const scales::TFamily& family = table[static_cast<std::size_t>(number)];
        print(QStringLiteral("%1  %2  %3  %4")
                  .arg(number)
                  .arg(settingsText(family), -kSettingsWidth)
                  .arg(requestText(family), -kRequestWidth)
                  .arg(family.name));
    }
    return kDone;
}

} // namespace

void addScalesCommand(CLI::App& app, TCommand& chosen)
{
    CLI::App* command = app.add_subcommand("scales", "List the families of weighing scales");
    command->footer(
        "\nEach line: number for \"tnv5 weigh --type\"; speed, data bits, parity and stop bits of\n"
        "the line; what makes the scale say its weight; name.");
    command->callback([&chosen] { chosen = listFamilies; });
}

} // namespace tnv5::cli
