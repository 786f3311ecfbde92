#include "Editors.h"
#include "frmAccountSendTo.h"
#include "frmUser.h"
#include "workbench/frmClient.h"

void RegisterEditors()
{
    frmClient::MakeUserEditor = [](clsUser *User) -> QWidget * { return new frmUser(User); };
    frmClient::MakeDeployDialog = [](const QString &AccountID, QWidget *Parent) -> QDialog * {
        return new frmAccountSendTo(AccountID, Parent);
    };
}
