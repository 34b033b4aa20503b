// What hosts and scripts write into the settings of a port, and what the operating system gets of it.

#include "tnv5/platform/serial_port.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>
#include <limits>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace {

using namespace tnv5::platform;

/// Whether an enumeration holds every `int`; others hold no more than their enumerators' bits.
template <class Enum>
concept TakesAnyInteger = requires
{
    Enum{-1};
};

static_assert(TakesAnyInteger<TParity>);
static_assert(TakesAnyInteger<TStopBits>);

class UnknownSetting : public testing::TestWithParam<int>
{
protected:
    UnknownSetting()
    {
        char name[256] = {};
        EXPECT_EQ(openpty(&FMaster, &FSlave, name, nullptr, nullptr), 0);
        port.SetPort(QString::fromLocal8Bit(name));
        port.OnException = [this](auto&&...) { ++errors; };
    }
    ~UnknownSetting() override
    {
        port.Close();
        ::close(FSlave);
        ::close(FMaster);
    }

    bool has(tcflag_t flag) const
    {
        termios settings{};
        EXPECT_EQ(tcgetattr(FMaster, &settings), 0);
        return (settings.c_cflag & flag) != 0;
    }

    TSerialPort port;
    int errors = 0;

private:
    int FMaster = -1;
    int FSlave = -1;
};

INSTANTIATE_TEST_SUITE_P(Numbers, UnknownSetting,
                         ::testing::Values(-1, 5, 7, 255, 256, 257, 258, std::numeric_limits<int>::max(),
                                           std::numeric_limits<int>::min()));

// A pseudo-terminal has no parity, but it keeps which one it was asked for.
TEST_P(UnknownSetting, OfParityIsNone)
{
    ASSERT_TRUE(port.setProperty("Parity", GetParam()));
    EXPECT_EQ(int(port.Parity()), GetParam());
    EXPECT_EQ(port.property("Parity").toInt(), GetParam());
    port.Open();
    EXPECT_TRUE(port.Connected());
    ASSERT_TRUE(port.setProperty("Parity", GetParam() ^ 8)); // while it is open
    ASSERT_TRUE(port.setProperty("Parity", GetParam()));
    EXPECT_FALSE(has(PARODD));
    EXPECT_EQ(errors, 0);
    port.SetParity(TParity::Odd);
    EXPECT_TRUE(has(PARODD));
}

TEST_P(UnknownSetting, OfStopBitsIsOne)
{
    ASSERT_TRUE(port.setProperty("StopBits", GetParam()));
    EXPECT_EQ(int(port.StopBits()), GetParam());
    EXPECT_EQ(port.property("StopBits").toInt(), GetParam());
    port.Open();
    EXPECT_TRUE(port.Connected());
    EXPECT_FALSE(has(CSTOPB));
    ASSERT_TRUE(port.setProperty("StopBits", int(TStopBits::Two)));
    EXPECT_TRUE(has(CSTOPB));
    ASSERT_TRUE(port.setProperty("StopBits", GetParam()));
    EXPECT_FALSE(has(CSTOPB));
    EXPECT_EQ(errors, 0);
}

} // namespace
