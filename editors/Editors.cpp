#include "Editors.h"
#include "frmUser.h"
#include "workbench/frmClient.h"

void RegisterEditors()
{
    frmClient::MakeUserEditor = [](clsUser *User) -> QWidget * { return new frmUser(User); };
}
