#include "tnv5/bank/bank_pos_texts.h"

#include <QHash>

namespace tnv5::bank::texts {

// Every text begins with a blank, and some are misspelt; intended.
QString errorText(const QString& code)
{
    static const QHash<QString, QString> errors = {
        {QStringLiteral("0"), QStringLiteral(" no error")},
        {QStringLiteral("1"), QStringLiteral(" some error")},
        {QStringLiteral("2"), QStringLiteral(" no valid command or subcommand code")},
        {QStringLiteral("3"), QStringLiteral(" invalid paremeter")},
        {QStringLiteral("4"), QStringLiteral(" address is outside limits")},
        {QStringLiteral("5"), QStringLiteral(" value is outside limits")},
        {QStringLiteral("6"), QStringLiteral(" length is outside limiuts")},
        {QStringLiteral("7"), QStringLiteral(" the action is not permit in current state")},
        {QStringLiteral("8"), QStringLiteral(" there is no data to be returned")},
        {QStringLiteral("9"), QStringLiteral(" timeout is occur")},
        {QStringLiteral("10"), QStringLiteral(" invalid key number")},
        {QStringLiteral("11"), QStringLiteral(" invalid key attributes(ussage)")},
        {QStringLiteral("12"), QStringLiteral(" calling of non-existing device")},
        {QStringLiteral("13"), QStringLiteral(" (no used in this FW version)")},
        {QStringLiteral("14"), QStringLiteral(" Pin entering limit exceed")},
        {QStringLiteral("15"), QStringLiteral(" some error in flash commands")},
        {QStringLiteral("16"), QStringLiteral(" some hardware error")},
        {QStringLiteral("17"), QStringLiteral(" (no used in this FW version)")},
        {QStringLiteral("18"), QStringLiteral(" the button \"CANCEL\" is pressed")},
        {QStringLiteral("19"), QStringLiteral(" invalid signature")},
        {QStringLiteral("20"), QStringLiteral(" invalid data in header")},
        {QStringLiteral("21"), QStringLiteral(" incorrent password")},
        {QStringLiteral("22"), QStringLiteral(" invalid key format")},
        {QStringLiteral("23"), QStringLiteral(" some error in smart card reader")},
        {QStringLiteral("24"), QStringLiteral(" error code is returned from HAL functions")},
        {QStringLiteral("25"), QStringLiteral(" invalid key (may be no pressent)")},
        {QStringLiteral("26"), QStringLiteral(" the PIN length is <4 or >12")},
        {QStringLiteral("27"), QStringLiteral(" Issuer or ICC key invalid remainder length")},
        {QStringLiteral("28"), QStringLiteral(" (no used in this FW version)")},
        {QStringLiteral("29"), QStringLiteral(" (no used in this FW version)")},
        {QStringLiteral("30"), QStringLiteral(" (no used in this FW version)")},
        {QStringLiteral("31"), QStringLiteral(" The action is not permited")},
        {QStringLiteral("32"), QStringLiteral(" TMK is not loaded. The action cannot be executed")},
        {QStringLiteral("33"), QStringLiteral(" Wrong kek format")},
        {QStringLiteral("34"), QStringLiteral(" Dublicated key")},
        {QStringLiteral("35"), QStringLiteral(" general keyboard error")},
        {QStringLiteral("36"), QStringLiteral(" the keyboard is no calibrated")},
        {QStringLiteral("37"), QStringLiteral(" keyboard bug detected")},
        {QStringLiteral("38"), QStringLiteral(" the device is busy, tray again")},
        {QStringLiteral("39"), QStringLiteral(" the devicete in security tampered")},
        {QStringLiteral("40"), QStringLiteral(" error in encrypted head")},
        {QStringLiteral("41"), QStringLiteral(" the button \"OK\" is pressed")},
        {QStringLiteral("42"), QStringLiteral(" wrong PAN")},
        {QStringLiteral("43"), QStringLiteral(" no enought memory")},
        {QStringLiteral("44"), QStringLiteral(" some EMV error")},
        {QStringLiteral("45"), QStringLiteral(" cryptographic error")},
        {QStringLiteral("46"), QStringLiteral(" something is received")},
        {QStringLiteral("47"), QStringLiteral(" wrong version. update to old firmware for example")},
        {QStringLiteral("48"), QStringLiteral(" printer is out of paper")},
        {QStringLiteral("49"), QStringLiteral(" printer is overheating")},
        {QStringLiteral("50"), QStringLiteral(" the device is not connected")},
        {QStringLiteral("51"), QStringLiteral(" use the chip reader")},
        {QStringLiteral("52"), QStringLiteral(" end the day first")},
        {QStringLiteral("56"), QStringLiteral(" error open socket")},
    };
    return errors.value(code);
}

} // namespace tnv5::bank::texts
