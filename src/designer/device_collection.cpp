#include "tnv5/designer/device_collection.h"

#include "tnv5/designer/tile.h"

#include <QMetaProperty>
#include <algorithm>
#include <optional>
#include <utility>

namespace tnv5::designer {

namespace {

/// One class in the widget box.
class TDeviceWidget : public QDesignerCustomWidgetInterface
{
public:
    TDeviceWidget(QString page, const TTileClass& tile) : FPage(std::move(page)), FTile(tile) {}

    QString name() const override { return QString::fromLatin1(FTile.tile->className()); }
    QString group() const override { return FPage; }
    QString toolTip() const override { return bareName(*FTile.component); }
    QString whatsThis() const override { return {}; }
    QString includeFile() const override { return QStringLiteral("<tnv5/designer/tiles.h>"); }
    QIcon icon() const override { return tileIcon(*FTile.component); }
    bool isContainer() const override { return false; }
    QString domXml() const override;

    /// Only a form editor calls it; form loaders do not.
    void initialize(QDesignerFormEditorInterface* /*core*/) override { FEditing = true; }
    bool isInitialized() const override { return FEditing; }

    QWidget* createWidget(QWidget* parent) override
    {
        std::optional<platform::TDesignScope> editing;
        if (FEditing) {
            editing.emplace();
        }
        return FTile.create(parent);
    }

private:
    QString FPage;
    const TTileClass& FTile;
    bool FEditing = false;
};

/// "turnStylerDevice" for "TTurnStylerDevice": the name of the first one on a form.
QString objectNameOf(const QString& className)
{
    return className.at(1).toLower() + className.mid(2);
}

/// Addresses, file names and the like are one line each, and not for translators.
QString specificationsOf(const QMetaObject& tile)
{
    QString rows;
    for (int i = tile.propertyOffset(); i < tile.propertyCount(); ++i) {
        const QMetaProperty property = tile.property(i);
        if (property.typeId() == QMetaType::QString) {
            rows +=
                QStringLiteral("<stringpropertyspecification name=\"%1\" type=\"singleline\" notr=\"true\"/>")
                    .arg(QLatin1String(property.name()));
        }
    }
    return rows;
}

QString TDeviceWidget::domXml() const
{
    const QString component = bareName(*FTile.component);
    return QStringLiteral("<ui language=\"c++\" displayname=\"%1\">"
                          "<widget class=\"%2\" name=\"%3\"/>"
                          "<customwidgets><customwidget><class>%2</class>"
                          "<propertyspecifications>%4</propertyspecifications>"
                          "</customwidget></customwidgets>"
                          "</ui>")
        .arg(component, name(), objectNameOf(component), specificationsOf(*FTile.tile));
}

} // namespace

TDeviceCollection::TDeviceCollection()
{
    const auto former = registration::setPaletteHost({this, {}});
    registration::Register();
    registration::setPaletteHost(former);
}

QList<QDesignerCustomWidgetInterface*> TDeviceCollection::customWidgets() const
{
    QList<QDesignerCustomWidgetInterface*> widgets;
    for (const auto& widget : FWidgets) {
        widgets.append(widget.get());
    }
    return widgets;
}

void TDeviceCollection::RegisterComponents(const QString& page, const script::TScriptClasses& classes)
{
    const auto& tiles = tileClasses();
    for (const script::TScriptClass& offered : classes) {
        // each has one: the tiles are written from the palette
        const auto tile = std::find_if(tiles.begin(), tiles.end(), [&offered](const TTileClass& candidate) {
            return candidate.component == offered.Meta;
        });
        FWidgets.push_back(std::make_unique<TDeviceWidget>(page, *tile));
    }
}

} // namespace tnv5::designer
