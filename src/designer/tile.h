#pragma once

#include "tnv5/platform/component.h"

#include <QIcon>
#include <QPointer>
#include <QWidget>
#include <memory>
#include <vector>

namespace tnv5::designer {

/// A component on a form: a small widget of a fixed size, with the icon and the class name of the component,
/// which it owns. What a form can hold of the component's published properties are properties of the tile, in
/// their order; they are the component's own, the tile keeps nothing.
///
/// A tile is for people who draw forms. On a form that runs it stays hidden, unless it is shown.
///
/// The tile of each class is generated (`tiles.h`), as `TTurnStylerDeviceTile` for `TTurnStylerDevice`.
class TTile : public QWidget
{
    Q_OBJECT
    /// For hosts that know a tile by its reflection only.
    Q_PROPERTY(tnv5::platform::TComponent* component READ component STORED false DESIGNABLE false)

public:
    ~TTile() override;

    /// The component; none after the host has destroyed it.
    platform::TComponent* component() const { return FComponent; }

    /// Name of the component's class, without its namespace.
    QString title() const { return FTitle; }

    QSize sizeHint() const override;

protected:
    TTile(std::unique_ptr<platform::TComponent> AComponent, QWidget* AParent);

    /// Value of a property of the component; that of an empty variant when there is none any more.
    template <class Value>
    Value get(const char* name) const
    {
        return FComponent ? FComponent->property(name).value<Value>() : Value();
    }
    /// @throws what a handler of the component's raises
    template <class Value>
    void set(const char* name, const Value& value)
    {
        if (FComponent) {
            FComponent->setProperty(name, QVariant::fromValue(value));
        }
    }

    void paintEvent(QPaintEvent* event) override;

private:
    QPointer<platform::TComponent> FComponent;
    QString FTitle;
};

/// A component that may be put on a form, and its tile.
struct TTileClass
{
    const QMetaObject* component;
    const QMetaObject* tile;
    TTile* (*create)(QWidget* parent);
};

/// The tiles of all components that the palette offers, in its order.
const std::vector<TTileClass>& tileClasses();

/// Makes a tile by the name of its class, as it stands in a form file; none for any other name. With it a
/// host's own form loader needs no plugin:
///
///     QWidget* TLoader::createWidget(const QString& className, QWidget* parent, const QString& name)
///     {
///         QWidget* const tile = tnv5::designer::createTile(className, parent);
///         if (tile == nullptr) {
///             return QUiLoader::createWidget(className, parent, name);
///         }
///         tile->setObjectName(name);
///         return tile;
///     }
TTile* createTile(const QString& className, QWidget* parent = nullptr);

/// The picture of a component.
QIcon tileIcon(const QMetaObject& component);

/// The name of a class without its namespace.
QString bareName(const QMetaObject& meta);

} // namespace tnv5::designer
