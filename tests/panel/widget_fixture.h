#pragma once

#include "support/fixture.h"
#include "tnv5/panel/turn_styler.h"

#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

namespace tnv5::panel {

/// A panel in a box of 400 x 300 pixels with pictures of two sizes; what it tells its host is recorded.
struct TPanelFixture : tests::TFixture
{
    explicit TPanelFixture(int buttonSize = 48);

    /// A gate at the end of the list.
    TTurnStylerItem* add(const QString& caption, const QString& gateA, const QString& gateB);
    /// Three gates, the second without direction B.
    void addThree();
    /// Adds three, builds them and shows the box.
    void show();
    /// Lets the box do what it has put off, and free what is to be freed.
    static void settle();

    TTurnStylerItem* item(int index) const { return gates->TurnStylerList()->GetTurnStylerItem(index); }
    QPushButton* button(int index, int direction) const;
    /// Where the mouse is pressed and released.
    void click(QWidget* widget) const { QTest::mouseClick(widget, Qt::LeftButton); }

    /// Indexes of the gates that have a single line around them.
    QString bordered() const;
    /// Captions of the gates from the top of the box.
    QStringList onScreen() const;
    QStringList captionTexts() const;

    QTemporaryDir folder;
    TImageList states;
    TImageList glyphs;
    std::unique_ptr<QScrollArea> box = std::make_unique<QScrollArea>();
    std::unique_ptr<TTurnStyler> gates = std::make_unique<TTurnStyler>();
};

using TPanelTest = tests::TTestOn<TPanelFixture>;

/// A picture of one colour.
QImage picture(int size, Qt::GlobalColor colour);

/// Whether a widget shows that picture, and no other.
bool shows(const QLabel* label, const QImage& expected);

/// The panels that a gate's panel is made of.
struct TGateParts
{
    explicit TGateParts(const TTurnStylerItem* item);
    QList<QWidget*> children; ///< of the main panel, in their order
    QWidget* left = nullptr;
    QWidget* right = nullptr;
    QWidget* centre = nullptr;
};

} // namespace tnv5::panel
