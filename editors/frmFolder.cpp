#include "frmFolder.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "workbench/ServerCommand.h"
#include "workbench/TaskDialog.h"
#include "workbench/WindowDictionary.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int KeyRole = Qt::UserRole + 1;
const QString RootKey = QStringLiteral("ROOT");

} // namespace

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
    EmailGrid = new QTableWidget(0, 1, this);
    EmailGrid->setObjectName(QStringLiteral("EmailGrid"));
    EmailGrid->setHorizontalHeaderLabels({QStringLiteral("Email Address")});
    EmailGrid->horizontalHeader()->setStretchLastSection(true);
    EmailGrid->verticalHeader()->hide();
    EmailGrid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    EmailGrid->setSelectionBehavior(QAbstractItemView::SelectRows);
    for (const QString &address : Edited.EmailAddresses()) {
        EmailGrid->insertRow(EmailGrid->rowCount());
        EmailGrid->setItem(EmailGrid->rowCount() - 1, 0, new QTableWidgetItem(address));
    }
    btnAdd = new QPushButton(QStringLiteral("Add"), this);
    btnAdd->setObjectName(QStringLiteral("btnAdd"));
    btnEdit = new QPushButton(QStringLiteral("Edit"), this);
    btnEdit->setObjectName(QStringLiteral("btnEdit"));
    btnDelete = new QPushButton(QStringLiteral("Delete"), this);
    btnDelete->setObjectName(QStringLiteral("btnDelete"));
    btnOK = new QPushButton(QStringLiteral("OK"), this);
    btnOK->setObjectName(QStringLiteral("btnOK"));
    btnOK->setDefault(true);
    btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
    btnCancel->setObjectName(QStringLiteral("btnCancel"));

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Folder Name"), txtName);
    form->addRow(QStringLiteral("Parent Folder"), FolderTree);
    auto *addresses = new QHBoxLayout;
    auto *addressButtons = new QVBoxLayout;
    addressButtons->addWidget(btnAdd);
    addressButtons->addWidget(btnEdit);
    addressButtons->addWidget(btnDelete);
    addressButtons->addStretch(1);
    addresses->addWidget(EmailGrid, 1);
    addresses->addLayout(addressButtons);
    form->addRow(QStringLiteral("Email Addresses"), addresses);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form, 1);
    layout->addLayout(buttons);
    resize(480, 460);
    FillFolderTree();
    GetDDict(this);

    connect(btnAdd, &QPushButton::clicked, this, [this] { AskEmail(-1); });
    connect(btnEdit, &QPushButton::clicked, this, [this] { AskEmail(EmailGrid->currentRow()); });
    connect(btnDelete, &QPushButton::clicked, this, [this] {
        if (EmailGrid->currentRow() >= 0)
            EmailGrid->removeRow(EmailGrid->currentRow());
    });
    connect(btnOK, &QPushButton::clicked, this, [this] {
        if (Save())
            accept();
    });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void frmFolder::FillFolderTree()
{
    FolderTree->clear();
    auto *root = new QTreeWidgetItem(FolderTree, {DictText("NOFOLDER", "No Specific Folder")});
    root->setData(0, KeyRole, RootKey);
    QHash<QString, QTreeWidgetItem *> nodes;
    QList<const clsUserFolder *> shown;
    for (const clsUserFolder *folder : UserFolders()) {
        if (folder->ID == Edited.ID || folder->OrganizationID != Edited.OrganizationID)
            continue;
        auto *node = new QTreeWidgetItem({folder->Name});
        node->setData(0, KeyRole, QStringLiteral("P") + folder->ID);
        nodes.insert(folder->ID, node);
        shown.append(folder);
    }
    for (const clsUserFolder *folder : shown)
        nodes.value(folder->Parent, root)->addChild(nodes.value(folder->ID));
    FolderTree->expandAll();
    if (!SelectParent(QStringLiteral("P") + Edited.Parent))
        FolderTree->setCurrentItem(root);
}

bool frmFolder::SelectParent(const QString &Key)
{
    for (QTreeWidgetItemIterator it(FolderTree); *it; ++it) {
        if ((*it)->data(0, KeyRole).toString() == Key) {
            FolderTree->setCurrentItem(*it);
            return true;
        }
    }
    return false;
}

void frmFolder::AskEmail(int Row)
{
    QTableWidgetItem *item = Row >= 0 ? EmailGrid->item(Row, 0) : nullptr;
    bool ok = false;
    const QString address = QInputDialog::getText(this, windowTitle(), QStringLiteral("Email Address"), QLineEdit::Normal,
                                                  item ? item->text() : QString(), &ok)
                                .trimmed();
    if (!ok || address.isEmpty())
        return;
    if (item) {
        item->setText(address);
        return;
    }
    EmailGrid->insertRow(EmailGrid->rowCount());
    EmailGrid->setItem(EmailGrid->rowCount() - 1, 0, new QTableWidgetItem(address));
}

bool frmFolder::Save()
{
    const QString name = txtName->text().trimmed();
    if (name.isEmpty()) {
        ShowTaskDialog(this, DictText("ERRORNOFOLDER", "You must enter a folder name."), QString());
        return false;
    }
    const QTreeWidgetItem *parent = FolderTree->currentItem();
    const QString parentKey = parent ? parent->data(0, KeyRole).toString() : RootKey;
    Edited.Name = name;
    Edited.Parent = parentKey == RootKey ? QString() : parentKey.mid(1);
    QStringList addresses;
    for (int row = 0; row < EmailGrid->rowCount(); ++row)
        if (EmailGrid->item(row, 0) && !EmailGrid->item(row, 0)->text().trimmed().isEmpty())
            addresses << EmailGrid->item(row, 0)->text().trimmed();
    Edited.Email = addresses.join(u';');
    if (IsNew && !ServerCommand(Requests::AddFolder(Edited.ID, Edited.Parent, Edited.Name, Edited.AccountID)))
        return false;
    IsNew = false;
    if (!ServerCommand(Requests::UpdateFolder(Edited.ID, Edited.Parent, Edited.Name, Edited.AccountID, Edited.Email)))
        return false;
    return ServerCommand(Requests::GetFolders());
}
