// What stands in the responses of the third library, and its error codes.

#include "model/bank_pos_model.h"

namespace tnv5::bank::model {

QString modelField(const QString& text, int number, QChar separator)
{
    QString found;
    qsizetype i = 1;
    int f = 1;
    const auto isSeparator = [&] { return i <= text.size() && text.at(i - 1) == separator; };
    while (i <= text.size()) {
        if (isSeparator()) {
            f += 1;
            i += 1;
            if (either<"field: a separator behind a separator", "field: one separator">(isSeparator())) {
                f += 1;
                i += 1;
            }
        }
        if (f == number && i <= text.size()) {
            if (!either<"field: a third separator", "field: a character">(isSeparator())) {
                found += text.at(i - 1);
            }
        }
        i += 1;
    }
    return either<"field: empty", "field: found">(found.isEmpty()) ? QString("-1") : found;
}

QString modelErrorText(const QString& code)
{
    static const char* const kTexts[] = {" no error",
                                         " some error",
                                         " no valid command or subcommand code",
                                         " invalid paremeter",
                                         " address is outside limits",
                                         " value is outside limits",
                                         " length is outside limiuts",
                                         " the action is not permit in current state",
                                         " there is no data to be returned",
                                         " timeout is occur",
                                         " invalid key number",
                                         " invalid key attributes(ussage)",
                                         " calling of non-existing device",
                                         " (no used in this FW version)",
                                         " Pin entering limit exceed",
                                         " some error in flash commands",
                                         " some hardware error",
                                         " (no used in this FW version)",
                                         " the button \"CANCEL\" is pressed",
                                         " invalid signature",
                                         " invalid data in header",
                                         " incorrent password",
                                         " invalid key format",
                                         " some error in smart card reader",
                                         " error code is returned from HAL functions",
                                         " invalid key (may be no pressent)",
                                         " the PIN length is <4 or >12",
                                         " Issuer or ICC key invalid remainder length",
                                         " (no used in this FW version)",
                                         " (no used in this FW version)",
                                         " (no used in this FW version)",
                                         " The action is not permited",
                                         " TMK is not loaded. The action cannot be executed",
                                         " Wrong kek format",
                                         " Dublicated key",
                                         " general keyboard error",
                                         " the keyboard is no calibrated",
                                         " keyboard bug detected",
                                         " the device is busy, tray again",
                                         " the devicete in security tampered",
                                         " error in encrypted head",
                                         " the button \"OK\" is pressed",
                                         " wrong PAN",
                                         " no enought memory",
                                         " some EMV error",
                                         " cryptographic error",
                                         " something is received",
                                         " wrong version. update to old firmware for example",
                                         " printer is out of paper",
                                         " printer is overheating",
                                         " the device is not connected",
                                         " use the chip reader",
                                         " end the day first"};
    if (code == "56") {
        return " error open socket";
    }
    for (int i = 0; i <= 52; ++i) {
        if (code == QString::number(i)) {
            return kTexts[i];
        }
    }
    return {};
}

} // namespace tnv5::bank::model
