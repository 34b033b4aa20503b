// The module as a plugin, loaded by a host that does not link the components.

#include "recording_engine.h"
#include "support/text_printers.h"
#include "tnv5/module/devices_module.h"

#include <QPluginLoader>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace tnv5;
using module::IDevicesModule;
using tests::TRecordingEngine;

const QString kFile = QStringLiteral(TNV5_MODULE);

class Module : public ::testing::Test
{
protected:
    void SetUp() override
    {
        devices = qobject_cast<IDevicesModule*>(loader.instance());
        ASSERT_NE(devices, nullptr) << loader.errorString().toStdString();
    }
    ~Module() override { loader.unload(); }

    QPluginLoader loader{kFile};
    IDevicesModule* devices = nullptr;
    TRecordingEngine engine;
};

TEST_F(Module, LoadRegistersUnloadRemoves)
{
    devices->Load({&engine, {}, {}});
    EXPECT_EQ(engine.classes.join(u' '),
              "TDeviceConnector TSwitchDevice TTurnStylerDevice TTurnStyler TTurnStylerList TTurnStylerItem "
              "TTurnStylerDeviceD24 TScalesDevice TBankPOS");
    EXPECT_EQ(engine.handles.size(), 37U);
    devices->Unload();
    EXPECT_TRUE(engine.isEmpty());
}

TEST_F(Module, TwiceRegistersOnce)
{
    devices->Load({&engine, {}, {}});
    engine.take();
    devices->Load({&engine, {}, {}});
    EXPECT_EQ(engine.take(), QStringList());
    devices->Unload();
    EXPECT_EQ(engine.take(), QStringList());
    devices->Unload();
    EXPECT_TRUE(engine.isEmpty());
    devices->Unload(); // one too many
}

TEST_F(Module, APluginThatGoesRemovesWhatItRegistered)
{
    devices->Load({&engine, {}, {}});
    devices->Load({&engine, {}, {}});
    loader.unload();
    EXPECT_TRUE(engine.isEmpty());
}

TEST_F(Module, ItCanBeLoadedAgainAndAgain)
{
    for (int cycle = 0; cycle < 3; ++cycle) {
        auto* const again = qobject_cast<IDevicesModule*>(loader.instance());
        ASSERT_NE(again, nullptr);
        again->Load({&engine, {}, {}});
        EXPECT_FALSE(engine.isEmpty());
        again->Unload();
        EXPECT_TRUE(engine.isEmpty());
        loader.unload();
    }
}

TEST_F(Module, ItsComponentsWork)
{
    QStringList told;
    devices->Load({&engine, [&](const QString& message, const std::exception_ptr&) { told += message; }, {}});
    QVariantList args{1, 2, 3, 250, 1, "00112233445566778899aabbccddeeff"};
    EXPECT_EQ(engine.call("_qrcodestr", nullptr, args).toString().size(), 34);
    args = {1, 2, 3, 250, 1, "no key"};
    EXPECT_THROW(engine.call("_qrcodestr", nullptr, args), platform::EConvertError);
    devices->Unload();
    EXPECT_EQ(told, QStringList());
}

TEST_F(Module, WhatTheHostGaveGoesWithTheLastUnload)
{
    auto host = std::make_shared<int>();
    const std::weak_ptr<int> kept = host;
    const auto handler = [](std::shared_ptr<int> own) {
        return [own = std::move(own)](const QString&, const std::exception_ptr&) {};
    };
    devices->Load({&engine, handler(std::move(host)), {}});
    devices->Load({&engine, {}, {}});
    devices->Unload();
    EXPECT_FALSE(kept.expired());
    devices->Unload();
    EXPECT_TRUE(kept.expired());
    host = std::make_shared<int>();
    const std::weak_ptr<int> refused = host;
    engine.refused = "const podNet = int 2";
    EXPECT_THROW(devices->Load({&engine, handler(std::move(host)), {}}), platform::Exception);
    EXPECT_TRUE(refused.expired());
}

TEST_F(Module, WhatItNeedsIsSaid)
{
    EXPECT_THROW(devices->Load({}), platform::Exception);
    EXPECT_THROW(devices->Load({&engine, {}, "no-such-page"}), platform::EConvertError);
    EXPECT_TRUE(engine.isEmpty());
    engine.refused = "const MinDayFraction = double 0.0006944444444444445";
    EXPECT_THROW(devices->Load({&engine, {}, {}}), platform::Exception);
    EXPECT_TRUE(engine.isEmpty());
}

TEST_F(Module, APaletteIsOfferedTheComponents)
{
    struct TCounting : registration::TPalette
    {
        void RegisterComponents(const QString& page, const script::TScriptClasses& classes) override
        {
            calls += page + QString::number(classes.size());
            if (raises) {
                throw platform::Exception("full");
            }
        }
        QStringList calls;
        bool raises = false;
    } palette;
    devices->Register({&palette, [] { return QStringLiteral("Club"); }});
    palette.raises = true;
    EXPECT_THROW(devices->Register({&palette, {}}), platform::Exception);
    EXPECT_EQ(palette.calls, QStringList({"Club7", "Devices7"}));
}

} // namespace
