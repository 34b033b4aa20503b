#include "scales_bench.h"

#include "support/text_printers.h"

#include <QMetaProperty>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

TEST(Properties, ArePublishedInTheirOrder)
{
    const QMetaObject& meta = TScalesDevice::staticMetaObject;
    QStringList names;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        names << meta.property(i).name();
        EXPECT_TRUE(meta.property(i).isReadable()) << meta.property(i).name();
        EXPECT_TRUE(meta.property(i).isWritable()) << meta.property(i).name();
    }
    EXPECT_EQ(names.join(u' '), "LastWeight IDLang ScalesType ComPort SendInterval OnLog OnError OnWeight");
}

TEST(Properties, HaveTheirTypes)
{
    const QMetaObject& meta = TScalesDevice::staticMetaObject;
    const auto typeOf = [&](const char* name) {
        return meta.property(meta.indexOfProperty(name)).metaType();
    };
    for (const char* name : {"LastWeight", "IDLang", "ScalesType", "SendInterval"}) {
        EXPECT_EQ(typeOf(name), QMetaType::fromType<int>()) << name;
    }
    EXPECT_EQ(typeOf("ComPort"), QMetaType::fromType<platform::TComPort*>());
    EXPECT_EQ(typeOf("OnLog"), QMetaType::fromType<platform::TLogEvent>());
    EXPECT_EQ(typeOf("OnError"), QMetaType::fromType<platform::TLogEvent>());
    EXPECT_EQ(typeOf("OnWeight"), QMetaType::fromType<scales::TWeightEvent>());
}

TEST(Properties, BeginAsTheyMust)
{
    TScalesDevice device;
    EXPECT_EQ(device.LastWeight(), 0);
    EXPECT_EQ(device.IDLang(), 0);
    EXPECT_EQ(device.ScalesType(), 0);
    EXPECT_EQ(device.ComPort(), nullptr);
    EXPECT_EQ(device.SendInterval(), -1);
    EXPECT_FALSE(device.OnLog());
    EXPECT_FALSE(device.OnError());
    EXPECT_FALSE(device.OnWeight());
    EXPECT_FALSE(device.IsConnected());
}

TEST(Properties, WorkThroughReflection)
{
    TScalesBench bench;
    TScalesDevice& device = *bench.scales;
    EXPECT_TRUE(device.setProperty("IDLang", 1));
    EXPECT_TRUE(device.setProperty("ScalesType", 3));
    EXPECT_TRUE(device.setProperty("SendInterval", 500));
    EXPECT_EQ(device.IDLang(), 1);
    EXPECT_EQ(device.ScalesType(), 3);
    bench.clock.advance(500);
    bench.trace.expect(sent("\x00\x00\x03"_b));

    EXPECT_TRUE(device.setProperty("LastWeight", 7));
    bench.trace.expect({weighed(7)});
    EXPECT_EQ(device.property("LastWeight").toInt(), 7);

    EXPECT_TRUE(device.setProperty("ComPort", QVariant::fromValue<platform::TComPort*>(nullptr)));
    EXPECT_FALSE(device.IsConnected());

    int weight = 0;
    EXPECT_TRUE(device.setProperty(
        "OnWeight", QVariant::fromValue(scales::TWeightEvent([&](TComponent*, int w) { weight = w; }))));
    device.SetLastWeight(55);
    EXPECT_EQ(weight, 55);
}

TEST(Properties, OutOfRangeTypesAreStored)
{
    TScalesDevice device;
    for (const int type : {9, -1, 2'000'000'000, 0, 8}) {
        device.SetScalesType(type);
        EXPECT_EQ(device.ScalesType(), type);
    }
}

TEST(Properties, OwnerFreesTheComponent)
{
    QObject owner;
    const QPointer<TScalesDevice> device = new TScalesDevice(&owner);
    EXPECT_EQ(device->parent(), &owner);
    delete device;
    EXPECT_TRUE(owner.children().isEmpty());
}

} // namespace
