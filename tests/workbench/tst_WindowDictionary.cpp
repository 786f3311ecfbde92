#include "TestRegistry.h"
#include "foundation/cDDict.h"
#include "workbench/WindowDictionary.h"

#include <QComboBox>
#include <QDockWidget>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QToolBar>

class tst_WindowDictionary : public QObject
{
    Q_OBJECT
private slots:
    void init() { DDict().TranslationMode = QStringLiteral("test"); }
    void cleanup() { DDict().TranslationMode.clear(); }

    void windowCaptionsGoThroughTheDictionaryByName()
    {
        QWidget window;
        window.setObjectName(QStringLiteral("frmSample"));
        window.setWindowTitle(QStringLiteral("%APPNAME% Sample"));
        auto *label = new QLabel(QStringLiteral("%APPNAME% Name"), &window);
        label->setObjectName(QStringLiteral("lblName"));
        auto *button = new QPushButton(QStringLiteral("Go"), &window);
        button->setObjectName(QStringLiteral("btnGo"));
        auto *list = new QComboBox(&window);
        list->setObjectName(QStringLiteral("cboKind"));
        list->addItems({QStringLiteral("First"), QStringLiteral("Second")});
        auto *text = new QLineEdit(QStringLiteral("typed"), &window);
        text->setObjectName(QStringLiteral("txtValue"));

        DDict().GetDD(QStringLiteral("frmSample"), QStringLiteral("btnGo"), 0, QStringLiteral("Los"), true);
        DDict().GetDD(QStringLiteral("frmSample"), QStringLiteral("cboKind"), 1, QStringLiteral("Zweite"), true);
        GetDDict(&window);
        QCOMPARE(window.windowTitle(), QStringLiteral("Postvane Sample"));
        QCOMPARE(label->text(), QStringLiteral("Postvane Name"));
        QCOMPARE(button->text(), QStringLiteral("Los"));
        QCOMPARE(list->itemText(0), QStringLiteral("First"));
        QCOMPARE(list->itemText(1), QStringLiteral("Zweite"));
        QCOMPARE(text->text(), QStringLiteral("typed"));
    }

    void ribbonCommandsAndPanesTakeTheirOwnKeys()
    {
        QTabWidget ribbon;
        auto *page = new QWidget;
        auto *group = new QGroupBox(QStringLiteral("Action"), page);
        ribbon.addTab(page, QStringLiteral("Users"));
        DDict().GetDD(QStringLiteral("RIBBON_frmMain"), QStringLiteral("TABS"), 0, QStringLiteral("Benutzer|Alle Benutzer|"), true);
        DDict().GetDD(QStringLiteral("RIBBON_frmMain"), QStringLiteral("GROUPTAB0"), 0, QStringLiteral("||Aktion"), true);
        GetRibbonBar(QStringLiteral("frmMain"), &ribbon);
        QCOMPARE(ribbon.tabText(0), QStringLiteral("Benutzer"));
        QCOMPARE(ribbon.tabToolTip(0), QStringLiteral("Alle Benutzer"));
        QCOMPARE(group->title(), QStringLiteral("Aktion"));

        QToolBar bar;
        QAction *refresh = bar.addAction(QStringLiteral("Refresh"));
        refresh->setData(7);
        refresh->setToolTip(QStringLiteral("Refresh"));
        DDict().GetDD(QStringLiteral("RIBBON_frmMain"), QStringLiteral("COMMAND"), 7, QStringLiteral("Neu laden|Alles neu|"), true);
        GetCommandBar(QStringLiteral("frmMain"), &bar);
        QCOMPARE(refresh->text(), QStringLiteral("Neu laden"));
        QCOMPARE(refresh->toolTip(), QStringLiteral("Alles neu"));

        // A pane is keyed by its id, not by where it stands in the list.
        QDockWidget first(QStringLiteral("Server"));
        first.setObjectName(QStringLiteral("LogPaneServer"));
        first.setProperty(PaneIDProperty, 1);
        QDockWidget second(QStringLiteral("Edge"));
        second.setObjectName(QStringLiteral("LogPaneEdge"));
        second.setProperty(PaneIDProperty, 5);
        DDict().GetDD(QStringLiteral("PANES_frmMain"), QStringLiteral("LogPaneEdge"), 5, QStringLiteral("Rand"), true);
        DDict().GetDD(QStringLiteral("PANES_frmMain"), QStringLiteral("LogPaneServer"), 2, QStringLiteral("Diener"), true);
        GetPanes(QStringLiteral("frmMain"), {&second, &first});
        QCOMPARE(first.windowTitle(), QStringLiteral("Server"));
        QCOMPARE(second.windowTitle(), QStringLiteral("Rand"));
    }
};

POSTVANE_TEST(tst_WindowDictionary)
#include "tst_WindowDictionary.moc"
