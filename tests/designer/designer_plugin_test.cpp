// The plugin as Qt Designer itself finds, shows and uses it.

#include "expected.h"
#include "support/sanitized.h"
#include "tnv5/platform/component.h"

#include <QApplication>
#include <QDesignerComponents>
#include <QDesignerFormEditorInterface>
#include <QDesignerFormWindowInterface>
#include <QDesignerFormWindowManagerInterface>
#include <QDesignerIntegration>
#include <QDesignerPropertyEditorInterface>
#include <QDesignerPropertySheetExtension>
#include <QDesignerWidgetBoxInterface>
#include <QDesignerWidgetDataBaseInterface>
#include <QDesignerWidgetFactoryInterface>
#include <QDir>
#include <QExtensionManager>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTest>
#include <QTreeWidget>
#include <algorithm>
#include <gtest/gtest.h>
#include <sanitizer/lsan_interface.h>

namespace tnv5::designer {

namespace {

/// Qt Designer without its windows. One for all tests: a plugin is initialised once.
class TEditor
{
public:
    TEditor()
    {
        QCoreApplication::addLibraryPath(QStringLiteral(TNV5_PLUGINS));
        QDesignerComponents::initializeResources();
        FCore = QDesignerComponents::createFormEditor(&FOwner);
        FCore->setTopLevel(&FTop);
        FCore->setWidgetBox(QDesignerComponents::createWidgetBox(FCore, &FTop));
        FCore->setPropertyEditor(QDesignerComponents::createPropertyEditor(FCore, &FTop));
        FCore->setIntegration(new QDesignerIntegration(FCore, &FOwner));
        QDesignerComponents::initializePlugins(FCore);
        FCore->widgetBox()->setFileName(QStringLiteral(":/qt-project.org/widgetbox/widgetbox.xml"));
        FCore->widgetBox()->load();
    }

    QDesignerFormEditorInterface* core() const { return FCore; }
    QWidget& top() { return FTop; }

private:
    QObject FOwner;
    QWidget FTop;
    QDesignerFormEditorInterface* FCore = nullptr;
};

class Designer : public testing::Test
{
protected:
    static void SetUpTestSuite() { editor = std::make_unique<TEditor>(); }
    static void TearDownTestSuite() { editor.reset(); }

    static QDesignerFormEditorInterface* core() { return editor->core(); }

    /// The group of the widget box with this name; empty when there is none.
    static QDesignerWidgetBoxInterface::Category page(const QString& name)
    {
        const auto* box = core()->widgetBox();
        for (int i = 0; i < box->categoryCount(); ++i) {
            if (box->category(i).name() == name) {
                return box->category(i);
            }
        }
        return {};
    }

    /// A form with one of each, as the widget box gives them.
    static QString formOfAll()
    {
        QString widgets;
        const auto category = page(QStringLiteral("Devices"));
        for (int i = 0; i < category.widgetCount(); ++i) {
            static const QRegularExpression widget(QStringLiteral("<widget .*(</widget>|/>)"),
                                                   QRegularExpression::DotMatchesEverythingOption);
            const QString xml = category.widget(i).domXml();
            const qsizetype begin = xml.indexOf(QStringLiteral("<widget "));
            const qsizetype end = xml.indexOf(QStringLiteral("<customwidgets>"));
            widgets += xml.mid(begin, end - begin);
        }
        return QStringLiteral("<ui version=\"4.0\"><class>ClubForm</class>"
                              "<widget class=\"QWidget\" name=\"ClubForm\">"
                              "<layout class=\"QVBoxLayout\" name=\"all\">%1</layout></widget></ui>")
            .arg(widgets.replace(QStringLiteral("<widget "), QStringLiteral("<item><widget "))
                     .replace(QStringLiteral("/>"), QStringLiteral("/></item>")));
    }

    static std::unique_ptr<QDesignerFormWindowInterface> form(const QString& contents)
    {
        std::unique_ptr<QDesignerFormWindowInterface> window(
            core()->formWindowManager()->createFormWindow(&editor->top()));
        EXPECT_TRUE(window->setContents(contents));
        return window;
    }

    static QWidget* tileOn(const QDesignerFormWindowInterface& window, const TExpectedTile& expected)
    {
        auto* const tile = window.mainContainer()->findChild<QWidget*>(QLatin1String(expected.objectName));
        EXPECT_NE(tile, nullptr) << expected.objectName;
        return tile;
    }

    static QDesignerPropertySheetExtension* sheet(QObject* object)
    {
        return qt_extension<QDesignerPropertySheetExtension*>(core()->extensionManager(), object);
    }

    /// The tiles' component, seen across the plugin's border.
    static const platform::TComponent* componentOf(QWidget* tile)
    {
        return static_cast<const platform::TComponent*>(tile->property("component").value<QObject*>());
    }

    inline static std::unique_ptr<TEditor> editor;
};

TEST_F(Designer, ShowsTheSevenInTheirOrderOnThePageDevices)
{
    const auto category = page(QStringLiteral("Devices"));
    ASSERT_EQ(category.widgetCount(), 7);
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(category.widget(i).name(), expectedTiles()[std::size_t(i)].title());
    }
}

TEST_F(Designer, KnowsTheTilesAsCustomWidgetsOfThePlugin)
{
    auto* const base = core()->widgetDataBase();
    std::vector<QImage> pictures;
    for (const TExpectedTile& expected : expectedTiles()) {
        const int index = base->indexOfClassName(expected.tileClass());
        ASSERT_NE(index, -1) << expected.component;
        auto* const item = base->item(index);
        EXPECT_TRUE(item->isCustom());
        EXPECT_FALSE(item->isContainer());
        EXPECT_EQ(item->group(), QStringLiteral("Devices"));
        EXPECT_EQ(item->toolTip(), expected.title());
        EXPECT_EQ(item->includeFile(), QStringLiteral("<tnv5/designer/tiles.h>"));
        EXPECT_EQ(QFileInfo(item->pluginPath()).fileName(), QStringLiteral("libtnv5_designer.so"));
        const QImage picture = item->icon().pixmap(24, 24).toImage();
        EXPECT_FALSE(picture.isNull()) << expected.component;
        EXPECT_EQ(std::count(pictures.begin(), pictures.end(), picture), 0) << expected.component;
        pictures.push_back(picture);
    }
    EXPECT_EQ(base->indexOfClassName(QStringLiteral("tnv5::designer::TBankPosTile")), -1);
}

TEST_F(Designer, MakesComponentsInDesignState)
{
    for (const TExpectedTile& expected : expectedTiles()) {
        QWidget parent;
        QWidget* const tile = core()->widgetFactory()->createWidget(expected.tileClass(), &parent);
        ASSERT_NE(tile, nullptr);
        EXPECT_EQ(QLatin1String(tile->metaObject()->className()), expected.tileClass());
        const auto* const component = componentOf(tile);
        ASSERT_NE(component, nullptr);
        EXPECT_EQ(QLatin1String(component->metaObject()->className()), expected.componentClass());
        EXPECT_TRUE(component->Designing()) << expected.component;
        EXPECT_EQ(component->parent(), tile);
        EXPECT_TRUE(tile->isVisibleTo(&parent)) << expected.component;
        EXPECT_EQ(tile->minimumSize(), tile->maximumSize());
        EXPECT_EQ(tile->sizeHint(), tile->minimumSize());
    }
}

TEST_F(Designer, ShowsWhatAFormCanHoldInThePublishedOrder)
{
    const auto window = form(formOfAll());
    for (const TExpectedTile& expected : expectedTiles()) {
        QWidget* const tile = tileOn(*window, expected);
        ASSERT_NE(tile, nullptr);
        const auto* const properties = sheet(tile);
        QStringList shown;
        for (int i = 0; i < properties->count(); ++i) {
            if (properties->propertyGroup(i).endsWith(QStringLiteral("Tile")) && properties->isVisible(i)) {
                EXPECT_TRUE(properties->isEnabled(i));
                EXPECT_EQ(properties->propertyGroup(i), expected.tileClass());
                shown.append(properties->propertyName(i));
            }
        }
        EXPECT_EQ(shown, expected.names()) << expected.component;
    }
}

TEST_F(Designer, SavesAFormAndReadsItAgain)
{
    const auto window = form(formOfAll());
    for (const TExpectedTile& expected : expectedTiles()) {
        QWidget* const tile = tileOn(*window, expected);
        ASSERT_NE(tile, nullptr);
        auto* const properties = sheet(tile);
        for (const TExpectedProperty& property : expected.properties) {
            const int index = properties->indexOf(QLatin1String(property.name));
            ASSERT_NE(index, -1) << property.name;
            EXPECT_FALSE(properties->isChanged(index));
            properties->setProperty(index, property.value);
            properties->setChanged(index, true);
            EXPECT_EQ(valueOf(*tile, property), property.value) << expected.component << " " << property.name;
        }
    }
    const QString saved = window->contents();
    for (const TExpectedTile& expected : expectedTiles()) {
        for (const TExpectedProperty& property : expected.properties) {
            EXPECT_TRUE(property.key == nullptr ||
                        saved.contains(QStringLiteral("<enum>%1</enum>").arg(property.key)))
                << property.key;
        }
    }

    const auto again = form(saved);
    for (const TExpectedTile& expected : expectedTiles()) {
        QWidget* const tile = tileOn(*again, expected);
        ASSERT_NE(tile, nullptr);
        EXPECT_TRUE(componentOf(tile)->Designing());
        for (const TExpectedProperty& property : expected.properties) {
            EXPECT_EQ(valueOf(*componentOf(tile), property), property.value)
                << expected.component << " " << property.name;
        }
    }
    EXPECT_EQ(again->contents(), saved);
}

/// Shows one page of the widget box, and no other.
void openPage(QTreeWidget& pages, const QString& name)
{
    for (int i = 0; i < pages.topLevelItemCount(); ++i) {
        pages.topLevelItem(i)->setExpanded(pages.topLevelItem(i)->text(0) == name);
    }
}

// With TNV5_PICTURE=docs/images/widget-box.png it draws the picture of the docs.
TEST_F(Designer, DrawsThePageWithItsIcons)
{
    auto* const box = core()->widgetBox();
    auto* const pages = box->findChild<QTreeWidget*>();
    ASSERT_NE(pages, nullptr);
    box->resize(260, 480);
    openPage(*pages, {});
    const QImage closed = box->grab().toImage();
    openPage(*pages, QStringLiteral("Devices"));
    const QImage open = box->grab().toImage();
    EXPECT_NE(open, closed);
    if (qEnvironmentVariableIsSet("TNV5_PICTURE")) {
        EXPECT_TRUE(open.save(qEnvironmentVariable("TNV5_PICTURE")));
    }
}

/// Opens the editor of a row's value. Qt Designer's own editor of texts keeps a list of icon names for good.
void editValue(QTreeWidget& tree, QTreeWidgetItem* row)
{
    tree.setCurrentItem(row);
    if constexpr (tests::kSanitized) {
        __lsan_disable();
    }
    tree.editItem(row, 1);
    if constexpr (tests::kSanitized) {
        __lsan_enable();
    }
}

QTreeWidgetItem* rowOf(const QTreeWidget& tree, const QString& text)
{
    const auto rows = tree.findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    return rows.isEmpty() ? nullptr : rows.first();
}

TEST_F(Designer, TheAuthorTypesValuesIntoThePropertyEditor)
{
    const auto window = form(formOfAll());
    const TExpectedTile& gate = expectedTiles()[2];
    QWidget* const tile = tileOn(*window, gate);
    core()->formWindowManager()->setActiveFormWindow(window.get());
    window->clearSelection();
    window->selectWidget(tile);
    core()->propertyEditor()->setObject(tile);
    auto* const tree = core()->propertyEditor()->findChild<QTreeWidget*>();
    ASSERT_NE(tree, nullptr);

    QTreeWidgetItem* const group = rowOf(*tree, gate.tileClass());
    ASSERT_NE(group, nullptr);
    QStringList rows;
    for (int i = 0; i < group->childCount(); ++i) {
        rows.append(group->child(i)->text(0));
    }
    EXPECT_EQ(rows, gate.names());

    QTreeWidgetItem* const server = rowOf(*tree, QStringLiteral("Server"));
    ASSERT_NE(server, nullptr);
    editValue(*tree, server);
    auto* const line = tree->findChild<QLineEdit*>();
    ASSERT_NE(line, nullptr);
    QTest::keyClicks(line, QStringLiteral("desk-9"));
    QTest::keyClick(line, Qt::Key_Return);
    EXPECT_EQ(componentOf(tile)->property("Server"), QStringLiteral("desk-9"));
    EXPECT_TRUE(window->contents().contains(QStringLiteral("<string notr=\"true\">desk-9</string>")));
}

TEST_F(Designer, OpensAndSavesTheFormThatTheBuildCompiles)
{
    QFile file(QStringLiteral(TNV5_FORM));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_EQ(form(text)->contents(), text);
}

/// Sockets and devices that the process has open.
QStringList openHardware()
{
    QStringList open;
    for (const QFileInfo& link : QDir(QStringLiteral("/proc/self/fd"))
                                     .entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)) {
        const QString target = QFile::symLinkTarget(link.filePath());
        if (target.contains(QStringLiteral("socket:")) || target.startsWith(QStringLiteral("/dev/"))) {
            open.append(target);
        }
    }
    return open;
}

TEST_F(Designer, TouchesNoHardware)
{
    const auto window = form(formOfAll());
    const QStringList before = openHardware();
    ASSERT_FALSE(before.isEmpty()); // the standard streams, at least
    const TExpectedTile& connector = expectedTiles()[3];
    QWidget* const tile = tileOn(*window, connector);
    auto* const properties = sheet(tile);
    properties->setProperty(properties->indexOf(QStringLiteral("IsConnected")), true);
    EXPECT_EQ(tile->property("IsConnected"), false);
    QTest::qWait(50);
    EXPECT_EQ(openHardware(), before);
    for (const TExpectedTile& expected : expectedTiles()) {
        EXPECT_TRUE(componentOf(tileOn(*window, expected))->findChildren<QTimer*>().isEmpty());
    }
}

} // namespace

} // namespace tnv5::designer
