#pragma once
#include "model/clsUserOrganization.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

// The editor of one organization: name, address, mail domain, message
// limits and the named constants. OK posts the whole fragment.
class frmUserOrganization : public QDialog
{
    Q_OBJECT
public:
    // Opens on a copy of Organization; nullptr makes a new one.
    explicit frmUserOrganization(const clsUserOrganization *Organization, QWidget *parent = nullptr);

    QLineEdit *txtName = nullptr;
    QLineEdit *txtEmail = nullptr;
    QLineEdit *txtDomain = nullptr;
    QLineEdit *txtMessagesDay = nullptr;
    QLineEdit *txtMessagesMonth = nullptr;
    QLabel *lblCreatedOn = nullptr;
    QTableWidget *GridConstants = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;

    clsUserOrganization Edited;

    // The constants text of the grid: each row with a name as name, "=",
    // value and a TAB.
    QString GridConstantsText() const;
    // Takes the controls and posts the copy: false, with the reason shown,
    // when a rule or the server refuses it.
    bool Save();
};
