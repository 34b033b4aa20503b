// A port keeper and others who want to hear of the port's errors.

#include "support/text_printers.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/host/port_keeper.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <QStringList>
#include <gtest/gtest.h>
#include <memory>

namespace tnv5::host {
namespace {

class TPortKeeperBesideTest : public ::testing::Test
{
protected:
    void keep()
    {
        keeper = std::make_unique<TPortKeeper>(port);
        keeper->OnOpened = [this] { told.append(QStringLiteral("opened")); };
        keeper->OnLost = [this](const QString& why) { told.append(QStringLiteral("lost: ") + why); };
        keeper->start();
    }
    void connect()
    {
        connector = std::make_unique<connector::TDeviceConnector>();
        connector->SetOnError([this](platform::TComponent*, const QString& text) {
            told.append(QStringLiteral("bus ") + text);
        });
        connector->SetComport(&port);
        connector->SetConnectorType(connector::podComPort);
    }
    /// The adapter is pulled out, and noticed after a moment.
    void unplug()
    {
        told.clear();
        port.Close();
        port.raiseError(platform::TComExceptionKind::Resource, QStringLiteral("gone"), 5, QString());
        clock.advance(1);
    }

    testkit::TManualClock clock;
    testkit::TMemoryPort port;
    std::unique_ptr<TPortKeeper> keeper;
    std::unique_ptr<connector::TDeviceConnector> connector;
    QStringList told;
};

const QStringList kBoth({QStringLiteral("bus [08] gone"), QStringLiteral("lost: the device is gone")});

TEST_F(TPortKeeperBesideTest, HearsWhatAConnectorThatComesLaterHears)
{
    keep();
    connect();
    unplug();
    EXPECT_EQ(told, kBoth);
    clock.advance(TPortKeeper::kFirstPauseMs);
    EXPECT_TRUE(port.Connected());
}

TEST_F(TPortKeeperBesideTest, LeavesTheEventToAConnectorThatWasThereBefore)
{
    connect();
    keep();
    unplug();
    EXPECT_EQ(told, kBoth);
}

TEST_F(TPortKeeperBesideTest, HearsWhenTheConnectorIsGone)
{
    keep();
    connect();
    connector.reset();
    unplug();
    EXPECT_EQ(told, QStringList({QStringLiteral("lost: the device is gone")}));
}

TEST_F(TPortKeeperBesideTest, LeavesTheEventWhenItGoes)
{
    connect();
    keep();
    keeper.reset();
    unplug();
    EXPECT_EQ(told, QStringList({QStringLiteral("bus [08] gone")}));
}

TEST_F(TPortKeeperBesideTest, HearsNothingAfterItsEnd)
{
    keep();
    keeper.reset();
    unplug();
    clock.advance(60'000);
    EXPECT_TRUE(told.isEmpty());
    EXPECT_FALSE(port.Connected());
}

TEST_F(TPortKeeperBesideTest, TouchesNoEvent)
{
    keep();
    EXPECT_FALSE(port.OnException);
    int errors = 0;
    port.OnException = [&errors](auto&&...) { ++errors; };
    unplug();
    EXPECT_EQ(errors, 1);
    keeper.reset();
    EXPECT_TRUE(port.OnException);
}

TEST_F(TPortKeeperBesideTest, OneOfTwoHearsAfterTheOther)
{
    keep();
    TPortKeeper second(port);
    QStringList others;
    second.OnLost = [&others](const QString& why) { others.append(why); };
    second.start();
    keeper.reset();
    unplug();
    EXPECT_EQ(others, QStringList({QStringLiteral("the device is gone")}));
}

} // namespace
} // namespace tnv5::host
