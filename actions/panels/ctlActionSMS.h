#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QGroupBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class SchedulePanel;

// An SMS action: number, sender, subject and text, its schedule, and the
// paging (SNPP) server that may carry it, with a test page.
class ctlActionSMS : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionSMS(QWidget *parent = nullptr);

    QLineEdit *txtFrom = nullptr;
    QLineEdit *txtTo = nullptr;
    QLineEdit *txtSubject = nullptr;
    QPlainTextEdit *txtBody = nullptr;
    QGroupBox *ScheduleBox = nullptr; // checkable: ScheduleSend
    SchedulePanel *Schedule = nullptr;
    QGroupBox *SNPPBox = nullptr; // checkable: SendViaSNPP
    QLineEdit *txtSNPPServer = nullptr;
    QLineEdit *txtSNPPLoginID = nullptr;
    QLineEdit *txtSNPPAssignReplyTo = nullptr;
    QPushButton *btnSNPPtest = nullptr;

    void Load() override;
    bool Save() override;

    // Sends one page through an SNPP server ("host" or "host:port"): the
    // server's replies, or why it failed (a text beginning "ERROR").
    static QString SendTestPage(const QString &Server, const QString &LoginID, const QString &From,
                                const QString &To, const QString &Text);
};
