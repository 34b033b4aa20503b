// Built against the installed package: a program whose form has all the components.

#include "ui_club.h"

#include <QApplication>
#include <cstdio>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QWidget form;
    Ui::ClubForm ui;
    ui.setupUi(&form);
    const tnv5::turnstile::TTurnStylerDevice* const gate = ui.turnStylerDevice->component();
    const bool whole = gate->RelayOpen() == 21 && !gate->Designing() &&
                       !tnv5::designer::tileIcon(*gate->metaObject()).pixmap(24, 24).isNull();
    std::puts(whole ? "installed package: a form has its components"
                    : "installed package: the form is empty");
    return whole ? 0 : 1;
}
