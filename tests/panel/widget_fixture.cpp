#include "widget_fixture.h"

#include <QCoreApplication>
#include <QEvent>
#include <QMap>

namespace tnv5::panel {

QImage picture(int size, Qt::GlobalColor colour)
{
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

bool shows(const QLabel* label, const QImage& expected)
{
    return label->pixmap().toImage().convertToFormat(QImage::Format_ARGB32) == expected;
}

TGateParts::TGateParts(const TTurnStylerItem* item)
    : children(item->MainPanel()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
{
    if (children.size() == 3) {
        left = children[0];
        right = children[1];
        centre = children[2];
    }
}

TPanelFixture::TPanelFixture(int buttonSize)
{
    states.Add(picture(10, Qt::red));
    states.Add(picture(12, Qt::green));
    states.Add(picture(300, Qt::blue));
    glyphs.Add(picture(16, Qt::yellow));
    glyphs.Add(picture(20, Qt::cyan));
    box->resize(400, 300);
    gates->SetScrollBox(box.get());
    gates->SetImages(&states);
    gates->SetImagesBtn(&glyphs);
    gates->SetButtonSize(buttonSize);
    gates->SetIniSection("Gates");
    gates->SetIniFile(folder.filePath("club.ini"));
    gates->SetOnTurnStylerBtnClick(
        [this](TTurnStylerItem* Sender, const QVariant& AIndex, const QVariant& AIP, const QVariant& AGate) {
            const bool types = AIndex.typeId() == QMetaType::Int && AIP.typeId() == QMetaType::QString &&
                               AGate.typeId() == QMetaType::QString;
            trace.add(QStringList{"click", Sender != nullptr ? Sender->Caption() : QString("nobody"),
                                  AIndex.toString(), AIP.toString(), AGate.toString()}
                          .join(u' ') +
                      (types ? "" : " of other types"));
        });
}

TTurnStylerItem* TPanelFixture::add(const QString& caption, const QString& gateA, const QString& gateB)
{
    TTurnStylerItem* const fresh = gates->TurnStylerList()->Add();
    fresh->SetCaption(caption);
    fresh->SetGateA(gateA);
    fresh->SetGateB(gateB);
    fresh->SetIP("10.0.0." + QString::number(fresh->Index() + 1));
    return fresh;
}

void TPanelFixture::addThree()
{
    add("Main", "01A", "02A");
    add("Staff", "03D", "");
    add("Pool", "04A", "04B");
}

void TPanelFixture::show()
{
    addThree();
    gates->SetUpItems();
    box->show();
    settle();
}

void TPanelFixture::settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QPushButton* TPanelFixture::button(int index, int direction) const
{
    const TGateParts parts(item(index));
    return (direction == 0 ? parts.left : parts.right)->findChild<QPushButton*>();
}

QString TPanelFixture::bordered() const
{
    QStringList indexes;
    for (int i = 0; i < gates->TurnStylerList()->Count(); ++i) {
        const QFrame* const panel = item(i)->MainPanel();
        if (panel != nullptr && panel->frameStyle() == (int(QFrame::Box) | int(QFrame::Plain)) &&
            panel->frameWidth() == 1) {
            indexes << QString::number(i);
        } else if (panel != nullptr && panel->frameStyle() != QFrame::NoFrame) {
            indexes << "odd";
        }
    }
    return indexes.join(u' ');
}

QStringList TPanelFixture::onScreen() const
{
    QMap<int, QString> byPlace;
    for (int i = 0; i < gates->TurnStylerList()->Count(); ++i) {
        if (const QFrame* const panel = item(i)->MainPanel()) {
            byPlace.insert(panel->mapTo(box->widget(), QPoint()).y(), item(i)->Caption());
        }
    }
    return byPlace.values();
}

QStringList TPanelFixture::captionTexts() const
{
    QStringList texts;
    for (int i = 0; i < gates->TurnStylerList()->Count(); ++i) {
        const QLabel* const caption = item(i)->CaptionPanel();
        texts << (caption != nullptr ? caption->text() : "none");
    }
    return texts;
}

} // namespace tnv5::panel
