#include "frmViewPendingScheduled.h"
#include "HtmlView.h"
#include "PrintPage.h"
#include "RibbonBar.h"
#include "foundation/GlobalBlock.h"
#include "foundation/cDDict.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QAction>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QMessageBox>
#include <QSplitter>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <iterator>

frmViewPendingScheduled::frmViewPendingScheduled(QWidget *parent) : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("frmViewPendingScheduled"));
    setAttribute(Qt::WA_DeleteOnClose);
    resize(1000, 700);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    CommandBar = new RibbonBar(this);
    CommandBar->SystemButton->hide();
    CommandBar->QuickButton->hide();
    layout->addWidget(CommandBar);
    QWidget *tab = CommandBar->AddTab(QStringLiteral("Scheduled Messages"));
    QGroupBox *message = CommandBar->AddGroup(tab, QStringLiteral("Message"));
    CommandBar->AddCommand(message, ID_DELETE, QStringLiteral("Delete"), QString(), QStyle::SP_TrashIcon);
    CommandBar->AddCommand(message, ID_DELETEALL, QStringLiteral("Delete All"), QString(), QStyle::SP_DialogDiscardButton, false);
    CommandBar->AddCommand(message, ID_SENDNOW, QStringLiteral("Send Now"), QStringLiteral("Send the selected scheduled messages now."),
                           QStyle::SP_ArrowForward, false);
    CommandBar->AddCommand(message, ID_PRINT, QStringLiteral("Print"), QString(), QStyle::SP_FileDialogInfoView, false);
    QGroupBox *search = CommandBar->AddGroup(tab, QStringLiteral("Search"));
    auto *fields = new QWidget(search);
    auto *fieldLayout = new QVBoxLayout(fields);
    fieldLayout->setContentsMargins(0, 0, 0, 0);
    fieldLayout->addWidget(new QLabel(QStringLiteral("Subject Or Address Contains:"), fields));
    txtSearch = new QLineEdit(fields);
    txtSearch->setClearButtonEnabled(true);
    fieldLayout->addWidget(txtSearch);
    search->layout()->addWidget(fields);
    CommandBar->AddCommand(search, ID_REFRESH, QStringLiteral("Refresh"), QString(), QStyle::SP_BrowserReload);

    auto *split = new QSplitter(Qt::Vertical, this);
    Grid = new QTreeWidget(split);
    Grid->setRootIsDecorated(false);
    Grid->setUniformRowHeights(true);
    Grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    // The grid's layout text: captions by "|", "^" centres a column.
    const QString layoutText = DDict().GetString(
        QStringLiteral("GRIDSCHEDULED"),
        QStringLiteral("Source|^  |^   | From                                               | To                                             |^Send Date                           | Subject"));
    QStringList captions;
    for (const QString &caption : layoutText.split(u'|'))
        captions << (caption.startsWith(u'^') ? caption.mid(1) : caption).trimmed();
    Grid->setHeaderLabels(captions);
    const int widths[] = {140, 24, 24, 220, 220, 150, 300};
    for (int column = 0; column < int(std::size(widths)) && column < captions.size(); ++column)
        Grid->header()->resizeSection(column, widths[column]);
    auto *body = new QWidget(split);
    auto *bodyLayout = new QVBoxLayout(body);
    bodyLayout->setContentsMargins(0, 0, 0, 0);
    Browser = new HtmlView(body);
    bodyLayout->addWidget(Browser, 1);
    lstAttachments = new QListWidget(body);
    lstAttachments->setMaximumHeight(60);
    lstAttachments->hide();
    bodyLayout->addWidget(lstAttachments);
    layout->addWidget(split, 1);
    lblStatus = new QLabel(this);
    lblStatus->setContentsMargins(6, 2, 6, 2);
    layout->addWidget(lblStatus);

    SettleTimer.setSingleShot(true);
    SettleTimer.setInterval(SettleInterval);
    connect(Grid, &QTreeWidget::currentItemChanged, this, [this] { SettleTimer.start(); });
    connect(&SettleTimer, &QTimer::timeout, this, [this] {
        const qint32 record = RecordOf(Grid->currentItem());
        if (record <= 0)
            return;
        BodyClient.Drop();
        BodyClient.Get(Requests::GetScheduledMessage(AccountID, record), [this](const ViewClient::Reply &Reply) {
            if (ViewClient::Report(Reply))
                UpdateBody(Reply.Text);
        });
    });
    connect(CommandBar->Command(ID_DELETE), &QAction::triggered, this, [this] { DeleteSelected(); });
    connect(CommandBar->Command(ID_DELETEALL), &QAction::triggered, this, [this] { DeleteAll(); });
    connect(CommandBar->Command(ID_SENDNOW), &QAction::triggered, this, &frmViewPendingScheduled::SendNow);
    connect(CommandBar->Command(ID_PRINT), &QAction::triggered, this, &frmViewPendingScheduled::Print);
    connect(CommandBar->Command(ID_REFRESH), &QAction::triggered, this, [this] {
        SearchText = txtSearch->text().trimmed();
        LoadView();
    });
    connect(txtSearch, &QLineEdit::returnPressed, CommandBar->Command(ID_REFRESH), &QAction::trigger);
}

void frmViewPendingScheduled::ShowMessages(const QString &Account, const QString &Trigger)
{
    AccountID = Account;
    TriggerID = Trigger;
    QString title = QStringLiteral("Scheduled Messages");
    if (const clsAccount *account = Accounts().Item(Account)) {
        // The rows name their triggers: the names come with the conditions.
        if (account->Triggers.Count() == 0)
            Remote().HTTPGet(Requests::GetTriggerConditions(Account));
        title += QStringLiteral(" For Account: ") + account->Name;
        if (const clsAccountTrigger *trigger = account->Triggers.Item(Trigger))
            title += QStringLiteral(" - Trigger ") + trigger->Name;
    }
    setWindowTitle(title);
    LoadView();
}

void frmViewPendingScheduled::LoadView()
{
    Client.Drop();
    lblStatus->setText(QStringLiteral("Viewing Scheduled Emails"));
    Client.Get(Requests::GetScheduledMessages(AccountID, TriggerID, SearchText), [this](const ViewClient::Reply &Reply) {
        if (ViewClient::Report(Reply))
            FillGridRemote(Reply.Text);
        else
            lblStatus->setText(Reply.Failure());
    });
}

void frmViewPendingScheduled::FillGridRemote(const QString &Text)
{
    Grid->clear();
    Browser->ShowHtml(QString());
    lstAttachments->hide();
    const QIcon attachment = style()->standardIcon(QStyle::SP_FileLinkIcon);
    const QIcon high = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    QList<QTreeWidgetItem *> rows;
    for (const QString &line : Text.split(u'\n', Qt::SkipEmptyParts)) {
        // RecordNo, Importance, Attachments, TriggerID, MailFrom, MailTo, ScheduledDate, Subject.
        const QStringList fields = line.split(u'\t');
        if (fields.size() < 8)
            continue;
        auto *row = new QTreeWidgetItem;
        row->setData(ColSource, Qt::UserRole, fields.at(0).toInt());
        const clsAccount *account = Accounts().Item(AccountID);
        const clsAccountTrigger *trigger = account ? account->Triggers.Item(fields.at(3)) : nullptr;
        row->setText(ColSource, trigger ? trigger->Name : fields.at(3));
        if (fields.at(1).toInt() == 1 || fields.at(1) == u"H")
            row->setIcon(ColImportance, high);
        if (fields.at(2) == u"Y")
            row->setIcon(ColAttachment, attachment);
        row->setText(ColFrom, fields.at(4));
        row->setText(ColTo, fields.at(5));
        const QDateTime due = QDateTime::fromString(fields.at(6), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        row->setText(ColSendDate, due.isValid() ? QLocale().toString(due, QLocale::ShortFormat) : fields.at(6));
        row->setText(ColSubject, fields.at(7));
        rows << row;
    }
    Grid->addTopLevelItems(rows);
    lblStatus->setText(QString::number(rows.size()) + QStringLiteral(" Messages"));
    emit Loaded();
}

void frmViewPendingScheduled::UpdateBody(const QString &Text)
{
    lstAttachments->clear();
    if (!Document.Load(Text)) {
        Browser->ShowHtml(QString());
        lstAttachments->hide();
        return;
    }
    Browser->ShowHtml(Document.Html.isEmpty() ? MessageDocument::TextAsHtml(Document.Text) : Document.Html,
                      Document.RelatedItems);
    const QIcon icon = style()->standardIcon(QStyle::SP_FileLinkIcon);
    for (const MimeAttachment &part : Document.Attachments)
        lstAttachments->addItem(new QListWidgetItem(icon, MessageDocument::AttachmentCaption(part)));
    lstAttachments->setVisible(!Document.Attachments.isEmpty());
}

QList<QTreeWidgetItem *> frmViewPendingScheduled::SelectedRows() const
{
    return Grid->selectedItems();
}

qint32 frmViewPendingScheduled::RecordOf(const QTreeWidgetItem *Row)
{
    return Row ? Row->data(ColSource, Qt::UserRole).toInt() : 0;
}

void frmViewPendingScheduled::DeleteSelected(bool Ask)
{
    const QList<QTreeWidgetItem *> rows = SelectedRows();
    if (rows.isEmpty())
        return;
    if (Ask
        && QMessageBox::question(this, Global.AppTitle,
                                 DDict().GetString(QStringLiteral("SCHEDULEDELETE"),
                                                   QStringLiteral("Delete all currently selected scheduled messages?")))
            != QMessageBox::Yes)
        return;
    for (QTreeWidgetItem *row : rows) {
        if (!ViewClient::Report(Client.Wait(Requests::DeleteScheduledMessage(AccountID, RecordOf(row)))))
            break;
        delete row;
    }
    lblStatus->setText(QString::number(Grid->topLevelItemCount()) + QStringLiteral(" Messages"));
}

void frmViewPendingScheduled::DeleteAll(bool Ask)
{
    if (Grid->topLevelItemCount() == 0)
        return;
    if (Ask
        && QMessageBox::question(this, Global.AppTitle,
                                 DDict().GetString(QStringLiteral("SCHEDULEDELETE"),
                                                   QStringLiteral("Delete all currently selected scheduled messages?")))
            != QMessageBox::Yes)
        return;
    if (ViewClient::Report(Client.Wait(Requests::DeleteScheduledMessages(AccountID, TriggerID, SearchText))))
        LoadView();
}

void frmViewPendingScheduled::SendNow()
{
    for (QTreeWidgetItem *row : SelectedRows()) {
        if (!ViewClient::Report(Client.Wait(Requests::SendScheduledMessage(AccountID, RecordOf(row)))))
            return;
    }
    LoadView();
}

void frmViewPendingScheduled::Print()
{
    QString html = QStringLiteral("<html><body><h3>") + windowTitle().toHtmlEscaped()
        + QStringLiteral("</h3><table border='1' cellspacing='0' cellpadding='2' width='100%'>");
    for (int i = 0; i < Grid->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *row = Grid->topLevelItem(i);
        html += QStringLiteral("<tr>");
        for (int column : {ColSource, ColFrom, ColTo, ColSendDate, ColSubject})
            html += QStringLiteral("<td>") + row->text(column).toHtmlEscaped() + QStringLiteral("</td>");
        html += QStringLiteral("</tr>");
    }
    html += QStringLiteral("</table></body></html>");
    PrintPage(this, html, QStringLiteral("Scheduled_Messages"));
}
