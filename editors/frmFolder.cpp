#include "frmFolder.h"
#include "AddressGrid.h"
#include "EditorBoxes.h"
#include "FolderNodes.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "workbench/ServerCommand.h"
#include "workbench/TaskDialog.h"
#include "workbench/WindowDictionary.h"

#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

frmFolder::frmFolder(const clsUserFolder *Folder, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmFolder"));
    setWindowTitle(QStringLiteral("Folder"));
    IsNew = !Folder;
    if (Folder) {
        Edited.setXML(Folder->XML());
    } else {
        Edited.ID = NewUniqueID();
        Edited.OrganizationID = Global.UserOrganizationID;
    }
    txtName = new QLineEdit(Edited.Name, this);
    txtName->setObjectName(QStringLiteral("txtName"));
    FolderTree = new QTreeWidget(this);
    FolderTree->setObjectName(QStringLiteral("FolderTree"));
    FolderTree->setHeaderHidden(true);
    Addresses = new AddressGrid(QStringLiteral("Email Address"), this);
    Addresses->SetAddresses(Edited.EmailAddresses());
    EmailGrid = Addresses->Grid;
    btnAdd = Addresses->btnAdd;
    btnEdit = Addresses->btnEdit;
    btnDelete = Addresses->btnDelete;
    btnOK = NamedButton(QStringLiteral("OK"), "btnOK", this);
    btnOK->setDefault(true);
    btnCancel = NamedButton(QStringLiteral("Cancel"), "btnCancel", this);

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Folder Name"), txtName);
    form->addRow(QStringLiteral("Parent Folder"), FolderTree);
    form->addRow(QStringLiteral("Email Addresses"), Addresses);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form, 1);
    layout->addLayout(ClosingButtons(btnOK, btnCancel));
    resize(480, 460);
    FillFolderTree();
    GetDDict(this);

    connect(btnOK, &QPushButton::clicked, this, [this] {
        if (Save())
            accept();
    });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void frmFolder::FillFolderTree()
{
    QTreeWidgetItem *root = FillFolderNodes(FolderTree, DictText("NOFOLDER", "No Specific Folder"), u'P',
                                            [this](const clsUserFolder &Folder) {
                                                return Folder.ID != Edited.ID
                                                       && Folder.OrganizationID == Edited.OrganizationID;
                                            });
    if (!SelectParent(QStringLiteral("P") + Edited.Parent))
        FolderTree->setCurrentItem(root);
}

bool frmFolder::SelectParent(const QString &Key)
{
    return SelectFolderNode(FolderTree, Key);
}

bool frmFolder::Save()
{
    const QString name = txtName->text().trimmed();
    if (name.isEmpty()) {
        ShowTaskDialog(this, DictText("ERRORNOFOLDER", "You must enter a folder name."), QString());
        return false;
    }
    const QTreeWidgetItem *parent = FolderTree->currentItem();
    const QString parentKey = parent ? parent->data(0, FolderKeyRole).toString() : FolderRootKey;
    Edited.Name = name;
    Edited.Parent = parentKey == FolderRootKey ? QString() : parentKey.mid(1);
    Edited.Email = Addresses->Addresses().join(u';');
    if (IsNew && !ServerCommand(Requests::AddFolder(Edited.ID, Edited.Parent, Edited.Name, Edited.AccountID)))
        return false;
    IsNew = false;
    if (!ServerCommand(Requests::UpdateFolder(Edited.ID, Edited.Parent, Edited.Name, Edited.AccountID, Edited.Email)))
        return false;
    return ServerCommand(Requests::GetFolders());
}
