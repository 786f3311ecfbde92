#include "frmViewChecked.h"
#include "PrintPage.h"
#include "RibbonBar.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Formatting.h"
#include "foundation/cDDict.h"
#include "frmViewEmail.h"
#include "frmViewPreview.h"
#include "model/GlobalCollections.h"
#include "session/frmRemote.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDragMoveEvent>
#include <QGroupBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMessageBox>
#include <QSplitter>
#include <QTabBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>
#include <tuple>

namespace {

const QString RootKey = QStringLiteral("ROOT");
const QString PublicKey = QStringLiteral("PUBLIC");
const QString Tick = QStringLiteral("\u2714");
constexpr int KeyRole = Qt::UserRole;

QString AppText(const char *Key, const char *Default)
{
    return DDict().GetString(QString::fromLatin1(Key), QString::fromUtf8(Default))
        .replace(QStringLiteral("%APPNAME%"), Global.ProductName);
}

QString ShortDate(const QString &Stored)
{
    const QDateTime date = QDateTime::fromString(Stored, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    return date.isValid() ? QLocale().toString(date, QLocale::ShortFormat) : Stored;
}

QString FolderIDOfKey(const QString &Key)
{
    return Key == RootKey || Key == PublicKey || Key.isEmpty() ? QStringLiteral("-") : Key.mid(1);
}

// A message without an account goes to the server as "-".
QString AccountOfRows(const QString &AccountID)
{
    return AccountID.isEmpty() ? QStringLiteral("-") : AccountID;
}

} // namespace

QStringList frmViewChecked::Periods()
{
    return {QStringLiteral("All"),        QStringLiteral("This Year"),    QStringLiteral("Last Year"),
            QStringLiteral("This Month"), QStringLiteral("Last Month"),   QStringLiteral("Last 7 Days"),
            QStringLiteral("Last 14 Days"), QStringLiteral("Last 30 Days"), QStringLiteral("Last 60 Days"),
            QStringLiteral("Last 90 Days")};
}

std::pair<QDate, QDate> frmViewChecked::PeriodRange(int Index, const QDate &Today)
{
    const QDate firstOfMonth(Today.year(), Today.month(), 1);
    switch (Index) {
    case 1: return {QDate(Today.year(), 1, 1), Today};
    case 2: return {QDate(Today.year() - 1, 1, 1), QDate(Today.year() - 1, 12, 31)};
    case 3: return {firstOfMonth, Today};
    case 4: return {firstOfMonth.addMonths(-1), firstOfMonth.addDays(-1)};
    case 5: return {Today.addDays(-7), Today};
    case 6: return {Today.addDays(-14), Today};
    case 7: return {Today.addDays(-30), Today};
    case 8: return {Today.addDays(-60), Today};
    case 9: return {Today.addDays(-90), Today};
    default: return {QDate(2000, 1, 1), Today};
    }
}

QStringList frmViewChecked::PageCaptions(qint64 Total, int Size)
{
    QStringList captions;
    if (Size <= 0)
        Size = PageSize;
    if (Total <= Size)
        return captions;
    for (qint64 first = 1; first <= Total; first += Size)
        captions << QString::number(first) + u'-' + QString::number(qMin(Total, first + Size - 1));
    return captions;
}

QString frmViewChecked::DateBand(const QDate &Day, const QDate &Today)
{
    if (Day == Today)
        return QStringLiteral("Date: Today");
    if (Day == Today.addDays(-1))
        return QStringLiteral("Date: Yesterday");
    if (Day.year() == Today.year() && Day.month() == Today.month())
        return QStringLiteral("Date: This Month");
    if (Day.year() == Today.year())
        return QStringLiteral("Date: This Year");
    return QStringLiteral("Date: Older");
}

frmViewChecked::frmViewChecked(QWidget *parent) : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("frmViewChecked"));
    setAttribute(Qt::WA_DeleteOnClose);
    resize(1100, 750);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    CommandBar = new RibbonBar(this);
    CommandBar->SystemButton->hide();
    CommandBar->QuickButton->hide();
    layout->addWidget(CommandBar);
    CreateCommands();

    auto *split = new QSplitter(Qt::Horizontal, this);
    Tree = new QTreeWidget(split);
    Tree->setHeaderHidden(true);
    Tree->setContextMenuPolicy(Qt::CustomContextMenu);
    Tree->setAcceptDrops(true);
    Tree->viewport()->installEventFilter(this);
    auto *right = new QSplitter(Qt::Vertical, split);
    auto *gridPane = new QWidget(right);
    auto *gridLayout = new QVBoxLayout(gridPane);
    gridLayout->setContentsMargins(0, 0, 0, 0);
    gridLayout->setSpacing(0);
    PageTabs = new QTabBar(gridPane);
    PageTabs->setExpanding(false);
    PageTabs->hide();
    gridLayout->addWidget(PageTabs);
    Grid = new QTreeWidget(gridPane);
    gridLayout->addWidget(Grid, 1);
    Preview = new frmViewPreview(right);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 4);
    right->setStretchFactor(0, 3);
    right->setStretchFactor(1, 2);
    layout->addWidget(split, 1);
    lblStatus = new QLabel(this);
    lblStatus->setObjectName(QStringLiteral("lblStatus"));
    lblStatus->setContentsMargins(6, 2, 6, 2);
    layout->addWidget(lblStatus);
    CreateGrid();
    ConnectCommands();

    ReadTimer.setSingleShot(true);
    ReadTimer.setInterval(ReadInterval);
    connect(&ReadTimer, &QTimer::timeout, this, &frmViewChecked::ReadTick);
    DropTimer.setSingleShot(true);
    DropTimer.setInterval(DropInterval);
    connect(&DropTimer, &QTimer::timeout, this, [this] {
        if (m_hover)
            m_hover->setExpanded(true);
    });
    SetPeriod(0);
}

void frmViewChecked::CreateCommands()
{
    RibbonBar &ribbon = *CommandBar;
    QWidget *tab = ribbon.AddTab(QStringLiteral("Message Store"));
    QGroupBox *general = ribbon.AddGroup(tab, QStringLiteral("General"));
    ribbon.AddCommand(general, ID_VIEWMESSAGE, QStringLiteral("View Message"), QString(), QStyle::SP_FileDialogContentsView);
    ribbon.AddCommand(general, ID_MARKALLREAD, QStringLiteral("Mark All As Read"), QString(), QStyle::SP_DialogApplyButton, false);
    ribbon.AddCommand(general, ID_READINGPANE, QStringLiteral("Show/Hide Reading Pane"), QString(),
                      QStyle::SP_FileDialogDetailedView, false)
        ->setCheckable(true);
    ribbon.Command(ID_READINGPANE)->setChecked(true);
    ribbon.AddCommand(general, ID_REPROCESSSELECTED, QStringLiteral("Reprocess Selected"), QString(), QStyle::SP_BrowserReload, false);
    ribbon.AddCommand(general, ID_REPROCESSALL, QStringLiteral("Reprocess All"), QString(), QStyle::SP_BrowserReload, false);
    ribbon.AddCommand(general, ID_REMOVESELECTED, QStringLiteral("Remove Selected"), QString(), QStyle::SP_TrashIcon, false);
    ribbon.AddCommand(general, ID_REMOVEALL, QStringLiteral("Remove All"), QString(), QStyle::SP_TrashIcon, false);
    QGroupBox *folders = ribbon.AddGroup(tab, QStringLiteral("Folders"));
    ribbon.AddCommand(folders, ID_FOLDERADD, QStringLiteral("Add"), QString(), QStyle::SP_FileDialogNewFolder, false);
    ribbon.AddCommand(folders, ID_FOLDERDELETE, QStringLiteral("Delete"), QString(), QStyle::SP_DialogDiscardButton, false);
    ribbon.AddCommand(folders, ID_FOLDEREDIT, QStringLiteral("Edit"), QString(), QStyle::SP_FileDialogInfoView, false);
    QGroupBox *filter = ribbon.AddGroup(tab, QStringLiteral("Filter"));
    const std::tuple<int, const char *, const char *> filters[] = {
        {ID_MATCHESONLY, "Show Matched Messages Only", "Show only messages that messaged the selected Trigger conditions."},
        {ID_ERRORSONLY, "Show Failed Messages Only",
         "Show only messages that caused an error to occur during Trigger execution."},
        {ID_ALLACCOUNTS, "Show Messages From All Accounts",
         "Show all messages in the selected folder not just for the currently selected Account or Trigger"},
    };
    for (const auto &[id, caption, tip] : filters)
        ribbon.AddCommand(filter, id, QString::fromLatin1(caption), QString::fromLatin1(tip), QStyle::SP_FileDialogListView, false)
            ->setCheckable(true);
    QGroupBox *search = ribbon.AddGroup(tab, QStringLiteral("Search"));
    auto *fields = new QWidget(search);
    auto *fieldLayout = new QVBoxLayout(fields);
    fieldLayout->setContentsMargins(0, 0, 0, 0);
    fieldLayout->addWidget(new QLabel(QStringLiteral("Subject Or Address Contains:"), fields));
    txtSearch = new QLineEdit(fields);
    txtSearch->setClearButtonEnabled(true);
    fieldLayout->addWidget(txtSearch);
    fieldLayout->addWidget(new QLabel(QStringLiteral("Period:"), fields));
    cmboPeriod = new QComboBox(fields);
    cmboPeriod->addItems(Periods());
    fieldLayout->addWidget(cmboPeriod);
    search->layout()->addWidget(fields);
    ribbon.AddCommand(search, ID_REFRESH, QStringLiteral("Refresh"), QString(), QStyle::SP_BrowserReload);
    for (int id : {ID_MARKREAD, ID_MARKUNREAD, ID_REPROCESSMESSAGE, ID_REMOVEMESSAGE, ID_SPAM, ID_PRINT}) {
        static const QHash<int, QString> captions{
            {ID_MARKREAD, QStringLiteral("Mark As Read")},       {ID_MARKUNREAD, QStringLiteral("Mark As Unread")},
            {ID_REPROCESSMESSAGE, QStringLiteral("Reprocess This Message")},
            {ID_REMOVEMESSAGE, QStringLiteral("Remove Message")}, {ID_SPAM, QStringLiteral("Send To Spam Folder")},
            {ID_PRINT, QStringLiteral("Print")}};
        auto *command = new QAction(captions.value(id), this);
        command->setData(id);
        ribbon.AddMenuCommand(command);
    }
}

void frmViewChecked::CreateGrid()
{
    Grid->setColumnCount(ColFlags + 1);
    Grid->setHeaderLabels({QStringLiteral("FolderID"), QStringLiteral("From"), QStringLiteral("Subject"),
                           QStringLiteral("Received"), QStringLiteral("Processed"), QStringLiteral("Match"),
                           QStringLiteral("Success"), QStringLiteral("Last Error"), QStringLiteral("Flags")});
    Grid->setColumnHidden(ColFolderID, true);
    Grid->setRootIsDecorated(true);
    Grid->setUniformRowHeights(true);
    Grid->setAllColumnsShowFocus(true);
    Grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    Grid->setContextMenuPolicy(Qt::CustomContextMenu);
    Grid->setDragEnabled(true);
    Grid->setDragDropMode(QAbstractItemView::DragOnly);
    Grid->installEventFilter(this);
    QHeaderView *header = Grid->header();
    const int widths[] = {0, 200, 320, 130, 130, 50, 60, 200, 50};
    for (int column = ColFrom; column <= ColFlags; ++column)
        header->resizeSection(column, widths[column]);
}

void frmViewChecked::ConnectCommands()
{
    RibbonBar &ribbon = *CommandBar;
    const QHash<int, std::function<void()>> handlers = {
        {ID_VIEWMESSAGE, [this] { OpenMessage(Grid->currentItem()); }},
        {ID_MARKALLREAD, [this] { MarkAllAsRead(); }},
        {ID_READINGPANE, [this] { ShowReadingPane(CommandBar->Command(ID_READINGPANE)->isChecked()); }},
        {ID_REPROCESSSELECTED, [this] { ReprocessSelected(); }},
        {ID_REPROCESSALL, [this] { ReprocessAll(); }},
        {ID_REMOVESELECTED, [this] { RemoveSelected(); }},
        {ID_REMOVEALL, [this] { RemoveAll(); }},
        {ID_FOLDERADD, [this] { AddFolder(); }},
        {ID_FOLDERDELETE, [this] { DeleteSelectedFolder(); }},
        {ID_FOLDEREDIT, [this] { EditSelectedFolder(); }},
        {ID_MATCHESONLY, [this] { MatchesOnly = CommandBar->Command(ID_MATCHESONLY)->isChecked(); LoadView(); }},
        {ID_ERRORSONLY, [this] { ErrorsOnly = CommandBar->Command(ID_ERRORSONLY)->isChecked(); LoadView(); }},
        {ID_ALLACCOUNTS, [this] { AllAccounts = CommandBar->Command(ID_ALLACCOUNTS)->isChecked(); LoadView(); }},
        {ID_REFRESH, [this] { SearchText = txtSearch->text().trimmed(); LoadView(); }},
        {ID_MARKREAD, [this] { MarkRows(SelectedRows(), true); }},
        {ID_MARKUNREAD, [this] { MarkRows(SelectedRows(), false); }},
        {ID_REPROCESSMESSAGE, [this] { ReprocessSelected(); }},
        {ID_REMOVEMESSAGE, [this] { RemoveSelected(); }},
        {ID_SPAM, [this] { SendToSpam(); }},
        {ID_PRINT, [this] { Print(); }},
    };
    for (auto handler = handlers.begin(); handler != handlers.end(); ++handler)
        connect(ribbon.Command(handler.key()), &QAction::triggered, this, handler.value());
    connect(txtSearch, &QLineEdit::returnPressed, ribbon.Command(ID_REFRESH), &QAction::trigger);
    connect(cmboPeriod, &QComboBox::activated, this, [this](int Index) {
        SetPeriod(Index);
        LoadView();
    });
    connect(Tree, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *Item) {
        if (Item && Item->data(0, KeyRole).toString() != FolderKey) {
            FolderKey = Item->data(0, KeyRole).toString();
            FolderID = FolderIDOfKey(FolderKey);
            LoadView();
        }
    });
    connect(Tree, &QWidget::customContextMenuRequested, this, &frmViewChecked::ShowTreeMenu);
    connect(Grid, &QWidget::customContextMenuRequested, this, &frmViewChecked::ShowGridMenu);
    connect(Grid, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *Row) { OpenMessage(Row); });
    connect(Grid, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *Row) {
        if (Row && RecordOf(Row) > 0 && Preview->isVisible())
            ReadTimer.start();
    });
    connect(PageTabs, &QTabBar::tabBarClicked, this, [this](int Index) {
        const QStringList rows = PageTabs->tabText(Index).split(u'-');
        if (rows.size() != 2)
            return;
        CurrentPage = Index + 1;
        LoadPage(rows.at(0).toInt(), rows.at(1).toInt());
    });
    connect(Preview, &frmViewPreview::Shown, this, [this](qint32 RecordNo) {
        QTreeWidgetItem *row = FindRow(RecordNo);
        if (!MarkAsReadOnPreview || !row || !IsUnread(row))
            return;
        MarkRows({row}, true);
    });
}

void frmViewChecked::SetPeriod(int Index)
{
    Period = qBound(0, Index, int(Periods().size()) - 1);
    cmboPeriod->setCurrentIndex(Period);
    std::tie(FromDate, ToDate) = PeriodRange(Period, QDate::currentDate());
}

void frmViewChecked::ShowMessages(const QString &Account, const QString &Trigger, const QString &User)
{
    AccountID = User.isEmpty() ? Account : User;
    TriggerID = Trigger;
    UserID = User;
    FolderKey.clear();
    FolderID = QStringLiteral("-");
    QString title = QStringLiteral("Message Store ");
    if (!User.isEmpty()) {
        const clsUser *user = Users().Item(User);
        title += user ? user->Username : User;
    } else if (const clsAccount *account = Accounts().Item(Account)) {
        title += account->Name;
        // The caption names the trigger: the account's trigger names come
        // with their conditions.
        if (!Trigger.isEmpty() && !account->Triggers.Item(Trigger))
            Remote().HTTPGet(Requests::GetTriggerConditions(Account));
    }
    setWindowTitle(title.trimmed());
    FillTree();
}

void frmViewChecked::FillTree()
{
    Tree->blockSignals(true);
    Tree->clear();
    auto *root = new QTreeWidgetItem(Tree, {QStringLiteral("User Folders")});
    root->setData(0, KeyRole, RootKey);
    auto *publicRoot = new QTreeWidgetItem(Tree, {QStringLiteral("Folders")});
    publicRoot->setData(0, KeyRole, PublicKey);
    QHash<QString, QTreeWidgetItem *> nodes;
    QList<const clsUserFolder *> pending;
    for (const clsUserFolder *folder : UserFolders())
        pending << folder;
    // Parents first: a folder waits until the node of its parent exists.
    for (bool added = true; added && !pending.isEmpty();) {
        added = false;
        for (auto folder = pending.begin(); folder != pending.end();) {
            const clsUserFolder &entry = **folder;
            QTreeWidgetItem *parent = entry.Parent.isEmpty() ? (entry.UserID.isEmpty() ? publicRoot : root)
                                                             : nodes.value(entry.Parent);
            if (!parent && !entry.Parent.isEmpty() && !UserFolders().Item(entry.Parent))
                parent = entry.UserID.isEmpty() ? publicRoot : root;
            if (!parent) {
                ++folder;
                continue;
            }
            auto *node = new QTreeWidgetItem(parent, {entry.Name});
            node->setData(0, KeyRole, (entry.UserID.isEmpty() ? QStringLiteral("P") : QStringLiteral("F")) + entry.ID);
            node->setIcon(0, style()->standardIcon(QStyle::SP_DirIcon));
            nodes.insert(entry.ID, node);
            folder = pending.erase(folder);
            added = true;
        }
    }
    Tree->expandAll();
    Tree->blockSignals(false);

    // The view opens on the folder of its account or user, else the first.
    QString key;
    for (const clsUserFolder *folder : UserFolders()) {
        const bool mine = (!UserID.isEmpty() && folder->UserID == UserID)
            || (UserID.isEmpty() && !AccountID.isEmpty() && folder->AccountID == AccountID);
        if (mine) {
            key = (folder->UserID.isEmpty() ? QStringLiteral("P") : QStringLiteral("F")) + folder->ID;
            break;
        }
    }
    if (key.isEmpty() && publicRoot->childCount())
        key = publicRoot->child(0)->data(0, KeyRole).toString();
    SelectFolder(key.isEmpty() ? PublicKey : key);
}

void frmViewChecked::SelectFolder(const QString &Key)
{
    for (QTreeWidgetItemIterator it(Tree); *it; ++it) {
        if ((*it)->data(0, KeyRole).toString() == Key) {
            Tree->blockSignals(true);
            Tree->setCurrentItem(*it);
            Tree->blockSignals(false);
            FolderKey = Key;
            FolderID = FolderIDOfKey(Key);
            LoadView();
            return;
        }
    }
}

Requests::MessageSet frmViewChecked::Filter() const
{
    Requests::MessageSet set;
    if (!AllAccounts) {
        set.AccountID = AccountID;
        set.TriggerID = TriggerID;
    }
    set.FromDate = FromDate.toString(QStringLiteral("yyyy-MM-dd"));
    set.ToDate = ToDate.toString(QStringLiteral("yyyy-MM-dd"));
    set.ErrorsOnly = ErrorsOnly;
    set.MatchesOnly = MatchesOnly;
    set.SearchText = SearchText;
    set.FolderID = FolderID;
    return set;
}

QString frmViewChecked::Caption() const
{
    QString caption;
    if (!UserID.isEmpty()) {
        const clsUser *user = Users().Item(UserID);
        caption = QStringLiteral("Message Store For User: ") + (user ? user->Username : UserID);
    } else if (const clsAccount *account = Accounts().Item(AccountID)) {
        caption = QStringLiteral("Message Store For Account: ") + account->Name;
        if (const clsAccountTrigger *trigger = account->Triggers.Item(TriggerID))
            caption += QStringLiteral(" - Trigger ") + trigger->Name;
    } else {
        caption = QStringLiteral("All Messages");
    }
    if (const clsUserFolder *folder = UserFolders().Item(FolderID))
        caption += QStringLiteral(" In Folder ") + folder->Name;
    if (Period > 0)
        caption += u' ' + QLocale().toString(FromDate, QLocale::LongFormat) + QStringLiteral(" - ")
            + QLocale().toString(ToDate, QLocale::LongFormat);
    if (!SearchText.isEmpty())
        caption += QStringLiteral(" (Containing '") + SearchText + QStringLiteral("')");
    return caption;
}

void frmViewChecked::LoadView()
{
    CurrentPage = 1;
    Total = -1;
    PageTabs->hide();
    while (PageTabs->count())
        PageTabs->removeTab(0);
    LoadPage(1, PageSize);
    const QString count = Requests::CountMessages(Filter());
    Client.Get(count, [this](const ViewClient::Reply &Reply) {
        if (!ViewClient::Report(Reply)) {
            lblStatus->setText(Reply.Failure());
            return;
        }
        Total = Reply.Text.trimmed().toLongLong();
        ShowPageTabs();
        UpdateStatus();
    });
}

void frmViewChecked::LoadPage(qint32 FromRow, qint32 ToRow)
{
    Client.Drop();
    ReadTimer.stop();
    Preview->Clear();
    m_rowsIn = false;
    lblStatus->setText(QStringLiteral("Requesting Data From Server."));
    RequestStarted.start();
    Requests::MessageSet set = Filter();
    set.FromRow = FromRow;
    set.ToRow = ToRow;
    Client.Get(Requests::GetMessages(set), [this](const ViewClient::Reply &Reply) {
        if (!ViewClient::Report(Reply)) {
            lblStatus->setText(Reply.Failure());
            return;
        }
        FillGridRemote(Reply.Text);
    });
}

void frmViewChecked::ShowPageTabs()
{
    const QStringList captions = PageCaptions(Total);
    while (PageTabs->count())
        PageTabs->removeTab(0);
    for (const QString &caption : captions)
        PageTabs->addTab(caption);
    PageTabs->setCurrentIndex(qMin(CurrentPage, int(captions.size())) - 1);
    PageTabs->setVisible(!captions.isEmpty());
}

QTreeWidgetItem *frmViewChecked::Band(const QString &Caption)
{
    for (int i = 0; i < Grid->topLevelItemCount(); ++i) {
        if (Grid->topLevelItem(i)->text(ColFrom) == Caption)
            return Grid->topLevelItem(i);
    }
    auto *band = new QTreeWidgetItem(Grid);
    band->setText(ColFrom, Caption);
    QFont bold = band->font(ColFrom);
    bold.setBold(true);
    band->setFont(ColFrom, bold);
    band->setFlags(Qt::ItemIsEnabled);
    band->setExpanded(true);
    return band;
}

void frmViewChecked::FillGridRemote(const QString &Text)
{
    Grid->setUpdatesEnabled(false);
    Grid->clear();
    m_rowCount = 0;
    const QDate today = QDate::currentDate();
    const QIcon attachment = style()->standardIcon(QStyle::SP_FileLinkIcon);
    const QIcon high = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    const QIcon low = style()->standardIcon(QStyle::SP_ArrowDown);
    QTreeWidgetItem *band = nullptr;
    QString bandCaption;
    QList<QTreeWidgetItem *> rows;
    for (const QStringView line : QStringView(Text).split(u'\n', Qt::SkipEmptyParts)) {
        const QList<QStringView> fields = line.split(u'\t');
        if (fields.size() < 12)
            continue;
        const QString received = fields.at(6).toString();
        const QString caption = DateBand(QDate::fromString(received.left(10), QStringLiteral("yyyy-MM-dd")), today);
        if (!band || caption != bandCaption) {
            if (band)
                band->addChildren(rows);
            rows.clear();
            bandCaption = caption;
            band = Band(caption);
        }
        auto *row = new QTreeWidgetItem;
        row->setText(ColFolderID, fields.at(3).toString());
        row->setData(ColFolderID, RecordRole, fields.at(0).toInt());
        row->setData(ColFolderID, ImportanceRole, fields.at(1).toString());
        row->setData(ColFolderID, FlagsRole, fields.at(8).toInt());
        row->setText(ColFrom, fields.at(4).toString());
        row->setText(ColSubject, fields.at(5).toString());
        row->setText(ColReceived, ShortDate(received));
        row->setText(ColProcessed, ShortDate(fields.at(7).toString()));
        const bool matched = fields.at(9) == u"Y";
        const bool succeeded = fields.at(10) == u"Y";
        row->setText(ColMatch, matched ? Tick : QString());
        row->setText(ColSuccess, succeeded ? Tick : QString());
        row->setText(ColError, succeeded ? QString() : fields.at(11).toString());
        if (fields.at(2) == u"Y")
            row->setIcon(ColFlags, attachment);
        const QStringView importance = fields.at(1);
        if (importance == u"H")
            row->setIcon(ColSubject, high);
        else if (importance == u"L")
            row->setIcon(ColSubject, low);
        row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled);
        ShowRead(row, fields.at(8) == u"2");
        rows << row;
        ++m_rowCount;
    }
    if (band)
        band->addChildren(rows);
    Grid->expandAll();
    Grid->setUpdatesEnabled(true);
    m_rowsIn = true;
    UpdateStatus();
}

void frmViewChecked::UpdateStatus()
{
    if (!m_rowsIn || Total < 0)
        return;
    const qint64 seconds = (RequestStarted.elapsed() + 500) / 1000;
    lblStatus->setText(QString::number(Total) + QStringLiteral(" Messages. Retrieved ") + QString::number(m_rowCount)
                       + QStringLiteral(" Records From Server In ") + QString::number(seconds) + QStringLiteral(" Seconds."));
    emit Loaded();
}

QList<QTreeWidgetItem *> frmViewChecked::Rows() const
{
    QList<QTreeWidgetItem *> rows;
    for (int band = 0; band < Grid->topLevelItemCount(); ++band) {
        QTreeWidgetItem *item = Grid->topLevelItem(band);
        for (int i = 0; i < item->childCount(); ++i)
            rows << item->child(i);
    }
    return rows;
}

QList<QTreeWidgetItem *> frmViewChecked::SelectedRows() const
{
    QList<QTreeWidgetItem *> rows;
    for (QTreeWidgetItem *item : Rows()) {
        if (item->isSelected())
            rows << item;
    }
    return rows;
}

qint32 frmViewChecked::RecordOf(const QTreeWidgetItem *Row)
{
    return Row ? Row->data(ColFolderID, RecordRole).toInt() : 0;
}

bool frmViewChecked::IsUnread(const QTreeWidgetItem *Row)
{
    return Row && Row->data(ColFolderID, FlagsRole).toInt() != 2;
}

QTreeWidgetItem *frmViewChecked::FindRow(qint32 RecordNo) const
{
    for (QTreeWidgetItem *row : Rows()) {
        if (RecordOf(row) == RecordNo)
            return row;
    }
    return nullptr;
}

void frmViewChecked::ShowRead(QTreeWidgetItem *Row, bool Read)
{
    Row->setData(ColFolderID, FlagsRole, Read ? 2 : 0);
    QFont font = Grid->font();
    font.setBold(!Read);
    for (int column = ColFrom; column <= ColFlags; ++column)
        Row->setFont(column, font);
}

void frmViewChecked::RemoveRow(QTreeWidgetItem *Row)
{
    QTreeWidgetItem *band = Row->parent();
    if (Preview->RecordNo == RecordOf(Row))
        Preview->Clear();
    delete Row;
    --m_rowCount;
    if (band && band->childCount() == 0)
        delete band;
}

void frmViewChecked::ReadTick()
{
    QTreeWidgetItem *row = Grid->currentItem();
    if (RecordOf(row) > 0 && Preview->isVisible())
        Preview->ShowMessage(row->text(ColFolderID), RecordOf(row));
}

bool frmViewChecked::Ask(const QString &Text, const QString &Detail)
{
    QMessageBox box(QMessageBox::Question, Global.AppTitle, Text, QMessageBox::Yes | QMessageBox::No, this);
    box.setInformativeText(Detail);
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

bool frmViewChecked::MarkRows(const QList<QTreeWidgetItem *> &Rows, bool Read)
{
    bool all = true;
    for (QTreeWidgetItem *row : Rows) {
        const QString folder = row->text(ColFolderID);
        const QString request = Read ? Requests::MarkAsRead(AccountOfRows(AccountID), folder, RecordOf(row))
                                     : Requests::MarkAsUnread(AccountOfRows(AccountID), folder, RecordOf(row));
        if (!ViewClient::Report(Client.Wait(request))) {
            all = false;
            break;
        }
        ShowRead(row, Read);
    }
    return all;
}

void frmViewChecked::MarkAllAsRead()
{
    if (ViewClient::Report(Client.Wait(Requests::MarkAllAsRead(Filter())))) {
        for (QTreeWidgetItem *row : Rows())
            ShowRead(row, true);
    }
}

void frmViewChecked::ReprocessSelected(bool Confirm)
{
    const QList<QTreeWidgetItem *> rows = SelectedRows();
    if (rows.isEmpty()
        || (Confirm && !Ask(AppText("REPROCESS1", "Reprocess Selected Messages?"),
                            AppText("REPROCESS2", "Selected Messages in the current view will be reprocessed."))))
        return;
    for (QTreeWidgetItem *row : rows) {
        if (!ViewClient::Report(Client.Wait(Requests::ReprocessMessage(AccountOfRows(AccountID), row->text(ColFolderID),
                                                                        RecordOf(row)))))
            return;
        RemoveRow(row);
    }
}

void frmViewChecked::ReprocessAll(bool Confirm)
{
    const QList<QTreeWidgetItem *> rows = Rows();
    if (rows.isEmpty()
        || (Confirm && !Ask(AppText("REPROCESSALL", "Reprocess All Messages?"),
                            AppText("REPROCESS2", "All Messages in the current view will be reprocessed."))))
        return;
    for (QTreeWidgetItem *row : rows)
        row->setSelected(true);
    ReprocessSelected(false);
}

void frmViewChecked::RemoveSelected(bool Confirm)
{
    const QList<QTreeWidgetItem *> rows = SelectedRows();
    if (rows.isEmpty()
        || (Confirm && !Ask(QStringLiteral("Delete Selected Messages?"),
                            AppText("DELETESELMESSAGES2", "These messages will be processed again by %APPNAME% if they still exists at the source."))))
        return;
    for (QTreeWidgetItem *row : rows) {
        if (!ViewClient::Report(Client.Wait(Requests::DeleteMessage(row->text(ColFolderID), RecordOf(row)))))
            return;
        RemoveRow(row);
    }
}

void frmViewChecked::RemoveAll(bool Confirm)
{
    if (Confirm && !Ask(AppText("DELETEALLMESSAGES1", "Delete all messages from the current view?"),
                        AppText("DELETESELMESSAGES2", "These messages will be processed again by %APPNAME% if they still exists at the source.")))
        return;
    lblStatus->setText(QStringLiteral("Deleting Messages.."));
    if (!ViewClient::Report(Client.Wait(Requests::DeleteMessages(Filter()))))
        return;
    // The account reads its source again from the start: what was deleted
    // is processed once more when it is still there.
    if (!AllAccounts && UserID.isEmpty() && Accounts().Item(AccountID))
        ViewClient::Report(Client.Wait(Requests::ReceivedAfterReset(AccountID, TriggerID)));
    LoadView();
}

bool frmViewChecked::MoveRows(const QList<QTreeWidgetItem *> &Rows, const QString &TargetKey)
{
    if (TargetKey.isEmpty() || TargetKey == RootKey || TargetKey == PublicKey)
        return false;
    const QString target = FolderIDOfKey(TargetKey);
    for (QTreeWidgetItem *row : Rows) {
        if (row->text(ColFolderID) == target)
            continue;
        if (!ViewClient::Report(Client.Wait(Requests::MoveMessage(row->text(ColFolderID), RecordOf(row), target,
                                                                  AccountOfRows(AccountID)))))
            return true;
        RemoveRow(row);
    }
    return true;
}

void frmViewChecked::SendToSpam()
{
    for (const clsUserFolder *folder : UserFolders()) {
        if (folder->Name.compare(QStringLiteral("Spam"), Qt::CaseInsensitive) == 0) {
            MoveRows(SelectedRows(), (folder->UserID.isEmpty() ? QStringLiteral("P") : QStringLiteral("F")) + folder->ID);
            return;
        }
    }
    emit Remote().MessageBar(QStringLiteral("There is no folder named Spam."));
}

void frmViewChecked::OpenMessage(QTreeWidgetItem *Row)
{
    const qint32 record = RecordOf(Row);
    if (record <= 0)
        return;
    if (OpenReaders.contains(record)) {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->objectName() == u"frmViewEmail" && window->property("RecordID").toString() == QString::number(record)) {
                window->raise();
                window->activateWindow();
                return;
            }
        }
    }
    auto *reader = new frmViewEmail(Row->text(ColFolderID), record, AccountID);
    OpenReaders << record;
    connect(reader, &QObject::destroyed, this, [this, record] { OpenReaders.removeAll(record); });
    connect(reader, &frmViewEmail::MessageChanged, this, [this](qint32 RecordNo) {
        if (QTreeWidgetItem *row = FindRow(RecordNo))
            RemoveRow(row);
    });
    reader->show();
    reader->GetMessage();
    if (IsUnread(Row))
        ShowRead(Row, true); // reading the message marks it read on the server
}

void frmViewChecked::AddFolder()
{
    QTreeWidgetItem *node = Tree->currentItem();
    const QString key = node ? node->data(0, KeyRole).toString() : RootKey;
    if (EditFolder && EditFolder(nullptr, key, this))
        FillTree();
}

void frmViewChecked::EditSelectedFolder()
{
    const clsUserFolder *folder = UserFolders().Item(FolderID);
    if (folder && EditFolder && EditFolder(folder, QString(), this))
        FillTree();
}

void frmViewChecked::DeleteSelectedFolder(bool Confirm)
{
    const clsUserFolder *folder = UserFolders().Item(FolderID);
    if (!folder)
        return;
    if (!folder->AccountID.isEmpty()) {
        QMessageBox::information(this, Global.AppTitle, AppText("CANNOTDELETEFOLDER1", "You Cannot Delete This Folder"));
        return;
    }
    if (Confirm
        && !Ask(AppText("DELETEFOLDER1", "Delete The Folder '%FOLDER%'?").replace(QStringLiteral("%FOLDER%"), folder->Name),
                AppText("DELETEFOLDER2", "All messages in the folder will also be deleted. These messages will be processed "
                                         "again by %APPNAME% if they still exists at the source.")))
        return;
    if (!ViewClient::Report(Client.Wait(Requests::DeleteFolder(folder->ID))))
        return;
    Remote().HTTPGet(Requests::GetFolders());
    FillTree();
}

void frmViewChecked::ShowTreeMenu(const QPoint &At)
{
    QTreeWidgetItem *node = Tree->itemAt(At);
    if (node)
        Tree->setCurrentItem(node);
    QMenu menu(this);
    connect(menu.addAction(QStringLiteral("New Folder")), &QAction::triggered, this, &frmViewChecked::AddFolder);
    if (const clsUserFolder *folder = UserFolders().Item(FolderID)) {
        connect(menu.addAction(QStringLiteral("Edit '") + folder->Name + u'\''), &QAction::triggered, this,
                &frmViewChecked::EditSelectedFolder);
        connect(menu.addAction(QStringLiteral("Delete '") + folder->Name + u'\''), &QAction::triggered, this,
                [this] { DeleteSelectedFolder(); });
    }
    menu.exec(Tree->viewport()->mapToGlobal(At));
}

void frmViewChecked::ShowGridMenu(const QPoint &At)
{
    QMenu menu(this);
    for (int id : {ID_MARKREAD, ID_MARKUNREAD, ID_REPROCESSMESSAGE, ID_REMOVEMESSAGE, ID_SPAM, ID_PRINT})
        menu.addAction(CommandBar->Command(id));
    menu.exec(Grid->viewport()->mapToGlobal(At));
}

void frmViewChecked::ShowReadingPane(bool Shown)
{
    Preview->setVisible(Shown);
    CommandBar->Command(ID_READINGPANE)->setChecked(Shown);
}

QString frmViewChecked::PrintHtml() const
{
    QString html = QStringLiteral("<html><body><h3>") + Caption().toHtmlEscaped()
        + QStringLiteral("</h3><table border='1' cellspacing='0' cellpadding='2' width='100%'><tr>");
    for (int column = ColFrom; column <= ColError; ++column)
        html += QStringLiteral("<th>") + Grid->headerItem()->text(column).toHtmlEscaped() + QStringLiteral("</th>");
    html += QStringLiteral("</tr>");
    for (const QTreeWidgetItem *row : Rows()) {
        html += QStringLiteral("<tr>");
        for (int column = ColFrom; column <= ColError; ++column)
            html += QStringLiteral("<td>") + row->text(column).toHtmlEscaped() + QStringLiteral("</td>");
        html += QStringLiteral("</tr>");
    }
    return html + QStringLiteral("</table></body></html>");
}

void frmViewChecked::Print()
{
    PrintPage(this, PrintHtml(), DocumentName);
}

bool frmViewChecked::TreeDrag(QEvent *Event)
{
    auto *drag = static_cast<QDropEvent *>(Event);
    if (drag->source() != Grid)
        return false;
    QTreeWidgetItem *node = Tree->itemAt(drag->position().toPoint());
    const QString key = node ? node->data(0, KeyRole).toString() : QString();
    const bool accepted = node && key != RootKey && key != PublicKey;
    if (Event->type() == QEvent::Drop) {
        DropTimer.stop();
        if (accepted) {
            drag->setDropAction(Qt::MoveAction);
            drag->accept();
            MoveRows(SelectedRows(), key);
        } else {
            drag->ignore();
        }
        return true;
    }
    if (node != m_hover) {
        m_hover = node;
        DropTimer.start();
    }
    if (accepted) {
        drag->setDropAction(Qt::MoveAction);
        drag->accept();
    } else {
        drag->ignore();
    }
    return true;
}

bool frmViewChecked::eventFilter(QObject *Watched, QEvent *Event)
{
    if (Watched == Tree->viewport()) {
        switch (Event->type()) {
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop:
            return TreeDrag(Event);
        case QEvent::DragLeave:
            DropTimer.stop();
            m_hover = nullptr;
            return false;
        default:
            return false;
        }
    }
    if (Watched == Grid && Event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(Event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            OpenMessage(Grid->currentItem());
            return true;
        }
    }
    return QWidget::eventFilter(Watched, Event);
}
