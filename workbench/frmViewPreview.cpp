#include "frmViewPreview.h"
#include "HtmlView.h"
#include "foundation/GlobalBlock.h"
#include "session/Requests.h"
#include "store/clsMessageStore.h"

#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

frmViewPreview::frmViewPreview(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmViewPreview"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    lblSubject = new QLabel(this);
    QFont bold = lblSubject->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.2);
    lblSubject->setFont(bold);
    lblFrom = new QLabel(this);
    lblStatus = new QLabel(this);
    for (QLabel *label : {lblSubject, lblFrom, lblStatus}) {
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(label);
    }
    Browser = new HtmlView(this);
    layout->addWidget(Browser, 1);
    lstAttachments = new QListWidget(this);
    lstAttachments->setFlow(QListView::LeftToRight);
    lstAttachments->setWrapping(true);
    lstAttachments->setMaximumHeight(48);
    lstAttachments->hide();
    layout->addWidget(lstAttachments);
}

void frmViewPreview::FetchMessage(ViewClient &Client, const QString &FolderID, qint32 RecordNo,
                                  std::function<void(const QString &)> Done)
{
    if (Global.IsLocal) {
        clsMessageStore store;
        Done(store.OpenMessageStore() ? store.GetMessage(RecordNo) : QStringLiteral("Error:") + store.LastError);
        return;
    }
    Client.Get(Requests::GetMessage(FolderID, RecordNo), [Done](const ViewClient::Reply &Reply) {
        Done(Reply.Ok() ? Reply.Text : QStringLiteral("Error:") + Reply.Failure());
    });
}

void frmViewPreview::ShowMessage(const QString &Folder, qint32 Record)
{
    Client.Drop();
    FolderID = Folder;
    RecordNo = Record;
    ShowLoading();
    FetchMessage(Client, Folder, Record, [this](const QString &Text) { RemoteMessageReceived(Text); });
}

void frmViewPreview::ShowLoading()
{
    lblSubject->clear();
    lblFrom->clear();
    lblStatus->clear();
    lstAttachments->clear();
    lstAttachments->hide();
    Browser->ShowHtml(LoadingPage);
}

void frmViewPreview::RemoteMessageReceived(const QString &Text)
{
    if (!Document.Load(Text)) {
        Browser->ShowHtml(QString());
        lblSubject->setText(Text.startsWith(QStringLiteral("Error:")) ? Text.mid(6).trimmed() : QString());
        return;
    }
    lblSubject->setText(Document.Subject);
    lblFrom->setText(Document.From + QStringLiteral("  \u2192  ") + Document.To);
    lblStatus->setText(Document.Processed + QStringLiteral("  ") + Document.Status);
    Browser->ShowHtml(Document.Html.isEmpty() ? MessageDocument::TextAsHtml(Document.Text) : Document.Html,
                      Document.RelatedItems);
    for (const MimeAttachment &attachment : Document.Attachments)
        lstAttachments->addItem(MessageDocument::AttachmentCaption(attachment));
    lstAttachments->setVisible(!Document.Attachments.isEmpty());
    emit Shown(RecordNo);
}

void frmViewPreview::Clear()
{
    Client.Drop();
    RecordNo = 0;
    FolderID.clear();
    Document = MessageDocument();
    ShowLoading();
    Browser->ShowHtml(QString());
}
