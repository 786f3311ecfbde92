#include "MessageActionEditors.h"
#include "ActionEditors.h"
#include "ctlActionFax.h"
#include "ctlActionForward.h"
#include "ctlActionJabber.h"
#include "ctlActionMSG.h"
#include "ctlActionPopup.h"
#include "ctlActionSMS.h"
#include "ctlActionVCal.h"
#include "ctlActionValidation.h"

namespace {

template <class Control> void Register(const char *ClassName)
{
    RegisterActionEditor(QString::fromLatin1(ClassName),
                         [](QWidget *Parent) -> ActionEditor * { return new Control(Parent); });
}

} // namespace

void RegisterMessageActionEditors()
{
    Register<ctlActionMSG>("Message");
    Register<ctlActionForward>("Forward");
    Register<ctlActionSMS>("SMS");
    Register<ctlActionVCal>("VCal");
    Register<ctlActionFax>("Fax");
    Register<ctlActionPopup>("Popup");
    Register<ctlActionJabber>("Jabber");
    Register<ctlActionValidation>("Validation");
}
