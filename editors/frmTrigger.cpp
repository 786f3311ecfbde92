#include "frmTrigger.h"
#include "EditorBoxes.h"
#include "workbench/MarkupDelegate.h"
#include "frmCondition.h"
#include "frmField.h"
#include "frmTriggerAction.h"
#include "actions/ActionCatalogue.h"
#include "actions/clsActionComment.h"
#include "actions/clsActionLogical.h"
#include "foundation/GlobalBlock.h"
#include "model/Condition.h"
#include "model/GlobalCollections.h"
#include "model/Selection.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "session/frmRemote.h"
#include "workbench/TaskDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateEdit>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDragEnterEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int ScheduleLength = 170;
constexpr int KeyRole = Qt::UserRole;
const QColor ActiveColour(QStringLiteral("#8fd19e"));
const QColor NotActiveColour(QStringLiteral("#e8e8e8"));

QStringList ImportanceLabels()
{
    return {EditorText("IMPORTANCEANY", "Any"), EditorText("IMPORTANCELOW", "Low"),
            EditorText("IMPORTANCENORMAL", "Normal"), EditorText("IMPORTANCEHIGH", "High")};
}

// Header texts of a grid: the part of each "|"-separated column head after
// its alignment mark, trimmed.
QStringList GridHead(const QString &Head)
{
    QStringList columns;
    for (QString column : Head.split(u'|')) {
        if (column.startsWith(u'>') || column.startsWith(u'<') || column.startsWith(u'^'))
            column.remove(0, 1);
        columns << column.trimmed();
    }
    return columns;
}

QPushButton *ToolButton(const QString &Text, QWidget *Parent, const std::function<void()> &Run)
{
    auto *button = new QPushButton(Text, Parent);
    QObject::connect(button, &QPushButton::clicked, Parent, Run);
    return button;
}

} // namespace

frmTrigger::frmTrigger(clsAccount &Account, clsAccountTrigger &Trigger, bool IsNew, QWidget *parent)
    : QWidget(parent), Account(Account), Trigger(Trigger), IsNew(IsNew)
{
    setObjectName(QStringLiteral("frmTrigger"));
    setWindowTitle(EditorText("TRIGGERTITLE", "Account Trigger:") + u' ' + Trigger.Name);
    Tabs = new QTabWidget(this);
    Tabs->addTab(MakeGeneralTab(), EditorText("TABGENERAL", "General"));
    Tabs->addTab(MakeFieldsTab(), EditorText("TABFIELDS", "Extracted Fields"));
    Tabs->addTab(MakeActionsTab(), EditorText("TABACTIONS", "Actions"));
    Tabs->addTab(MakeScheduleTab(), EditorText("TABSCHEDULE", "Schedule"));
    Tabs->addTab(MakeSaveToTab(), EditorText("TABSAVETO", "Save To"));
    Tabs->addTab(MakeNotesTab(), EditorText("TABNOTES", "Notes"));

    btnOK = ToolButton(EditorText("SAVECHANGES", "Save Changes"), this, [this] {
        if (ButtonOK())
            close();
    });
    btnCancel = ToolButton(EditorText("CANCEL", "Cancel"), this, [this] { close(); });
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(Tabs);
    layout->addLayout(buttons);

    AddActionTimer.setSingleShot(true);
    AddActionTimer.setInterval(200);
    connect(&AddActionTimer, &QTimer::timeout, this, &frmTrigger::CreateDroppedAction);
    resize(900, 640);
    UnCrunch();
}

frmTrigger::~frmTrigger() = default;

void frmTrigger::AdoptNewTrigger(std::unique_ptr<clsAccountTrigger> NewTrigger)
{
    m_newTrigger = std::move(NewTrigger);
}

QWidget *frmTrigger::MakeGeneralTab()
{
    auto *page = new QWidget(this);
    txtName = new QLineEdit(page);
    txtFrom = new QLineEdit(page);
    WordsGrid = new QTableWidget(0, 1, page);
    WordsGrid->setHorizontalHeaderLabels(
        {GridHead(EditorText("GRIDWORDS", ">No  | Contains")).value(1, QStringLiteral("Contains"))});
    WordsGrid->horizontalHeader()->setStretchLastSection(true);
    WordsGrid->setMinimumHeight(110);
    connect(WordsGrid, &QTableWidget::cellChanged, this, [this](int Row) {
        if (m_filling)
            return;
        MarkDirty();
        if (Row == WordsGrid->rowCount() - 1 && WordsGrid->item(Row, 0) && !WordsGrid->item(Row, 0)->text().isEmpty())
            WordsGrid->insertRow(WordsGrid->rowCount());
    });
    btnContains = ToolButton(QString(), page, [this] {
        m_containsAll = !m_containsAll;
        ShowToggleCaptions();
        MarkDirty();
    });
    btnCheckBodyAlso = ToolButton(QString(), page, [this] {
        m_checkBody = !m_checkBody;
        ShowToggleCaptions();
        MarkDirty();
    });
    cmboImportant = new QComboBox(page);
    cmboImportant->addItems(ImportanceLabels());
    cmboSensitivity = new QComboBox(page);
    cmboSensitivity->addItems(ImportanceLabels());
    txtReceivedDate = new QDateEdit(page);
    txtReceivedDate->setCalendarPopup(true);
    txtReceivedDate->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    btnCondition = ToolButton(EditorText("BTNCONDITION", "Condition..."), page, [this] { EditCondition(); });
    lblCondition = new QLabel(page);
    lblCondition->setWordWrap(true);
    lblCondition->setTextFormat(Qt::RichText);
    lblCondition->setFrameShape(QFrame::StyledPanel);
    lblCondition->setMinimumHeight(40);
    chkScriptEnabled = new QCheckBox(EditorText("CONDITIONSCRIPT", "Condition Script:"), page);
    btnEditScript = ToolButton(EditorText("EDITSCRIPT", "Edit Script..."), page, [this] { EditScript(); });
    connect(chkScriptEnabled, &QCheckBox::toggled, this, [this](bool On) {
        btnEditScript->setEnabled(On);
        MarkDirty();
    });
    cmboThenProcess = new QComboBox(page);
    cmboThenProcess->addItems({EditorText("TRIGGERTHENSTOP", "Stop Processing Further Triggers"),
                               EditorText("TRIGGERTHENPASS", "Pass Processing On To Trigger")});
    cmboThenProcessTrigger = new QComboBox(page);
    connect(cmboThenProcess, &QComboBox::currentIndexChanged, this, [this](int Index) {
        cmboThenProcessTrigger->setEnabled(Index == 1);
        MarkDirty();
    });
    for (QLineEdit *edit : {txtName, txtFrom})
        connect(edit, &QLineEdit::textEdited, this, &frmTrigger::MarkDirty);
    for (QComboBox *combo : {cmboImportant, cmboSensitivity, cmboThenProcessTrigger})
        connect(combo, &QComboBox::currentIndexChanged, this, &frmTrigger::MarkDirty);
    connect(txtReceivedDate, &QDateEdit::dateChanged, this, &frmTrigger::MarkDirty);

    auto *conditions = new QGroupBox(EditorText("TRIGGERCONDITIONS", "Conditions"), page);
    auto *form = new QFormLayout(conditions);
    form->addRow(EditorText("FROMADDRESS", "From:"), txtFrom);
    auto *toggles = new QHBoxLayout;
    toggles->addWidget(btnContains);
    toggles->addWidget(btnCheckBodyAlso);
    toggles->addStretch();
    form->addRow(toggles);
    form->addRow(WordsGrid);
    form->addRow(EditorText("IMPORTANCE", "Importance:"), cmboImportant);
    form->addRow(EditorText("SENSITIVITY", "Sensitivity:"), cmboSensitivity);
    form->addRow(EditorText("RECEIVEDAFTER", "Received After:"), txtReceivedDate);
    auto *condition = new QHBoxLayout;
    condition->addWidget(btnCondition, 0, Qt::AlignTop);
    condition->addWidget(lblCondition, 1);
    form->addRow(condition);
    auto *script = new QHBoxLayout;
    script->addWidget(chkScriptEnabled);
    script->addWidget(btnEditScript);
    script->addStretch();
    form->addRow(script);

    auto *after = new QGroupBox(EditorText("TRIGGERTHEN", "After This Trigger Has Processed A Message:"), page);
    auto *afterLayout = new QHBoxLayout(after);
    afterLayout->addWidget(cmboThenProcess);
    afterLayout->addWidget(cmboThenProcessTrigger, 1);

    auto *layout = new QFormLayout(page);
    layout->addRow(EditorText("TRIGGERNAME", "Name:"), txtName);
    layout->addRow(conditions);
    layout->addRow(after);
    return page;
}

QWidget *frmTrigger::MakeFieldsTab()
{
    auto *page = new QWidget(this);
    const QStringList head = GridHead(EditorText(
        "GRIDFIELDS", ">No   |^Enabled| Name                                                | DB Table                 "
                      "         | DB Field                       | Find"));
    FieldsGrid = new QTableWidget(0, head.size(), page);
    FieldsGrid->setHorizontalHeaderLabels(head);
    FieldsGrid->setSelectionBehavior(QAbstractItemView::SelectRows);
    FieldsGrid->setSelectionMode(QAbstractItemView::SingleSelection);
    FieldsGrid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    FieldsGrid->verticalHeader()->hide();
    FieldsGrid->horizontalHeader()->setStretchLastSection(true);
    FieldsGrid->setColumnWidth(0, 40);
    FieldsGrid->setColumnWidth(1, 60);
    FieldsGrid->setColumnWidth(2, 180);
    FieldsGrid->setColumnWidth(3, 140);
    FieldsGrid->setColumnWidth(4, 140);
    connect(FieldsGrid, &QTableWidget::cellDoubleClicked, this, [this] { ShowFieldForm(false); });
    connect(FieldsGrid, &QTableWidget::itemChanged, this, [this](QTableWidgetItem *Item) {
        if (m_filling || Item->column() != 1)
            return;
        if (clsTriggerField *field = Trigger.FieldsToProcess().Item(Item->row() + 1)) {
            field->Enabled = Item->checkState() == Qt::Checked;
            MarkDirty();
        }
    });
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(ToolButton(EditorText("ADDFIELD", "Add Field"), page, [this] { ShowFieldForm(true); }));
    buttons->addWidget(
        ToolButton(EditorText("ADDLOOKUPFIELD", "Add Lookup Field"), page, [this] { ShowFieldForm(true, true); }));
    buttons->addWidget(ToolButton(EditorText("EDITFIELD", "Edit Field"), page, [this] { ShowFieldForm(false); }));
    buttons->addWidget(ToolButton(EditorText("DELETEFIELD", "Delete Field"), page, [this] { DeleteField(); }));
    buttons->addWidget(ToolButton(EditorText("MOVEUP", "Move Up"), page, [this] { MoveUp(); }));
    buttons->addWidget(ToolButton(EditorText("MOVEDOWN", "Move Down"), page, [this] { MoveDown(); }));
    buttons->addStretch();
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FieldsGrid);
    layout->addLayout(buttons);
    return page;
}

QWidget *frmTrigger::MakeActionsTab()
{
    auto *page = new QWidget(this);
    ActionsPanel = new QTreeWidget(page);
    ActionsPanel->setHeaderHidden(true);
    ActionsPanel->setDragEnabled(true);
    ActionsPanel->setDragDropMode(QAbstractItemView::DragOnly);
    ActionsPanel->setMaximumWidth(260);
    QHash<int, QTreeWidgetItem *> groups;
    for (const ActionGroup &group : ActionGroups()) {
        auto *item = new QTreeWidgetItem(ActionsPanel, {group.Caption});
        item->setFlags(Qt::ItemIsEnabled);
        QFont bold = item->font(0);
        bold.setBold(true);
        item->setFont(0, bold);
        item->setExpanded(group.Open);
        groups.insert(group.Number, item);
    }
    for (const ActionKind &kind : ActionCatalogue()) {
        auto *item = new QTreeWidgetItem(groups.value(kind.Group), {kind.Caption});
        item->setData(0, KeyRole, kind.Key);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled);
    }
    connect(ActionsPanel, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *Item) {
        const QString key = Item->data(0, KeyRole).toString();
        if (!key.isEmpty())
            CreateAction(key, SelectedActionID);
    });

    ReportActions = new QTreeWidget(page);
    ReportActions->setHeaderLabels({EditorText("GRIDACTIONS", "Actions")});
    ReportActions->setItemDelegate(new MarkupDelegate(ReportActions));
    ReportActions->setAcceptDrops(true);
    ReportActions->viewport()->installEventFilter(this);
    ReportActions->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(ReportActions, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *Item) {
        if (Item && !m_filling)
            SelectedActionID = Item->data(0, KeyRole).toString();
    });
    connect(ReportActions, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem *Item) { ShowActionForm(Item->data(0, KeyRole).toString(), false); });
    connect(ReportActions, &QTreeWidget::customContextMenuRequested, this, [this](const QPoint &At) {
        QMenu menu(this);
        menu.addAction(EditorText("EDITACTION", "Edit Action"), this, [this] { ShowActionForm(SelectedActionID, false); });
        menu.addAction(EditorText("DELETEACTION", "Delete Action"), this, &frmTrigger::DeleteAction);
        menu.addAction(EditorText("MOVEUPEXEC", "Move Up In The Execution Order"), this, &frmTrigger::MoveActionUp);
        menu.addAction(EditorText("MOVEDOWNEXEC", "Move Down In The Execution Order"), this,
                       &frmTrigger::MoveActionDown);
        menu.addAction(EditorText("COPYACTION", "Copy Action"), this, &frmTrigger::CopyAction);
        menu.addAction(EditorText("PASTEACTION", "Paste Action"), this, &frmTrigger::PasteAction);
        menu.exec(ReportActions->viewport()->mapToGlobal(At));
    });

    auto *hint = new QLabel(EditorText("ACTIONHINT", "Double Click or Drag Action Here To Create"), page);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(hint);
    buttons->addStretch();
    buttons->addWidget(
        ToolButton(EditorText("EDITACTION", "Edit Action"), page, [this] { ShowActionForm(SelectedActionID, false); }));
    buttons->addWidget(ToolButton(EditorText("DELETEACTION", "Delete Action"), page, [this] { DeleteAction(); }));
    buttons->addWidget(ToolButton(EditorText("MOVEUP", "Move Up"), page, [this] { MoveActionUp(); }));
    buttons->addWidget(ToolButton(EditorText("MOVEDOWN", "Move Down"), page, [this] { MoveActionDown(); }));
    auto *right = new QVBoxLayout;
    right->addWidget(ReportActions);
    right->addLayout(buttons);
    auto *layout = new QHBoxLayout(page);
    layout->addWidget(ActionsPanel);
    layout->addLayout(right, 1);
    return page;
}

QWidget *frmTrigger::MakeScheduleTab()
{
    auto *page = new QWidget(this);
    GridSchedule = new QTableWidget(7, 24, page);
    QStringList hours;
    for (int hour = 0; hour < 24; ++hour)
        hours << QStringLiteral("%1\n%2").arg(hour / 10).arg(hour % 10);
    GridSchedule->setHorizontalHeaderLabels(hours);
    GridSchedule->setVerticalHeaderLabels({EditorText("SUNDAY", "Sunday"), EditorText("MONDAY", "Monday"),
                                           EditorText("TUESDAY", "Tuesday"), EditorText("WEDNESDAY", "Wednesday"),
                                           EditorText("THURSDAY", "Thursday"), EditorText("FRIDAY", "Friday"),
                                           EditorText("SATURDAY", "Saturday")});
    GridSchedule->setEditTriggers(QAbstractItemView::NoEditTriggers);
    GridSchedule->setSelectionMode(QAbstractItemView::NoSelection);
    GridSchedule->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    GridSchedule->horizontalHeader()->setMinimumSectionSize(22);
    GridSchedule->setMinimumWidth(24 * 24 + 90);
    for (int day = 0; day < 7; ++day)
        for (int hour = 0; hour < 24; ++hour)
            GridSchedule->setItem(day, hour, new QTableWidgetItem);
    connect(GridSchedule, &QTableWidget::cellClicked, this, [this](int Row, int Column) {
        setScheduleActive(Row + 1, Column, !ScheduleActive(Row + 1, Column));
        MarkDirty();
    });
    GridKey = new QTableWidget(1, 2, page);
    GridKey->horizontalHeader()->hide();
    GridKey->verticalHeader()->hide();
    GridKey->setEditTriggers(QAbstractItemView::NoEditTriggers);
    GridKey->setSelectionMode(QAbstractItemView::NoSelection);
    auto *active = new QTableWidgetItem(EditorText("GRIDKEY1", "Active"));
    active->setBackground(ActiveColour);
    auto *notActive = new QTableWidgetItem(EditorText("GRIDKEY2", "Not Active"));
    notActive->setBackground(NotActiveColour);
    GridKey->setItem(0, 0, active);
    GridKey->setItem(0, 1, notActive);
    GridKey->setFixedSize(GridKey->columnWidth(0) * 2 + 4, GridKey->rowHeight(0) + 4);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(GridSchedule);
    layout->addWidget(GridKey);
    layout->addStretch();
    return page;
}

QWidget *frmTrigger::MakeSaveToTab()
{
    FolderTree = new QTreeWidget(this);
    FolderTree->setHeaderHidden(true);
    connect(FolderTree, &QTreeWidget::currentItemChanged, this, [this] {
        if (!m_filling)
            MarkDirty();
    });
    return FolderTree;
}

QWidget *frmTrigger::MakeNotesTab()
{
    txtDetails = new QPlainTextEdit(this);
    connect(txtDetails, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_filling)
            MarkDirty();
    });
    return txtDetails;
}

int frmTrigger::SelectedTab() const
{
    return Tabs->currentIndex();
}

void frmTrigger::setSelectedTab(int Tab)
{
    Tabs->setCurrentIndex(Tab);
}

void frmTrigger::MarkDirty()
{
    if (!m_filling)
        Dirty = true;
}

void frmTrigger::UnCrunch()
{
    m_filling = true;
    txtName->setText(Trigger.Name);
    txtDetails->setPlainText(Trigger.Details);
    txtFrom->setText(Trigger.FromAddressLIKE);
    txtReceivedDate->setDate(Trigger.ReceivedAfter.isValid() ? Trigger.ReceivedAfter.date()
                                                             : QDate::currentDate().addDays(-30));
    cmboImportant->setCurrentIndex(qBound(0, int(Trigger.MarkedAsImportant), 3));
    cmboSensitivity->setCurrentIndex(qBound(0, int(Trigger.MarkedAsSenstive), 3));
    chkScriptEnabled->setChecked(Trigger.SBScriptTriggerEnabled);
    btnEditScript->setEnabled(Trigger.SBScriptTriggerEnabled);
    m_containsAll = Trigger.CheckALLWords;
    m_checkBody = Trigger.CheckBodyAlso;
    ShowToggleCaptions();
    FillWords();
    ShowCondition();
    FillSchedule();
    FillFolders();
    FillThenProcess();
    m_filling = false;
    FillFields();
    FillActions();
}

void frmTrigger::ShowToggleCaptions()
{
    btnContains->setText(m_containsAll ? EditorText("CONTAINSALL", "Contains All Of These Words")
                                       : EditorText("CONTAINSANY", "Contains Any Of These Words"));
    btnCheckBodyAlso->setText(m_checkBody ? EditorText("SUBJECTANDBODY", "Subject/Body")
                                          : EditorText("SUBJECTLINE", "Subject Line"));
}

void frmTrigger::FillWords()
{
    const QStringList words = Trigger.SubjectLineLIKE.split(u'\t', Qt::SkipEmptyParts);
    WordsGrid->setRowCount(0);
    for (const QString &word : words) {
        const int row = WordsGrid->rowCount();
        WordsGrid->insertRow(row);
        WordsGrid->setItem(row, 0, new QTableWidgetItem(word));
    }
    WordsGrid->insertRow(WordsGrid->rowCount());
}

void frmTrigger::ShowCondition()
{
    lblCondition->setText(MarkupDelegate::ToHtml(QStringLiteral("<TextBlock>") + ConditionDisplay(Trigger.Condition, true, false) +
                                       QStringLiteral("</TextBlock>")));
}

bool frmTrigger::ScheduleActive(int Day, int Hour) const
{
    return GridSchedule->item(Day - 1, Hour)->data(KeyRole).toBool();
}

void frmTrigger::setScheduleActive(int Day, int Hour, bool Active)
{
    QTableWidgetItem *cell = GridSchedule->item(Day - 1, Hour);
    cell->setData(KeyRole, Active);
    cell->setBackground(Active ? ActiveColour : NotActiveColour);
}

void frmTrigger::FillSchedule()
{
    for (int day = 1; day <= 7; ++day)
        for (int hour = 0; hour < 24; ++hour)
            setScheduleActive(day, hour, Trigger.SCHEDULE.mid((day - 1) * 24 + hour, 1) != QStringLiteral("N"));
}

void frmTrigger::FillFolders()
{
    FolderTree->clear();
    auto *root = new QTreeWidgetItem(FolderTree, {EditorText("NOFOLDER", "No Specific Folder")});
    root->setData(0, KeyRole, QStringLiteral("ROOT"));
    QHash<QString, QTreeWidgetItem *> nodes;
    QList<const clsUserFolder *> pending;
    for (const clsUserFolder *folder : UserFolders())
        if (folder->UserID.isEmpty() && folder->OrganizationID == Account.OrganizationID)
            pending << folder;
    // Parents first: a folder waits until its parent's node exists.
    for (bool placed = true; placed && !pending.isEmpty();) {
        placed = false;
        for (qsizetype at = 0; at < pending.size();) {
            const clsUserFolder *folder = pending.at(at);
            QTreeWidgetItem *parent = folder->Parent.isEmpty() ? root : nodes.value(folder->Parent);
            if (!parent && pending.end() != std::find_if(pending.begin(), pending.end(), [folder](auto *Other) {
                    return Other->ID == folder->Parent;
                })) {
                ++at;
                continue;
            }
            auto *node = new QTreeWidgetItem(parent ? parent : root, {folder->Name});
            node->setData(0, KeyRole, QStringLiteral("F") + folder->ID);
            nodes.insert(folder->ID, node);
            pending.removeAt(at);
            placed = true;
        }
    }
    FolderTree->expandAll();
    QTreeWidgetItem *selected = nodes.value(Trigger.SaveToFolderID, root);
    FolderTree->setCurrentItem(selected);
}

void frmTrigger::FillThenProcess()
{
    cmboThenProcessTrigger->clear();
    int chosen = -1;
    for (int position = 1; position <= Account.Triggers.Count(); ++position) {
        const clsAccountTrigger *other = Account.Triggers.Item(position);
        cmboThenProcessTrigger->addItem(other->Name, position);
        if (!Trigger.ThenProcessID.isEmpty() && other->TriggerID == Trigger.ThenProcessID)
            chosen = position - 1;
    }
    cmboThenProcess->setCurrentIndex(chosen >= 0 ? 1 : 0);
    cmboThenProcessTrigger->setCurrentIndex(chosen);
    cmboThenProcessTrigger->setEnabled(chosen >= 0);
}

void frmTrigger::FillFields()
{
    m_filling = true;
    const int keep = SelectedFieldRow();
    FieldsGrid->setRowCount(0);
    int row = 0;
    for (const clsTriggerField *each : Trigger.FieldsToProcess()) {
        const clsTriggerField &field = *each;
        FieldsGrid->insertRow(row);
        FieldsGrid->setItem(row, 0, new QTableWidgetItem(QString::number(row + 1)));
        auto *enabled = new QTableWidgetItem;
        enabled->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        enabled->setCheckState(field.Enabled ? Qt::Checked : Qt::Unchecked);
        FieldsGrid->setItem(row, 1, enabled);
        auto *name = new QTableWidgetItem(field.Name);
        if (field.SBScriptExtractEnabled)
            name->setIcon(style()->standardIcon(QStyle::SP_FileDialogDetailedView));
        else if (field.Lookup)
            name->setIcon(style()->standardIcon(QStyle::SP_FileDialogContentsView));
        FieldsGrid->setItem(row, 2, name);
        FieldsGrid->setItem(row, 3, new QTableWidgetItem(field.InsertInto));
        auto *column = new QTableWidgetItem(field.InsertFieldName);
        if (field.KeyExists)
            column->setIcon(style()->standardIcon(QStyle::SP_DialogApplyButton));
        FieldsGrid->setItem(row, 4, column);
        QString find = field.ExtractBuiltIn ? field.ExtractBuiltInField : field.LookFor;
        if (!field.ExtractBuiltIn && !field.ThenLookFor.isEmpty())
            find += QStringLiteral(" Then ") + field.ThenLookFor;
        FieldsGrid->setItem(row, 5, new QTableWidgetItem(find));
        ++row;
    }
    if (keep >= 0 && keep < FieldsGrid->rowCount())
        FieldsGrid->selectRow(keep);
    m_filling = false;
}

int frmTrigger::SelectedFieldRow() const
{
    const QList<QTableWidgetItem *> items = FieldsGrid->selectedItems();
    return items.isEmpty() ? FieldsGrid->currentRow() : items.first()->row();
}

clsTriggerField *frmTrigger::SelectedField() const
{
    const int row = SelectedFieldRow();
    return row < 0 ? nullptr : Trigger.FieldsToProcess().Item(row + 1);
}

void frmTrigger::FillActions()
{
    m_filling = true;
    ReportActions->clear();
    QHash<QString, QTreeWidgetItem *> rows;
    colActions &list = Trigger.ActionList();
    for (const ActionItem *each : list) {
        const ActionItem &action = *each;
        QTreeWidgetItem *parent = rows.value(list.IFBlockID(action.ID()));
        const QString text = MarkupDelegate::PlainText(action.ActionDescription());
        auto *row = parent ? new QTreeWidgetItem(parent, {text}) : new QTreeWidgetItem(ReportActions, {text});
        row->setData(0, KeyRole, action.ID());
        row->setData(0, MarkupDelegate::MarkupRole, action.ActionDescription());
        row->setToolTip(0, action.ClassDesc());
        if (!action.Enabled())
            row->setForeground(0, palette().color(QPalette::Disabled, QPalette::Text));
        rows.insert(action.ID(), row);
    }
    ReportActions->expandAll();
    m_filling = false;
    SelectAction(SelectedActionID);
}

void frmTrigger::SelectAction(const QString &ID)
{
    QTreeWidgetItemIterator it(ReportActions);
    for (; *it; ++it)
        if ((*it)->data(0, KeyRole).toString() == ID) {
            ReportActions->setCurrentItem(*it);
            return;
        }
}

int frmTrigger::SelectedActionPosition() const
{
    return Trigger.ActionList().ActionNoFromID(SelectedActionID);
}

bool frmTrigger::ValidateControls()
{
    QString problem;
    if (txtFrom->text().trimmed().isEmpty())
        problem = EditorText("ERRORNOFROMADD",
                             "You must specify a From address. If you want to check emails from everyone, specify *");
    else if (txtName->text().trimmed().isEmpty())
        problem = EditorText("ERRORNONAME", "You must enter a Name");
    else if (!Trigger.ActionList().IFBlocksClosed())
        problem = EditorText("ERRORIFNOTCLOSED",
                             "An If/End If Action does not have a matching End If/If. Please correct before saving.");
    else if (!Trigger.ActionList().IFElseBlocksClosed())
        problem = EditorText("ERRORELSE", "Misplaced Else");
    if (problem.isEmpty())
        return true;
    WarningBox(this, problem);
    return false;
}

void frmTrigger::ReadControls()
{
    Trigger.SaveToFolderID.clear();
    if (QTreeWidgetItem *node = FolderTree->currentItem()) {
        const QString key = node->data(0, KeyRole).toString();
        if (key != QStringLiteral("ROOT"))
            Trigger.SaveToFolderID = key.mid(1);
    }
    Trigger.Name = txtName->text();
    Trigger.Details = txtDetails->toPlainText();
    Trigger.FromAddressLIKE = txtFrom->text().trimmed();
    Trigger.MarkedAsImportant = qint16(cmboImportant->currentIndex());
    Trigger.MarkedAsSenstive = qint16(cmboSensitivity->currentIndex());
    Trigger.SBScriptTriggerEnabled = chkScriptEnabled->isChecked();
    QString words;
    for (int row = 0; row < WordsGrid->rowCount(); ++row) {
        const QTableWidgetItem *cell = WordsGrid->item(row, 0);
        const QString word = cell ? cell->text().trimmed().remove(u'\t') : QString();
        if (!word.isEmpty())
            words += word + u'\t';
    }
    Trigger.SubjectLineLIKE = words;
    Trigger.CheckBodyAlso = m_checkBody;
    Trigger.CheckALLWords = m_containsAll;
    const QDateTime chosen(txtReceivedDate->date(), QTime(0, 0));
    Trigger.ReceivedAfterReset = Trigger.ReceivedAfter.isValid() && chosen < Trigger.ReceivedAfter;
    Trigger.ReceivedAfter = chosen;
    QString schedule(ScheduleLength, u'Y');
    for (int day = 1; day <= 7; ++day)
        for (int hour = 0; hour < 24; ++hour)
            schedule[(day - 1) * 24 + hour] = ScheduleActive(day, hour) ? u'Y' : u'N';
    Trigger.SCHEDULE = schedule.contains(u'N') ? schedule : QString();
    Trigger.ThenProcessID.clear();
    if (cmboThenProcess->currentIndex() == 1 && cmboThenProcessTrigger->currentIndex() >= 0) {
        const clsAccountTrigger *next = Account.Triggers.Item(cmboThenProcessTrigger->currentData().toInt());
        if (next && next != &Trigger && next->TriggerID != Trigger.TriggerID)
            Trigger.ThenProcessID = next->TriggerID;
    }
}

bool frmTrigger::ButtonOK()
{
    if (!ValidateControls())
        return false;
    ReadControls();
    if (IsNew && m_newTrigger) {
        Account.Triggers.Add(std::move(m_newTrigger));
        IsNew = false;
        Trigger.Enabled = QuestionBox(this, Global.AppTitle,
                                      EditorText("TRIGGERENABLE", "Do you want to enable this new Trigger now?")) ==
                          QMessageBox::Yes;
    }
    SelectedTrigger = &Trigger;
    Account.ReceivedAfterReset();
    // A post that failed keeps the window open with its changes; the
    // message bar says why.
    if (!Remote().SendTrigger(Trigger))
        return false;
    Dirty = false;
    setWindowTitle(EditorText("TRIGGERTITLE", "Account Trigger:") + u' ' + Trigger.Name);
    emit TriggerSaved(Trigger.TriggerID);
    return true;
}

bool frmTrigger::SaveChanges(bool *Saved)
{
    if (Saved)
        *Saved = false;
    if (!Dirty)
        return true;
    const QMessageBox::StandardButton answer =
        ShowTaskDialog(this, EditorText("SAVETRIGGER1", "Save Changes?"),
                       EditorText("SAVETRIGGER2", "Do you want to save the changes made to this Trigger?"), QString(),
                       QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    if (answer == QMessageBox::Cancel)
        return false;
    if (answer == QMessageBox::Yes) {
        if (!ButtonOK())
            return false;
        if (Saved)
            *Saved = true;
    }
    return true;
}

bool frmTrigger::ButtonCancel()
{
    if (!SaveChanges())
        return false;
    Dirty = false;
    return true;
}

void frmTrigger::closeEvent(QCloseEvent *event)
{
    if (ButtonCancel())
        event->accept();
    else
        event->ignore();
}

void frmTrigger::EditCondition()
{
    frmCondition editor(Trigger, nullptr, this);
    editor.FillCondition();
    if (editor.exec() == QDialog::Accepted) {
        ShowCondition();
        MarkDirty();
    }
}

void frmTrigger::EditScript()
{
    bool ok = false;
    const QString script =
        QInputDialog::getMultiLineText(this, EditorText("CONDITIONSCRIPT", "Condition Script:"),
                                       EditorText("SCRIPTTEXT", "Script:"), Trigger.SBScriptTrigger, &ok);
    if (ok && script != Trigger.SBScriptTrigger) {
        Trigger.SBScriptTrigger = script;
        MarkDirty();
    }
}

void frmTrigger::ShowFieldForm(bool New, bool Lookup)
{
    for (bool again = true; again;) {
        again = false;
        std::unique_ptr<clsTriggerField> fresh;
        clsTriggerField *field = nullptr;
        if (New) {
            fresh = std::make_unique<clsTriggerField>();
            fresh->Lookup = Lookup;
            field = fresh.get();
        } else {
            field = SelectedField();
            if (!field)
                return;
        }
        frmField editor(Trigger, *field, New, QApplication::activeWindow() ? QApplication::activeWindow() : this);
        if (editor.exec() == QDialog::Accepted) {
            if (New)
                Trigger.FieldsToProcess().Add(std::move(fresh));
            MarkDirty();
            FillFields();
            again = editor.SaveAndNew;
            New = true;
            Lookup = false;
        }
    }
}

void frmTrigger::MoveUp()
{
    const int row = SelectedFieldRow();
    if (row < 1)
        return;
    Trigger.FieldsToProcess().Swap(row + 1, row);
    MarkDirty();
    FillFields();
    FieldsGrid->selectRow(row - 1);
}

void frmTrigger::MoveDown()
{
    const int row = SelectedFieldRow();
    if (row < 0 || row + 1 >= Trigger.FieldsToProcess().Count())
        return;
    Trigger.FieldsToProcess().Swap(row + 1, row + 2);
    MarkDirty();
    FillFields();
    FieldsGrid->selectRow(row + 1);
}

void frmTrigger::DeleteField()
{
    const clsTriggerField *field = SelectedField();
    if (!field)
        return;
    if (QuestionBox(this, Global.AppTitle,
                    EditorText("DELETEFIELD1", "Delete field?") + QStringLiteral("\r\n") + field->Name) !=
        QMessageBox::Yes)
        return;
    Trigger.FieldsToProcess().Delete(field->ID);
    MarkDirty();
    FillFields();
}

QString frmTrigger::CreateAction(const QString &Kind, const QString &AfterID, const QString &Defaults)
{
    if (Kind.compare(QStringLiteral("DatabaseUpdate"), Qt::CaseInsensitive) == 0 && Trigger.DatabaseUpdate()) {
        ShowTaskDialog(
            this, EditorText("DBACTIONEXISTS", "Direct Database Update Already Added"),
            EditorText("DBACTIONEXISTS2",
                       "The Direct Database Update Action has already been added. Only one Direct Database Update "
                       "Action can be defined per Trigger. Use the Custom Database Update Action to perform more "
                       "database updates."));
        return QString();
    }
    std::unique_ptr<ActionItem> made = colActions::NewObject(Kind);
    if (!made)
        return QString();
    const QString id = made->ID();
    if (!Defaults.isEmpty()) {
        made->setXML(Defaults);
        made->setID(id);
    }
    colActions &list = Trigger.ActionList();
    const bool isIf = made->ClassName() == QStringLiteral("If");
    if (AfterID.isEmpty())
        list.Add(std::move(made));
    else if (AfterID == QStringLiteral("top") && list.Count() > 0)
        list.AddBefore(std::move(made), list.Item(1)->ID());
    else if (AfterID == QStringLiteral("top"))
        list.Add(std::move(made));
    else
        list.AddAfter(std::move(made), AfterID);
    if (!list.Item(id))
        return QString();
    SelectedActionID = id;
    if (isIf && !list.IFBlockHasEndIf(id)) {
        clsActionComment comment;
        comment.Comment = QStringLiteral("Start If Block");
        const QString commentID = comment.ID;
        list.AddAfter(ActionItem::Make(comment), id);
        clsActionLogical endIf;
        endIf.LogicalType = 3;
        list.AddAfter(ActionItem::Make(endIf), commentID);
    }
    MarkDirty();
    FillActions();
    if (Defaults.isEmpty())
        ShowActionForm(id, true);
    return id;
}

void frmTrigger::ShowActionForm(const QString &ID, bool New)
{
    colActions &list = Trigger.ActionList();
    ActionItem *action = list.Item(ID);
    if (!action)
        return;
    SelectedActionID = ID;
    Global.DialogCancelled = false;
    const QString kind = action->ClassName();
    clsActionLogical *logical = action->As<clsActionLogical>();
    auto ask = [this](const QString &Title, const QString &Label, const QString &Value) {
        bool ok = false;
        const QString text = QInputDialog::getText(this, Title, Label, QLineEdit::Normal, Value, &ok);
        Global.DialogCancelled = !ok;
        return text;
    };
    auto condition = [this, action](const QString &Title) {
        frmCondition editor(Trigger, action, this);
        editor.FillCondition();
        editor.setWindowTitle(Title);
        editor.exec();
    };
    if (kind == QStringLiteral("Comment")) {
        auto *comment = action->As<clsActionComment>();
        const QString text = ask(EditorText("ENTERCOMMENT1", "Enter A Comment"), EditorText("ENTERCOMMENT2", "Comment:"),
                                 comment->Comment);
        if (!Global.DialogCancelled)
            comment->Comment = text;
    } else if (logical && kind == QStringLiteral("Label")) {
        logical->LogicalType = 5;
        const QString text = ask(EditorText("ENTERLABEL1", "Enter A Label Name"), EditorText("ENTERLABEL2", "Label:"),
                                 logical->LabelName);
        if (!Global.DialogCancelled)
            logical->LabelName = text;
    } else if (logical && kind == QStringLiteral("If")) {
        logical->LogicalType = 1;
        condition(QStringLiteral("If Block"));
    } else if (logical && (kind == QStringLiteral("Else") || kind == QStringLiteral("EndIf"))) {
        logical->LogicalType = kind == QStringLiteral("Else") ? 2 : 3;
        if (list.IFBlockLevel(ID) == 0) {
            WarningBox(this, EditorText("NOTINIFBLOCK", "Not currently in an If Block"));
            Global.DialogCancelled = true;
        }
    } else if (logical && kind == QStringLiteral("End")) {
        logical->LogicalType = 4;
        condition(QStringLiteral("End"));
    } else {
        frmTriggerAction dialog(this);
        dialog.Trigger = &Trigger;
        dialog.Action = action;
        dialog.ShowForm();
    }
    if (!Global.DialogCancelled)
        MarkDirty();
    if (New && Global.DialogCancelled) {
        if (kind == QStringLiteral("If")) {
            const int at = list.ActionNoFromID(ID);
            if (list.ItemType(at + 1) == QStringLiteral("Comment"))
                list.Delete(at + 1);
            if (list.ItemType(at + 1) == QStringLiteral("EndIf"))
                list.Delete(at + 1);
        }
        list.Delete(ID);
        SelectedActionID.clear();
    }
    FillActions();
    QTimer::singleShot(0, ReportActions, qOverload<>(&QWidget::setFocus));
}

void frmTrigger::MoveActionUp()
{
    const int at = SelectedActionPosition();
    if (at < 2)
        return;
    Trigger.ActionList().Swap(at, at - 1);
    MarkDirty();
    FillActions();
}

void frmTrigger::MoveActionDown()
{
    const int at = SelectedActionPosition();
    if (at < 1 || at >= Trigger.ActionList().Count())
        return;
    Trigger.ActionList().Swap(at, at + 1);
    MarkDirty();
    FillActions();
}

void frmTrigger::CopyAction()
{
    if (const ActionItem *action = Trigger.ActionList().Item(SelectedActionID))
        QApplication::clipboard()->setText(action->XML());
}

void frmTrigger::PasteAction()
{
    const QString fragment = QApplication::clipboard()->text();
    const qsizetype open = fragment.indexOf(QStringLiteral("<Class>"));
    const qsizetype close = fragment.indexOf(QStringLiteral("</Class>"), open);
    if (open < 0 || close < 0)
        return;
    const QString kind = fragment.mid(open + 7, close - open - 7);
    CreateAction(kind, SelectedActionID, fragment);
}

void frmTrigger::DeleteAction()
{
    const ActionItem *action = Trigger.ActionList().Item(SelectedActionID);
    if (!action)
        return;
    if (QuestionBox(this, Global.AppTitle,
                    EditorText("DELETEACTION1", "Delete action?") + QStringLiteral("\r\n") + action->ClassDesc()) !=
        QMessageBox::Yes)
        return;
    const int at = SelectedActionPosition();
    Trigger.ActionList().Delete(SelectedActionID);
    const ActionItem *next = Trigger.ActionList().Item(qMin(at, Trigger.ActionList().Count()));
    SelectedActionID = next ? next->ID() : QString();
    MarkDirty();
    FillActions();
}

bool frmTrigger::eventFilter(QObject *Watched, QEvent *Event)
{
    if (Watched != ReportActions->viewport())
        return QWidget::eventFilter(Watched, Event);
    if (Event->type() == QEvent::DragEnter || Event->type() == QEvent::DragMove) {
        auto *drag = static_cast<QDropEvent *>(Event);
        if (drag->source() == ActionsPanel) {
            drag->acceptProposedAction();
            return true;
        }
    } else if (Event->type() == QEvent::Drop) {
        auto *drop = static_cast<QDropEvent *>(Event);
        const QTreeWidgetItem *dragged = ActionsPanel->currentItem();
        if (drop->source() == ActionsPanel && dragged && !dragged->data(0, KeyRole).toString().isEmpty()) {
            m_droppedKind = dragged->data(0, KeyRole).toString();
            const QTreeWidgetItem *target = ReportActions->itemAt(drop->position().toPoint());
            m_droppedAfter = target ? target->data(0, KeyRole).toString() : QString();
            drop->acceptProposedAction();
            AddActionTimer.start();
            return true;
        }
    }
    return QWidget::eventFilter(Watched, Event);
}

void frmTrigger::CreateDroppedAction()
{
    CreateAction(m_droppedKind, m_droppedAfter);
}

frmTrigger *ShowTriggerEditor(clsAccount &Account, clsAccountTrigger *Trigger, QWidget *Parent)
{
    frmTrigger *editor = NewTriggerEditor(Account, Trigger, Parent);
    editor->show();
    return editor;
}

frmTrigger *NewTriggerEditor(clsAccount &Account, clsAccountTrigger *Trigger, QWidget *Parent)
{
    std::unique_ptr<clsAccountTrigger> fresh;
    if (!Trigger) {
        fresh = std::make_unique<clsAccountTrigger>();
        fresh->Parent = &Account;
        Trigger = fresh.get();
    }
    auto *editor = new frmTrigger(Account, *Trigger, fresh != nullptr, Parent);
    editor->setWindowFlag(Qt::Window);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    editor->AdoptNewTrigger(std::move(fresh));
    return editor;
}
