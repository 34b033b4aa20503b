#pragma once

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>

namespace tnv5::desk {

/// Asks whether a gate is to be opened by hand, who does it and why. Without a reason it cannot be confirmed:
/// the journal keeps both.
class TOpenDialog final : public QDialog
{
    Q_OBJECT

public:
    /// @param gate as a person reads it @param who said before
    TOpenDialog(const QString& gate, const QString& who, QWidget* parent = nullptr);

    QString reason() const { return FReason->currentText().simplified(); }
    QString who() const { return FWho->text().simplified(); }

    QComboBox* reasonBox() const { return FReason; }
    QLineEdit* whoBox() const { return FWho; }
    QPushButton* openButton() const { return FOpen; }

private:
    QLineEdit* FWho;
    QComboBox* FReason;
    QPushButton* FOpen;
};

} // namespace tnv5::desk
