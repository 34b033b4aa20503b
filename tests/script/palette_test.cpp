#include "support/text_printers.h"
#include "tnv5/platform/component.h"
#include "tnv5/registration/palette.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using namespace tnv5::registration;

class TListedPalette : public TPalette
{
public:
    void RegisterComponents(const QString& page, const script::TScriptClasses& classes) override
    {
        QStringList names;
        for (const script::TScriptClass& entry : classes) {
            names += entry.Name();
        }
        calls += page + ": " + names.join(u' ');
    }

    QStringList calls;
};

const QString kSeven = QStringLiteral("TSwitchDevice TTurnStyler TTurnStylerDevice TDeviceConnector "
                                      "TTurnStylerDeviceD24 TScalesDevice TBankPOS");

class Palette : public ::testing::Test
{
protected:
    ~Palette() override { setPaletteHost({}); }
    TListedPalette palette;
};

TEST_F(Palette, SevenComponentsInOneCall)
{
    setPaletteHost({&palette, [] { return QStringLiteral("Club"); }});
    Register();
    EXPECT_EQ(palette.calls, QStringList{"Club: " + kSeven});
}

TEST_F(Palette, ThePageIsReadAtEachCall)
{
    int asked = 0;
    setPaletteHost({&palette, [&] { return QStringLiteral("Page %1").arg(++asked); }});
    Register();
    Register();
    EXPECT_EQ(palette.calls, QStringList({"Page 1: " + kSeven, "Page 2: " + kSeven}));
}

TEST_F(Palette, WithoutANameThePageIsDevices)
{
    setPaletteHost({&palette, {}});
    Register();
    setPaletteHost({&palette, [] { return QString(); }});
    Register();
    EXPECT_EQ(palette.calls, QStringList({"Devices: " + kSeven, "Devices: " + kSeven}));
}

TEST_F(Palette, WithoutAPaletteNothingHappens)
{
    int asked = 0;
    setPaletteHost({nullptr, [&] { return QString::number(++asked); }});
    Register();
    EXPECT_EQ(asked, 0);
}

TEST_F(Palette, TheFormerHostComesBack)
{
    EXPECT_EQ(setPaletteHost({&palette, {}}).palette, nullptr);
    EXPECT_EQ(setPaletteHost({}).palette, &palette);
}

TEST_F(Palette, EachIsMadeForItsOwnerAsInAForm)
{
    QObject form;
    const platform::TDesignScope designing;
    for (const script::TScriptClass& entry : paletteClasses()) {
        QObject* const made = entry.Create(&form);
        EXPECT_EQ(made->metaObject(), entry.Meta);
        EXPECT_EQ(made->parent(), &form);
        EXPECT_TRUE(qobject_cast<platform::TComponent*>(made)->Designing());
    }
}

} // namespace
