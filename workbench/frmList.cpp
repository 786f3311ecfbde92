#include "frmList.h"
#include "MarkupDelegate.h"
#include "WindowDictionary.h"
#include "foundation/GlobalBlock.h"
#include "foundation/clsXML.h"
#include "model/Condition.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QStackedWidget>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

// A small round icon with a letter: the kinds of rows and sources.
QIcon LetterIcon(QChar Letter, const QColor &Colour)
{
    QPixmap image(32, 32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Colour);
    painter.setPen(Colour.darker(140));
    painter.drawRoundedRect(QRectF(1.5, 1.5, 29, 29), 7, 7);
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(18);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRect(0, 0, 32, 32), Qt::AlignCenter, QString(Letter));
    return QIcon(image);
}

// The icon of an account: the first switch that is on, in this order.
QIcon AccountIcon(const clsAccount &Account)
{
    static const QIcon disabled = LetterIcon(u'-', QColor(0x90, 0x90, 0x90));
    static const QIcon rss = LetterIcon(u'R', QColor(0xE0, 0x7B, 0x00));
    static const QIcon http = LetterIcon(u'W', QColor(0x2E, 0x7D, 0x32));
    static const QIcon database = LetterIcon(u'D', QColor(0x6A, 0x1B, 0x9A));
    static const QIcon file = LetterIcon(u'F', QColor(0x8D, 0x6E, 0x63));
    static const QIcon direct = LetterIcon(u'S', QColor(0x00, 0x83, 0x8F));
    static const QIcon outbox = LetterIcon(u'O', QColor(0xC6, 0x28, 0x28));
    static const QIcon twitter = LetterIcon(u'T', QColor(0x1D, 0x9B, 0xF0));
    static const QIcon csv = LetterIcon(u'C', QColor(0x55, 0x8B, 0x2F));
    static const QIcon mail = LetterIcon(u'M', QColor(0x15, 0x65, 0xC0));
    if (!Account.Enabled)
        return disabled;
    if (Account.RSS)
        return rss;
    if (Account.HTTP)
        return http;
    if (Account.DBPull)
        return database;
    if (Account.FilePickUp)
        return file;
    if (Account.MailServer)
        return direct;
    if (Account.Outbox)
        return outbox;
    if (Account.TwitterFeed)
        return twitter;
    if (Account.CSVPickUp)
        return csv;
    return mail;
}

// "%name%" of each of the organization's constants replaced by its value.
QString ExpandConstants(QString Text, const QString &OrganizationID)
{
    clsUserOrganization *organization = Organizations().Item(OrganizationID);
    if (!organization || !Text.contains(u'%'))
        return Text;
    organization->SplitConstants();
    for (int i = 1; i <= organization->NumConstants(); ++i)
        Text.replace(u'%' + organization->ConstantName(i) + u'%', organization->ConstantValue(i), Qt::CaseInsensitive);
    return Text;
}

QString TwitterText(const clsAccount &Account, bool Feed)
{
    clsXML xml(Account.TwitterSettings);
    QString screenName;
    qint32 feedType = 0;
    QString query;
    QString forUser;
    xml.Extract(screenName, QStringLiteral("ScreenName"));
    xml.Extract(feedType, QStringLiteral("FeedType"));
    xml.Extract(query, QStringLiteral("FeedQuery"));
    xml.Extract(forUser, QStringLiteral("FeedForUser"));
    if (!Feed)
        return QStringLiteral("Twitter: ") + screenName;
    switch (feedType) {
    case 1:
        return QStringLiteral("Mentions ") + screenName;
    case 2:
        return QStringLiteral("Timeline For ") + forUser;
    case 3:
        return QStringLiteral("Tweets Containing ") + query;
    default:
        return QStringLiteral("My Timeline");
    }
}

// The Message Source and Account columns of an account.
QStringList SourceTexts(const clsAccount &Account)
{
    if (Account.SMTPServer)
        return {QStringLiteral("POP3: ") + Account.ServerIP, Account.ServerAccount};
    if (Account.IMAP)
        return {QStringLiteral("IMAP: ") + Account.IMAPServer, Account.IMAPAccount};
    if (Account.HTTP)
        return {QStringLiteral("HTTP: ") + Account.HTTPUrl, QString()};
    if (Account.RSS)
        return {QStringLiteral("RSS: ") + Account.RSSUrl, QString()};
    if (Account.DBPull)
        return {QStringLiteral("DBPULL: ") + Account.DBConnection, Account.DBSQL};
    if (Account.FilePickUp)
        return {QStringLiteral("File: ") + Account.FilePickupFolder, Account.FilePickUpMask};
    if (Account.MailServer)
        return {QStringLiteral("Direct: ") + Account.MailServerDomain, Account.MailServerAliases};
    if (Account.EWS)
        return {QStringLiteral("Exchange: ") + Account.EWSUrl,
                Account.EWSOtherMailbox.isEmpty() ? Account.EWSUsername
                                                  : Account.EWSOtherMailbox + QStringLiteral(" Via ") + Account.EWSUsername};
    if (Account.TwitterFeed && !Account.TwitterSettings.isEmpty())
        return {TwitterText(Account, false), TwitterText(Account, true)};
    if (Account.CSVPickUp)
        return {QStringLiteral("CSV/Excel File: ") + Account.CSVPickupFolder, Account.CSVPickupMask};
    return {QString(), QString()};
}

QString OneLine(QString Text)
{
    return Text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
}

// A text as the value of a markup attribute.
QString AttributeText(QString Text)
{
    return Text.replace(u'&', QStringLiteral("&amp;"))
        .replace(u'<', QStringLiteral("&lt;"))
        .replace(u'>', QStringLiteral("&gt;"))
        .replace(u'\'', QStringLiteral("&apos;"))
        .replace(u'"', QStringLiteral("&quot;"));
}

} // namespace

frmList::frmList(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmList"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    lblTitle = new QLabel(this);
    lblTitle->setObjectName(QStringLiteral("lblTitle"));
    QFont title = lblTitle->font();
    title.setBold(true);
    title.setPointSizeF(title.pointSizeF() * 1.3);
    lblTitle->setFont(title);
    lblTitle->setContentsMargins(6, 4, 6, 4);
    lblTitle->setTextFormat(Qt::PlainText);

    Delegate = new MarkupDelegate(this);
    ReportView = new QTreeView(this);
    ReportView->setObjectName(QStringLiteral("ReportView"));
    ReportView->setModel(&Model);
    ReportView->setRootIsDecorated(false);
    ReportView->setUniformRowHeights(true);
    ReportView->setAlternatingRowColors(true);
    ReportView->setItemDelegate(Delegate);
    ReportView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    ReportView->setContextMenuPolicy(Qt::CustomContextMenu);
    ReportView->header()->setStretchLastSection(true);

    IconView = new QListView(this);
    IconView->setObjectName(QStringLiteral("IconView"));
    IconView->setModel(&Model);
    IconView->setSelectionModel(ReportView->selectionModel());
    IconView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    IconView->setContextMenuPolicy(Qt::CustomContextMenu);
    IconView->setResizeMode(QListView::Adjust);
    IconView->setUniformItemSizes(true);

    Views = new QStackedWidget(this);
    Views->addWidget(IconView);
    Views->addWidget(ReportView);
    lblFooter = new QLabel(this);
    lblFooter->setObjectName(QStringLiteral("lblFooter"));
    lblFooter->setContentsMargins(6, 2, 6, 2);
    layout->addWidget(lblTitle);
    layout->addWidget(Views, 1);
    layout->addWidget(lblFooter);

    for (QAbstractItemView *view : {static_cast<QAbstractItemView *>(ReportView), static_cast<QAbstractItemView *>(IconView)}) {
        connect(view, &QAbstractItemView::activated, this, [this](const QModelIndex &index) {
            emit Opened(Model.index(index.row(), 0).data(KeyRole).toString());
        });
        connect(view, &QWidget::customContextMenuRequested, this,
                [this, view](const QPoint &position) { emit ContextMenuRequested(view->viewport()->mapToGlobal(position)); });
    }
    connect(ReportView->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &frmList::TakeSelection);
    SetView(m_view);
}

QItemSelectionModel *frmList::Selection() const
{
    return ReportView->selectionModel();
}

void frmList::SetView(int ViewType)
{
    m_view = qBound(int(ViewIcons), ViewType, int(ViewReport));
    if (m_view == ViewReport) {
        Views->setCurrentWidget(ReportView);
        return;
    }
    IconView->setViewMode(m_view == ViewIcons ? QListView::IconMode : QListView::ListMode);
    IconView->setIconSize(m_view == ViewIcons ? QSize(32, 32) : QSize(16, 16));
    IconView->setFlow(m_view == ViewIcons ? QListView::LeftToRight : QListView::TopToBottom);
    IconView->setWrapping(true);
    IconView->setGridSize(m_view == ViewIcons ? QSize(120, 64) : QSize());
    Views->setCurrentWidget(IconView);
}

void frmList::SetColumns(const QString &Title, const QStringList &Columns)
{
    Model.clear();
    Model.setColumnCount(Columns.size());
    Model.setHorizontalHeaderLabels(Columns);
    lblTitle->setText(Title);
}

void frmList::AddRow(const QString &Key, const QIcon &Icon, const QStringList &Texts, const QString &Markup)
{
    QList<QStandardItem *> row;
    for (const QString &text : Texts) {
        auto *item = new QStandardItem(text);
        item->setEditable(false);
        row.append(item);
    }
    row[0]->setData(Key, KeyRole);
    row[0]->setIcon(Icon);
    if (!Markup.isEmpty()) {
        row.last()->setData(Markup, MarkupDelegate::MarkupRole);
    }
    Model.appendRow(row);
}

void frmList::Finish()
{
    lblFooter->setText(QString::number(Model.rowCount()) + QStringLiteral(" Items"));
    // The last column takes what is left.
    static const QList<int> widths[] = {{240, 330, 200}, {260}, {200, 200, 260}};
    const QList<int> &columns = widths[Level];
    for (int column = 0; column < columns.size(); ++column)
        ReportView->header()->resizeSection(column, columns[column]);
}

void frmList::FillList()
{
    Level = LevelAccounts;
    SetColumns(DictText("ACCOUNTS", "Accounts"),
               {QStringLiteral("Name"), QStringLiteral("Message Source"), QStringLiteral("Account"), QStringLiteral("Organization")});
    for (const clsAccount *account : Accounts()) {
        const QStringList source = SourceTexts(*account);
        AddRow(QStringLiteral("A") + account->AccountID, AccountIcon(*account),
               {account->Name, ExpandConstants(source[0], account->OrganizationID),
                ExpandConstants(source[1], account->OrganizationID), account->OrganizationName()});
    }
    Finish();
    if (!SelectKey(QStringLiteral("A") + CurrentAccountID) && Model.rowCount())
        ReportView->setCurrentIndex(Model.index(0, 0));
}

QString frmList::TriggerSentence(const clsAccountTrigger &Trigger)
{
    QString sentence = OneLine(Trigger.ConditionAsText());
    if (Trigger.Condition.isEmpty())
        return sentence;
    const QString older = QStringLiteral(" And ") + OneLine(Trigger.ConditionText(Trigger.Condition, false));
    if (sentence.endsWith(older))
        sentence.chop(older.size());
    return sentence;
}

QString frmList::TriggerConditionsText(const clsAccountTrigger &Trigger)
{
    QString text = TriggerSentence(Trigger);
    const QString condition = OneLine(ConditionDisplay(Trigger.Condition, false, false));
    if (!Trigger.Condition.isEmpty() && !condition.isEmpty())
        text += QStringLiteral(" And ") + condition;
    const QString fields = Trigger.FieldsList();
    return fields.isEmpty() ? text : text + QStringLiteral("  ") + QString(fields).replace(u',', QStringLiteral(", "))
                                         + QStringLiteral(" Fields");
}

QString frmList::TriggerConditionsMarkup(const clsAccountTrigger &Trigger)
{
    QString text = TriggerSentence(Trigger);
    QString markup = QStringLiteral("<TextBlock>");
    if (text.startsWith(QStringLiteral("If "))) {
        markup += QStringLiteral("<Bold><Run Foreground='") + MarkupColors.ColorKeyword + QStringLiteral("' Text='If '/></Bold>");
        text = text.mid(3);
    }
    markup += QStringLiteral("<Run Text='") + AttributeText(text) + QStringLiteral("'/>");
    const QString condition = OneLine(ConditionDisplay(Trigger.Condition, true, false));
    if (!Trigger.Condition.isEmpty() && !condition.isEmpty())
        markup += QStringLiteral("<Run Text=' And '/>") + condition;
    const QString fields = Trigger.FieldsList();
    if (!fields.isEmpty()) {
        markup += QStringLiteral("<Run Foreground='") + MarkupColors.ColorAssign + QStringLiteral("' Text='  ")
                  + AttributeText(QString(fields).replace(u',', QStringLiteral(", "))) + QStringLiteral(" Fields'/>");
    }
    return markup + QStringLiteral("</TextBlock>");
}

void frmList::FillTriggerList()
{
    Level = LevelTriggers;
    clsAccount *account = Accounts().Item(CurrentAccountID);
    if (!account) {
        FillList();
        return;
    }
    ListedAccountID = account->AccountID;
    SetColumns(QStringLiteral("Triggers For Account: ") + account->Name,
               {QStringLiteral("Name"), QStringLiteral("Trigger Conditions")});
    if (!account->RemoteTriggersLoaded) {
        AddRow(QString(), QIcon(), {DictText("LOADINGTRIGGERS", "Requesting triggers..."), QString()});
        lblFooter->clear();
        const QString accountID = account->AccountID;
        const bool loaded = Remote().HTTPGet(Requests::GetTriggerConditions(accountID))
                            && !Remote().ReplyText.startsWith(QStringLiteral("Error:"));
        account = Accounts().Item(accountID);
        if (!account || Level != LevelTriggers || CurrentAccountID != accountID)
            return; // the list moved on while the request ran
        account->RemoteTriggersLoaded = loaded;
        Model.removeRows(0, Model.rowCount());
    }
    static const QIcon enabled = LetterIcon(u'T', QColor(0x2E, 0x7D, 0x32));
    static const QIcon disabled = LetterIcon(u'-', QColor(0x90, 0x90, 0x90));
    for (const clsAccountTrigger *trigger : account->Triggers) {
        const QString name = trigger->Enabled ? trigger->Name : trigger->Name + QStringLiteral(" (disabled)");
        AddRow(QStringLiteral("T") + trigger->TriggerID, trigger->Enabled ? enabled : disabled,
               {name, TriggerConditionsText(*trigger)}, TriggerConditionsMarkup(*trigger));
    }
    Finish();
    if (!SelectKey(QStringLiteral("T") + CurrentTriggerID) && Model.rowCount())
        ReportView->setCurrentIndex(Model.index(0, 0));
}

void frmList::FillUserList()
{
    Level = LevelUsers;
    SetColumns(DictText("USERS", "Users"), {QStringLiteral("Name"), QStringLiteral("Full Name"),
                                             QStringLiteral("Email Address"), QStringLiteral("Organization")});
    static const QIcon user = LetterIcon(u'U', QColor(0x15, 0x65, 0xC0));
    static const QIcon admin = LetterIcon(u'A', QColor(0xC6, 0x28, 0x28));
    for (const clsUser *person : Users()) {
        if (!OrganizationFilter.isEmpty() && person->OrganizationID != OrganizationFilter)
            continue;
        const QString name = person->Admin ? person->Username + QStringLiteral(" (Admin)") : person->Username;
        AddRow(QStringLiteral("U") + person->ID, person->Admin ? admin : user,
               {name, person->Fullname, person->Email, person->Organization()});
    }
    Finish();
    if (!SelectKey(QStringLiteral("U") + CurrentUserID) && Model.rowCount())
        ReportView->setCurrentIndex(Model.index(0, 0));
}

void frmList::RefillList()
{
    switch (Level) {
    case LevelAccounts:
        FillList();
        break;
    case LevelTriggers:
        FillTriggerList();
        break;
    case LevelUsers:
        FillUserList();
        break;
    }
}

void frmList::SetCurrentTrigger(const QString &TriggerID)
{
    CurrentTriggerID = TriggerID;
    SelectKey(QStringLiteral("T") + TriggerID);
}

bool frmList::SelectKey(const QString &Key)
{
    if (Key.size() < 2)
        return false;
    for (int row = 0; row < Model.rowCount(); ++row) {
        if (Model.index(row, 0).data(KeyRole).toString() == Key) {
            ReportView->setCurrentIndex(Model.index(row, 0));
            return true;
        }
    }
    return false;
}

QString frmList::SelectedKey() const
{
    const QModelIndex current = Selection()->currentIndex();
    return current.isValid() ? Model.index(current.row(), 0).data(KeyRole).toString() : QString();
}

QString frmList::CellText(int Row, int Column) const
{
    return Model.index(Row, Column).data().toString();
}

void frmList::TakeSelection()
{
    const QString key = SelectedKey();
    if (key.isEmpty())
        return;
    const QString id = key.mid(1);
    switch (key.at(0).unicode()) {
    case u'A':
        CurrentAccountID = id;
        break;
    case u'T':
        CurrentTriggerID = id;
        break;
    case u'U':
        CurrentUserID = id;
        break;
    }
    ComposeToolTip(key);
    emit SelectionChanged(key);
}

void frmList::ComposeToolTip(const QString &Key)
{
    const QString id = Key.mid(1);
    QString tip;
    if (Key.startsWith(u'A')) {
        clsAccount *account = Accounts().Item(id);
        if (!account)
            return;
        QStringList names;
        if (account->RemoteTriggersLoaded) {
            for (const clsAccountTrigger *trigger : account->Triggers)
                names.append(trigger->Name);
        } else {
            if (!account->GotList && Global.Connected) {
                Remote().HTTPGet(Requests::GetTriggerList(id));
                account = Accounts().Item(id);
                if (!account)
                    return;
            }
            names = account->TriggerNameList.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        }
        tip = account->Name + QStringLiteral("\n") + QString::number(names.size()) + QStringLiteral(" Triggers");
        for (const QString &name : names)
            tip += QStringLiteral("\n  ") + name;
    } else if (Key.startsWith(u'U')) {
        const clsUser *person = Users().Item(id);
        if (!person)
            return;
        tip = person->Username + (person->Admin ? QStringLiteral(" (Admin)") : QString()) + QStringLiteral("\n")
              + QString::number(person->EmailCount()) + QStringLiteral(" Addresses");
    } else {
        return;
    }
    // The request may have refilled the list: the row is looked up again.
    for (int row = 0; row < Model.rowCount(); ++row) {
        if (Model.index(row, 0).data(KeyRole).toString() != Key)
            continue;
        for (int column = 0; column < Model.columnCount(); ++column)
            Model.setData(Model.index(row, column), tip, Qt::ToolTipRole);
    }
}

QString frmList::PrintDocument() const
{
    QString html = QStringLiteral("<h3>") + lblTitle->text().toHtmlEscaped()
                   + QStringLiteral("</h3><table border=\"1\" cellspacing=\"0\" cellpadding=\"3\" width=\"100%\"><tr>");
    for (int column = 0; column < Model.columnCount(); ++column)
        html += QStringLiteral("<th align=\"left\">") + Model.headerData(column, Qt::Horizontal).toString().toHtmlEscaped()
                + QStringLiteral("</th>");
    html += QStringLiteral("</tr>");
    for (int row = 0; row < Model.rowCount(); ++row) {
        html += QStringLiteral("<tr>");
        for (int column = 0; column < Model.columnCount(); ++column)
            html += QStringLiteral("<td>") + CellText(row, column).toHtmlEscaped() + QStringLiteral("</td>");
        html += QStringLiteral("</tr>");
    }
    return html + QStringLiteral("</table><p>") + lblFooter->text().toHtmlEscaped() + QStringLiteral("</p>");
}
