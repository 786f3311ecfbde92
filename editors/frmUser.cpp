#include "frmUser.h"
#include "frmUserOrganization.h"
#include "foundation/Crypt.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"
#include "workbench/TaskDialog.h"
#include "workbench/WindowDictionary.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
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

QTableWidget *AddressGrid(const QString &Heading, QWidget *Parent)
{
    auto *grid = new QTableWidget(0, 1, Parent);
    grid->setHorizontalHeaderLabels({Heading});
    grid->horizontalHeader()->setStretchLastSection(true);
    grid->verticalHeader()->hide();
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setSelectionMode(QAbstractItemView::SingleSelection);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    return grid;
}

QStringList GridTexts(const QTableWidget *Grid)
{
    QStringList texts;
    for (int row = 0; row < Grid->rowCount(); ++row) {
        const QString text = Grid->item(row, 0) ? Grid->item(row, 0)->text().trimmed() : QString();
        if (!text.isEmpty())
            texts << text;
    }
    return texts;
}

} // namespace

frmUser::frmUser(const clsUser *User, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmUser"));
    setAttribute(Qt::WA_DeleteOnClose);
    IsNew = !User;
    if (User) {
        Edited.setXML(User->XML());
    } else {
        Edited.ID = NewUniqueID();
        Edited.OrganizationID = Global.UserOrganizationID;
    }

    txtUserName = new QLineEdit(this);
    txtUserName->setObjectName(QStringLiteral("txtUserName"));
    txtPassword = new QLineEdit(this);
    txtPassword->setObjectName(QStringLiteral("txtPassword"));
    txtPassword->setEchoMode(QLineEdit::Password);
    txtFullName = new QLineEdit(this);
    txtFullName->setObjectName(QStringLiteral("txtFullName"));
    cmboOrg = new QComboBox(this);
    cmboOrg->setObjectName(QStringLiteral("cmboOrg"));
    btnOrgAdd = new QPushButton(QStringLiteral("New..."), this);
    btnOrgAdd->setObjectName(QStringLiteral("btnOrgAdd"));
    chkAdmin = new QCheckBox(QStringLiteral("Organization Administrator"), this);
    chkAdmin->setObjectName(QStringLiteral("chkAdmin"));
    chkSysAdmin = new QCheckBox(QStringLiteral("System Administrator"), this);
    chkSysAdmin->setObjectName(QStringLiteral("chkSysAdmin"));
    chkPOP3 = new QCheckBox(QStringLiteral("Allow POP3 && IMAP Access To Folders"), this);
    chkPOP3->setObjectName(QStringLiteral("chkPOP3"));
    EmailGrid = AddressGrid(DictText("GRIDEMAILUSER", "Email Address"), this);
    EmailGrid->setObjectName(QStringLiteral("EmailGrid"));
    btnAdd = new QPushButton(QStringLiteral("Add"), this);
    btnAdd->setObjectName(QStringLiteral("btnAdd"));
    btnEdit = new QPushButton(QStringLiteral("Edit"), this);
    btnEdit->setObjectName(QStringLiteral("btnEdit"));
    btnDelete = new QPushButton(QStringLiteral("Delete"), this);
    btnDelete->setObjectName(QStringLiteral("btnDelete"));
    FolderTree = new QTreeWidget(this);
    FolderTree->setObjectName(QStringLiteral("FolderTree"));
    FolderTree->setHeaderHidden(true);
    chkForward = new QCheckBox(QStringLiteral("Forward Email To"), this);
    chkForward->setObjectName(QStringLiteral("chkForward"));
    txtForwardTo = new QLineEdit(this);
    txtForwardTo->setObjectName(QStringLiteral("txtForwardTo"));
    chkForwardOnly = new QCheckBox(QStringLiteral("Forward Only (Do Not Keep A Copy)"), this);
    chkForwardOnly->setObjectName(QStringLiteral("chkForwardOnly"));
    btnSave = new QPushButton(QStringLiteral("Save"), this);
    btnSave->setObjectName(QStringLiteral("btnSave"));
    btnSave->setDefault(true);
    btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
    btnCancel->setObjectName(QStringLiteral("btnCancel"));

    auto *details = new QGroupBox(QStringLiteral("User"), this);
    auto *form = new QFormLayout(details);
    form->addRow(QStringLiteral("User Name"), txtUserName);
    form->addRow(QStringLiteral("Password"), txtPassword);
    form->addRow(QStringLiteral("Full Name"), txtFullName);
    auto *organization = new QHBoxLayout;
    organization->addWidget(cmboOrg, 1);
    organization->addWidget(btnOrgAdd);
    form->addRow(QStringLiteral("Organization"), organization);
    form->addRow(QString(), chkAdmin);
    form->addRow(QString(), chkSysAdmin);
    form->addRow(QString(), chkPOP3);

    auto *addresses = new QGroupBox(QStringLiteral("Email Addresses"), this);
    auto *addressLayout = new QHBoxLayout(addresses);
    auto *addressButtons = new QVBoxLayout;
    addressButtons->addWidget(btnAdd);
    addressButtons->addWidget(btnEdit);
    addressButtons->addWidget(btnDelete);
    addressButtons->addStretch(1);
    addressLayout->addWidget(EmailGrid, 1);
    addressLayout->addLayout(addressButtons);

    auto *folders = new QGroupBox(QStringLiteral("Folders This User Can See"), this);
    auto *folderLayout = new QVBoxLayout(folders);
    folderLayout->addWidget(FolderTree);

    auto *forwarding = new QGroupBox(QStringLiteral("Forwarding"), this);
    auto *forwardLayout = new QFormLayout(forwarding);
    forwardLayout->addRow(chkForward, txtForwardTo);
    forwardLayout->addRow(QString(), chkForwardOnly);

    auto *columns = new QHBoxLayout;
    auto *left = new QVBoxLayout;
    left->addWidget(details);
    left->addWidget(addresses, 1);
    auto *right = new QVBoxLayout;
    right->addWidget(folders, 1);
    right->addWidget(forwarding);
    columns->addLayout(left, 1);
    columns->addLayout(right, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(btnSave);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addLayout(buttons);
    resize(760, 520);

    Load();
    GetDDict(this);

    connect(btnSave, &QPushButton::clicked, this, [this] {
        if (Save()) {
            m_closing = true;
            close();
        }
    });
    connect(btnCancel, &QPushButton::clicked, this, &QWidget::close);
    connect(btnAdd, &QPushButton::clicked, this, &frmUser::AddEmail);
    connect(btnEdit, &QPushButton::clicked, this, &frmUser::EditEmail);
    connect(btnDelete, &QPushButton::clicked, this, [this] {
        if (EmailGrid->currentRow() >= 0) {
            EmailGrid->removeRow(EmailGrid->currentRow());
            MarkDirty();
        }
    });
    connect(btnOrgAdd, &QPushButton::clicked, this, [this] {
        frmUserOrganization organization(nullptr, this);
        if (organization.exec() == QDialog::Accepted)
            FillOrganizations(organization.Edited.ID);
    });
    connect(txtPassword, &QLineEdit::textEdited, this, [this] {
        m_passwordTyped = true;
        MarkDirty();
    });
    connect(cmboOrg, &QComboBox::currentIndexChanged, this, [this] {
        FillFolderTree();
        MarkDirty();
    });
    connect(FolderTree, &QTreeWidget::itemChanged, this, &frmUser::MarkDirty);
    for (QLineEdit *text : {txtUserName, txtFullName, txtForwardTo})
        connect(text, &QLineEdit::textEdited, this, &frmUser::MarkDirty);
    for (QCheckBox *box : {chkAdmin, chkSysAdmin, chkPOP3, chkForward, chkForwardOnly})
        connect(box, &QCheckBox::toggled, this, &frmUser::MarkDirty);
    Dirty = false;
}

void frmUser::Load()
{
    txtUserName->setText(Edited.Username);
    txtPassword->setText(IsNew ? QString() : PasswordPlaceholder);
    txtFullName->setText(Edited.Fullname);
    chkAdmin->setChecked(Edited.OrganizationAdmin);
    chkSysAdmin->setChecked(Edited.Admin);
    chkSysAdmin->setEnabled(Global.IsAdmin);
    chkPOP3->setChecked(Edited.AllowPOP3Imap);
    for (const QString &address : Edited.EmailAddresses()) {
        EmailGrid->insertRow(EmailGrid->rowCount());
        EmailGrid->setItem(EmailGrid->rowCount() - 1, 0, new QTableWidgetItem(address));
    }
    chkForward->setChecked(Edited.Forward);
    txtForwardTo->setText(Edited.ForwardTo);
    chkForwardOnly->setChecked(Edited.ForwardOnly);
    FillOrganizations(Edited.OrganizationID);
}

void frmUser::FillOrganizations(const QString &OrganizationID)
{
    const QSignalBlocker quiet(cmboOrg);
    cmboOrg->clear();
    for (const clsUserOrganization *organization : Organizations())
        cmboOrg->addItem(organization->Name, organization->ID);
    const int index = cmboOrg->findData(OrganizationID);
    cmboOrg->setCurrentIndex(index < 0 ? 0 : index);
    FillFolderTree();
}

void frmUser::FillFolderTree()
{
    const QSignalBlocker quiet(FolderTree);
    FolderTree->clear();
    const QString organizationID = cmboOrg->currentData().toString();
    auto *root = new QTreeWidgetItem(FolderTree, {DictText("ALLFOLDERS", "All Folders")});
    root->setData(0, KeyRole, RootKey);
    root->setCheckState(0, Edited.Folders.isEmpty() ? Qt::Checked : Qt::Unchecked);
    const QStringList ticked = Edited.Folders.split(u',', Qt::SkipEmptyParts);
    QHash<QString, QTreeWidgetItem *> nodes;
    QList<const clsUserFolder *> shown;
    for (const clsUserFolder *folder : UserFolders()) {
        // Folders of other users are not shown.
        if (folder->OrganizationID != organizationID || (!folder->UserID.isEmpty() && folder->UserID != Edited.ID))
            continue;
        auto *node = new QTreeWidgetItem({folder->Name});
        node->setData(0, KeyRole, QStringLiteral("F") + folder->ID);
        node->setCheckState(0, ticked.contains(folder->ID) ? Qt::Checked : Qt::Unchecked);
        nodes.insert(folder->ID, node);
        shown.append(folder);
    }
    for (const clsUserFolder *folder : shown) {
        QTreeWidgetItem *parent = nodes.value(folder->Parent, root);
        parent->addChild(nodes.value(folder->ID));
    }
    FolderTree->expandAll();
}

QStringList frmUser::TickedFolders() const
{
    QStringList keys;
    for (QTreeWidgetItemIterator it(FolderTree, QTreeWidgetItemIterator::Checked); *it; ++it)
        keys << (*it)->data(0, KeyRole).toString();
    return keys.contains(RootKey) ? QStringList{RootKey} : keys;
}

void frmUser::AddEmail()
{
    bool ok = false;
    const QString address = QInputDialog::getText(this, windowTitle(), DictText("GRIDEMAILUSER", "Email Address"),
                                                  QLineEdit::Normal, QString(), &ok).trimmed();
    if (!ok || address.isEmpty())
        return;
    EmailGrid->insertRow(EmailGrid->rowCount());
    EmailGrid->setItem(EmailGrid->rowCount() - 1, 0, new QTableWidgetItem(address));
    MarkDirty();
}

void frmUser::EditEmail()
{
    QTableWidgetItem *item = EmailGrid->item(EmailGrid->currentRow(), 0);
    if (!item)
        return;
    bool ok = false;
    const QString address = QInputDialog::getText(this, windowTitle(), DictText("GRIDEMAILUSER", "Email Address"),
                                                  QLineEdit::Normal, item->text(), &ok).trimmed();
    if (ok && !address.isEmpty()) {
        item->setText(address);
        MarkDirty();
    }
}

void frmUser::TakeControls()
{
    Edited.Username = txtUserName->text().trimmed();
    // An untouched password box keeps the stored password: the server keeps
    // it when the fragment has none.
    Edited.Password = m_passwordTyped && !txtPassword->text().isEmpty() ? MD5Hash(txtPassword->text()) : QString();
    Edited.Fullname = txtFullName->text().trimmed();
    Edited.OrganizationID = cmboOrg->currentData().toString();
    Edited.OrganizationAdmin = chkAdmin->isChecked();
    Edited.Admin = chkSysAdmin->isChecked();
    Edited.AllowPOP3Imap = chkPOP3->isChecked();
    Edited.Email = GridTexts(EmailGrid).join(u',');
    QStringList folders;
    for (const QString &key : TickedFolders())
        if (key != RootKey)
            folders << key.mid(1);
    Edited.Folders = folders.join(u',');
    Edited.Forward = chkForward->isChecked();
    Edited.ForwardTo = txtForwardTo->text().trimmed();
    Edited.ForwardOnly = chkForwardOnly->isChecked();
}

bool frmUser::Save()
{
    TakeControls();
    const clsUser *namesake = Users().Item(Users().UserNoFromName(Edited.Username));
    if (Edited.Username.isEmpty()) {
        ShowTaskDialog(this, DictText("ERRORNOUSERNAME", "You must enter a username."), QString());
        return false;
    }
    if (namesake && namesake->ID != Edited.ID) {
        ShowTaskDialog(this, DictText("ERRORUSEREXISTS", "A user already exists with this username."), QString());
        return false;
    }
    if (!Remote().SendUser(Edited))
        return false;
    Remote().HTTPGet(Requests::GetUser(Edited.ID));
    Dirty = false;
    IsNew = false;
    return true;
}

bool frmUser::SaveChanges()
{
    if (!Dirty)
        return true;
    const auto answer = ShowTaskDialog(this, DictText("SAVEUSER1", "Save Changes?"),
                                       DictText("SAVEUSER2", "Do you want to save the changes made to this User?"),
                                       QString(), QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    if (answer == QMessageBox::Cancel)
        return false;
    return answer == QMessageBox::No || Save();
}

void frmUser::closeEvent(QCloseEvent *event)
{
    if (!m_closing && !SaveChanges()) {
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}
