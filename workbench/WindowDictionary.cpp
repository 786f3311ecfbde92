#include "WindowDictionary.h"
#include "foundation/cDDict.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QDockWidget>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QTabWidget>

namespace {

bool Named(const QObject *Control)
{
    const QString name = Control->objectName();
    return !name.isEmpty() && !name.startsWith(QStringLiteral("qt_"));
}

// "caption|tool tip|description" through the dictionary; the caption and tool
// tip of the result when it differs from the default.
bool Translate(const QString &Class, const QString &Property, qint32 Index, const QString &Default, QString &Caption,
               QString &ToolTip)
{
    if (Default.size() < 3)
        return false;
    const QString text = DDict().GetDD(Class, Property, Index, Default);
    if (text == Default)
        return false;
    const QStringList fields = text.split(u'|');
    Caption = fields.value(0);
    ToolTip = fields.value(1);
    return true;
}

void TranslateActions(const QString &Class, const QList<QAction *> &Actions)
{
    for (QAction *action : Actions) {
        if (action->isSeparator())
            continue;
        QString caption;
        QString toolTip;
        const QString command = action->text() + u'|' + action->toolTip() + u'|' + action->statusTip();
        if (Translate(Class, QStringLiteral("COMMAND"), action->data().toInt(), command, caption, toolTip)) {
            action->setText(caption);
            action->setToolTip(toolTip);
        }
        if (action->menu())
            TranslateActions(Class, action->menu()->actions());
    }
}

} // namespace

QString DictText(const char *Key, const char *Default)
{
    return DDict().GetString(QString::fromLatin1(Key), QString::fromLatin1(Default));
}

void GetDDict(QWidget *Window)
{
    const QString window = Window->objectName();
    Window->setWindowTitle(DDict().GetCaption(window, QString(), Window->windowTitle()));
    for (QWidget *control : Window->findChildren<QWidget *>()) {
        if (!Named(control) || control->window() != Window)
            continue;
        const QString name = control->objectName();
        if (auto *combo = qobject_cast<QComboBox *>(control)) {
            if (combo->isEditable())
                continue;
            for (int i = 0; i < combo->count(); ++i)
                combo->setItemText(i, DDict().GetDD(window, name, i, combo->itemText(i)));
        } else if (auto *tabs = qobject_cast<QTabWidget *>(control)) {
            for (int i = 0; i < tabs->count(); ++i)
                tabs->setTabText(i, DDict().GetDD(window, name, i, tabs->tabText(i)));
        } else if (auto *button = qobject_cast<QAbstractButton *>(control)) {
            if (!button->text().isEmpty())
                button->setText(DDict().GetDD(window, name, 0, button->text()));
        } else if (auto *label = qobject_cast<QLabel *>(control)) {
            if (!label->text().isEmpty())
                label->setText(DDict().GetDD(window, name, 0, label->text()));
        } else if (auto *group = qobject_cast<QGroupBox *>(control)) {
            group->setTitle(DDict().GetDD(window, name, 0, group->title()));
        }
    }
}

void GetRibbonBar(const QString &Name, QTabWidget *Ribbon)
{
    const QString ribbon = QStringLiteral("RIBBON_") + Name;
    for (int tab = 0; tab < Ribbon->count(); ++tab) {
        QString caption;
        QString toolTip;
        const QString tabText = Ribbon->tabText(tab) + u'|' + Ribbon->tabToolTip(tab) + u'|' + Ribbon->tabWhatsThis(tab);
        if (Translate(ribbon, QStringLiteral("TABS"), tab, tabText, caption, toolTip)) {
            Ribbon->setTabText(tab, caption);
            Ribbon->setTabToolTip(tab, toolTip);
        }
        const QList<QGroupBox *> groups = Ribbon->widget(tab)->findChildren<QGroupBox *>(Qt::FindDirectChildrenOnly);
        for (int group = 0; group < groups.size(); ++group) {
            const QString groupText = QStringLiteral("||") + groups[group]->title();
            const QString text = DDict().GetDD(ribbon, QStringLiteral("GROUPTAB") + QString::number(tab), group, groupText);
            if (text != groupText)
                groups[group]->setTitle(text.section(u'|', 2));
        }
    }
}

void GetCommandBar(const QString &Name, QWidget *Bar)
{
    TranslateActions(QStringLiteral("RIBBON_") + Name, Bar->actions());
}

void GetPanes(const QString &Name, const QList<QDockWidget *> &Panes)
{
    for (QDockWidget *pane : Panes) {
        pane->setWindowTitle(DDict().GetDD(QStringLiteral("PANES_") + Name, pane->objectName(),
                                           pane->property(PaneIDProperty).toInt(), pane->windowTitle()));
    }
}
