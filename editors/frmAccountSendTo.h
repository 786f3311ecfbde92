#pragma once
#include <QDialog>
#include <QNetworkAccessManager>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

// Deploys an account of the connected server, with its triggers and the
// folders they store into, to another server. It talks to the target with
// a client of its own, beside the session.
class frmAccountSendTo : public QDialog
{
    Q_OBJECT
public:
    frmAccountSendTo(const QString &AccountID, QWidget *parent = nullptr);

    QLabel *lblAccount = nullptr;
    QComboBox *cmboServer = nullptr;
    QLineEdit *txtUserName = nullptr;
    QLineEdit *txtPassword = nullptr;
    QPushButton *btnDeploy = nullptr;
    QPushButton *btnCancel = nullptr;
    QPushButton *btnHelp = nullptr;

    QString AccountID;
    QNetworkAccessManager HTTPS;
    // The folder requests sent to the target by the last deployment.
    QStringList FolderRequests;

    // The steps of the Deploy button: true when the account was deployed.
    bool Deploy();
    // "localhost", "(local)" and "local" are 127.0.0.1.
    static QString NormalHost(const QString &Host);

private:
    struct Reply
    {
        int Status = 0;
        QString Text;
        QString Error;
    };
    Reply Send(const QString &Address, const QByteArray *Body = nullptr);
    // The target's address of a request, credentials added.
    QString TargetAddress(const QString &Request) const;
    bool LogOnToTarget();
    void Remember(const QString &Server);

    QString m_base;
    QString m_auth;
};
