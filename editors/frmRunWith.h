#pragma once
#include <QDialog>

class MimeMail;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class clsAccount;
class clsAccountTrigger;

// A sample message for a trigger: sent at once to the server for a test run
// of the selected trigger, or, with an account, kept as the message the
// account's auto run injects on its schedule.
class frmRunWith : public QDialog
{
    Q_OBJECT
public:
    // How a message of a size reaches the server.
    enum Route { TooBig, ByRequest, ByWebService };
    static constexpr qint64 MaximumSize = 10485760;
    static constexpr qint64 WebServiceSize = 100000;
    static Route RouteFor(qint64 Size);

    explicit frmRunWith(QWidget *parent = nullptr);

    // Nothing in test mode.
    clsAccount *Account = nullptr;
    // The trigger of a test run: the selected one.
    clsAccountTrigger *Trigger = nullptr;

    QLineEdit *txtTo = nullptr;
    QLineEdit *txtFrom = nullptr;
    QLineEdit *txtSubject = nullptr;
    QPlainTextEdit *txtBody = nullptr;
    QLineEdit *txtAttach = nullptr;
    QPushButton *btnAttach = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;
    QPushButton *btnHelp = nullptr;

    // Fills the window for the mode: an account gives auto run mode.
    void Prepare(clsAccount *ForAccount);
    int ShowForm(clsAccount *ForAccount);
    // The message of the controls; with the process headers in test mode.
    void BuildMessage(MimeMail &Message, bool WithHeaders) const;
    // OK in either mode; false when the window stays open.
    bool Accept();

private:
    bool SendTest();
    // Posts the MIME text as a form to the web service; false with a box.
    bool SendViaWebService(const QString &MimeText);
};
