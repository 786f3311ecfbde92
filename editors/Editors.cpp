#include "Editors.h"
#include "actions/panels/DataActionEditors.h"
#include "frmAccountSendTo.h"
#include "frmTrigger.h"
#include "frmUser.h"
#include "workbench/frmClient.h"

void RegisterEditors()
{
    RegisterDataActionEditors();
    frmClient::MakeTriggerEditor = [](clsAccount *Account, clsAccountTrigger *Trigger) -> QWidget * {
        return NewTriggerEditor(*Account, Trigger);
    };
    frmClient::MakeUserEditor = [](clsUser *User) -> QWidget * { return new frmUser(User); };
    frmClient::MakeDeployDialog = [](const QString &AccountID, QWidget *Parent) -> QDialog * {
        return new frmAccountSendTo(AccountID, Parent);
    };
}
