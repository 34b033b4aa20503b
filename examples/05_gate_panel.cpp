// Gates on the screen: a panel with two gates, whose buttons show what a controller would report.
// Usage: 05_gate_panel            shows the window
//        05_gate_panel --check    presses each button once and ends

#include <QApplication>
#include <QPushButton>
#include <cstdio>
#include <tnv5/panel/turn_styler.h>

using namespace tnv5;

namespace {

QImage picture(Qt::GlobalColor colour)
{
    QImage image(32, 32, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    panel::TImageList states;
    states.Add(picture(Qt::red));
    states.Add(picture(Qt::green));

    QScrollArea box;
    panel::TTurnStyler gates;
    gates.SetScrollBox(&box);
    gates.SetImages(&states);
    gates.SetButtonSize(48);
    for (const auto& record : {panel::TGateRecord{"01A", "02A", "Main entrance", 1, 2},
                               panel::TGateRecord{"03D", "", "Staff door", 3, 0}}) {
        gates.TurnStylerList()->Add()->setRecord(record);
    }
    gates.SetOnTurnStylerBtnClick([&gates](auto* /*gate*/, auto& /*index*/, auto& /*ip*/, auto& address) {
        std::printf("open %s\n", qUtf8Printable(address.toString()));
        gates.Setitemstate(address.toString(), 1, QStringLiteral("OPEN"));
    });
    gates.SetUpItems();
    box.resize(400, 120);
    box.show();

    if (!QApplication::arguments().contains(QStringLiteral("--check"))) {
        return QApplication::exec();
    }
    for (QPushButton* const button : box.findChildren<QPushButton*>()) {
        button->click();
    }
    const QString caption = gates.TurnStylerList()->GetTurnStylerItem(1)->CaptionPanel()->text();
    return caption == QStringLiteral("Staff door [OPEN]") ? 0 : 1;
}
