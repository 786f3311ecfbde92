#include "Editors.h"
#include "actions/panels/MessageActionEditors.h"
#include "frmAccount.h"
#include "actions/panels/DataActionEditors.h"
#include "frmAccountSendTo.h"
#include "frmFolder.h"
#include "frmRunWith.h"
#include "frmTrigger.h"
#include "frmUser.h"
#include "frmUserOrganization.h"
#include "model/GlobalCollections.h"
#include "workbench/frmClient.h"
#include "workbench/frmOptions.h"
#include "workbench/frmViewChecked.h"

#include <QPushButton>

namespace {

// The "Trigger Settings" tab of the ribbon on the trigger editor.
void RunTriggerCommand(frmTrigger &Editor, int ID)
{
    switch (ID) {
    case frmClient::ID_ADDFIELD:
    case frmClient::ID_ADDLOOKUPFIELD:
        Editor.setSelectedTab(frmTrigger::TabFields);
        Editor.ShowFieldForm(true, ID == frmClient::ID_ADDLOOKUPFIELD);
        break;
    case frmClient::ID_EDITFIELD:
        Editor.ShowFieldForm(false);
        break;
    case frmClient::ID_DELETEFIELD:
        Editor.DeleteField();
        break;
    case frmClient::ID_FIELDUP:
        Editor.MoveUp();
        break;
    case frmClient::ID_FIELDDOWN:
        Editor.MoveDown();
        break;
    case frmClient::ID_EDITACTION:
        Editor.ShowActionForm(Editor.SelectedActionID, false);
        break;
    case frmClient::ID_DELETEACTION:
        Editor.DeleteAction();
        break;
    case frmClient::ID_ACTIONUP:
        Editor.MoveActionUp();
        break;
    case frmClient::ID_ACTIONDOWN:
        Editor.MoveActionDown();
        break;
    case frmClient::ID_TRIGGERSAVE:
        Editor.btnOK->click();
        break;
    case frmClient::ID_TRIGGERCANCEL:
        Editor.btnCancel->click();
        break;
    default:
        if (ID >= frmClient::ID_TRIGGERCONDITIONS && ID <= frmClient::ID_NOTES)
            Editor.setSelectedTab(frmTrigger::TabGeneral + ID - frmClient::ID_TRIGGERCONDITIONS);
        break;
    }
}

// The "Account Settings" tab of the ribbon on the account editor.
void RunAccountCommand(frmAccount &Editor, int ID)
{
    if (ID == frmClient::ID_ACCOUNTSAVE)
        Editor.btnOK->click();
    else if (ID == frmClient::ID_ACCOUNTCANCEL)
        Editor.btnCancel->click();
    else
        Editor.ShowSourcePage(ID - frmClient::ID_GETVIAEMAIL);
}

} // namespace

void RegisterEditors()
{
    RegisterMessageActionEditors();
    frmClient::MakeAccountEditor = [](clsAccount *Account) -> QWidget * { return NewAccountEditor(Account); };
    RegisterDataActionEditors();
    frmClient::MakeTriggerEditor = [](clsAccount *Account, clsAccountTrigger *Trigger) -> QWidget * {
        return NewTriggerEditor(*Account, Trigger);
    };
    frmClient::MakeUserEditor = [](clsUser *User) -> QWidget * { return new frmUser(User); };
    frmClient::MakeDeployDialog = [](const QString &AccountID, QWidget *Parent) -> QDialog * {
        return new frmAccountSendTo(AccountID, Parent);
    };
    frmViewChecked::EditFolder = [](const clsUserFolder *Folder, const QString &ParentKey, QWidget *Parent) {
        frmFolder dialog(Folder, Parent);
        // A new folder hangs under the node it was asked for; the folder
        // dialog offers the organization's folders only.
        if (!Folder)
            dialog.SelectParent(ParentKey.startsWith(u'P') && ParentKey != u"PUBLIC" ? ParentKey : QStringLiteral("ROOT"));
        return dialog.exec() == QDialog::Accepted;
    };
    frmClient::MakeRunWithDialog = [](clsAccountTrigger *Trigger, QWidget *Parent) -> QDialog * {
        auto *dialog = new frmRunWith(Parent);
        dialog->Trigger = Trigger;
        dialog->Prepare(nullptr);
        return dialog;
    };
    frmOptions::MakeOrganizationEditor = [](const QString &OrganizationID, QWidget *Parent) -> QDialog * {
        return new frmUserOrganization(Organizations().Item(OrganizationID), Parent);
    };
    frmClient::RunEditorCommand = [](QWidget *Editor, int ID) {
        if (auto *trigger = qobject_cast<frmTrigger *>(Editor))
            RunTriggerCommand(*trigger, ID);
        else if (auto *account = qobject_cast<frmAccount *>(Editor))
            RunAccountCommand(*account, ID);
    };
}
