#pragma once

#include "tnv5/registration/palette.h"

#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>
#include <memory>
#include <vector>

namespace tnv5::designer {

/// The plugin of Qt Designer and of QUiLoader: the components of the palette, as tiles.
class TDeviceCollection : public QObject,
                          public QDesignerCustomWidgetCollectionInterface,
                          private registration::TPalette
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetCollectionInterface")
    Q_INTERFACES(QDesignerCustomWidgetCollectionInterface)

public:
    TDeviceCollection();

    QList<QDesignerCustomWidgetInterface*> customWidgets() const override;

private:
    void RegisterComponents(const QString& page, const script::TScriptClasses& classes) override;

    std::vector<std::unique_ptr<QDesignerCustomWidgetInterface>> FWidgets;
};

} // namespace tnv5::designer
