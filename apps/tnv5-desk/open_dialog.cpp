#include "apps/tnv5-desk/open_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>

namespace tnv5::desk {

namespace {

constexpr int kMostLetters = 200; // of a name and of a reason

} // namespace

TOpenDialog::TOpenDialog(const QString& gate, const QString& who, QWidget* parent)
    : QDialog(parent), FWho(new QLineEdit(who, this)), FReason(new QComboBox(this))
{
    setWindowTitle(tr("Open by hand"));
    auto* const layout = new QFormLayout(this);
    auto* const question = new QLabel(tr("Open gate %1?").arg(gate), this);
    question->setTextFormat(Qt::PlainText);
    QFont bold = question->font();
    bold.setBold(true);
    question->setFont(bold);
    layout->addRow(question);

    FReason->setEditable(true);
    FReason->addItems({tr("forgot the card"), tr("pram or wheelchair"), tr("guest"), tr("delivery"),
                       tr("the reader does not work")});
    FReason->setCurrentIndex(-1);
    FReason->lineEdit()->setMaxLength(kMostLetters);
    FReason->lineEdit()->setPlaceholderText(tr("required, goes into the journal"));
    FReason->setMinimumContentsLength(30);
    FWho->setMaxLength(kMostLetters);
    layout->addRow(tr("&Reason"), FReason);
    layout->addRow(tr("&Who opens"), FWho);

    auto* const buttons = new QDialogButtonBox(this);
    FOpen = buttons->addButton(tr("&Open the gate"), QDialogButtonBox::AcceptRole);
    buttons->addButton(tr("&Cancel"), QDialogButtonBox::RejectRole);
    layout->addRow(buttons);
    FOpen->setDefault(true);
    FOpen->setEnabled(false);
    connect(FReason, &QComboBox::editTextChanged, this, [this] { FOpen->setEnabled(!reason().isEmpty()); });
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (!reason().isEmpty()) { // also when Enter comes by another way
            accept();
        }
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    FReason->setFocus();
}

} // namespace tnv5::desk
