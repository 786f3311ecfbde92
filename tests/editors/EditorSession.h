#pragma once
#include "ServerFixture.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "session/frmRemote.h"
#include "workbench/frmLogin.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <functional>

// A real server and the console's connection logged on to it as Admin, with
// one account whose triggers the console has read.
struct EditorSession
{
    ServerFixture Server;
    QString Problem;

    bool Start()
    {
        if (!Server.Start()) {
            Problem = Server.Problem;
            return false;
        }
        frmLogin::SetServer(QStringLiteral("127.0.0.1:%1").arg(Server.Port));
        Global.UserName = QStringLiteral("Admin");
        Global.Password.clear();
        Global.PasswordHash = MD5Hash(QString());
        Remote().Closing = false;
        if (Remote().Login() != 0) {
            Problem = QStringLiteral("log-on failed: ") + Remote().ReplyText + Remote().ErrorText;
            return false;
        }
        return true;
    }

    // Posts the account's fragment with its triggers and reads the accounts
    // and the account's triggers back as the console does.
    clsAccount *Post(clsAccount &Account)
    {
        Account.XMLIncludeTriggers = true;
        Remote().HTTPPut(QStringLiteral("postaccount.htm?accountid=") + Account.AccountID, Account.XML());
        Remote().HTTPGet(QStringLiteral("getaccounts.xml"));
        clsAccount *read = Accounts().Item(Account.AccountID);
        if (read)
            Remote().HTTPGet(QStringLiteral("gettriggers.xml?accountid=") + Account.AccountID);
        return read;
    }

    QString Trigger(const QString &AccountID, const QString &TriggerID)
    {
        return Server.Get(QStringLiteral("gettrigger.xml?accountid=") + AccountID + QStringLiteral("&triggerid=") +
                          TriggerID)
            .Text();
    }

    ~EditorSession() { Remote().Close(); }
};

// Handles the modal windows that open while it lives, in order: each
// handler gets the window and must close it. Message boxes that come when no
// handler is left are recorded and answered with Answer.
class ModalHandler : public QObject
{
public:
    explicit ModalHandler(QMessageBox::StandardButton Button = QMessageBox::Ok) : Answer(Button)
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal || !modal->isVisible() || modal->property("handled").toBool())
                return;
            modal->setProperty("handled", true);
            if (auto *box = qobject_cast<QMessageBox *>(modal)) {
                Texts << box->text() + (box->informativeText().isEmpty() ? QString() : u'\n' + box->informativeText());
                if (QAbstractButton *button = box->button(Answer))
                    button->click();
                else
                    box->reject();
                return;
            }
            if (!Handlers.isEmpty())
                Handlers.takeFirst()(modal);
        });
        m_timer.start(20);
    }

    QMessageBox::StandardButton Answer;
    QList<std::function<void(QWidget *)>> Handlers;
    QStringList Texts;

private:
    QTimer m_timer;
};
