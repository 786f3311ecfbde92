#include "frmAccountEdgeServer.h"
#include "EditorBoxes.h"
#include "foundation/clsXML.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

QList<QPair<QString, QString>> frmAccountEdgeServer::EdgeNodes(const QString &Reply)
{
    QList<QPair<QString, QString>> nodes;
    clsXML reader(Reply);
    clsXML node;
    while (reader.ExtractItem(node, QStringLiteral("Node"))) {
        QString type, name, host;
        node.Extract(type, QStringLiteral("Type"));
        node.Extract(name, QStringLiteral("Name"));
        node.Extract(host, QStringLiteral("Host"));
        if (type.compare(QStringLiteral("edge"), Qt::CaseInsensitive) == 0 && !host.isEmpty())
            nodes.append({name, host});
    }
    return nodes;
}

frmAccountEdgeServer::frmAccountEdgeServer(const QString &Current, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmAccountEdgeServer"));
    setWindowTitle(EditorText("EDGESERVERTITLE", "Read Messages Via Edge Server"));
    ListNodes = new QTreeWidget(this);
    ListNodes->setHeaderLabels({EditorText("EDGENODENAME", "Node"), EditorText("EDGENODEHOST", "IP Address")});
    ListNodes->setRootIsDecorated(false);
    ListNodes->header()->setStretchLastSection(true);
    btnOK = new QPushButton(EditorText("OK", "OK"), this);
    btnOK->setDefault(true);
    btnCancel = new QPushButton(EditorText("CANCEL", "Cancel"), this);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(btnOK, &QPushButton::clicked, this, [this] {
        const QTreeWidgetItem *node = ListNodes->currentItem();
        if (!node)
            return;
        SelectedHost = node->text(1);
        accept();
    });
    connect(ListNodes, &QTreeWidget::itemDoubleClicked, btnOK, &QPushButton::click);

    QList<QPair<QString, QString>> nodes;
    if (Remote().HTTPGet(Requests::GetNodes(), 0, true))
        nodes = EdgeNodes(Remote().ReplyText);
    bool local = false;
    for (const auto &node : nodes)
        local = local || node.second == LocalHost;
    if (!local)
        nodes.prepend({EditorText("EDGELOCAL", "Local Processing"), LocalHost});
    for (const auto &node : nodes) {
        auto *item = new QTreeWidgetItem(ListNodes, {node.first, node.second});
        if (node.second == Current || (Current.isEmpty() && node.second == LocalHost))
            ListNodes->setCurrentItem(item);
    }
    ListNodes->resizeColumnToContents(0);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(EditorText("EDGESERVERTEXT", "Read this account's messages on:"), this));
    layout->addWidget(ListNodes);
    layout->addLayout(buttons);
    resize(460, 300);
}
