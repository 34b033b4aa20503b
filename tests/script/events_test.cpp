// Published events take functions of scripts.

#include "support/text_printers.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/platform/errors.h"
#include "tnv5/registration/palette.h"
#include "tnv5/scales/scales_device.h"
#include "tnv5/script/event_types.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QMetaProperty>
#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using platform::EConvertError;

QStringList eventsOf(const QMetaObject& meta)
{
    QStringList events;
    for (int i = QObject::staticMetaObject.propertyCount(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        const script::TEventType* const type = script::FindEventType(property.metaType());
        if (type == nullptr) {
            EXPECT_FALSE(QByteArray(property.name()).startsWith("On")) << meta.className() << property.name();
            continue;
        }
        QStringList params;
        for (const script::TScriptParam& param : type->Params) {
            params += (param.Var ? "var " : "") + script::ScriptTypeName(param.Type);
        }
        events += QString(property.name()) + ": " + params.join(u' ');
    }
    return events;
}

TEST(Events, EveryPublishedEventOfEveryComponent)
{
    const QStringList log{"OnLog: object string", "OnError: object string"};
    const auto classes = registration::paletteClasses();
    EXPECT_EQ(eventsOf(*classes[0].Meta),
              log + QStringList({"OnCheckStatus: object variant variant variant variant variant variant",
                                 "OnCheckSQL: object variant variant variant variant variant var variant",
                                 "OnNewItem: object variant variant variant variant var variant"}));
    EXPECT_EQ(eventsOf(*classes[1].Meta),
              QStringList({"OnTurnStylerBtnClick: object variant variant variant"}));
    EXPECT_EQ(eventsOf(*classes[2].Meta),
              log + QStringList({"OnCheckStatus: object variant variant variant variant variant",
                                 "OnCheckSQL: object variant variant variant var variant variant var variant",
                                 "OnGetImg: object string var variant"}));
    EXPECT_EQ(eventsOf(*classes[3].Meta),
              QStringList({"OnError: object string", "OnLog: object string", "OnGetData: object string"}));
    EXPECT_EQ(
        eventsOf(*classes[4].Meta),
        log + QStringList({"OnCheckStatus: object variant variant variant variant variant variant variant",
                           "OnCheckSQL: object variant variant variant variant variant var variant variant "
                           "var variant var variant",
                           "OnGetImg: object string var variant"}));
    EXPECT_EQ(eventsOf(*classes[5].Meta), log + QStringList({"OnWeight: object integer"}));
    EXPECT_EQ(eventsOf(*classes[6].Meta),
              QStringList({"OnLog: object string", "OnError: object integer string",
                           "OnStatus: object integer string"}));
}

TEST(Events, OnlyVarParametersAreWrittenBack)
{
    turnstile::TTurnStylerDevice gate;
    QVariantList seen;
    const auto* const type = script::FindEventType(QMetaType::fromType<turnstile::TCheckSQLDevice>());
    gate.setProperty("OnCheckSQL", type->Make([&](QVariantList& args) {
        seen = args;
        for (QVariant& arg : args) {
            arg = QVariant();
        }
        args.last() = "1";
        args[4] = QImage(2, 2, QImage::Format_RGB32);
    }));
    ASSERT_TRUE(gate.OnCheckSQL());
    QImage image;
    QVariant result = -1;
    const QVariant card = "77";
    gate.OnCheckSQL()(&gate, "01A", card, "NEW", image, 0, result);
    EXPECT_EQ(seen.at(0).value<QObject*>(), &gate);
    EXPECT_EQ(seen.mid(1, 3), QVariantList({"01A", "77", "NEW"}));
    EXPECT_EQ(seen.mid(5), QVariantList({0, -1}));
    EXPECT_EQ(card, QVariant("77"));
    EXPECT_EQ(result, QVariant("1"));
    EXPECT_EQ(image.width(), 2);
}

TEST(Events, AnEmptyHandlerDetaches)
{
    scales::TScalesDevice scale;
    const auto* const type = script::FindEventType(QMetaType::fromType<scales::TWeightEvent>());
    int weight = 0;
    scale.setProperty("OnWeight", type->Make([&](QVariantList& args) { weight = args.at(1).toInt(); }));
    scale.SetLastWeight(250);
    EXPECT_EQ(weight, 250);
    scale.setProperty("OnWeight", type->Make({}));
    EXPECT_FALSE(scale.OnWeight());
}

TEST(Events, WhatAHandlerRaisesReachesTheComponent)
{
    d24::TTurnStylerDeviceD24 gates;
    QStringList errors;
    gates.SetOnError([&](auto*, const QString& text) { errors += text; });
    const auto* const type = script::FindEventType(QMetaType::fromType<d24::TCheckStatusDevice>());
    gates.SetOnCheckStatus(type->Make([](QVariantList&) { throw platform::Exception("broken"); })
                               .value<d24::TCheckStatusDevice>());
    gates.p_hw_CheckStatus("1", "001G", "G", "77", "NEW");
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors.first().endsWith("broken"));
}

TEST(Events, AResultThatIsNoPictureRaises)
{
    const auto* const type = script::FindEventType(QMetaType::fromType<turnstile::TGetImg>());
    const auto event =
        type->Make([](QVariantList& args) { args[2] = "/no/such.png"; }).value<turnstile::TGetImg>();
    QImage image;
    EXPECT_THROW(event(nullptr, "01A", image), EConvertError);
}

TEST(Events, OtherTypesAreNoEvents)
{
    EXPECT_EQ(script::FindEventType(QMetaType::fromType<int>()), nullptr);
    EXPECT_EQ(script::FindEventType(QMetaType()), nullptr);
}

} // namespace
