#include "ctlActionJabber.h"
#include "actions/ActionItem.h"
#include "actions/clsActionJabber.h"
#include "editors/EditorBoxes.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>

ctlActionJabber::ctlActionJabber(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Jabber"));
    txtServer = new QLineEdit(this);
    txtServer->setMinimumWidth(320);
    txtUsername = new QLineEdit(this);
    txtPassword = new QLineEdit(this);
    txtPassword->setEchoMode(QLineEdit::Password);
    txtJabberID = new QLineEdit(this);
    cmboMessageType = new QComboBox(this);
    cmboMessageType->addItems(clsActionJabber::MessageTypeNames());
    txtSubject = new QLineEdit(this);
    txtMessage = new QPlainTextEdit(this);
    auto *form = new QFormLayout(this);
    form->addRow(EditorText("JABBERSERVER", "Server:"), txtServer);
    form->addRow(EditorText("JABBERUSER", "User Name:"), txtUsername);
    form->addRow(EditorText("JABBERPASSWORD", "Password:"), txtPassword);
    form->addRow(EditorText("JABBERTO", "Send To (Jabber ID):"), txtJabberID);
    form->addRow(EditorText("JABBERTYPE", "Message Type:"), cmboMessageType);
    form->addRow(EditorText("JABBERSUBJECT", "Subject:"), txtSubject);
    form->addRow(EditorText("JABBERTEXT", "Message:"), txtMessage);
    WatchEdits();
}

void ctlActionJabber::Load()
{
    const auto *action = ThisAction->As<clsActionJabber>();
    txtServer->setText(action->Server);
    txtUsername->setText(action->Username);
    txtPassword->setText(action->Password);
    txtJabberID->setText(action->ToJabberID);
    cmboMessageType->setCurrentIndex(qBound(0, int(action->MessageType), cmboMessageType->count() - 1));
    txtSubject->setText(action->MessageSubject);
    txtMessage->setPlainText(action->MessageText);
    Dirty = false;
}

bool ctlActionJabber::Save()
{
    if (txtServer->text().trimmed().isEmpty() || txtJabberID->text().trimmed().isEmpty())
        return Refuse(EditorText("JABBERERROR", "You must enter a server and recipient."));
    auto *action = ThisAction->As<clsActionJabber>();
    action->Server = txtServer->text().trimmed();
    action->Username = txtUsername->text();
    action->Password = txtPassword->text();
    action->ToJabberID = txtJabberID->text().trimmed();
    action->MessageType = qint16(cmboMessageType->currentIndex());
    action->MessageSubject = txtSubject->text();
    action->MessageText = txtMessage->toPlainText();
    return true;
}
