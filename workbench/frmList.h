#pragma once
#include <QStandardItemModel>
#include <QWidget>

class MarkupDelegate;
class QItemSelectionModel;
class QLabel;
class QListView;
class QStackedWidget;
class QTreeView;
class clsAccount;
class clsAccountTrigger;

// The item list in the middle of the main window: the accounts, the
// triggers of one account, or the users. Each row's key is a letter and the
// record's ID: "A" an account, "T" a trigger, "U" a user. Three views show
// one model: icons, list and report (the columns).
class frmList : public QWidget
{
    Q_OBJECT
public:
    enum ListLevel { LevelAccounts, LevelTriggers, LevelUsers };
    enum ViewKind { ViewIcons, ViewList, ViewReport };
    static constexpr int KeyRole = Qt::UserRole + 1;

    explicit frmList(QWidget *parent = nullptr);

    QStandardItemModel Model;
    QLabel *lblTitle = nullptr;
    QLabel *lblFooter = nullptr;
    QStackedWidget *Views = nullptr;
    QListView *IconView = nullptr;
    QTreeView *ReportView = nullptr;
    MarkupDelegate *Delegate = nullptr;

    ListLevel Level = LevelAccounts;
    // The slots of the current account, trigger and user.
    QString CurrentAccountID;
    QString CurrentTriggerID;
    QString CurrentUserID;
    // The account whose triggers the list shows.
    QString ListedAccountID;
    // The organization whose users are listed; empty lists all.
    QString OrganizationFilter;

    // Icons, List or Report (a ViewKind).
    void SetView(int ViewType);
    int View() const { return m_view; }
    void FillList();
    // The triggers of the current account; asks the server for them first
    // when they are not loaded, showing "Requesting triggers..." meanwhile.
    void FillTriggerList();
    void FillUserList();
    // Refills whichever level is showing, keeping the selection.
    void RefillList();
    void SetCurrentTrigger(const QString &TriggerID);
    // Selects the row of a key; false when no row has it.
    bool SelectKey(const QString &Key);
    QString SelectedKey() const;
    // The text of a cell, by row and column, as shown.
    QString CellText(int Row, int Column) const;
    // What Print prints: the title, the columns and rows as shown, and the
    // footer, as rich text.
    QString PrintDocument() const;

    // The one-line conditions cell of a trigger: sender, date, importance and
    // words, its condition lines and its fields, as text and as markup.
    static QString TriggerConditionsText(const clsAccountTrigger &Trigger);
    static QString TriggerConditionsMarkup(const clsAccountTrigger &Trigger);

signals:
    // A row was double-clicked or opened with Enter: its key.
    void Opened(const QString &Key);
    void SelectionChanged(const QString &Key);
    void ContextMenuRequested(const QPoint &GlobalPosition);

private:
    // The trigger's rule without its condition lines.
    static QString TriggerSentence(const clsAccountTrigger &Trigger);
    void SetColumns(const QString &Title, const QStringList &Columns);
    void AddRow(const QString &Key, const QIcon &Icon, const QStringList &Texts, const QString &Markup = QString());
    void Finish();
    void TakeSelection();
    // The tool tip of the selected row, composed when it is selected.
    void ComposeToolTip(const QString &Key);
    QItemSelectionModel *Selection() const;

    int m_view = ViewReport;
};
