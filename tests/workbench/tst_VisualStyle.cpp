#include "ModalCloser.h"
#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "workbench/VisualStyle.h"
#include "workbench/frmClient.h"

#include <QAction>
#include <QApplication>
#include <QSet>
#include <QTest>

// The look chosen from the system menu: what is stored, what shows at once
// and what only after a restart.
class tst_VisualStyle : public QObject
{
    Q_OBJECT
    QPalette m_desktop;

private slots:
    void initTestCase()
    {
        Global.DevMode = true;
        m_desktop = QApplication::palette();
        VisualStyle().Store();
    }

    void cleanup()
    {
        VisualStyle plain;
        plain.Theme = VisualStyle::ThemeDesktop;
        plain.Apply(*qApp);
        VisualStyle().Store();
    }

    void themeAndFontAreStoredForTheNextStart()
    {
        frmClient client;
        client.ConnectTimer.stop();
        const QColor before = QApplication::palette().color(QPalette::Window);
        ModalCloser closer;
        client.Command(frmClient::ID_THEME + 1)->trigger(); // Black
        client.Command(frmClient::ID_FONTSIZE + 3)->trigger(); // Extra Large
        QTRY_COMPARE(closer.Texts.size(), 2);
        for (const QString &text : closer.Texts)
            QCOMPARE(text.trimmed(), QStringLiteral("Please restart the Postvane Administrator"));
        QVERIFY(client.Command(frmClient::ID_THEME + 1)->isChecked());
        QVERIFY(!client.Command(frmClient::ID_THEME)->isChecked());
        QCOMPARE(QApplication::palette().color(QPalette::Window), before);

        const VisualStyle stored = VisualStyle::Stored();
        QCOMPARE(stored.Theme, int(VisualStyle::ThemeBlack));
        QCOMPARE(stored.FontSize, int(VisualStyle::FontExtraLarge));
        QCOMPARE(Global.Settings.Theme, int(VisualStyle::ThemeBlack));
        QCOMPARE(Global.Settings.ThemeFontSize, qint16(VisualStyle::FontExtraLarge));

        // The next start applies them, and its menu shows them ticked.
        stored.Apply(*qApp);
        QCOMPARE(QApplication::palette().color(QPalette::Window), QColor(0x53, 0x53, 0x53));
        QCOMPARE(QApplication::palette().color(QPalette::Base), QColor(Qt::white));
        QCOMPARE(QApplication::font().pointSize(), 13);
        QVERIFY(qApp->styleSheet().contains(QStringLiteral("#CommandBar QGroupBox")));
        frmClient next;
        next.ConnectTimer.stop();
        QVERIFY(next.Command(frmClient::ID_THEME + 1)->isChecked());
        QVERIFY(next.Command(frmClient::ID_FONTSIZE + 3)->isChecked());
        QCOMPARE(next.palette().color(QPalette::Window), QColor(0x53, 0x53, 0x53));
    }

    void everyThemeHasItsOwnColoursAndTheDesktopLookComesBack()
    {
        QSet<QRgb> frames;
        for (int theme = VisualStyle::ThemeBlue; theme <= VisualStyle::ThemeScenic; ++theme) {
            VisualStyle look;
            look.Theme = theme;
            look.FontSize = VisualStyle::FontLarge;
            look.Apply(*qApp);
            frames.insert(QApplication::palette().color(QPalette::Window).rgb());
            // List text stays dark on light rows in every theme.
            QCOMPARE(QApplication::palette().color(QPalette::Text), QColor(Qt::black));
            QVERIFY(QApplication::palette().color(QPalette::AlternateBase).lightness() > 200);
            QCOMPARE(QApplication::font().pointSize(), 11);
        }
        QCOMPARE(frames.size(), 4);
        VisualStyle plain;
        plain.Theme = VisualStyle::ThemeDesktop;
        plain.Apply(*qApp);
        QCOMPARE(QApplication::palette().color(QPalette::Window), m_desktop.color(QPalette::Window));
        QVERIFY(qApp->styleSheet().isEmpty());
    }

    void rightToLeftTurnsAtOnceAndIsKept()
    {
        frmClient client;
        client.ConnectTimer.stop();
        ModalCloser closer;
        client.Command(frmClient::ID_RIGHTTOLEFT)->trigger();
        QCOMPARE(QApplication::layoutDirection(), Qt::RightToLeft);
        QCOMPARE(client.layoutDirection(), Qt::RightToLeft);
        QVERIFY(VisualStyle::Stored().RightToLeft);
        QVERIFY(Global.Settings.RightToLeft);
        QTest::qWait(100);
        QVERIFY(closer.Texts.isEmpty()); // no restart needed
        client.Command(frmClient::ID_RIGHTTOLEFT)->trigger();
        QCOMPARE(QApplication::layoutDirection(), Qt::LeftToRight);
        QVERIFY(!VisualStyle::Stored().RightToLeft);
    }

    void strayStoredNumbersFallBackToTheDefaults()
    {
        SaveUserSetting(Global.ProductName, QStringLiteral("ThemeFontSize"), 9);
        SaveUserSetting(Global.ProductName, QStringLiteral("Theme"), 5);
        const VisualStyle stored = VisualStyle::Stored();
        QCOMPARE(stored.FontSize, int(VisualStyle::FontSystemDefault));
        stored.Apply(*qApp);
        QCOMPARE(QApplication::palette().color(QPalette::Window), m_desktop.color(QPalette::Window));
    }
};

POSTVANE_TEST(tst_VisualStyle)
#include "tst_VisualStyle.moc"
