#include "TestRegistry.h"
#include "ViewsFixture.h"
#include "workbench/frmViewStats.h"

#include <QAbstractAxis>
#include <QChart>
#include <QChartView>
#include <QComboBox>
#include <QSignalSpy>
#include <QTest>

// The dashboard on day summaries of a real server: account A01 has counts on
// the first of this month and today, and two sender domains.
class tst_frmViewStats : public QObject
{
    Q_OBJECT
    ServerFixture server;
    QDate first;
    QDate today;

    void Seed(const QString &Statement)
    {
        QSqlQuery query(ViewsFixture::Database(server, QStringLiteral("MessageStore")));
        QVERIFY2(query.exec(Statement), qPrintable(query.lastError().text()));
    }
    static QString Day(const QDate &Date) { return Date.toString(QStringLiteral("yyyy-MM-dd 00:00:00")); }

private slots:
    void initTestCase()
    {
        QString problem;
        QVERIFY2(ViewsFixture::Start(server, problem), qPrintable(problem));
        today = QDate::currentDate();
        first = QDate(today.year(), today.month(), 1);
        Seed(QStringLiteral("INSERT INTO DaySummary (OrganizationID, AccountID, Dated, MessagesIn, MessagesOut, BytesIn) "
                            "VALUES ('OrgA', 'A01', '%1', 3, 1, 3000)").arg(Day(first)));
        if (today != first)
            Seed(QStringLiteral("INSERT INTO DaySummary (OrganizationID, AccountID, Dated, MessagesIn, MessagesOut, BytesIn) "
                                "VALUES ('OrgA', 'A01', '%1', 5, 0, 9000)").arg(Day(today)));
        Seed(QStringLiteral("INSERT INTO DaySummaryToken (OrganizationID, AccountID, TokenType, Token, Dated, Count) "
                            "VALUES ('OrgA', 'A01', 1, 'a.example', '%1', 2)").arg(Day(first)));
        Seed(QStringLiteral("INSERT INTO DaySummaryToken (OrganizationID, AccountID, TokenType, Token, Dated, Count) "
                            "VALUES ('OrgA', 'A01', 1, 'b.example', '%1', 4)").arg(Day(today)));
    }

    void theSummaryIsReadIntoLines()
    {
        const auto lines = frmViewStats::ReadSummary(
            QStringLiteral("<Lines><Line><Dated>2024-03-01</Date><Token>x.example</Token><Value>2</Value></Line>"
                           "<Line><Dated>2024-03-02</Date><Token>x.example</Token><Value>3</Value></Line>"
                           "<Line><Date>2024-03-02</Date><Value>7</Value></Line><Line><Date>bad</Date><Value>1</Value></Line></Lines>"),
            QStringLiteral("Messages Processed"));
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines.value(QStringLiteral("x.example")).value(QDate(2024, 3, 2)), 3.0);
        QCOMPARE(lines.value(QStringLiteral("Messages Processed")).value(QDate(2024, 3, 2)), 7.0);
        QVERIFY(frmViewStats::ReadSummary(QString(), QStringLiteral("x")).isEmpty());

        using Range = std::pair<QDate, QDate>;
        QCOMPARE(frmViewStats::PeriodRange(1, QDate(2024, 3, 15)), (Range{QDate(2024, 2, 1), QDate(2024, 2, 29)}));
        QCOMPARE(frmViewStats::PeriodRange(3, QDate(2024, 3, 15)), (Range{QDate(2023, 1, 1), QDate(2023, 12, 31)}));
    }

    void theChartShowsTheServersDays()
    {
        frmViewStats view;
        view.setAttribute(Qt::WA_DeleteOnClose, false);
        QSignalSpy loaded(&view, &frmViewStats::Loaded);
        view.ShowStats(QStringLiteral("A01"));
        QVERIFY(loaded.wait(20000));
        QCOMPARE(view.Lines.keys(), QStringList{QStringLiteral("Messages Processed")});
        QCOMPARE(view.Lines.value(QStringLiteral("Messages Processed")).value(first), 3.0);
        if (today != first)
            QCOMPARE(view.Lines.value(QStringLiteral("Messages Processed")).value(today), 5.0);
        QCOMPARE(view.Chart->chart()->series().size(), 1);

        view.cmboToken->setCurrentIndex(2); // Bytes Received
        QVERIFY(loaded.wait(20000));
        QCOMPARE(view.Lines.value(QStringLiteral("Bytes Received")).value(first), 3000.0);

        view.cmboToken->setCurrentIndex(3); // Sender Domain
        QVERIFY(loaded.wait(20000));
        QCOMPARE(view.Lines.keys(), (QStringList{QStringLiteral("a.example"), QStringLiteral("b.example")}));
        QCOMPARE(view.Lines.value(QStringLiteral("b.example")).value(today), 4.0);
        view.show();
        view.resize(900, 600);
        ShellFixture::Picture(&view, QStringLiteral("dashboard"));

        // A period without rows draws the axes only.
        view.cmboPeriod->setCurrentIndex(3); // Last Year
        QVERIFY(loaded.wait(20000));
        QVERIFY(view.Lines.isEmpty());
        QCOMPARE(view.Chart->chart()->series().size(), 0);
        QCOMPARE(view.Chart->chart()->axes().size(), 2);
    }
};

POSTVANE_TEST(tst_frmViewStats)
#include "tst_frmViewStats.moc"
