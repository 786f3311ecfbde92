#pragma once
#include "ViewClient.h"
#include "session/Requests.h"

#include <QDate>
#include <QElapsedTimer>
#include <QList>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <utility>

class QComboBox;
class QLabel;
class QLineEdit;
class QTabBar;
class QTreeWidget;
class QTreeWidgetItem;
class RibbonBar;
class clsUserFolder;
class frmViewPreview;

// The message browser: the store of the connected server for an account, a
// trigger, a user or all messages. A folder tree, a grid of one page of
// message rows grouped by date, page tabs, a reading pane and a status line.
// Everything comes through the window's own client; a reply to a request
// made before the view changed is dropped.
class frmViewChecked : public QWidget
{
    Q_OBJECT
public:
    static constexpr int PageSize = 500;
    static constexpr int ReadInterval = 2500;
    static constexpr int DropInterval = 200;
    static inline const QString DocumentName = QStringLiteral("The_Checked_Messages_Database");

    enum Command {
        ID_VIEWMESSAGE = 800, ID_MARKALLREAD, ID_READINGPANE, ID_REPROCESSSELECTED, ID_REPROCESSALL,
        ID_REMOVESELECTED, ID_REMOVEALL, ID_FOLDERADD, ID_FOLDERDELETE, ID_FOLDEREDIT, ID_MATCHESONLY,
        ID_ERRORSONLY, ID_ALLACCOUNTS, ID_REFRESH, ID_MARKREAD, ID_MARKUNREAD, ID_REPROCESSMESSAGE,
        ID_REMOVEMESSAGE, ID_SPAM, ID_PRINT,
    };
    enum Column { ColFolderID, ColFrom, ColSubject, ColReceived, ColProcessed, ColMatch, ColSuccess, ColError, ColFlags };
    // Item data of a row, in column ColFolderID.
    enum RowData { RecordRole = Qt::UserRole, ImportanceRole, FlagsRole };

    // How the folder dialog is opened; the editors register it. Folder
    // nullptr makes a new folder under the node of ParentKey; true when saved.
    static inline std::function<bool(const clsUserFolder *Folder, const QString &ParentKey, QWidget *Parent)> EditFolder;

    static QStringList Periods();
    // The dates of a period of the list on a given day.
    static std::pair<QDate, QDate> PeriodRange(int Index, const QDate &Today);
    // The captions of the page tabs, "1-500" and on; empty for one page.
    static QStringList PageCaptions(qint64 Total, int Size = PageSize);
    // The date band of a row: "Date: Today", "Date: Yesterday", ...
    static QString DateBand(const QDate &Day, const QDate &Today);

    explicit frmViewChecked(QWidget *parent = nullptr);

    // Shows the store of an account (with a trigger), or of a user, or,
    // with all empty, all messages; fills the tree and loads the first page.
    void ShowMessages(const QString &AccountID, const QString &TriggerID = QString(), const QString &UserID = QString());
    // The view's filter, for the current folder.
    Requests::MessageSet Filter() const;
    QString Caption() const;
    // Loads page 1 and the count of the current filter.
    void LoadView();
    // Loads the rows of one page, from and to 1-based rows.
    void LoadPage(qint32 FromRow, qint32 ToRow);
    // Adds the rows of a "getmessages.xml" reply to the grid.
    void FillGridRemote(const QString &Text);
    void FillTree();
    void SelectFolder(const QString &Key);
    void SetPeriod(int Index);

    // Rows, and the rows selected, as the grid holds them (no band rows).
    QList<QTreeWidgetItem *> Rows() const;
    QList<QTreeWidgetItem *> SelectedRows() const;
    static qint32 RecordOf(const QTreeWidgetItem *Row);
    static bool IsUnread(const QTreeWidgetItem *Row);

    // The commands, after their questions (Ask false skips them).
    bool MarkRows(const QList<QTreeWidgetItem *> &Rows, bool Read);
    void MarkAllAsRead();
    void ReprocessSelected(bool Ask = true);
    void ReprocessAll(bool Ask = true);
    void RemoveSelected(bool Ask = true);
    void RemoveAll(bool Ask = true);
    // Moves rows to a folder, one request each; rows moved leave the grid.
    // False when the target is a root node, which takes no messages.
    bool MoveRows(const QList<QTreeWidgetItem *> &Rows, const QString &TargetKey);
    void SendToSpam();
    void OpenMessage(QTreeWidgetItem *Row);
    void AddFolder();
    void EditSelectedFolder();
    void DeleteSelectedFolder(bool Ask = true);
    void Print();
    // The current page as an HTML table, as it is printed.
    QString PrintHtml() const;
    void ShowReadingPane(bool Shown);

    // The view.
    QString AccountID;
    QString TriggerID;
    QString UserID;
    QString FolderID = QStringLiteral("-");
    QString FolderKey;
    bool ErrorsOnly = false;
    bool MatchesOnly = false;
    bool AllAccounts = false;
    QString SearchText;
    int Period = 0;
    QDate FromDate;
    QDate ToDate;
    int CurrentPage = 1;
    qint64 Total = -1;
    QElapsedTimer RequestStarted;
    QList<qint32> OpenReaders;
    // The reading pane marks a message read after showing it.
    bool MarkAsReadOnPreview = true;

    ViewClient Client;
    RibbonBar *CommandBar = nullptr;
    QTreeWidget *Tree = nullptr;
    QTreeWidget *Grid = nullptr;
    QTabBar *PageTabs = nullptr;
    frmViewPreview *Preview = nullptr;
    QLabel *lblStatus = nullptr;
    QLineEdit *txtSearch = nullptr;
    QComboBox *cmboPeriod = nullptr;
    QTimer ReadTimer;
    QTimer DropTimer;

signals:
    // The rows of a page and the count are in.
    void Loaded();

protected:
    bool eventFilter(QObject *Watched, QEvent *Event) override;

private:
    void CreateCommands();
    void CreateGrid();
    void ConnectCommands();
    void ShowGridMenu(const QPoint &At);
    void ShowTreeMenu(const QPoint &At);
    void ShowPageTabs();
    void UpdateStatus();
    void ReadTick();
    void ShowRead(QTreeWidgetItem *Row, bool Read);
    void RemoveRow(QTreeWidgetItem *Row);
    bool Ask(const QString &Text, const QString &Detail);
    QTreeWidgetItem *Band(const QString &Caption);
    QTreeWidgetItem *FindRow(qint32 RecordNo) const;
    bool TreeDrag(QEvent *Event);

    bool m_rowsIn = false;
    int m_rowCount = 0;
    QTreeWidgetItem *m_hover = nullptr;
};
