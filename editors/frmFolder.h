#pragma once
#include "model/clsUserFolder.h"

#include <QDialog>

class AddressGrid;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QTreeWidget;

// The editor of one folder of the message store: its name, the folder it
// hangs under and the addresses whose mail goes to it.
class frmFolder : public QDialog
{
    Q_OBJECT
public:
    // Opens on a copy of Folder; nullptr makes a new folder of the user's
    // organization.
    explicit frmFolder(const clsUserFolder *Folder, QWidget *parent = nullptr);

    QLineEdit *txtName = nullptr;
    QTreeWidget *FolderTree = nullptr;
    AddressGrid *Addresses = nullptr;
    QTableWidget *EmailGrid = nullptr;
    QPushButton *btnAdd = nullptr;
    QPushButton *btnEdit = nullptr;
    QPushButton *btnDelete = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;

    clsUserFolder Edited;
    bool IsNew = false;

    // Selects the parent node of a key: "ROOT" or "P" + folder ID.
    bool SelectParent(const QString &Key);
    // Takes the controls and sends the folder, then fetches the folders:
    // false, with the reason shown, when a rule or the server refuses it.
    bool Save();

private:
    void FillFolderTree();
};
