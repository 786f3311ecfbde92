#include "frmViewEmail.h"
#include "HtmlView.h"
#include "PrintPage.h"
#include "RibbonBar.h"
#include "foundation/GlobalBlock.h"
#include "foundation/TextHelpers.h"
#include "foundation/cDDict.h"
#include "frmViewPreview.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QAction>
#include <QActionGroup>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QStackedWidget>
#include <QTableWidget>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>
#include <tuple>

namespace {

QString AppText(const char *Key, const char *Default)
{
    return DDict().GetString(QString::fromLatin1(Key), QString::fromUtf8(Default));
}

bool Confirmed(QWidget *Parent, const QString &Text)
{
    return QMessageBox::question(Parent, Global.AppTitle, Text) == QMessageBox::Yes;
}

} // namespace

frmViewEmail::frmViewEmail(const QString &Folder, qint32 Record, const QString &Account, QWidget *parent)
    : QWidget(parent, Qt::Window), FolderID(Folder), RecordNo(Record), AccountID(Account)
{
    setObjectName(QStringLiteral("frmViewEmail"));
    setProperty("RecordID", QString::number(Record));
    setAttribute(Qt::WA_DeleteOnClose);
    resize(900, 700);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    CommandBar = new RibbonBar(this);
    CommandBar->SystemButton->hide();
    CommandBar->QuickButton->hide();
    layout->addWidget(CommandBar);
    CreateCommands();

    auto *labels = new QGridLayout;
    labels->setContentsMargins(8, 4, 8, 4);
    CreateLabels(labels);
    layout->addLayout(labels);

    auto *split = new QSplitter(Qt::Vertical, this);
    Views = new QStackedWidget(split);
    txtText = new QPlainTextEdit(Views);
    Browser = new HtmlView(Views);
    txtHeaders = new QPlainTextEdit(Views);
    GridLog = new QTableWidget(0, 2, Views);
    GridLog->setHorizontalHeaderLabels({QStringLiteral("Time"), QStringLiteral("Detail")});
    GridLog->horizontalHeader()->setStretchLastSection(true);
    GridLog->verticalHeader()->hide();
    GridLog->setEditTriggers(QAbstractItemView::NoEditTriggers);
    txtRecord = new QPlainTextEdit(Views);
    for (QPlainTextEdit *text : {txtText, txtHeaders, txtRecord}) {
        text->setReadOnly(true);
        text->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    }
    for (QWidget *page : std::initializer_list<QWidget *>{txtText, Browser, txtHeaders, GridLog, txtRecord})
        Views->addWidget(page);
    lstAttachments = new QListWidget(split);
    lstAttachments->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(lstAttachments, &QListWidget::itemDoubleClicked, this,
            [this](QListWidgetItem *Item) { OpenAttachment(lstAttachments->row(Item)); });
    connect(lstAttachments, &QWidget::customContextMenuRequested, this, [this](const QPoint &At) {
        QMenu menu(this);
        menu.addAction(CommandBar->Command(ID_SAVEATTACHMENT));
        menu.exec(lstAttachments->viewport()->mapToGlobal(At));
    });
    split->setStretchFactor(0, 4);
    split->setStretchFactor(1, 1);
    layout->addWidget(split, 1);
    EnableCommands(false);
}

void frmViewEmail::CreateCommands()
{
    RibbonBar &ribbon = *CommandBar;
    QWidget *tab = ribbon.AddTab(QStringLiteral("Message"));
    QGroupBox *views = ribbon.AddGroup(tab, QStringLiteral("View"));
    auto *exclusive = new QActionGroup(this);
    const std::tuple<int, const char *, QStyle::StandardPixmap> pages[] = {
        {ID_VIEWTEXT, "Message Text", QStyle::SP_FileIcon},
        {ID_VIEWHTML, "HTML", QStyle::SP_FileDialogContentsView},
        {ID_VIEWHEADERS, "Message Headers", QStyle::SP_FileDialogDetailedView},
        {ID_VIEWLOG, "Trigger Process Log", QStyle::SP_FileDialogListView},
        {ID_VIEWRECORD, "View Database Record", QStyle::SP_DriveHDIcon},
    };
    for (const auto &[id, caption, icon] : pages) {
        QAction *page = ribbon.AddCommand(views, id, QString::fromLatin1(caption), QString(), icon, id < ID_VIEWHEADERS);
        page->setCheckable(true);
        exclusive->addAction(page);
        connect(page, &QAction::triggered, this, [this, id = id] { ShowView(View(id - ID_VIEWTEXT)); });
    }
    QGroupBox *actions = ribbon.AddGroup(tab, QStringLiteral("Message"));
    const std::tuple<int, const char *, QStyle::StandardPixmap, void (frmViewEmail::*)()> commands[] = {
        {ID_SAVEAS, "Save As", QStyle::SP_DialogSaveButton, &frmViewEmail::SaveAs},
        {ID_PRINT, "Print", QStyle::SP_FileDialogInfoView, &frmViewEmail::Print},
        {ID_FORWARD, "Forward Message", QStyle::SP_ArrowForward, &frmViewEmail::ForwardMessage},
        {ID_REPROCESS, "Reprocess Message", QStyle::SP_BrowserReload, &frmViewEmail::ReprocessMessage},
        {ID_REMOVE, "Remove From Message Store", QStyle::SP_TrashIcon, &frmViewEmail::RemoveMessage},
    };
    for (const auto &[id, caption, icon, handler] : commands)
        connect(ribbon.AddCommand(actions, id, QString::fromLatin1(caption), QString(), icon, id != ID_SAVEAS),
                &QAction::triggered, this, handler);
    QGroupBox *popup = ribbon.AddGroup(tab, QStringLiteral("Popup"));
    connect(ribbon.AddCommand(popup, ID_SAVEATTACHMENT, QStringLiteral("Save"), QString(), QStyle::SP_DialogSaveButton, false),
            &QAction::triggered, this, &frmViewEmail::SaveAttachment);
}

void frmViewEmail::CreateLabels(QGridLayout *Grid)
{
    auto add = [this, Grid](const QString &Caption, QLabel *&Value, int Row, int Column) {
        auto *caption = new QLabel(Caption, this);
        Value = new QLabel(this);
        Value->setTextFormat(Qt::PlainText);
        Value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        Grid->addWidget(caption, Row, Column * 2);
        Grid->addWidget(Value, Row, Column * 2 + 1);
        return caption;
    };
    lblSubject = new QLabel(this);
    lblSubject->setTextFormat(Qt::PlainText);
    QFont bold = lblSubject->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.3);
    lblSubject->setFont(bold);
    Grid->addWidget(lblSubject, 0, 0, 1, 4);
    add(QStringLiteral("From:"), lblFrom, 1, 0);
    add(QStringLiteral("Sent:"), lblSent, 1, 1);
    add(QStringLiteral("To:"), lblTo, 2, 0);
    add(QStringLiteral("Processed:"), lblProcessed, 2, 1);
    lblCCCaption = add(QStringLiteral("CC:"), lblCC, 3, 0);
    add(QStringLiteral("Status:"), lblStatus, 3, 1);
    cmdLink = new QToolButton(this);
    cmdLink->setText(QStringLiteral("Open Link"));
    cmdLink->hide();
    connect(cmdLink, &QToolButton::clicked, this, [this] { QDesktopServices::openUrl(QUrl(Document.URL)); });
    Grid->addWidget(cmdLink, 0, 4);
    Grid->setColumnStretch(1, 1);
    Grid->setColumnStretch(3, 1);
}

void frmViewEmail::EnableCommands(bool Enabled)
{
    for (int id : {ID_SAVEAS, ID_PRINT, ID_FORWARD, ID_REPROCESS, ID_REMOVE, ID_SAVEATTACHMENT})
        CommandBar->Command(id)->setEnabled(Enabled);
}

void frmViewEmail::GetMessage()
{
    lblSubject->setText(AppText("PLEASEWAIT", "Please Wait, Loading Message.."));
    frmViewPreview::FetchMessage(Client, FolderID, RecordNo, [this](const QString &Text) { RemoteMessageReceived(Text); });
}

void frmViewEmail::RemoteMessageReceived(const QString &Text)
{
    if (Text.startsWith(QStringLiteral("Error:"))) {
        lblSubject->setText(Text.mid(6).trimmed());
        EnableCommands(false);
        return;
    }
    if (!Document.Load(Text)) {
        lblSubject->clear();
        return;
    }
    setWindowTitle(Document.Subject + QStringLiteral(" - Message ") + QString::number(RecordNo));
    lblSubject->setText(Document.Subject);
    lblFrom->setText(Document.From);
    lblTo->setText(Document.To);
    lblCC->setText(Document.CC);
    lblCC->setVisible(!Document.CC.isEmpty());
    lblCCCaption->setVisible(!Document.CC.isEmpty());
    lblSent->setText(Document.Sent);
    lblProcessed->setText(Document.Processed);
    lblStatus->setText(Document.Status);
    txtText->setPlainText(Document.Text);
    Browser->ShowHtml(Document.Html, Document.RelatedItems);
    txtHeaders->setPlainText(Document.HeadersText);
    lstAttachments->clear();
    for (const MimeAttachment &attachment : Document.Attachments)
        lstAttachments->addItem(MessageDocument::AttachmentCaption(attachment));
    lstAttachments->setVisible(!Document.Attachments.isEmpty());
    FillProcessLog();
    FillRecord();
    EnableCommands(true);
    cmdLink->setVisible(!Document.URL.isEmpty());
    ShowView(!Document.Html.isEmpty() ? ViewHtml : ViewText);
}

void frmViewEmail::FillProcessLog()
{
    GridLog->setRowCount(0);
    for (const QString &line : Document.ProcessLog) {
        const int row = GridLog->rowCount();
        GridLog->insertRow(row);
        // A log line is a timestamp "yyyy-mm-dd:hh:mm:ss", a blank and the text.
        const qsizetype blank = line.indexOf(u' ');
        const bool stamped = blank == 19 && line.at(4) == u'-';
        GridLog->setItem(row, 0, new QTableWidgetItem(stamped ? line.left(blank) : QString()));
        GridLog->setItem(row, 1, new QTableWidgetItem(stamped ? line.mid(blank + 1) : line));
    }
    GridLog->resizeColumnToContents(0);
}

void frmViewEmail::FillRecord()
{
    const QStringList lines{
        QStringLiteral("RecordNo: ") + QString::number(RecordNo),
        QStringLiteral("FolderID: ") + FolderID,
        QStringLiteral("AccountID: ") + Document.AccountID,
        QStringLiteral("TriggerID: ") + Document.TriggerID,
        QStringLiteral("Subject: ") + Document.Subject,
        QStringLiteral("FromAddress: ") + Document.From,
        QStringLiteral("ToAddress: ") + Document.To,
        QStringLiteral("MessageDate: ") + Document.Sent,
        QStringLiteral("ProcessedDate: ") + Document.Processed,
        QStringLiteral("TriggerMatch: ") + (Document.Matched ? QStringLiteral("Y") : QStringLiteral("N")),
        QStringLiteral("TriggerSuccess: ") + (Document.Succeeded ? QStringLiteral("Y") : QStringLiteral("N")),
        QStringLiteral("TriggerError: ") + Document.Error,
        QStringLiteral("Attachments: ") + QString::number(Document.Attachments.size()),
    };
    txtRecord->setPlainText(lines.join(u'\n'));
}

void frmViewEmail::ShowView(View Which)
{
    Views->setCurrentIndex(Which);
    CommandBar->Command(ID_VIEWTEXT + int(Which))->setChecked(true);
}

frmViewEmail::View frmViewEmail::CurrentView() const
{
    return View(Views->currentIndex());
}

bool frmViewEmail::Forward(const QString &Address)
{
    return ViewClient::Report(Client.Wait(Requests::ForwardMessage(FolderID, RecordNo, Address)));
}

bool frmViewEmail::Reprocess()
{
    const QString account = AccountID.isEmpty() ? Document.AccountID : AccountID;
    if (!ViewClient::Report(Client.Wait(Requests::ReprocessMessage(account, FolderID, RecordNo))))
        return false;
    emit MessageChanged(RecordNo);
    return true;
}

bool frmViewEmail::Remove()
{
    if (!ViewClient::Report(Client.Wait(Requests::DeleteMessage(FolderID, RecordNo))))
        return false;
    emit MessageChanged(RecordNo);
    return true;
}

void frmViewEmail::ForwardMessage()
{
    if (!Confirmed(this, AppText("FORWARDMSG1", "Forward Message?")))
        return;
    bool ok = false;
    const QString address =
        QInputDialog::getText(this, Global.AppTitle, AppText("FORWARDMSG2", "Forward To:"), QLineEdit::Normal, QString(), &ok)
            .trimmed();
    if (!ok || address.isEmpty() || !Forward(address))
        return;
    QMessageBox::information(this, Global.AppTitle, AppText("FORWARDMSG3", "Message Forwarded To:") + address);
}

void frmViewEmail::ReprocessMessage()
{
    if (Confirmed(this, AppText("REPROCESSMSG1", "Reprocess This Message?")))
        Reprocess();
}

void frmViewEmail::RemoveMessage()
{
    if (Confirmed(this, AppText("DELETEMSG1", "Delete This Message?")) && Remove())
        close();
}

void frmViewEmail::SaveAs()
{
    const QString suggested = SafeFileName(Document.Subject.isEmpty() ? QStringLiteral("message") : Document.Subject)
        + QStringLiteral(".eml");
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save As"), suggested,
                                                      QStringLiteral("Eml Files (*.eml)"));
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(Document.MimeWithoutLog().toUtf8()) < 0)
        emit Remote().MessageBar(QStringLiteral("The message could not be saved to ") + path);
}

bool frmViewEmail::SaveAttachmentTo(int Row, const QString &Path) const
{
    return Row >= 0 && Row < Document.Attachments.size() && Document.Attachments.at(Row).SaveTo(Path);
}

void frmViewEmail::SaveAttachment()
{
    const int row = lstAttachments->currentRow();
    if (row < 0 || row >= Document.Attachments.size())
        return;
    const QString path =
        QFileDialog::getSaveFileName(this, QStringLiteral("Save"), MessageDocument::FileName(Document.Attachments.at(row)));
    if (!path.isEmpty() && !SaveAttachmentTo(row, path))
        emit Remote().MessageBar(QStringLiteral("The attachment could not be saved to ") + path);
}

void frmViewEmail::OpenAttachment(int Row)
{
    if (Row < 0 || Row >= Document.Attachments.size() || !TempFolder.isValid())
        return;
    const QString path = TempFolder.filePath(MessageDocument::FileName(Document.Attachments.at(Row)));
    if (SaveAttachmentTo(Row, path))
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

QString frmViewEmail::PrintHtml() const
{
    auto row = [](const QString &Name, const QString &Value) {
        return QStringLiteral("<tr><td width='33%'><b>") + Name.toHtmlEscaped() + QStringLiteral("</b></td><td>")
            + Value.toHtmlEscaped() + QStringLiteral("</td></tr>");
    };
    auto yesNo = [](bool Value) { return Value ? QStringLiteral("Yes") : QStringLiteral("No"); };
    QString html = QStringLiteral("<html><body><h3>") + (Global.ProductName + QStringLiteral(" Trigger")).toHtmlEscaped()
        + QStringLiteral("</h3><table width='100%'>") + row(QStringLiteral("Account"), Document.AccountID)
        + row(QStringLiteral("From"), Document.From) + row(QStringLiteral("To"), Document.To)
        + row(QStringLiteral("Dated"), Document.Sent) + row(QStringLiteral("Processed On"), Document.Processed)
        + row(QStringLiteral("Subject"), Document.Subject) + row(QStringLiteral("Trigger Match"), yesNo(Document.Matched))
        + row(QStringLiteral("Success"), yesNo(Document.Succeeded)) + QStringLiteral("</table><pre style='font-family:\"Courier New\"'>")
        + Document.Text.toHtmlEscaped() + QStringLiteral("</pre><h4>Attachments</h4>");
    for (const MimeAttachment &attachment : Document.Attachments)
        html += MessageDocument::AttachmentCaption(attachment).toHtmlEscaped() + QStringLiteral("<br>");
    return html + QStringLiteral("</body></html>");
}

void frmViewEmail::Print()
{
    PrintPage(this, PrintHtml(), SafeFileName(Document.Subject));
}
