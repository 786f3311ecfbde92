#pragma once
#include <QWidget>

class QAction;
class QComboBox;
class QLabel;
class QScrollArea;
class QVBoxLayout;
class frmList;

// The navigator: a task panel beside the item list whose groups follow the
// level the list shows (all accounts, one account, users), and the deletion
// flows. Its task links are the main window's commands, so that they are
// greyed with them.
class frmExplorerBar : public QWidget
{
    Q_OBJECT
public:
    enum Page { PageTop, PageAccount, PageUsers };

    // The commands a task link stands for.
    struct Tasks
    {
        QAction *AddAccount = nullptr;
        QAction *AddTrigger = nullptr;
        QAction *Properties = nullptr;
        QAction *Delete = nullptr;
        QAction *RunWith = nullptr;
        QAction *AddUser = nullptr;
        QAction *DeleteUser = nullptr;
        QAction *UpLevel = nullptr;
    };

    frmExplorerBar(frmList *List, const Tasks &Commands, QWidget *parent = nullptr);

    frmList *List;
    Tasks Commands;
    Page Showing = PageTop;
    QComboBox *cmboOrganizations = nullptr;

    // Rebuilds whichever page is showing.
    void ExplorerBarRefresh();
    void ExplorerBarTop();
    void ExplorerBarAccount();
    void ExplorerBarUser();
    // Refills the list of the page from its collection.
    void RefreshListItems();

    // Each asks first; a server refusal changes nothing.
    void DeleteAccount();
    void DeleteTrigger();
    void DeleteUser();

    // The captions of the groups and links on show, in order: "Tasks",
    // "Add Account", ...; for tests and screen readers.
    QStringList Captions() const;

signals:
    // The navigator changed the list's level or filter.
    void PageChanged();

private:
    // A new, empty panel is built apart and then shown in place of the old.
    void Clear();
    void Publish();
    QWidget *AddGroup(const QString &Title);
    void AddTask(QWidget *Group, QAction *Command, const QString &Caption);
    QLabel *AddDetail(QWidget *Group, const QString &Text);
    void FillOrganizations();

    QScrollArea *m_scroll = nullptr;
    QWidget *m_panel = nullptr;
    QVBoxLayout *m_groups = nullptr;
};
