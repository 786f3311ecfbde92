#include "Editors.h"
#include "frmAccountSendTo.h"
#include "frmFolder.h"
#include "frmTrigger.h"
#include "frmUser.h"
#include "workbench/frmClient.h"
#include "workbench/frmViewChecked.h"

void RegisterEditors()
{
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
}
