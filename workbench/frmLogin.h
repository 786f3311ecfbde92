#pragma once
#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class frmRemote;

// The login dialog: server, user name and password, then frmRemote.Login
// with its bootstrap. Result holds Login's code: 0 connected, 1 wrong
// credentials (the dialog stays, the password cleared), 2 failed.
class frmLogin : public QDialog
{
    Q_OBJECT
public:
    // CommandLineServer, when given, stands in the server box instead of LastServer.
    explicit frmLogin(frmRemote &Remote, const QString &CommandLineServer = QString(), QWidget *parent = nullptr);

    QComboBox *cboServer = nullptr;
    QLineEdit *txtUserName = nullptr;
    QLineEdit *txtPassword = nullptr;
    QPushButton *btnConnect = nullptr;
    QPushButton *btnCancel = nullptr;
    QPushButton *btnHelp = nullptr;
    QLabel *lblStatus = nullptr;
    QProgressBar *prgLogin = nullptr;
    int Result = -1;

    // Splits a server text into the session fields: host, port, local flag and URL.
    static void SetServer(const QString &Text);
    void Connect();
    // Cancel: the caller reads DialogCancelled; a running request is interrupted.
    void reject() override;

signals:
    void ToolBarConnected(bool Connected);
    // A remote-only console has nothing to show without a session.
    void ShutdownRequested();

private:
    void Fill(const QString &CommandLineServer);
    void SaveServerList();
    void ShowWorking(bool Working);

    frmRemote &m_remote;
};
