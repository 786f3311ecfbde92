#pragma once
#include "MessageDocument.h"
#include "ViewClient.h"

#include <QTemporaryDir>
#include <QWidget>

class HtmlView;
class QGridLayout;
class QLabel;
class QListWidget;
class QPlainTextEdit;
class QStackedWidget;
class QTableWidget;
class QToolButton;
class RibbonBar;

// The reader of one stored message, a window of its own: the labels, one of
// five views (text, HTML, headers, process log, database record), the
// attachments, and the commands on the message. Attachments opened are
// written to a temporary folder of the window, removed when it closes.
class frmViewEmail : public QWidget
{
    Q_OBJECT
public:
    enum Command {
        ID_VIEWTEXT = 700, ID_VIEWHTML, ID_VIEWHEADERS, ID_VIEWLOG, ID_VIEWRECORD,
        ID_SAVEAS = 710, ID_PRINT, ID_FORWARD, ID_REPROCESS, ID_REMOVE, ID_SAVEATTACHMENT,
    };
    // The views in the order of their commands and pages.
    enum View { ViewText, ViewHtml, ViewHeaders, ViewLog, ViewRecord };

    frmViewEmail(const QString &FolderID, qint32 RecordNo, const QString &AccountID, QWidget *parent = nullptr);

    // Asks for the message (server or local store); the reply fills the window.
    void GetMessage();
    void RemoteMessageReceived(const QString &Text);
    void ShowView(View Which);
    View CurrentView() const;

    // The commands after their questions; each answers whether the server
    // took it, and shows a refusal in the message bar.
    bool Forward(const QString &Address);
    bool Reprocess();
    bool Remove();
    // The commands as the ribbon runs them: question first.
    void ForwardMessage();
    void ReprocessMessage();
    void RemoveMessage();
    void SaveAs();
    void SaveAttachment();
    void OpenAttachment(int Row);
    void Print();
    // Writes the attachment of that row of the list to Path; false when it
    // cannot be written.
    bool SaveAttachmentTo(int Row, const QString &Path) const;
    // The printed page as HTML: a two-column table of the message's facts,
    // the body and the attachments.
    QString PrintHtml() const;

    QString FolderID;
    qint32 RecordNo = 0;
    QString AccountID;
    MessageDocument Document;
    ViewClient Client;
    QTemporaryDir TempFolder;
    RibbonBar *CommandBar = nullptr;
    QLabel *lblSubject = nullptr;
    QLabel *lblFrom = nullptr;
    QLabel *lblTo = nullptr;
    QLabel *lblCC = nullptr;
    QLabel *lblCCCaption = nullptr;
    QLabel *lblSent = nullptr;
    QLabel *lblProcessed = nullptr;
    QLabel *lblStatus = nullptr;
    QToolButton *cmdLink = nullptr;
    QStackedWidget *Views = nullptr;
    QPlainTextEdit *txtText = nullptr;
    HtmlView *Browser = nullptr;
    QPlainTextEdit *txtHeaders = nullptr;
    QTableWidget *GridLog = nullptr;
    QPlainTextEdit *txtRecord = nullptr;
    QListWidget *lstAttachments = nullptr;

signals:
    // The message was removed from the store or sent to be processed again.
    void MessageChanged(qint32 RecordNo);

private:
    void CreateCommands();
    void CreateLabels(QGridLayout *Grid);
    void EnableCommands(bool Enabled);
    void FillProcessLog();
    void FillRecord();
};
