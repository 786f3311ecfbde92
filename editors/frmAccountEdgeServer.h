#pragma once
#include <QDialog>

class QPushButton;
class QTreeWidget;

// Chooses the edge server that reads an account's messages, from the nodes
// that "getnodes.xml" lists; "127.0.0.1" is the server itself.
class frmAccountEdgeServer : public QDialog
{
    Q_OBJECT
public:
    static inline const QString LocalHost = QStringLiteral("127.0.0.1");

    // Current: the account's EdgeServer, selected when listed.
    explicit frmAccountEdgeServer(const QString &Current, QWidget *parent = nullptr);

    QTreeWidget *ListNodes = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;
    // The host chosen by OK.
    QString SelectedHost;

    // The edge nodes of a "getnodes.xml" reply, as pairs of name and host.
    static QList<QPair<QString, QString>> EdgeNodes(const QString &Reply);
};
