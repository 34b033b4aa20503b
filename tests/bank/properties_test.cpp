#include "bank_bench.h"

#include "support/text_printers.h"

#include <QMetaProperty>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

TEST(Properties, ArePublishedInTheirOrder)
{
    const QMetaObject& meta = TBankPos::staticMetaObject;
    QStringList names;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        names << meta.property(i).name();
        EXPECT_TRUE(meta.property(i).isReadable()) << meta.property(i).name();
        EXPECT_TRUE(meta.property(i).isWritable()) << meta.property(i).name();
    }
    EXPECT_EQ(names.join(u' '), "IDLang PosType ComPort TimeOut OnLog OnError OnRequestOperation "
                                "OnRequestAmount CodeError CodeOk");
}

TEST(Properties, HaveTheirTypes)
{
    const QMetaObject& meta = TBankPos::staticMetaObject;
    const auto typeOf = [&](const char* name) {
        return meta.property(meta.indexOfProperty(name)).metaType();
    };
    for (const char* name : {"IDLang", "PosType", "TimeOut"}) {
        EXPECT_EQ(typeOf(name), QMetaType::fromType<int>()) << name;
    }
    for (const char* name : {"CodeError", "CodeOk"}) {
        EXPECT_EQ(typeOf(name), QMetaType::fromType<QString>()) << name;
    }
    EXPECT_EQ(typeOf("ComPort"), QMetaType::fromType<platform::TComPort*>());
    EXPECT_EQ(typeOf("OnLog"), QMetaType::fromType<platform::TLogEvent>());
    EXPECT_EQ(typeOf("OnError"), QMetaType::fromType<platform::TLogEvent>());
    EXPECT_EQ(typeOf("OnRequestOperation"), QMetaType::fromType<bank::TRequestOperation>());
    EXPECT_EQ(typeOf("OnRequestAmount"), QMetaType::fromType<bank::TRequestAmount>());
}

TEST(Properties, BeginAsTheyMust)
{
    TBankPos pos;
    EXPECT_EQ(pos.IDLang(), 0);
    EXPECT_EQ(pos.PosType(), 0);
    EXPECT_EQ(pos.ComPort(), nullptr);
    EXPECT_EQ(pos.TimeOut(), 0);
    EXPECT_FALSE(pos.OnLog());
    EXPECT_FALSE(pos.OnError());
    EXPECT_FALSE(pos.OnRequestOperation());
    EXPECT_FALSE(pos.OnRequestAmount());
    EXPECT_EQ(pos.CodeError(), "");
    EXPECT_EQ(pos.CodeOk(), "");
    EXPECT_FALSE(pos.IsConnected());
}

TEST(Properties, WorkThroughReflection)
{
    TBankBench bench;
    TBankPos& pos = *bench.pos;
    EXPECT_TRUE(pos.setProperty("IDLang", 1));
    EXPECT_TRUE(pos.setProperty("PosType", 3));
    EXPECT_TRUE(pos.setProperty("TimeOut", 5));
    EXPECT_TRUE(pos.setProperty("CodeError", "a;"));
    EXPECT_TRUE(pos.setProperty("CodeOk", "b;"));
    EXPECT_EQ(pos.IDLang(), 1);
    EXPECT_EQ(pos.PosType(), 3);
    EXPECT_EQ(pos.TimeOut(), 5);
    EXPECT_EQ(pos.CodeError(), "a;");
    EXPECT_EQ(pos.CodeOk(), "b;");
    int asked = 0;
    EXPECT_TRUE(pos.setProperty("OnRequestAmount", QVariant::fromValue(bank::TRequestAmount(
                                                       [&](TComponent*, int& Amount, int&, bool& Apply) {
                                                           ++asked;
                                                           Amount = 7;
                                                           Apply = true;
                                                       }))));
    bench.feed(kAskAmount);
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(bench.trace.take().contains(wrote(framed("05=000000000007"))));
    EXPECT_TRUE(pos.setProperty("ComPort", QVariant::fromValue<platform::TComPort*>(nullptr)));
    EXPECT_FALSE(pos.IsConnected());
}

TEST(Properties, AnyNumberIsStored)
{
    TBankPos pos;
    for (const int value : {4, -1, 2'000'000'000, 0}) {
        pos.SetPosType(value);
        EXPECT_EQ(pos.PosType(), value);
        pos.SetTimeOut(value);
        EXPECT_EQ(pos.TimeOut(), value);
        pos.SetIDLang(value);
        EXPECT_EQ(pos.IDLang(), value);
    }
}

TEST(Properties, OwnerFreesTheComponent)
{
    QPointer<TBankPos> pos;
    {
        QObject owner;
        pos = new TBankPos(&owner);
        EXPECT_EQ(pos->parent(), &owner);
    }
    EXPECT_FALSE(pos);
}

} // namespace
