#pragma once
#include "MessageDocument.h"
#include "ViewClient.h"

#include <QWidget>
#include <functional>

class HtmlView;
class QLabel;
class QListWidget;

// The reading pane of the message browser: the labels of the message, its
// body (HTML, or the text as paragraphs) and its attachments. Loading a
// message that is replaced before its reply came drops that reply.
class frmViewPreview : public QWidget
{
    Q_OBJECT
public:
    static inline const QString LoadingPage = QStringLiteral(
        "<html><body style='border:0;margin:3;'><p style='font-family:Arial, Helvetica, sans-serif;font-size:9pt;"
        "font-weight;bold;'>Loading...</p></body></html>");

    explicit frmViewPreview(QWidget *parent = nullptr);

    // Fetches the MIME text of a stored message: from the store's files when
    // the console runs beside the server (Global.IsLocal), else from the
    // server; Done gets the text, or "Error:" and the reason.
    static void FetchMessage(ViewClient &Client, const QString &FolderID, qint32 RecordNo,
                             std::function<void(const QString &)> Done);

    void ShowMessage(const QString &FolderID, qint32 RecordNo);
    void ShowLoading();
    // Shows a message from its MIME text; the pane's own reply handler.
    void RemoteMessageReceived(const QString &Text);
    void Clear();

    qint32 RecordNo = 0;
    QString FolderID;
    MessageDocument Document;
    ViewClient Client;
    HtmlView *Browser = nullptr;
    QLabel *lblSubject = nullptr;
    QLabel *lblFrom = nullptr;
    QLabel *lblStatus = nullptr;
    QListWidget *lstAttachments = nullptr;

signals:
    // A message is on show.
    void Shown(qint32 RecordNo);
};
