#pragma once
#include "ActionEditor.h"

class QComboBox;
class QLineEdit;
class QPlainTextEdit;

// A Jabber action: the XMPP server and the sender's account, the recipient,
// the kind of message and its text.
class ctlActionJabber : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionJabber(QWidget *parent = nullptr);

    QLineEdit *txtServer = nullptr;
    QLineEdit *txtUsername = nullptr;
    QLineEdit *txtPassword = nullptr;
    QLineEdit *txtJabberID = nullptr;
    QComboBox *cmboMessageType = nullptr;
    QLineEdit *txtSubject = nullptr;
    QPlainTextEdit *txtMessage = nullptr;

    void Load() override;
    bool Save() override;
};
