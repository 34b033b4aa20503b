// Tiles where a program uses them: compiled by uic, read by form loaders, made in code.

#include "expected.h"
#include "tnv5/designer/tiles.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"
#include "ui_club.h"

#include <QBuffer>
#include <QFile>
#include <QFormBuilder>
#include <QMetaProperty>
#include <QPainter>
#include <QUiLoader>
#include <gtest/gtest.h>

namespace tnv5::designer {

namespace {

std::unique_ptr<QWidget> load(QUiLoader& loader)
{
    QFile file(QStringLiteral(TNV5_FORM));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    std::unique_ptr<QWidget> form(loader.load(&file));
    EXPECT_NE(form, nullptr) << loader.errorString().toStdString();
    return form;
}

/// The plugin's own components are other classes than this program's; only what is inline works across.
const platform::TComponent* componentOf(const QWidget* tile)
{
    return static_cast<const platform::TComponent*>(tile->property("component").value<QObject*>());
}

/// All seven are there, live, with the values of the form, and hidden.
void expectLive(QWidget& form)
{
    form.show();
    for (const TExpectedTile& expected : expectedTiles()) {
        const auto* const tile = form.findChild<QWidget*>(QLatin1String(expected.objectName));
        ASSERT_NE(tile, nullptr) << expected.objectName;
        EXPECT_EQ(QLatin1String(tile->metaObject()->className()), expected.tileClass());
        EXPECT_FALSE(tile->isVisible());
        const auto* const component = componentOf(tile);
        ASSERT_NE(component, nullptr);
        EXPECT_EQ(QLatin1String(component->metaObject()->className()), expected.componentClass());
        EXPECT_FALSE(component->Designing()) << expected.component;
        for (const TExpectedProperty& property : expected.properties) {
            EXPECT_EQ(valueOf(*component, property), property.value)
                << expected.component << " " << property.name;
            EXPECT_EQ(valueOf(*tile, property), property.value) << expected.component << " " << property.name;
        }
    }
}

TEST(FormLoader, ReadsTheFormWithThePlugin)
{
    QUiLoader loader;
    loader.clearPluginPaths();
    loader.addPluginPath(QStringLiteral(TNV5_PLUGINS "/designer"));
    for (const TExpectedTile& expected : expectedTiles()) {
        EXPECT_TRUE(loader.availableWidgets().contains(expected.tileClass())) << expected.component;
    }
    const auto form = load(loader);
    ASSERT_NE(form, nullptr);
    expectLive(*form);
}

/// As a host writes it.
class TLoader : public QUiLoader
{
public:
    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override
    {
        QWidget* const tile = createTile(className, parent);
        if (tile == nullptr) {
            return QUiLoader::createWidget(className, parent, name);
        }
        tile->setObjectName(name);
        return tile;
    }
};

TEST(FormLoader, NeedsNoPluginWhereTheHostMakesTheTiles)
{
    const testkit::TManualClock clock;
    TLoader loader;
    loader.clearPluginPaths();
    const auto form = load(loader);
    ASSERT_NE(form, nullptr);
    expectLive(*form);
    auto* const tile = form->findChild<TTurnStylerDeviceTile*>();
    ASSERT_NE(tile, nullptr);
    EXPECT_EQ(tile->component()->RelayOpen(), 21);
}

TEST(FormLoader, AFormBuilderSavesAndReadsWithThePlugin)
{
    QFormBuilder builder;
    builder.clearPluginPaths();
    builder.addPluginPath(QStringLiteral(TNV5_PLUGINS "/designer"));
    QFile file(QStringLiteral(TNV5_FORM));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::unique_ptr<QWidget> first(builder.load(&file));
    ASSERT_NE(first, nullptr);
    QBuffer saved;
    ASSERT_TRUE(saved.open(QIODevice::ReadWrite));
    // It writes no enumeration, Qt's own neither, and says so at length. Qt Designer does.
    const auto handler = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    builder.save(&saved, first.get());
    qInstallMessageHandler(handler);
    saved.seek(0);
    const std::unique_ptr<QWidget> second(builder.load(&saved));
    ASSERT_NE(second, nullptr);
    for (const auto& [name, enumeration] : {std::pair{"switchDevice", "RemoutDevice"},
                                            {"turnStylerDevice", "RemoutDevice"},
                                            {"deviceConnector", "ConnectorType"},
                                            {"turnStylerDeviceD24", "RemoutDevice"}}) {
        auto* const tile = second->findChild<QWidget*>(QLatin1String(name));
        ASSERT_NE(tile, nullptr);
        EXPECT_EQ(tile->property(enumeration).toInt(), 0);
        tile->setProperty(enumeration,
                          first->findChild<QWidget*>(QLatin1String(name))->property(enumeration));
    }
    expectLive(*second);
}

TEST(CompiledForm, HasTheTilesAndTheirValues)
{
    const testkit::TManualClock clock;
    QWidget form;
    Ui::ClubForm ui;
    ui.setupUi(&form);
    expectLive(form);
    const turnstile::TTurnStylerDevice* const gate = ui.turnStylerDevice->component();
    EXPECT_EQ(gate->DeviceList(), (QStringList{"01A", "02B"}));
    EXPECT_EQ(ui.turnStylerDevice->RemoutDevice(), controller::podServer);
    EXPECT_EQ(ui.deviceConnector->component()->ConnectorType(), connector::podComPort);
}

TEST(CompiledForm, OpensAGate)
{
    const testkit::TManualClock clock;
    testkit::TMemoryPort port;
    QWidget form;
    Ui::ClubForm ui;
    ui.setupUi(&form);
    turnstile::TTurnStylerDevice& gate = *ui.turnStylerDevice->component();
    gate.SetRemoutDevice(controller::podNone);
    gate.SetComport(&port);
    gate.SetOnCheckSQL([](auto*, auto&, auto& card, auto&, auto&, auto&, QVariant& result) {
        result = card.toString() == "12345678" ? 1 : 0;
    });
    ui.turnStylerDevice->setRelayOpen(1);
    ui.turnStylerDevice->setTimeDelayOpen(2); // seconds; one more is sent
    port.Open();
    port.feed("$01AR12345678\r");
    EXPECT_EQ(port.takeWritten(), "$01A10366\r");
}

TEST(Tiles, AreTheSevenInTheirOrder)
{
    const auto& classes = tileClasses();
    ASSERT_EQ(classes.size(), 7U);
    for (std::size_t i = 0; i < classes.size(); ++i) {
        const TExpectedTile& expected = expectedTiles()[i];
        EXPECT_EQ(QLatin1String(classes[i].component->className()), expected.componentClass());
        EXPECT_EQ(QLatin1String(classes[i].tile->className()), expected.tileClass());
        QWidget parent;
        const TTile* const tile = createTile(expected.tileClass(), &parent);
        ASSERT_NE(tile, nullptr);
        EXPECT_EQ(tile->parent(), &parent);
        EXPECT_EQ(tile->metaObject(), classes[i].tile);
        EXPECT_EQ(tile->title(), expected.title());
        EXPECT_EQ(tile->toolTip(), expected.title());
        QStringList names;
        for (int p = tile->metaObject()->propertyOffset(); p < tile->metaObject()->propertyCount(); ++p) {
            names.append(QString::fromLatin1(tile->metaObject()->property(p).name()));
            EXPECT_EQ(QWidget::staticMetaObject.indexOfProperty(tile->metaObject()->property(p).name()), -1);
        }
        EXPECT_EQ(names, expected.names());
    }
}

TEST(Tiles, OfNoOtherName)
{
    for (const char* name : {"", "TScalesDevice", "TScalesDeviceTile", "tnv5::designer::TTile", "QWidget",
                             "tnv5::designer::TBankPosTile", "tnv5::designer::tscalesdevicetile"}) {
        EXPECT_EQ(createTile(QLatin1String(name)), nullptr) << name;
    }
}

TEST(Tiles, AreSeenInTheDesignerAndHiddenOnAFormThatRuns)
{
    QWidget form;
    const auto* live = new TScalesDeviceTile(&form);
    TScalesDeviceTile* drawn = nullptr;
    {
        const platform::TDesignScope editing;
        drawn = new TScalesDeviceTile(&form);
    }
    form.show();
    EXPECT_FALSE(live->isVisible());
    EXPECT_FALSE(live->component()->Designing());
    EXPECT_TRUE(drawn->isVisible());
    EXPECT_TRUE(drawn->component()->Designing());
}

TEST(Tiles, HaveAFixedSize)
{
    TBankPOSTile tile;
    EXPECT_EQ(tile.size(), QSize(168, 32));
    EXPECT_EQ(tile.sizeHint(), tile.size());
    tile.resize(500, 500);
    EXPECT_EQ(tile.size(), QSize(168, 32));
}

TEST(Tiles, GoOnWithoutTheComponent)
{
    TScalesDeviceTile tile;
    tile.setIDLang(2);
    EXPECT_EQ(tile.IDLang(), 2);
    delete tile.component();
    EXPECT_EQ(tile.component(), nullptr);
    EXPECT_EQ(tile.IDLang(), 0);
    tile.setIDLang(1);
    EXPECT_EQ(tile.IDLang(), 0);
    EXPECT_EQ(tile.title(), "TScalesDevice");
    tile.grab();
}

TEST(Tiles, TakeTheComponentWithThem)
{
    auto tile = std::make_unique<TScalesDeviceTile>();
    const QPointer<scales::TScalesDevice> component = tile->component();
    EXPECT_EQ(component->parent(), tile.get());
    QString last;
    const QObject* const widget = tile.get();
    QObject::connect(component, &QObject::destroyed, component,
                     [&last, widget] { last = QString::fromLatin1(widget->metaObject()->className()); });
    tile.reset();
    EXPECT_EQ(component, nullptr);
    EXPECT_EQ(last, "tnv5::designer::TTile"); // no mere QObject yet
}

TEST(Tiles, SurviveWhatHandlersDo)
{
    const testkit::TManualClock clock;
    QPointer<TScalesDeviceTile> tile = new TScalesDeviceTile;
    tile->component()->SetOnWeight([](auto*, int) { throw std::runtime_error("no"); });
    EXPECT_THROW(tile->setLastWeight(5), std::runtime_error);
    tile->component()->SetOnWeight([&tile](auto*, int) { delete tile; });
    tile->setLastWeight(6);
    EXPECT_EQ(tile, nullptr);
}

TEST(Icons, AreOnePictureEachInTwoSizes)
{
    std::vector<QImage> pictures;
    for (const TTileClass& tile : tileClasses()) {
        const QIcon icon = tileIcon(*tile.component);
        EXPECT_EQ(icon.availableSizes(), (QList<QSize>{{24, 24}, {48, 48}})) << tile.component->className();
        const QImage picture = icon.pixmap(QSize(24, 24)).toImage();
        EXPECT_EQ(icon.pixmap(QSize(24, 24), 2.0).size(), QSize(48, 48));
        EXPECT_EQ(std::count(pictures.begin(), pictures.end(), picture), 0) << tile.component->className();
        pictures.push_back(picture);
    }
}

/// What is drawn: nothing outside of `part`.
QImage drawn(QWidget& tile, const QRect& part)
{
    return tile.grab(part).toImage().convertToFormat(QImage::Format_RGB32);
}

TEST(Icons, AndTheNameAreDrawnOnTheTile)
{
    const platform::TDesignScope editing;
    constexpr QRect kIcon(4, 4, 24, 24);
    std::vector<QImage> tiles;
    for (const TTileClass& tileClass : tileClasses()) {
        const std::unique_ptr<TTile> tile(tileClass.create(nullptr));
        QImage expected(24, 24, QImage::Format_RGB32);
        expected.fill(tile->palette().color(QPalette::Window));
        QPainter painter(&expected);
        tileIcon(*tileClass.component).paint(&painter, 0, 0, 24, 24);
        painter.end();
        EXPECT_EQ(drawn(*tile, kIcon), expected) << tileClass.component->className();
        const QImage name = drawn(*tile, QRect(32, 1, 130, 30));
        EXPECT_EQ(std::count(tiles.begin(), tiles.end(), name), 0) << tileClass.component->className();
        tiles.push_back(name);
    }
}

} // namespace

} // namespace tnv5::designer
