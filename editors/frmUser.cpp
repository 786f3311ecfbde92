#include "frmUser.h"
#include "AddressGrid.h"
#include "EditorBoxes.h"
#include "FolderNodes.h"
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
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

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
    Addresses = new AddressGrid(DictText("GRIDEMAILUSER", "Email Address"), this);
    EmailGrid = Addresses->Grid;
    btnAdd = Addresses->btnAdd;
    btnEdit = Addresses->btnEdit;
    btnDelete = Addresses->btnDelete;
    FolderTree = new QTreeWidget(this);
    FolderTree->setObjectName(QStringLiteral("FolderTree"));
    FolderTree->setHeaderHidden(true);
    chkForward = new QCheckBox(QStringLiteral("Forward Email To"), this);
    chkForward->setObjectName(QStringLiteral("chkForward"));
    txtForwardTo = new QLineEdit(this);
    txtForwardTo->setObjectName(QStringLiteral("txtForwardTo"));
    chkForwardOnly = new QCheckBox(QStringLiteral("Forward Only (Do Not Keep A Copy)"), this);
    chkForwardOnly->setObjectName(QStringLiteral("chkForwardOnly"));
    btnSave = NamedButton(QStringLiteral("Save"), "btnSave", this);
    btnSave->setDefault(true);
    btnCancel = NamedButton(QStringLiteral("Cancel"), "btnCancel", this);

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
    auto *addressLayout = new QVBoxLayout(addresses);
    addressLayout->addWidget(Addresses);

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
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addLayout(ClosingButtons(btnSave, btnCancel));
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
    connect(Addresses, &AddressGrid::Changed, this, &frmUser::MarkDirty);
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
    Addresses->SetAddresses(Edited.EmailAddresses());
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
    const QString organizationID = cmboOrg->currentData().toString();
    QTreeWidgetItem *root = FillFolderNodes(FolderTree, DictText("ALLFOLDERS", "All Folders"), u'F',
                                            [this, &organizationID](const clsUserFolder &Folder) {
                                                // Folders of other users are not shown.
                                                return Folder.OrganizationID == organizationID
                                                       && (Folder.UserID.isEmpty() || Folder.UserID == Edited.ID);
                                            });
    const QStringList ticked = Edited.Folders.split(u',', Qt::SkipEmptyParts);
    for (QTreeWidgetItemIterator it(FolderTree); *it; ++it) {
        const QString key = (*it)->data(0, FolderKeyRole).toString();
        const bool on = *it == root ? Edited.Folders.isEmpty() : ticked.contains(key.mid(1));
        (*it)->setCheckState(0, on ? Qt::Checked : Qt::Unchecked);
    }
}

QStringList frmUser::TickedFolders() const
{
    QStringList keys;
    for (QTreeWidgetItemIterator it(FolderTree, QTreeWidgetItemIterator::Checked); *it; ++it)
        keys << (*it)->data(0, FolderKeyRole).toString();
    return keys.contains(FolderRootKey) ? QStringList{FolderRootKey} : keys;
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
    Edited.Email = Addresses->Addresses().join(u',');
    QStringList folders;
    for (const QString &key : TickedFolders())
        if (key != FolderRootKey)
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
