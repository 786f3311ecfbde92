#pragma once
#include "ActionEditor.h"

class QAction;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QPlainTextEdit;
class QTabWidget;
class QTableWidget;
class QToolBar;
class SchedulePanel;

// A Message action: addresses, subject, the text and HTML bodies, files
// and incoming attachments, custom headers, and the panels of scheduling,
// another mail server and bounce processing that the command bar opens.
class ctlActionMSG : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionMSG(QWidget *parent = nullptr);

    // The HTML editor's empty document: an HTML body equal to it is none.
    static QString EmptyDocument();

    QToolBar *CommandBar = nullptr;
    QAction *cmdSendTest = nullptr;
    QAction *cmdImportant = nullptr;
    QAction *cmdReadReceipt = nullptr;
    QAction *cmdAddAttachment = nullptr;
    QAction *cmdIncoming = nullptr;
    QAction *cmdIncomingInline = nullptr;
    QAction *cmdEditBody = nullptr;
    QAction *cmdSchedule = nullptr;
    QAction *cmdSendVia = nullptr;
    QAction *cmdBounce = nullptr;

    QLineEdit *txtFrom = nullptr;
    QLineEdit *txtTo = nullptr;
    QLineEdit *txtCC = nullptr;
    QLineEdit *txtBcc = nullptr;
    QLineEdit *txtSubject = nullptr;
    QLineEdit *txtAttach = nullptr;
    QTabWidget *BodyTabs = nullptr;
    QPlainTextEdit *txtBody = nullptr;
    QTabWidget *TabHTMLEdit = nullptr;
    QPlainTextEdit *HTMLEdit = nullptr;
    QLineEdit *txtHTMLFile = nullptr;
    QCheckBox *chkHTMLEmbed = nullptr;
    QTableWidget *GridHeaders = nullptr;

    QGroupBox *ScheduleBox = nullptr;
    SchedulePanel *Schedule = nullptr;
    QGroupBox *SendViaBox = nullptr;
    QLineEdit *txtSMTPServer = nullptr;
    QLineEdit *txtSMTPPort = nullptr;
    QComboBox *cmboSMTPSecurity = nullptr;
    QLineEdit *txtSMTPUser = nullptr;
    QLineEdit *txtSMTPPassword = nullptr;
    QGroupBox *BounceBox = nullptr;
    QButtonGroup *optNDR = nullptr;
    QLineEdit *txtNDRSendTo = nullptr;
    QCheckBox *chkNDRPassTo = nullptr;
    QComboBox *cmboPassTo = nullptr;

    void Load() override;
    bool Save() override;

private:
    void MakeCommandBar();
    QWidget *MakeBodyTabs();
    void MakePanels();
    void AddAttachment();
    // The subject and text as they stand, to the administrator's address
    // through the server's outgoing mail.
    void SendTest();
    QString HtmlText() const;
    QString Headers() const;
};
