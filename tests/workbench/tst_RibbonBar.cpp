#include "ShellFixture.h"
#include "TestRegistry.h"
#include "foundation/cDDict.h"
#include "workbench/RibbonBar.h"
#include "workbench/frmClient.h"

#include <QAction>
#include <QGroupBox>
#include <QLabel>
#include <QTabBar>
#include <QTest>
#include <QToolButton>

// The main window's ribbon: what it shows, how it folds, and that its
// captions pass through the dictionary.
class tst_RibbonBar : public QObject
{
    Q_OBJECT

    static QStringList TabsShown(const RibbonBar &Ribbon)
    {
        QStringList tabs;
        for (int i = 0; i < Ribbon.count(); ++i)
            if (Ribbon.isTabVisible(i))
                tabs << Ribbon.tabText(i);
        return tabs;
    }

private slots:
    void init() { Global.DevMode = true; }

    void contextualTabsShowOnlyForTheirEditor()
    {
        frmClient client;
        client.ConnectTimer.stop();
        RibbonBar &ribbon = *client.CommandBar;
        QCOMPARE(TabsShown(ribbon), (QStringList{QStringLiteral("Accounts && Triggers"), QStringLiteral("Users"),
                                                 QStringLiteral("Service Status"), QStringLiteral("Help")}));
        client.ShowContextualTab(client.TriggerSettingsTab);
        QVERIFY(TabsShown(ribbon).contains(QStringLiteral("Trigger Settings")));
        QVERIFY(!TabsShown(ribbon).contains(QStringLiteral("Account Settings")));
        QCOMPARE(ribbon.currentWidget(), client.TriggerSettingsTab);
        client.ShowContextualTab(nullptr);
        QCOMPARE(TabsShown(ribbon).size(), 4);
        // The statistics are lines of the Service Status tab.
        QStringList lines;
        for (QLabel *line : ribbon.widget(2)->findChildren<QLabel *>())
            lines << line->text().section(u':', 0, 0);
        for (const char *line : {"Accounts", "Triggers", "Pending Edge Queue"})
            QVERIFY2(lines.contains(QString::fromLatin1(line)), line);
    }

    void minimizingKeepsTheTabsOnly()
    {
        frmClient client;
        client.ConnectTimer.stop();
        client.show();
        RibbonBar &ribbon = *client.CommandBar;
        QVERIFY(QTest::qWaitForWindowExposed(&client));
        const int open = ribbon.height();
        QTest::keyClick(&client, Qt::Key_F1, Qt::ControlModifier);
        QVERIFY(ribbon.Minimized());
        QVERIFY(ribbon.height() < open / 2);
        QCOMPARE(ribbon.QuickButton->defaultAction(), client.Command(frmClient::ID_EXPANDRIBBON));
        ribbon.tabBar()->tabBarClicked(1);
        QVERIFY(!ribbon.Minimized());
        QTRY_COMPARE(ribbon.height(), open);
        ShellFixture::Picture(&client, QStringLiteral("ribbon"));
    }

    void captionsGoThroughTheDictionary()
    {
        DDict().TranslationMode = QStringLiteral("test");
        DDict().GetDD(QStringLiteral("RIBBON_frmClient"), QStringLiteral("TABS"), 1,
                      QStringLiteral("Benutzer|Alle Benutzer|"), true);
        DDict().GetDD(QStringLiteral("RIBBON_frmClient"), QStringLiteral("GROUPTAB0"), 1, QStringLiteral("||Aktion"), true);
        DDict().GetDD(QStringLiteral("RIBBON_frmClient"), QStringLiteral("COMMAND"), frmClient::ID_DELETE,
                      QStringLiteral("Löschen|Auswahl löschen|"), true);
        frmClient client;
        client.ConnectTimer.stop();
        DDict().TranslationMode.clear();
        RibbonBar &ribbon = *client.CommandBar;
        QCOMPARE(ribbon.tabText(1), QStringLiteral("Benutzer"));
        QCOMPARE(ribbon.widget(0)->findChildren<QGroupBox *>(Qt::FindDirectChildrenOnly).value(1)->title(),
                 QStringLiteral("Aktion"));
        QCOMPARE(client.Command(frmClient::ID_DELETE)->text(), QStringLiteral("Löschen"));
        QCOMPARE(ribbon.Button(frmClient::ID_DELETE)->text(), QStringLiteral("Löschen"));
        QCOMPARE(client.Command(frmClient::ID_REFRESH)->shortcut(), QKeySequence(Qt::Key_F5));
    }
};

POSTVANE_TEST(tst_RibbonBar)
#include "tst_RibbonBar.moc"
