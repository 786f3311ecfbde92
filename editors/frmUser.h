#pragma once
#include "model/clsUser.h"

#include <QDialog>

class AddressGrid;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QTreeWidget;
class QTreeWidgetItem;

// The editor of one user: log-on name, password, organization, rights,
// addresses, the folders the user may see and forwarding. It edits a copy
// and posts the whole fragment on save.
class frmUser : public QDialog
{
    Q_OBJECT
public:
    // The password box's text for a user that has a password already.
    static inline const QString PasswordPlaceholder = QStringLiteral("xxxxxx");

    // Opens on a copy of User; nullptr makes a new user.
    explicit frmUser(const clsUser *User, QWidget *parent = nullptr);

    QLineEdit *txtUserName = nullptr;
    QLineEdit *txtPassword = nullptr;
    QLineEdit *txtFullName = nullptr;
    QComboBox *cmboOrg = nullptr;
    QPushButton *btnOrgAdd = nullptr;
    QCheckBox *chkAdmin = nullptr;
    QCheckBox *chkSysAdmin = nullptr;
    QCheckBox *chkPOP3 = nullptr;
    AddressGrid *Addresses = nullptr;
    QTableWidget *EmailGrid = nullptr;
    QPushButton *btnAdd = nullptr;
    QPushButton *btnEdit = nullptr;
    QPushButton *btnDelete = nullptr;
    QTreeWidget *FolderTree = nullptr;
    QCheckBox *chkForward = nullptr;
    QLineEdit *txtForwardTo = nullptr;
    QCheckBox *chkForwardOnly = nullptr;
    QPushButton *btnSave = nullptr;
    QPushButton *btnCancel = nullptr;

    // The copy being edited.
    clsUser Edited;
    bool IsNew = false;
    bool Dirty = false;

    // Takes the controls into the copy and posts it: false, with the
    // reason shown, when a rule refuses it or the server does.
    bool Save();
    // Asks "Save Changes?" when something changed: false when the close is
    // to be abandoned.
    bool SaveChanges();
    // Rebuilds the folder tree of the organization chosen.
    void FillFolderTree();
    // The folder nodes ticked: "ROOT" alone when the root is.
    QStringList TickedFolders() const;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void Load();
    void FillOrganizations(const QString &OrganizationID);
    void TakeControls();
    void MarkDirty() { Dirty = true; }

    bool m_passwordTyped = false;
    bool m_closing = false;
};
