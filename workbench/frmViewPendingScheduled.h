#pragma once
#include "MessageDocument.h"
#include "ViewClient.h"

#include <QTimer>
#include <QWidget>

class HtmlView;
class QLabel;
class QLineEdit;
class QListWidget;
class QTreeWidget;
class QTreeWidgetItem;
class RibbonBar;

// The mail of the Outbox that waits for a later date, for an account or a
// trigger: a grid of the rows, and the chosen row's message below it.
class frmViewPendingScheduled : public QWidget
{
    Q_OBJECT
public:
    static constexpr int SettleInterval = 400;
    enum Command { ID_DELETE = 900, ID_DELETEALL, ID_SENDNOW, ID_PRINT, ID_REFRESH };
    enum Column { ColSource, ColImportance, ColAttachment, ColFrom, ColTo, ColSendDate, ColSubject };

    explicit frmViewPendingScheduled(QWidget *parent = nullptr);

    void ShowMessages(const QString &AccountID, const QString &TriggerID = QString());
    void LoadView();
    // Fills the grid from a "getscheduledmessages.xml" reply.
    void FillGridRemote(const QString &Text);
    // Shows one message from its MIME text.
    void UpdateBody(const QString &Text);
    QList<QTreeWidgetItem *> SelectedRows() const;
    static qint32 RecordOf(const QTreeWidgetItem *Row);

    // The commands after their questions (Ask false skips them).
    void DeleteSelected(bool Ask = true);
    void DeleteAll(bool Ask = true);
    void SendNow();
    void Print();

    QString AccountID;
    QString TriggerID;
    QString SearchText;
    MessageDocument Document;
    ViewClient Client;
    ViewClient BodyClient;
    RibbonBar *CommandBar = nullptr;
    QLineEdit *txtSearch = nullptr;
    QTreeWidget *Grid = nullptr;
    HtmlView *Browser = nullptr;
    QListWidget *lstAttachments = nullptr;
    QLabel *lblStatus = nullptr;
    QTimer SettleTimer;

signals:
    void Loaded();
};
