// The commands by type of controller, answer and message.

#include "tnv5/d24/d24_command.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::d24;

struct TRow
{
    const char* type;
    bool allow;
    const char* message;
    const char* main;
    const char* extra;
};

const TRow kRows[] = {
    {"G", false, "", "PH10.0.0.5:001x", "SH10.0.0.5:001x"},
    {"G", false, "|a||||", "PH10.0.0.5:001x|a||||", "SH10.0.0.5:001x|a||||"},
    {"G", true, "", "GO10.0.0.5:001x", "SH10.0.0.5:001x"},
    {"G", true, "|a||||", "GO10.0.0.5:001x|a||||", "SH10.0.0.5:001x|a||||"},
    {"I", false, "", "", "SH10.0.0.5:001x"},
    {"I", false, "NO ENTRY", "", "SH10.0.0.5:001xNO ENTRY"},
    {"I", true, "", "", "SH10.0.0.5:001x"},
    {"I", true, "NO ENTRY", "", "SH10.0.0.5:001xNO ENTRY"},
    {"T", false, "", "PH10.0.0.5:001x", ""},
    {"T", false, "NO ENTRY", "PH10.0.0.5:001xNO ENTRY", "SH10.0.0.5:001xNO ENTRY"},
    {"T", true, "", "GO10.0.0.5:001x", ""},
    {"T", true, " ", "GO10.0.0.5:001x ", "SH10.0.0.5:001x "},
    {"D", false, "", "", ""},
    {"D", false, "text", "", ""},
    {"D", true, "", "", ""},
    {"D", true, "text", "", ""},
    {"", true, "text", "", ""},
    {"g", true, "text", "", ""},
    {"i", true, "text", "", ""},
    {"t", true, "text", "", ""},
    {"GG", true, "text", "", ""},
    {"X", false, "text", "", ""},
};

TEST(Command, EveryTypeAndAnswer)
{
    for (const TRow& row : kRows) {
        SCOPED_TRACE(::testing::Message() << row.type << ' ' << row.allow << ' ' << row.message);
        TRFidInfo pass;
        pass.IP = "10.0.0.5";
        pass.Device = "001x"; // the type counts as the record has it, not the controller's letter
        pass.DeviceType = row.type;
        pass.InfoMess = row.message;
        pass.Command = "never read";
        pass.CardNumber = "never read";
        const TCommands commands = commandsFor(pass, row.allow);
        EXPECT_EQ(commands.main, row.main);
        EXPECT_EQ(commands.extra, row.extra);
    }
}

TEST(Command, EmptyPiecesAreNotRefused)
{
    TRFidInfo pass;
    pass.DeviceType = "G";
    EXPECT_EQ(commandsFor(pass, true).main, "GO:");
    EXPECT_EQ(commandsFor(pass, false).extra, "SH:");
}

TEST(Command, Alarm)
{
    EXPECT_EQ(alarmCommand("10.0.0.5", "001T"), "AL10.0.0.5:001T");
    EXPECT_EQ(alarmCommand("", ""), "AL:");
}

} // namespace
